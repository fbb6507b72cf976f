// Every exported function on a real interpreter, with each C API call and each allocation that it
// makes failing in turn.

#include <dlfcn.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <set>

#include "object_pool.h"
#include "stand_in.h"

// Which allocation of the library fails, 1 being the next; 0: none. In failing_allocations.cpp.
extern int failingAllocation;

namespace {

// The interpreter under test goes behind the stand-in, before anything reads the setting.
const bool isBehindStandIn = [] {
  const std::string setting = real::environment("PELION_TEST_PYTHON");
  const std::size_t begin = setting.find('|') + 1, end = setting.find('|', begin);
  if (dlopen(setting.substr(begin, end - begin).c_str(), RTLD_NOW | RTLD_GLOBAL) == nullptr)
    abort();
  const std::string replaced = std::string(setting).replace(begin, end - begin, STAND_IN);
  return setenv("PELION_TEST_PYTHON", replaced.c_str(), 1) == 0;
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
    fetch::SearchFailure().what(),
};

// Before anything else has used the registry that keeps what was reported.
TEST(UsageReport, NeverFailsTheHost) {
  int n = 0;
  do {
    const std::u16string version(20, static_cast<char16_t>(u'A' + n));
    failingAllocation = ++n;
    loader::sendPythonPkgInfo(version, false, false);
  } while (failingAllocation == 0);
  failingAllocation = 0;
  EXPECT_GT(n, 5);
}

class Faults : public ObjectPool {
 protected:
  void SetUp() override {
    ObjectPool::SetUp();
    void* const library = dlopen(STAND_IN, RTLD_LAZY | RTLD_NOLOAD);
    account = &stand_in::stateOf<stand_in::Account>(dlsym(library, "stand_in_state"));
    dlclose(library);
    account->locked = 0;  // the start leaves the lock taken
  }

  struct Trial {
    std::string outcome;
    bool pending;
    std::int64_t lost;
    bool injected;
  };

  /// One call over a fresh object, with the n-th chance of a fault taken.
  template <class Action>
  Trial attempt(Action action, const std::string& expression, Fault fault, int n) {
    const PyHandle object = eval(expression);
    PyArguments held;  // so that the trial meets no memory that the library keeps back
    for (int i = 0; fault == Fault::Allocation && i <= 64; ++i) held.push_back(real::integer(i));
    account->failed.clear();
    account->reader = false;
    account->withError = fault != Fault::CallWithoutError;
    int& failing = fault == Fault::Allocation ? failingAllocation : account->failing;
    const std::int64_t owned = account->owned;
    failing = n;
    Trial trial = {thrownBy([&] { action(object.get(), object); }), false, 0, failing == 0};
    failing = 0;
    trial.pending = pyErrorOccurred();
    pyErrorClear();
    trial.lost = account->owned - owned;
    return trial;
  }

  /// What is not as it is documented; empty when all is.
  std::string surprise(const Trial& trial, Fault fault, bool pendingAnyway) {
    const bool returned = trial.outcome == nothingThrown;
    const bool leaves = leavingErrors.count(trial.outcome) != 0;
    const bool noMemory = fault == Fault::Allocation && trial.outcome == std::bad_alloc().what();
    if (!returned && !leaves && !noMemory && judgements.count(trial.outcome) == 0)
      return trial.outcome;
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
    if (real::number(real::integer(7)) != 7) return "the next call fails";
    return {};
  }

  stand_in::Account* account = nullptr;
};

TEST_F(Faults, LeaveEverythingAsDocumented) {
  const auto lost = [&](void (*operation)(PyObject*)) {
    return attempt([&](pyArray* o, const PyHandle&) { operation(toPyObject(o)); }, "Thing",
                   Fault::None, 0)
        .lost;
  };
  // The module, the function, the tuple, and the result are left behind on purpose.
  EXPECT_EQ(lost([](PyObject* o) { APIAccessor()->callInspectPredicate(o, "isfunction"); }), 4);
  EXPECT_EQ(lost([](PyObject* o) { APIAccessor()->setTupleItem(nullptr, 0, o); }), 1);
  EXPECT_EQ(lost([](PyObject*) { pyIsNone(nullptr); }), 1);

  std::map<Fault, int> injected;
  for (const every::Function& function : every::functions) {
    for (const std::string& expression : pool) {
      attempt(function.call, expression, Fault::None, 0);  // caches of the interpreter fill
      const bool pends = attempt(function.call, expression, Fault::None, 0).pending;
      for (const Fault fault :
           {Fault::None, Fault::CallWithError, Fault::CallWithoutError, Fault::Allocation}) {
        for (int n = fault != Fault::None;; ++n) {
          const Trial trial = attempt(function.call, expression, fault, n);
          EXPECT_EQ(surprise(trial, fault, pends), "")
              << function.text << " over " << expression << ", "
              << (fault == Fault::Allocation ? "allocation" : account->failed) << " " << n;
          if (!trial.injected || fault == Fault::None) break;
          ++injected[fault];
        }
      }
    }
  }
  std::cout << std::size(every::functions) << " functions over " << pool.size() << " objects, "
            << injected[Fault::CallWithError] + injected[Fault::CallWithoutError]
            << " failing C API calls, " << injected[Fault::Allocation] << " failing allocations\n";
  EXPECT_GT(injected[Fault::CallWithoutError], 0);
  EXPECT_GT(injected[Fault::Allocation], 0);
}

}  // namespace
