#include <algorithm>
#include <boost/locale/encoding_utf.hpp>
#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "pelion_core/pelion_core.h"
#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif
#endif

/// The flat functions, since a session would refuse what is tried here.
namespace pelion {
namespace {

using namespace pelion_core;
using namespace pelion_core::api;

std::u16string toUtf16(const std::string& utf8) {
  return boost::locale::conv::utf_to_utf<char16_t>(utf8);
}

std::string textOf(const PyHandle& object) {
  return boost::locale::conv::utf_to_utf<char>(
      object::get_ustring(object::pyStr(object.get()).get()));
}

// The way to the parent. Whatever Python prints goes to standard error instead.
class Channel {
 public:
  Channel() {
#if defined(_WIN32)
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    output_ = _dup(1);
    _setmode(output_, _O_BINARY);
    _dup2(2, 1);
    SetStdHandle(STD_OUTPUT_HANDLE, GetStdHandle(STD_ERROR_HANDLE));
#else
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // a parent that was interrupted leaves nothing behind
#endif
    output_ = dup(1);
    dup2(2, 1);
#endif
  }

  void write(const nlohmann::json& line) const {
    const std::string text =
        line.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace) + '\n';
#if defined(_WIN32)
    if (_write(output_, text.data(), static_cast<unsigned>(text.size())) < 0) std::exit(1);
#else
    if (::write(output_, text.data(), text.size()) < 0) std::exit(1);
#endif
  }

 private:
  int output_;
};

struct Result {
  bool ok;
  std::string text;
};

bool step(const Channel& channel, const std::string& name, const std::function<Result()>& work) {
  using Clock = std::chrono::steady_clock;
  channel.write({{"step", name}});
  const Clock::time_point begin = Clock::now();
  const Result result = work();
  const std::chrono::duration<double> taken = Clock::now() - begin;
  channel.write(
      {{"step", name}, {"ok", result.ok}, {"text", result.text}, {"seconds", taken.count()}});
  return result.ok;
}

std::string versionOf(const PyHandle& module) {
  if (!object::pyHasMember(module.get(), "__version__")) return {};
  return textOf(object::pyGetMember(module.get(), "__version__"));
}

// The class of what is pending, which then is no longer, and the last line of its message.
std::string takeError() {
  const PyHandle error = exception::pyErrorFetch();
  const PyHandle type = sequence::pyGetItem(error.get(), 0);
  std::string message = textOf(sequence::pyGetItem(error.get(), 1));
  message.erase(message.find_last_not_of('\n') + 1);
  return textOf(object::pyGetMember(type.get(), "__name__")) + ": " +
         message.substr(message.find_last_of('\n') + 1);
}

// A package that is not installed is no fault; one that is and lacks something is.
Result import(const std::string& name) {
  try {
    return {true, versionOf(module::pyCreateModule(toUtf16(name)))};
  } catch (const InternalPyException&) {
    const std::string said = takeError();
    const bool isAbsent = said.find("No module named '" + name + "'") != std::string::npos;
    return {isAbsent, isAbsent ? "not installed" : said};
  }
}

}  // namespace

int start(const std::string& settings) {
  const auto words = nlohmann::json::parse(settings, nullptr, false);
  const bool areStrings =
      words.is_array() && words.size() == 5 &&
      std::all_of(words.begin(), words.end(), [](const auto& each) { return each.is_string(); });
  if (!areStrings) {
    std::cerr << "pelion start: give version, library, program, home and path as a JSON array\n";
    return wrongUsage;
  }
  std::vector<std::u16string> values;
  for (const auto& word : words) values.push_back(toUtf16(word.get<std::string>()));

  const Channel channel;
  const bool started = step(channel, "start", [&] {
    const int result =
        loader::attemptToLoadPython(values[0], values[1], values[2], values[3], values[4], true);
    return Result{result == 0, result == 0 ? "" : loader::whyNotLoaded()};
  });
  if (!started) return unusable;
  for (const char* name : {"math", "ctypes", "numpy", "pandas"}) {
    step(channel, std::string("import ") + name, [&] { return import(name); });
  }
  step(channel, "close", [] {
    interpreter::pyClose();
    return Result{true, ""};
  });
  return done;
}

}  // namespace pelion
