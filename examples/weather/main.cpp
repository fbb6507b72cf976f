// A host with its own columns of weather: hands them to pandas, takes aggregates back, and has
// matplotlib draw them.

#include <iostream>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "analysis.h"
#include "picture.h"
#include "program.h"
#include "table.h"
#include "weather_csv.h"

namespace {

using namespace pelion_core;
using namespace example;

/// Prints usage reports instead of sending them.
class UsagePrinter : public UsageDataService {
 public:
  UsageResponse logUsage(const UsageEventId& id, const UsageRecord& record,
                         const UsageOptions&) override {
    std::cout << "usage report " << id.eventKey << " of " << id.product << '/'
              << id.applicationComponent << ":\n";
    for (const auto& [key, value] : record.pairs()) {
      const bool* const truth = std::get_if<bool>(&value);
      std::cout << "  " << key << " = "
                << (truth == nullptr ? std::get<std::string>(value)
                    : *truth         ? "true"
                                     : "false")
                << '\n';
    }
    std::cout << '\n';
    return {};
  }
};

void requirePackage(const py::Session& python, const std::string& name) {
  try {
    python.import(name);
  } catch (const py::Error& error) {
    throw Failure(noPackage, "the Python package " + name +
                                 " cannot be used: install it for the Python program in use, or "
                                 "name another one with --program. Python says:\n" +
                                 error.traceback());
  }
}

void printMonths(const std::vector<MonthSummary>& months) {
  std::vector<std::vector<std::string>> rows;
  for (const MonthSummary& month : months) {
    std::vector<std::string> row;
    row.reserve(month.means.size() + 2);
    row.push_back(month.name);
    for (const double mean : month.means) row.push_back(fixed(mean, 1));
    row.push_back(month.wettestDay);
    rows.push_back(std::move(row));
  }
  printTable(std::cout,
             {{"month", Align::left},
              {"rain [mm/day]", Align::right},
              {"high [°C]", Align::right},
              {"low [°C]", Align::right},
              {"wind [m/s]", Align::right},
              {"wettest day", Align::left}},
             rows);
}

void printKinds(const std::vector<KindSummary>& kinds) {
  std::vector<std::vector<std::string>> rows;
  for (const KindSummary& kind : kinds) {
    rows.push_back({kind.name, fixed(kind.days, 0), fixed(kind.meanHigh, 1), fixed(kind.wettest, 1),
                    kind.firstDay, kind.longestWait ? fixed(*kind.longestWait, 0) : "-"});
  }
  printTable(std::cout,
             {{"weather", Align::left},
              {"days", Align::right},
              {"high [°C]", Align::right},
              {"most rain [mm]", Align::right},
              {"first day", Align::left},
              {"longest wait [days]", Align::right}},
             rows);
}

int showWeather(const py::Session& python, const std::string& file, const std::string& picture) {
  const Weather weather = readWeather(file, std::cerr);
  for (const char* package : {"numpy", "pandas", "matplotlib"}) requirePackage(python, package);

  std::cout << file << ": " << weather.dates.size() << " days\n\n";
  const py::Object frame = createFrame(weather);
  printMonths(summariseMonths(python, frame));
  std::cout << '\n';
  printKinds(summariseKinds(frame));
  drawWeather(python, frame, picture);
  std::cout << "\npicture: " << picture << '\n';
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Aggregates a CSV file of daily weather with pandas and draws it with matplotlib.");
  py::Settings settings;
  std::string file;
  std::string picture = "weather.png";
  bool usage = false;
  addPythonOptions(app, settings);
  app.add_option("FILE", file, "columns date,precipitation,temp_max,temp_min,wind,weather")
      ->required();
  app.add_option("--picture", picture, "PNG file to write")->capture_default_str();
  app.add_flag("--usage", usage, "print what the usage report sends");
  if (const auto status = parse(app, argc, argv)) return *status;

  if (usage) setUsageDataService(std::make_shared<UsagePrinter>());
  return runWithPython("weather", settings, [&](py::Session& python) {
    const std::string& version = python.settings().version;
    loader::sendPythonPkgInfo({version.begin(), version.end()}, false, false);
    return showWeather(python, file, picture);
  });
}
