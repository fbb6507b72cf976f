// Every exported function on a real interpreter, with each C API call and each allocation that it
// makes failing in turn.

#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <set>

#include "allocations.h"
#include "evidence.h"
#include "shim.h"

namespace evidence {
namespace {

// The interpreter under test goes behind the shim, before anything reads the setting.
const bool shimmed = [] {
  const std::string setting = std::getenv("PELION_TEST_PYTHON");
  const std::size_t begin = setting.find('|') + 1, end = setting.find('|', begin);
  if (dlopen(setting.substr(begin, end - begin).c_str(), RTLD_NOW | RTLD_GLOBAL) == nullptr)
    abort();
  setenv("PELION_TEST_PYTHON", std::string(setting).replace(begin, end - begin, SHIM).c_str(), 1);
  return true;
}();

enum class Fault { None, CallWithError, CallWithoutError, Allocation };

// Thrown with the Python error that caused them still pending.
const std::set<std::string> leavingErrors = {
    "NULL pointer returned from Python.", "Introspection API failed.",
    "Python API (probably set) failed.",  "PySequence_Length failed.",
    "Failure to get data from Unicode.",  "Failure to get data from String.",
};
const std::set<std::string> judgements = {
    "Failure to get std::string from Unicode.",
    "Python object is not string. Cannot return std::string.",
    "Python object is neither string nor unicode. Cannot return chars.",
    "Python object is neither string nor unicode. Cannot return unicode.",
    "Timezone type not supported.",
    "Arguments required to invoke Python callable.",
};

// Before anything else has used the registry that keeps what was reported.
TEST(UsageReport, NeverFailsTheHost) {
  int n = 0;
  do {
    const std::u16string version(20, static_cast<char16_t>(u'A' + n));
    allocations::failing = ++n;
    loader::sendPythonPkgInfo(version, false, false);
  } while (allocations::failing == 0);
  allocations::failing = 0;
  EXPECT_GT(n, 5);
}

class Faults : public Evidence {
 protected:
  void SetUp() override {
    Evidence::SetUp();
    void* const library = dlopen(SHIM, RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    account = reinterpret_cast<shim::GetAccount>(dlsym(library, "shim_account"))();
    dlclose(library);
    account->locked = 0;  // the start leaves the lock taken
  }

  struct Trial {
    std::string outcome;
    bool pending;
    std::int64_t lost;
    bool injected;
    std::int64_t calls;
  };

  /// One call over a fresh object, with the n-th chance of a fault taken.
  Trial attempt(const every::Function& function, const std::string& expression, Fault fault,
                int n) {
    const PyHandle object = eval(expression);
    PyArguments held;  // so that the trial meets no memory that the library keeps back
    for (int i = 0; fault == Fault::Allocation && i <= 64; ++i) held.push_back(real::integer(i));
    account->failed.clear();
    account->reader = false;
    account->withError = fault != Fault::CallWithoutError;
    int& failing = fault == Fault::Allocation ? allocations::failing : account->failing;
    const std::int64_t owned = account->owned;
    const std::int64_t calls = account->calls;
    failing = n;
    Trial trial = {thrownBy([&] { function.call(object.get(), object); }), false, 0, failing == 0,
                   account->calls - calls};
    failing = 0;
    trial.pending = exception::pyErrorOccurred();
    exception::pyErrorClear();
    trial.lost = account->owned - owned;
    return trial;
  }

  /// What is not as it is documented; empty when all is.
  std::string surprise(const Trial& trial, Fault fault, bool pendingAnyway) {
    const bool returned = trial.outcome == "nothing thrown";
    const bool leaves = leavingErrors.count(trial.outcome) != 0;
    const bool documented =
        returned || leaves || judgements.count(trial.outcome) != 0 ||
        trial.outcome == fetch::SearchFailure().what() ||
        (fault == Fault::Allocation && trial.outcome == std::bad_alloc().what());
    if (!documented) return trial.outcome;
    if (account->locked != 0) return "the lock is not given back";

    // The one look-up that keeps the module it looks in.
    const bool keepsBuiltins = account->failed == "PyObject_GetAttrString None";
    if (trial.lost != keepsBuiltins) return "references lost: " + std::to_string(trial.lost);

    // The error's parts are stored without a check, so that the tuple keeps a hole.
    const bool unchecked = account->failed == "PyTuple_SetItem" && returned;
    if (fault == Fault::CallWithError && !unchecked) {
      if (leaves && !trial.pending) return "no error pending after: " + trial.outcome;
      const bool mayPend = leaves || (returned && (account->reader || pendingAnyway));
      if (trial.pending && !mayPend) return "an error pending after: " + trial.outcome;
    }
    if (number(real::integer(7)) != 7) return "the next call fails";
    return {};
  }

  shim::Account* account = nullptr;
};

TEST_F(Faults, LeaveEverythingAsDocumented) {
  std::set<std::string> entered;
  std::map<Fault, int> injected;
  std::vector<std::string> surprises;
  for (const every::Function& function : functions) {
    for (const std::string& expression : pool) {
      attempt(function, expression, Fault::None, 0);  // caches of the interpreter fill
      const Trial plain = attempt(function, expression, Fault::None, 0);
      if (plain.calls > 0) entered.insert(function.text);
      for (const Fault fault :
           {Fault::None, Fault::CallWithError, Fault::CallWithoutError, Fault::Allocation}) {
        for (int n = fault != Fault::None;; ++n) {
          const Trial trial = attempt(function, expression, fault, n);
          const std::string text = surprise(trial, fault, plain.pending);
          if (!text.empty()) {
            surprises.push_back(std::string(function.text) + " over " + expression + ", " +
                                (fault == Fault::Allocation ? "allocation" : account->failed) +
                                " " + std::to_string(n) + ": " + text);
          }
          if (!trial.injected || fault == Fault::None) break;
          ++injected[fault];
        }
      }
    }
  }
  std::cout << entered.size() << " functions over " << pool.size() << " objects, "
            << injected[Fault::CallWithError] + injected[Fault::CallWithoutError]
            << " failing C API calls, " << injected[Fault::Allocation] << " failing allocations, "
            << surprises.size() << " surprises\n";
  for (const std::string& text : surprises) ADD_FAILURE() << text;
  EXPECT_GT(injected[Fault::Allocation], 0);
}

TEST(EveryFunction, IsInTheTable) {
  std::string table;
  for (const every::Function& function : functions) table += function.text + std::string("\n");
  Dl_info library = {};
  ASSERT_NE(dladdr(reinterpret_cast<void*>(&loader::getAPI), &library), 0);
  // Functions by their prefix, and constructors.
  const std::string command = "nm -DC --defined-only " + std::string(library.dli_fname) +
                              " | grep -oP 'pelion_core::api::.*?\\K"
                              "\\b((py|get_)\\w+|(\\w+)::\\3)(?=[(\\[])' | sort -u";
  const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), &pclose);
  int count = 0;
  for (char line[256]; std::fgets(line, sizeof line, output.get()) != nullptr; ++count) {
    const std::string text(line, std::strcspn(line, ":\n"));
    const bool listed =
        table.find(text + "(") != table.npos || table.find(text + "{") != table.npos;
    EXPECT_TRUE(listed || text == "pyClose") << text;
  }
  EXPECT_GT(count, 100);
}

}  // namespace
}  // namespace evidence
