// Not linked against the library: loads and unloads the plugin that is.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

#if defined(_WIN32)
void* open(const std::string& path) { return LoadLibraryA(path.c_str()); }
void* find(void* plugin, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(plugin), name));
}
void close(void* plugin) { FreeLibrary(static_cast<HMODULE>(plugin)); }
bool isMapped(const std::string& path) {
  return GetModuleHandleA(std::filesystem::path(path).filename().string().c_str()) != nullptr;
}
#else
void* open(const std::string& path) { return dlopen(path.c_str(), RTLD_NOW); }
void* find(void* plugin, const char* name) { return dlsym(plugin, name); }
void close(void* plugin) { dlclose(plugin); }
bool isMapped(const std::string& path) {
  void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}
#endif

TEST(Unloading, LeavesNothingOfTheLibraryBehind) {
  for (int life = 0; life < 2; ++life) {
    void* const plugin = open(PLUGIN);
    ASSERT_NE(plugin, nullptr);
    EXPECT_TRUE(isMapped(LIBRARY));
    const auto usePython = reinterpret_cast<int (*)()>(find(plugin, "usePython"));
    EXPECT_EQ(usePython(), 0);
    close(plugin);
    ASSERT_FALSE(isMapped(LIBRARY));
  }
}

}  // namespace
