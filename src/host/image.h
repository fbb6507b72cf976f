#pragma once

#include <istream>
#include <string>
#include <vector>

namespace pelion_core::host {

/// What the header of a library or a program says about it.
struct Image {
  std::string problem;  ///< why it is neither, or cannot be read; empty when it is one
  std::string system;   ///< "Linux" (any system with ELF), "Windows" or "macOS"
  std::vector<std::string> machines;  ///< "x86-64"; several in a file for several machines
  bool namesKnown = false;            ///< whether the table of exported names was there
  std::vector<std::string> names;     ///< the exported names, sorted
  unsigned long pythonVersion = 0;    ///< the value of `Py_Version`, 0x030b02f0 for 3.11.2; or 0

  bool fits() const;                     ///< whether it is for the system and machine of this code
  bool exports(const char* name) const;  ///< whether the name is among `names`
  std::string target() const;            ///< "x86-64", or with its system when that is another one
};

/// The system and machine that this code was compiled for, with nothing exported.
const Image& ownImage();

/// Reads headers of ELF, PE and Mach-O files. Whatever the bytes are, it reads a bounded part of
/// them and throws nothing but std::bad_alloc.
Image readImage(std::istream& file);

}  // namespace pelion_core::host
