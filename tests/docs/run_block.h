#pragma once

#include <string>
#include <vector>

/// A code block of the documentation.
struct Block {
  std::string name;
  std::string promised;  ///< what it says that it prints
  int (*program)();      ///< a whole one, which loads Python itself, or null
  void (*fragment)();    ///< the body of a function that finds Python loaded, or null
};

const std::vector<Block>& allBlocks();
