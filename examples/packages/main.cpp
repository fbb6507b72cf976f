// What is installed on this machine: a C++ host that reads, counts and sorts with Python's standard
// library.

#include <algorithm>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "program.h"
#include "table.h"

namespace {

using namespace example;

struct Item {
  std::string name;
  std::string group;   // a package's section, a time zone's area
  std::string holder;  // a package's maintainer, a time zone's countries
  double size;
};

struct Listing {
  std::string items;
  std::string group;
  std::string holder;
  std::string size;
  int sizeDigits;
  std::vector<Item> all;
};

py::Object readText(const py::Session& python, const std::string& file) {
  return python("pathlib.Path")(file).attr("read_text")(py::kw("encoding", "utf-8"),
                                                        py::kw("errors", "replace"));
}

// A field of a package's paragraph, empty when the paragraph lacks it.
std::string field(const py::Object& paragraph, const char* name) {
  return paragraph[name].as<std::optional<std::string>>().value_or("");
}

double mebibytes(const py::Object& kibibytes) {
  return kibibytes.isNone() ? 0.0 : std::stod(kibibytes.str()) / 1024;
}

Listing installedPackages(const py::Session& python, const py::Object& status) {
  const py::Object parse = python("email.message_from_string");
  const py::Object parseAddress = python("email.utils.parseaddr");
  Listing listing{"packages", "section", "maintainer", "size [MiB]", 1, {}};
  for (const py::Object& paragraph : status.attr("strip")().attr("split")("\n\n")) {
    const py::Object fields = parse(paragraph);
    if (field(fields, "Status") != "install ok installed") continue;
    const auto maintainer = parseAddress(field(fields, "Maintainer"))[0].as<std::string>();
    listing.all.push_back({field(fields, "Package"), field(fields, "Section"), maintainer,
                           mebibytes(fields["Installed-Size"])});
  }
  return listing;
}

Listing timeZones(const py::Object& table) {
  Listing listing{"time zones", "area", "used in", "countries", 0, {}};
  for (const auto& line : table.attr("splitlines")().as<std::vector<std::string>>()) {
    if (line.substr(0, 1) == "#") continue;
    const auto cells = py::Object::of(line).attr("split")("\t").as<std::vector<std::string>>();
    const std::string& zone = cells[2];
    const auto countries = std::count(cells[0].begin(), cells[0].end(), ',') + 1;
    listing.all.push_back(
        {zone, zone.substr(0, zone.find('/')), cells[0], static_cast<double>(countries)});
  }
  return listing;
}

// The groups of all items with the number of their items, the largest group first.
std::vector<std::pair<std::string, std::int64_t>> counted(const py::Session& python,
                                                          const std::vector<Item>& items,
                                                          std::string Item::*key) {
  std::vector<std::string> keys;
  for (const Item& each : items) keys.push_back(each.*key);
  return python("collections.Counter")(keys)
      .attr("most_common")()
      .as<std::vector<std::pair<std::string, std::int64_t>>>();
}

void printGroups(const py::Session& python, const Listing& listing, const std::string& title,
                 std::string Item::*key) {
  struct Total {
    double size = 0;
    const Item* largest = nullptr;
  };
  std::map<std::string, Total> totals;
  for (const Item& each : listing.all) {
    Total& total = totals[each.*key];
    total.size += each.size;
    if (total.largest == nullptr || each.size > total.largest->size) total.largest = &each;
  }

  constexpr std::size_t shown = 8;
  const auto counts = counted(python, listing.all, key);
  std::vector<std::vector<std::string>> rows;
  for (std::size_t i = 0; i < std::min(shown, counts.size()); ++i) {
    const Total& total = totals[counts[i].first];
    rows.push_back({counts[i].first, std::to_string(counts[i].second),
                    fixed(total.size, listing.sizeDigits), total.largest->name});
  }
  std::cout << '\n';
  printTable(std::cout,
             {{title, Align::left},
              {listing.items, Align::right},
              {listing.size, Align::right},
              {"largest", Align::left}},
             rows);
  if (counts.size() > shown) std::cout << "  and " << counts.size() - shown << " more\n";
}

void printListing(const py::Session& python, const std::string& file) {
  const py::Object content = readText(python, file);
  const bool zones = file.size() > 4 && file.substr(file.size() - 4) == ".tab";
  const Listing listing = zones ? timeZones(content) : installedPackages(python, content);
  std::cout << file << ": " << listing.all.size() << ' ' << listing.items << '\n';
  printGroups(python, listing, listing.group, &Item::group);
  printGroups(python, listing, listing.holder, &Item::holder);
}

// The first file that can be read is the one that is shown.
int printFirst(const py::Session& python, const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    try {
      printListing(python, file);
      return EXIT_SUCCESS;
    } catch (const py::Error& error) {
      std::cerr << error.traceback() << "packages: " << file << " cannot be used\n";
    }
  }
  return pythonRaised;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Counts what is installed on this machine, by section and by maintainer.");
  py::Settings settings;
  std::vector<std::string> files{"/var/lib/dpkg/status", "/usr/share/zoneinfo/zone1970.tab"};
  addPythonOptions(app, settings);
  app.add_option("FILE", files,
                 "dpkg status files or zone tables (.tab); the first readable counts");
  if (const auto status = parse(app, argc, argv)) return *status;

  return runWithPython("packages", settings,
                       [&](py::Session& python) { return printFirst(python, files); });
}
