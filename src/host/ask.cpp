#include "ask.h"

#include <boost/algorithm/string/trim.hpp>
#include <sstream>

#include "child_process.h"

namespace pelion_core::host {
namespace {

// What a sitecustomize prints comes before it.
constexpr const char* mark = "pelion_core asks:";

constexpr const char* question =
#include "ask_py.h"
    ;

std::string nextLine(std::istream& lines) {
  std::string line;
  std::getline(lines, line);
  return line.substr(0, line.find('\r'));
}

// "3.11" of "3.11.2".
std::string minorVersion(const std::string& version) {
  return version.substr(0, version.find('.', version.find('.') + 1));
}

std::string lastLine(const std::string& text) {
  const std::string trimmed = boost::trim_copy(text);
  return trimmed.substr(trimmed.find_last_of('\n') + 1).substr(0, 200);
}

}  // namespace

Answer ask(const std::string& program) {
  Command command;
  command.words = {program, "-I", "-c", question, mark};  // -I: without the user's own modules
  command.ownVariables = true;
  const Ended ended = runProgram(command);
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(command.limit).count();
  Answer answer;
  answer.verdict = Verdict::programFails;
  const auto place = ended.output.rfind(mark);
  switch (ended.how) {
    case Ended::How::notStarted:
      answer.detail = ended.problem;
      break;
    case Ended::How::byTime:
      answer.verdict = Verdict::programHangs;
      answer.detail = std::to_string(seconds) + " seconds";
      break;
    case Ended::How::byOutput:
      answer.detail = "it prints without end";
      break;
    case Ended::How::bySignal:
      answer.detail = "it crashed (" + ended.problem + ")";
      break;
    case Ended::How::byStatus:
      if (ended.number != 0) {
        const std::string words = lastLine(ended.errors);
        answer.detail =
            "exit status " + std::to_string(ended.number) + (words.empty() ? "" : ", " + words);
      } else if (place == std::string::npos) {
        answer.detail = "it printed something else";
      } else {
        std::istringstream lines(ended.output.substr(place));
        nextLine(lines);
        answer.settings.version = minorVersion(nextLine(lines));
        answer.settings.program = nextLine(lines);
        answer.settings.home = nextLine(lines);
        answer.settings.library = nextLine(lines);
        answer.verdict = Verdict::usable;
      }
  }
  return answer;
}

}  // namespace pelion_core::host
