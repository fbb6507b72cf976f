#pragma once

/// @file
/// A runtime library that stands before the real one: it exports the names of the lists, forwards
/// each call, can make one fail, and keeps account of the references and the lock that its caller
/// holds. The real runtime must be in the process's global scope before the shim is opened, so that
/// it and its extension modules never find the shim's names: only the library under test does.
/// Reach the account through the exported `shim_account`.

#include <cstdint>
#include <string>

namespace shim {

struct Account {
  int failing = 0;          ///< which call that can fail does so, 1 being the next; 0: none
  bool withError = true;    ///< whether a failing call sets a Python error
  std::string failed;       ///< the call that did
  bool reader = false;      ///< whether that one reports by value, so that its caller goes on
  std::int64_t calls = 0;   ///< all that were made
  std::int64_t owned = 0;   ///< references given to the caller and not yet taken back
  std::int64_t locked = 0;  ///< how often the lock was taken and not given back
};

using GetAccount = Account* (*)();  ///< the type of the exported `shim_account`

}  // namespace shim
