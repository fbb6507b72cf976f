#include <algorithm>
#include <iostream>

#include "commands.h"
#include "report_json.h"
#include "terminal.h"

namespace pelion {

using namespace pelion_core::host;

namespace {

std::vector<std::string> cellsOf(const Report& report) {
  const auto orDash = [](const std::string& text) { return text.empty() ? "-" : text; };
  std::string version = report.version.empty() ? report.candidate.settings.version : report.version;
  if (report.debug) version += " debug";
  if (report.freeThreaded) version += " free-threaded";
  return {orDash(version), report.candidate.kind, orDash(report.numpy), orDash(report.pandas),
          codeOf(report.verdict().verdict)};
}

std::string placeOf(const Report& report) {
  const Settings& settings = report.candidate.settings;
  if (!settings.library.empty()) return settings.library;
  return settings.program.empty() ? settings.home : settings.program;
}

Colour colourOf(Level level) {
  return level == Level::passed   ? Colour::green
         : level == Level::remark ? Colour::yellow
                                  : Colour::red;
}

// Each row in one line; on a terminal that is too narrow the paths are in lines of their own.
void printTable(const std::vector<Report>& reports) {
  std::vector<std::vector<std::string>> rows{{"VERSION", "KIND", "NUMPY", "PANDAS", "VERDICT"}};
  std::vector<std::string> libraries{"LIBRARY"};
  std::vector<std::string> environments{"ENVIRONMENT"};
  for (const Report& report : reports) {
    rows.push_back(cellsOf(report));
    libraries.push_back(shortened(placeOf(report)));
    environments.push_back(shortened(report.candidate.environment));
  }
  const bool anyEnvironment = std::any_of(environments.begin() + 1, environments.end(),
                                          [](const auto& each) { return !each.empty(); });
  if (!anyEnvironment) environments[0].clear();
  std::vector<std::size_t> widths(rows[0].size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], width(row[i]));
  }
  std::size_t libraryWidth = 0;
  std::size_t total = 0;
  for (const std::string& library : libraries) {
    libraryWidth = std::max(libraryWidth, width(library));
  }
  for (const std::size_t each : widths) total += each + 2;
  std::size_t widest = 0;
  for (const std::string& place : environments) {
    widest = std::max(widest, total + libraryWidth + 2 + width(place));
  }
  const bool isNarrow = terminalWidth() != 0 && widest > terminalWidth();

  for (std::size_t i = 0; i < rows.size(); ++i) {
    std::string line;
    for (std::size_t column = 0; column + 1 < widths.size(); ++column) {
      line += padded(rows[i][column], widths[column]) + "  ";
    }
    const std::string verdict = padded(rows[i].back(), isNarrow ? 0 : widths.back());
    line += i == 0 ? verdict : coloured(verdict, colourOf(reports[i - 1].verdict().level));
    if (isNarrow) {
      std::cout << line << '\n';
      const std::string indent(widths[0] + 2, ' ');
      if (i != 0) std::cout << indent << libraries[i] << '\n';
      if (i != 0 && !environments[i].empty()) {
        std::cout << indent << "environment " << environments[i] << '\n';
      }
    } else {
      const bool hasMore = !environments[i].empty();
      std::cout << line << "  " << (hasMore ? padded(libraries[i], libraryWidth) : libraries[i])
                << (hasMore ? "  " : "") << environments[i] << '\n';
    }
  }
}

}  // namespace

int list(bool asJson) {
  std::vector<Report> reports;
  for (const Candidate& candidate : discover()) reports.push_back(inspect(candidate));
  if (asJson) {
    auto all = nlohmann::ordered_json::array();
    for (const Report& report : reports) all.push_back(toJson(report));
    std::cout << text(all) << '\n';
  } else if (reports.empty()) {
    std::cout << "There is no Python in the usual places. Install one, with its shared library.\n";
  } else {
    printTable(reports);
  }
  const bool any = std::any_of(reports.begin(), reports.end(), [](const Report& report) {
    return report.verdict().level != Level::failed;
  });
  return any ? done : unusable;
}

}  // namespace pelion
