// What is installed on this machine: a C++ host that reads, counts and sorts with Python's standard
// library.

#include <pelion_core/pelion_core.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "find_python.h"
#include "host.h"
#include "python_values.h"
#include "table.h"

namespace {

using namespace pelion_core;
using namespace pelion_core::api;
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

PyHandle readText(const std::string& file) {
  const PyHandle path = callByName(u"py.pathlib.Path", {text(file)});
  return callMethod(path, "read_text", {},
                    {{text(u"encoding"), text(u"utf-8")}, {text(u"errors"), text(u"replace")}});
}

// A field of a package's paragraph, empty when the paragraph lacks it.
std::string field(const PyHandle& paragraph, const char* name) {
  const PyHandle value = item(paragraph, text(name));
  return object::pyIsNone(value.get()) ? std::string() : textOf(value);
}

double mebibytes(const PyHandle& kibibytes) {
  return static_cast<double>(integerOf(module::pyInvokeInt(kibibytes.get()))) / 1024;
}

Listing installedPackages(const PyHandle& status) {
  const PyHandle parse = fetch::fetch(u"py.email.message_from_string");
  const PyHandle parseAddress = fetch::fetch(u"py.email.utils.parseaddr");

  Listing listing{"packages", "section", "maintainer", "size [MiB]", 1, {}};
  const PyHandle paragraphs = callMethod(callMethod(status, "strip"), "split", {text(u"\n\n")});
  forEach(paragraphs, [&](const PyHandle& paragraph) {
    const PyHandle fields = object::pyInvoke(parse.get(), PyArguments{paragraph}, PyKeywords{});
    if (field(fields, "Status") != "install ok installed") return;

    const PyHandle address = text(field(fields, "Maintainer"));
    const PyHandle parts = object::pyInvoke(parseAddress.get(), PyArguments{address}, PyKeywords{});
    const PyHandle size = item(fields, text("Installed-Size"));
    const bool sized = !object::pyIsNone(size.get());
    listing.all.push_back({field(fields, "Package"), field(fields, "Section"),
                           textOf(item(parts, 0)), sized ? mebibytes(size) : 0.0});
  });
  return listing;
}

Listing timeZones(const PyHandle& table) {
  Listing listing{"time zones", "area", "used in", "countries", 0, {}};
  forEach(callMethod(table, "splitlines"), [&](const PyHandle& line) {
    if (textOf(line).substr(0, 1) == "#") return;
    const PyHandle cells = callMethod(line, "split", {text(u"\t")});
    const std::string zone = textOf(item(cells, 2));
    const PyHandle countries = callMethod(item(cells, 0), "split", {text(u",")});
    listing.all.push_back({zone, zone.substr(0, zone.find('/')), textOf(item(cells, 0)),
                           static_cast<double>(sequence::pySequenceLength(countries.get()))});
  });
  return listing;
}

// The groups of all items with the number of their items, the largest group first.
std::vector<std::pair<std::string, std::int64_t>> counted(const std::vector<Item>& items,
                                                          std::string Item::*key) {
  PyArguments keys;
  keys.reserve(items.size());
  for (const Item& each : items) keys.push_back(text(each.*key));

  const PyHandle counter = callByName(u"py.collections.Counter", {sequence::pyTupleCreate(keys)});
  const PyHandle second = callByName(u"py.operator.itemgetter", {primitive::pyCreateInt(1)});
  const PyHandle sorted =
      callByName(u"py.sorted", {mapping::pyMappingGetItems(counter.get())},
                 {{text(u"key"), second}, {text(u"reverse"), primitive::pyCreateBool(true)}});

  std::vector<std::pair<std::string, std::int64_t>> counts;
  forEach(sorted, [&](const PyHandle& pair) {
    counts.emplace_back(textOf(item(pair, 0)), integerOf(item(pair, 1)));
  });
  return counts;
}

void printGroups(const Listing& listing, const std::string& title, std::string Item::*key) {
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
  const auto counts = counted(listing.all, key);
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

void printListing(const std::string& file) {
  const PyHandle content = readText(file);
  const bool zones = file.size() > 4 && file.substr(file.size() - 4) == ".tab";
  const Listing listing = zones ? timeZones(content) : installedPackages(content);
  std::cout << file << ": " << listing.all.size() << ' ' << listing.items << '\n';
  printGroups(listing, listing.group, &Item::group);
  printGroups(listing, listing.holder, &Item::holder);
}

// The first file that can be read is the one that is shown.
int printFirst(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    try {
      printListing(file);
      return EXIT_SUCCESS;
    } catch (const InternalPyException& exception) {
      std::cerr << takeErrorText(exception) << "packages: " << file << " cannot be used\n";
    }
  }
  return pythonRaised;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Counts what is installed on this machine, by section and by maintainer.");
  PythonSettings settings;
  std::vector<std::string> files{"/var/lib/dpkg/status", "/usr/share/zoneinfo/zone1970.tab"};
  addPythonOptions(app, settings);
  app.add_option("FILE", files,
                 "dpkg status files or zone tables (.tab); the first readable counts");
  if (const auto status = parse(app, argc, argv)) return *status;

  return runWithPython("packages", settings,
                       [&](const PythonSettings&) { return printFirst(files); });
}
