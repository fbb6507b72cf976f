#pragma once

#include <exception>
#include <string>

constexpr char nothingThrown[] = "nothing thrown";

/// The message of what `action` throws.
template <class Action>
std::string thrownBy(Action action) {
  try {
    action();
    return nothingThrown;
  } catch (const std::exception& failure) {
    return failure.what();
  }
}
