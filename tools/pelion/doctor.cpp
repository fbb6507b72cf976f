#include <algorithm>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "commands.h"
#include "pelion_core/host/probe.h"
#include "report_json.h"
#include "terminal.h"

namespace pelion {

using namespace pelion_core::host;

namespace {

constexpr std::size_t subjectWidth = 15;
constexpr std::size_t textIndent = 2 + 8 + subjectWidth;

std::string mark(Level level) {
  switch (level) {
    case Level::passed:
      return coloured(padded("ok", 8), Colour::green);
    case Level::remark:
      return coloured(padded("remark", 8), Colour::yellow);
    default:
      return coloured(padded("failed", 8), Colour::red);
  }
}

std::string duration(double seconds) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(2) << seconds << " s";
  return text.str();
}

void print(const Check& check) {
  std::string text = check.reason;
  if (check.seconds > 0) text += (text.empty() ? "" : ", ") + duration(check.seconds);
  if (check.level != Level::passed) text += std::string(" [") + codeOf(check.verdict) + "]";
  std::cout << "  " << mark(check.level) << padded(check.subject, subjectWidth)
            << wrapped(text, textIndent) << '\n';
  if (!check.remedy.empty()) {
    std::cout << std::string(textIndent, ' ') << wrapped("> " + check.remedy, textIndent + 2)
              << '\n';
  }
}

std::string literal(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

void printSettings(const Settings& settings) {
  const std::pair<const std::string*, const char*> lines[] = {
      {&settings.version, "version"}, {&settings.library, "library"},
      {&settings.program, "program"}, {&settings.home, "home"},
      {&settings.path, "path"},
  };
  std::size_t widest = 0;
  for (const auto& line : lines) widest = std::max(widest, width(literal(*line.first)) + 2);
  std::cout << "const pelion_core::host::Settings python{\n";
  for (const auto& [value, name] : lines) {
    const std::string end = value == &settings.path ? "};" : ",";
    std::cout << "    " << padded(literal(*value) + end, widest) << "  // " << name << '\n';
  }
}

std::string titleOf(const Report& report) {
  const Candidate& candidate = report.candidate;
  const std::string& version = report.version.empty() ? candidate.settings.version : report.version;
  std::string title = version.empty() ? "Python" : "Python " + version;
  for (std::size_t i = 0; i < candidate.found.size(); ++i) {
    title += (i == 0 ? ", found by " : ", ") + candidate.found[i];
  }
  return title;
}

void printReport(const Report& report) {
  std::cout << coloured(titleOf(report), Colour::bold) << '\n';
  for (const Check& check : report.checks) print(check);
  const Check& verdict = report.verdict();
  std::cout << '\n'
            << coloured(verdict.level == Level::failed   ? "It cannot be used: "
                        : verdict.level == Level::remark ? "It can be used, with a remark: "
                                                         : "It can be used.",
                        Colour::bold)
            << (verdict.level == Level::passed ? "" : codeOf(verdict.verdict)) << "\n";
  if (verdict.level != Level::failed) {
    std::cout << '\n';
    printSettings(report.candidate.settings);
  }
}

void printOthers(const std::vector<Report>& others) {
  if (others.empty()) return;
  std::cout << '\n' << coloured("The others", Colour::bold) << '\n';
  for (const Report& report : others) {
    const Check& verdict = report.verdict();
    const Settings& settings = report.candidate.settings;
    const std::string& version = report.version.empty() ? settings.version : report.version;
    const std::string text =
        verdict.level == Level::failed
            ? verdict.reason + " [" + codeOf(verdict.verdict) + "]"
            : (settings.library +
               (report.candidate.environment.empty() ? ""
                                                     : " with " + report.candidate.environment) +
               ": it is found later in the order" +
               (verdict.level == Level::remark ? std::string(" [") + codeOf(verdict.verdict) + "]"
                                               : ""));
    std::cout << "  " << mark(verdict.level) << padded(version, subjectWidth)
              << wrapped(text, textIndent) << '\n';
  }
}

// The first that can be used, or the first; it is taken out of the others.
Report best(std::vector<Report>& reports) {
  auto found = std::find_if(reports.begin(), reports.end(), [](const Report& report) {
    return report.verdict().level != Level::failed;
  });
  if (found == reports.end()) found = reports.begin();
  Report report = std::move(*found);
  reports.erase(found);
  return report;
}

void probeInto(Report& report) {
  if (report.verdict().level == Level::failed) return;
  Progress progress;
  ProbeOptions options;
  options.onStep = [&progress](const std::string& step) { progress.show("trying: " + step); };
  for (Check& check : probe(report.candidate.settings, options)) {
    report.checks.push_back(std::move(check));
  }
}

}  // namespace

int doctor(const DoctorOptions& options) {
  const std::vector<Candidate> candidates =
      options.what.empty() ? discover() : discover(options.what);
  if (candidates.empty()) {
    std::cerr << "pelion: "
              << (options.what.empty() ? "there is no Python in the usual places"
                                       : "no Python " + options.what + " was found")
              << "; install one, with its shared library, or name one that lies elsewhere\n";
    return unusable;
  }
  std::vector<Report> reports;
  {
    Progress progress;
    for (const Candidate& candidate : candidates) {
      progress.show("looking at " + candidate.settings.version);
      reports.push_back(inspect(candidate, Programs::run));
    }
  }
  Report report = best(reports);
  if (options.start) probeInto(report);
  if (options.asJson) {
    auto json = toJson(report);
    json["others"] = nlohmann::ordered_json::array();
    for (const Report& other : reports) json["others"].push_back(toJson(other));
    std::cout << text(json) << '\n';
  } else {
    printReport(report);
    printOthers(reports);
  }
  return report.verdict().level == Level::failed ? unusable : done;
}

}  // namespace pelion
