#include "table.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace example {
namespace {

// Characters, not bytes; combining and double-width ones are not told apart.
std::size_t width(const std::string& utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

}  // namespace

void printTable(std::ostream& out, const std::vector<Column>& columns,
                const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::string> titles;
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    titles.push_back(columns[i].title);
    widths.push_back(width(columns[i].title));
    for (const auto& row : rows) widths[i] = std::max(widths[i], width(row[i]));
  }

  const auto printRow = [&](const std::vector<std::string>& row) {
    std::string line;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const std::string fill(widths[i] - width(row[i]), ' ');
      line += "  " + (columns[i].align == Align::right ? fill + row[i] : row[i] + fill);
    }
    out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
  };
  printRow(titles);
  for (const auto& row : rows) printRow(row);
}

std::string fixed(double value, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << value;
  return text.str();
}

}  // namespace example
