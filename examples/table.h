#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace example {

enum class Align { left, right };

struct Column {
  std::string title;
  Align align;
};

/// Prints rows of UTF-8 cells under their titles, each column as wide as its longest cell.
void printTable(std::ostream& out, const std::vector<Column>& columns,
                const std::vector<std::vector<std::string>>& rows);

/// A number with a fixed count of digits after the point.
std::string fixed(double value, int digits);

}  // namespace example
