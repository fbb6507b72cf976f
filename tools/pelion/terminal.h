#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What is printed for people.
namespace pelion {

/// The columns of the terminal that standard output is; 0 when it is none.
std::size_t terminalWidth();

/// Columns that a UTF-8 string takes; combining and double-width characters are not told apart.
std::size_t width(const std::string& text);
std::string padded(const std::string& text, std::size_t columns);

enum class Colour { green, yellow, red, bold };

/// The text in a colour, on a terminal for which `NO_COLOR` is not set.
std::string coloured(const std::string& text, Colour colour);

/// Breaks a text between words so that it fits to the right of `indent` columns; as it is when
/// standard output is no terminal.
std::string wrapped(const std::string& text, std::size_t indent);

/// A path as the user would write it, with "~" for the folder of the user.
std::string shortened(const std::string& path);

/// A line on the terminal which says what is going on, and goes away.
class Progress {
 public:
  Progress() = default;
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void show(const std::string& text);
  void clear();

 private:
  bool shown_ = false;
};

}  // namespace pelion
