#include "api/control_blocks.h"

namespace pelion_core::api {

thread_local SpareBlocks spareBlocks = {nullptr, 0, false};

namespace {

// Gives the blocks of a thread back when it ends. A handle that is released later still finds the
// stack full and frees its block.
struct Sweeper {
  ~Sweeper() {
    while (spareBlocks.first != nullptr) ::operator delete(spareBlocks.allocate());
    spareBlocks.count = SpareBlocks::limit;
  }
};

}  // namespace

void SpareBlocks::sweepAtEnd() noexcept {
  thread_local const Sweeper sweeper;
  (void)sweeper;
  spareBlocks.swept = true;
}

}  // namespace pelion_core::api
