// Runs one code block of the documentation, named by the argument, and compares what it prints with
// what it promises.

#include "run_block.h"

#include <iostream>
#include <sstream>

#include "../real/real_python.h"

namespace {

using namespace pelion_core;
using namespace pelion_core::api;

std::string pendingError() {
  const PyHandle error = exception::pyErrorFetch();
  return object::pyGetChars(object::pyStr(error.get()).get());
}

int runInside(void (*fragment)()) {
  if (real::load() != 0) return 2;
  int status = 0;
  try {
    fragment();
    if (exception::pyErrorOccurred()) throw InternalPyException("A Python error is left pending.");
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << ' ' << pendingError() << '\n';
    status = 1;
  }
  interpreter::pyClose();
  return status;
}

}  // namespace

int main(int, char** arguments) {
  for (const Block& block : allBlocks()) {
    if (block.name != arguments[1]) continue;
    std::ostringstream printed;
    std::streambuf* const output = std::cout.rdbuf(printed.rdbuf());
    const int status = block.program != nullptr ? block.program() : runInside(block.fragment);
    std::cout.rdbuf(output);
    if (status != 0 || printed.str() == block.promised) return status;
    std::cerr << "printed:\n" << printed.str() << "promised:\n" << block.promised;
    return 1;
  }
  return 3;
}
