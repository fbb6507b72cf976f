#include "pelion_core/host/probe.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <nlohmann/json.hpp>
#include <sstream>

#include "child_process.h"
#include "places.h"

namespace pelion_core::host {
namespace {

#if defined(_WIN32)
constexpr const char* programName = "pelion.exe";
#else
constexpr const char* programName = "pelion";
#endif

std::string findPelion() {
  const fs::path here = pathOf(thisProgram()).parent_path();
  std::vector<fs::path> folders{here, here.parent_path() / "bin"};
  for (fs::path& folder : pathList(variable("PATH"))) folders.push_back(std::move(folder));
  for (const fs::path& folder : folders) {
    if (isFile(folder / programName)) return utf8(folder / programName);
  }
  return {};
}

std::string stringIn(const nlohmann::json& object, const char* key) {
  const bool isThere = object.is_object() && object.contains(key) && object[key].is_string();
  return isThere ? object[key].get<std::string>() : std::string();
}

// What Python said that tells most: a fatal error and its cause, else its last line.
std::string tellingLines(const std::string& errors) {
  std::istringstream lines(errors);
  std::string told;
  std::string last;
  for (std::string line; std::getline(lines, line);) {
    boost::trim(line);
    if (line.empty()) continue;
    last = line;
    const bool tells = boost::starts_with(line, "Fatal Python error") ||
                       (!told.empty() && boost::contains(line, "Error:"));
    if (tells) told += (told.empty() ? "" : "; ") + line;
  }
  return (told.empty() ? last : told).substr(0, 400);
}

// Follows the steps as the child writes them, a JSON object a line: {"step"} when one begins, with
// "ok", "text" and "seconds" when it ends.
class Steps {
 public:
  Steps(const Settings& settings, const ProbeOptions& options)
      : settings_(settings), options_(options) {}

  void read(std::string_view piece) {
    pending_.append(piece);
    for (auto end = pending_.find('\n'); end != std::string::npos; end = pending_.find('\n')) {
      readLine(pending_.substr(0, end));
      pending_.erase(0, end + 1);
    }
  }

  // The step in which the process ended.
  void interrupted(Verdict verdict, const std::string& how) {
    const std::string step = current_.empty() ? "start" : current_;
    Check check = checkOf(step, verdict, settings_, "", "in the step \"" + step + "\": " + how);
    check.seconds = std::chrono::duration<double>(Clock::now() - begun_).count();
    checks_.push_back(std::move(check));
  }

  bool done() const { return done_; }
  std::vector<Check> take() { return std::move(checks_); }

 private:
  using Clock = std::chrono::steady_clock;

  void readLine(const std::string& line) {
    const auto said = nlohmann::json::parse(line, nullptr, false);
    const std::string step = stringIn(said, "step");
    if (step.empty()) return;
    if (!said.contains("ok")) {
      current_ = step;
      begun_ = Clock::now();
      if (options_.onStep) options_.onStep(step);
      return;
    }
    const std::string text = stringIn(said, "text");
    Check check{step, Level::passed, Verdict::usable, text, "", 0};
    if (said["ok"] != true) {
      const bool isStart = step == "start";
      done_ = done_ || isStart;
      check = checkOf(step, isStart ? Verdict::startRefused : Verdict::importFails, settings_, "",
                      text);
    }
    if (said.contains("seconds") && said["seconds"].is_number()) check.seconds = said["seconds"];
    checks_.push_back(std::move(check));
    done_ = done_ || step == "close";
  }

  const Settings& settings_;
  const ProbeOptions& options_;
  std::string pending_;
  std::string current_;
  Clock::time_point begun_ = Clock::now();
  bool done_ = false;
  std::vector<Check> checks_;
};

void addEnd(Steps& steps, const Ended& ended, const ProbeOptions& options) {
  const std::string told = tellingLines(ended.errors);
  const std::string words = told.empty() ? "" : ": " + told;
  const std::string number = std::to_string(ended.number);
  const bool isFatal = boost::contains(ended.errors, "Fatal Python error") &&
                       !boost::contains(ended.errors, "Segmentation fault");
  switch (ended.how) {
    case Ended::How::notStarted:
      break;  // told before
    case Ended::How::byTime:
      steps.interrupted(Verdict::startHangs, "it took longer than " +
                                                 std::to_string(options.limit.count() / 1000) +
                                                 " seconds" + words);
      break;
    case Ended::How::byOutput:
      steps.interrupted(Verdict::startHangs, "it prints without end" + words);
      break;
    case Ended::How::bySignal:
      steps.interrupted(isFatal ? Verdict::startEnds : Verdict::startCrashes,
                        "by " + ended.problem + words);
      break;
    case Ended::How::byStatus:
      if (!steps.done()) steps.interrupted(Verdict::startEnds, "exit status " + number + words);
  }
}

}  // namespace

std::vector<Check> probe(const Settings& settings, const ProbeOptions& options) {
  const std::string pelion = options.pelion.empty() ? findPelion() : options.pelion;
  if (pelion.empty()) {
    return {checkOf("start", Verdict::startUntried, settings, "", "there is no program pelion")};
  }
  const nlohmann::json asked{settings.version, settings.library, settings.program, settings.home,
                             settings.path};
  Steps steps(settings, options);
  Command command;
  command.words = {pelion, "start",
                   asked.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)};
  command.limit = options.limit;
  command.onOutput = [&steps](std::string_view piece) { steps.read(piece); };
  const Ended ended = runProgram(command);
  if (ended.how == Ended::How::notStarted) {
    return {checkOf("start", Verdict::startUntried, settings, "",
                    pelion + " does not run: " + ended.problem)};
  }
  addEnd(steps, ended, options);
  return steps.take();
}

}  // namespace pelion_core::host
