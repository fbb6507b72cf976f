#include "weather_csv.h"

#include <algorithm>
#include <boost/tokenizer.hpp>
#include <charconv>
#include <cmath>
#include <fstream>
#include <ostream>
#include <stdexcept>

#include "program.h"

namespace example {
namespace {

using Cells = std::vector<std::string>;

Cells split(std::string line) {
  if (!line.empty() && line.back() == '\r') line.pop_back();
  const boost::tokenizer<boost::escaped_list_separator<char>> cells(line);
  return Cells(cells.begin(), cells.end());
}

/// Where the columns stand in a line.
class Header {
 public:
  Header(const std::string& file, Cells names) : file_(file), names_(std::move(names)) {
    date = find("date");
    weather = find("weather");
    std::transform(numericColumns.begin(), numericColumns.end(), numbers.begin(),
                   [this](const char* name) { return find(name); });
  }

  std::size_t width() const { return names_.size(); }

  std::size_t date;
  std::size_t weather;
  std::array<std::size_t, numericColumns.size()> numbers;

 private:
  std::size_t find(const std::string& name) const {
    const auto place = std::find(names_.begin(), names_.end(), name);
    if (place == names_.end()) {
      throw Failure(badInput, file_ + " has no column \"" + name + "\"");
    }
    return static_cast<std::size_t>(place - names_.begin());
  }

  std::string file_;
  Cells names_;
};

/// What is wrong with one row.
class BadRow : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

double number(const std::string& cell, const char* column) {
  double value = 0;
  const char* const end = cell.data() + cell.size();
  const auto result = std::from_chars(cell.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) {
    throw BadRow(std::string(column) + " \"" + cell + "\" is not a number");
  }
  return value;
}

int daysInMonth(int year, int month) {
  constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return days[month - 1] + (month == 2 && leap ? 1 : 0);
}

int digits(const std::string& cell, std::size_t start, std::size_t count) {
  int value = 0;
  for (std::size_t i = start; i < start + count; ++i) {
    if (cell[i] < '0' || cell[i] > '9') return -1;
    value = value * 10 + (cell[i] - '0');
  }
  return value;
}

// "2012/01/31" or "2012-01-31" with dashes.
std::string isoDate(const std::string& cell) {
  if (cell.size() == 10 && cell[4] == cell[7] && (cell[4] == '-' || cell[4] == '/')) {
    const int year = digits(cell, 0, 4);
    const int month = digits(cell, 5, 2);
    const int day = digits(cell, 8, 2);
    if (year >= 0 && month >= 1 && month <= 12 && day >= 1 && day <= daysInMonth(year, month)) {
      return cell.substr(0, 4) + '-' + cell.substr(5, 2) + '-' + cell.substr(8, 2);
    }
  }
  throw BadRow("\"" + cell + "\" is not a date");
}

void append(Weather& weather, const Header& header, const Cells& cells) {
  if (cells.size() != header.width()) {
    throw BadRow(std::to_string(cells.size()) + " cells instead of " +
                 std::to_string(header.width()));
  }
  const std::string date = isoDate(cells[header.date]);
  std::array<double, numericColumns.size()> numbers;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    numbers[i] = number(cells[header.numbers[i]], numericColumns[i]);
  }
  // Only now: a row comes in as a whole or not at all.
  weather.dates.push_back(date);
  for (std::size_t i = 0; i < numbers.size(); ++i) weather.numbers[i].push_back(numbers[i]);
  weather.kinds.push_back(cells[header.weather]);
}

}  // namespace

Weather readWeather(const std::string& file, std::ostream& complaints) {
  std::ifstream stream(file);
  std::string line;
  if (!std::getline(stream, line)) throw Failure(badInput, file + " cannot be read or is empty");
  const Header header(file, split(line));

  Weather weather;
  for (int lineNumber = 2; std::getline(stream, line); ++lineNumber) {
    try {
      append(weather, header, split(line));
    } catch (const std::runtime_error& problem) {  // also a quoting that cannot be split
      complaints << file << ':' << lineNumber << ": row left out, " << problem.what() << '\n';
    }
  }
  if (weather.dates.empty()) throw Failure(badInput, file + " has no row that can be used");
  return weather;
}

}  // namespace example
