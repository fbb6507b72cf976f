#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace pelion_core::host {

/// A program to run, with nothing on its standard input, in no window, in a group of its own.
struct Command {
  std::vector<std::string> words;  ///< UTF-8; the first is the program's path
  bool ownVariables = false;       ///< with the few variables that a program needs, not the user's
  std::chrono::milliseconds limit{10000};
  std::size_t mostOutput = 1U << 20U;                        ///< of either stream; more ends it
  std::function<void(std::string_view)> onOutput = nullptr;  ///< gets the standard output in pieces
};

/// What became of it. Whatever it had started and left is ended with it.
struct Ended {
  enum class How { notStarted, byStatus, bySignal, byTime, byOutput };
  How how = How::notStarted;
  int number = 0;       ///< the exit status, the signal, or on Windows the exception
  std::string problem;  ///< why it did not start, or the signal in words
  std::string output;
  std::string errors;
};

Ended runProgram(const Command& command);

/// Whether a `Command` with `ownVariables` keeps this variable of the process.
bool isKeptVariable(std::string_view name);

/// The path of the running program.
std::string thisProgram();

}  // namespace pelion_core::host
