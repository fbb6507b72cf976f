#include "terminal.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sstream>
#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <io.h>
#include <windows.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace pelion {
namespace {

#if defined(_WIN32)
bool isTerminal(int descriptor) { return _isatty(descriptor) != 0; }

std::size_t columns() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) return 0;
  return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

bool knowsColours() {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  constexpr DWORD virtualTerminal = 4;
  return GetConsoleMode(output, &mode) && SetConsoleMode(output, mode | virtualTerminal);
}
#else
bool isTerminal(int descriptor) { return isatty(descriptor) == 1; }

std::size_t columns() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool knowsColours() {
  const char* const terminal = std::getenv("TERM");
  return terminal != nullptr && std::string(terminal) != "dumb";
}
#endif

constexpr int standardOutput = 1;
constexpr int standardError = 2;

}  // namespace

std::size_t terminalWidth() {
  if (!isTerminal(standardOutput)) return 0;
  const std::size_t wide = columns();
  return wide == 0 ? 80 : std::max<std::size_t>(wide, 40);
}

std::size_t width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

std::string padded(const std::string& text, std::size_t wide) {
  const std::size_t own = width(text);
  return own < wide ? text + std::string(wide - own, ' ') : text;
}

std::string coloured(const std::string& text, Colour colour) {
  const char* const refused = std::getenv("NO_COLOR");
  static const bool wanted =
      isTerminal(standardOutput) && knowsColours() && (refused == nullptr || *refused == '\0');
  if (!wanted) return text;
  const char* const code = colour == Colour::green    ? "32"
                           : colour == Colour::yellow ? "33"
                           : colour == Colour::red    ? "31"
                                                      : "1";
  return std::string("\x1b[") + code + 'm' + text + "\x1b[0m";
}

std::string wrapped(const std::string& text, std::size_t indent) {
  const std::size_t room = terminalWidth();
  if (room == 0) return text;
  std::string result;
  std::size_t column = indent;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const bool fits = column + 1 + width(word) <= room;
    if (!result.empty() && !fits) {
      result += '\n' + std::string(indent, ' ');
      column = indent;
    } else if (!result.empty()) {
      result += ' ';
      ++column;
    }
    result += word;
    column += width(word);
  }
  return result;
}

std::string shortened(const std::string& path) {
  const char* const home = std::getenv("HOME");
  const std::string user = home != nullptr ? home : "";
  const bool below = user.size() > 1 && path.compare(0, user.size() + 1, user + '/') == 0;
  return below ? '~' + path.substr(user.size()) : path;
}

void Progress::show(const std::string& text) {
  if (!isTerminal(standardError)) return;
  std::cerr << "\r" << padded(text + " ...", 40) << std::flush;
  shown_ = true;
}

void Progress::clear() {
  if (shown_) std::cerr << '\r' << std::string(40, ' ') << '\r' << std::flush;
  shown_ = false;
}

}  // namespace pelion
