// Not linked against the library: loads and unloads the plugin that is.

#include <gtest/gtest.h>

#include "support/shared_object.h"

namespace {

TEST(Unloading, LeavesNothingOfTheLibraryBehind) {
  for (int life = 0; life < 2; ++life) {
    void* const plugin = shared_object::open(PLUGIN);
    ASSERT_NE(plugin, nullptr);
    EXPECT_TRUE(shared_object::isMapped(LIBRARY));
    EXPECT_EQ(reinterpret_cast<int (*)()>(shared_object::find(plugin, "usePython"))(), 0);
    shared_object::close(plugin);
    ASSERT_FALSE(shared_object::isMapped(LIBRARY));
  }
}

}  // namespace
