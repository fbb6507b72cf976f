// Libraries that are cut short, or lack a name, are refused and leave nothing loaded.

#include <cctype>
#include <fstream>

#include "stand_in_test.h"

namespace {

const std::string symbols[] = {
#define STAND_IN_FUNCTION(result, name, parameters, arguments, failure) #name,
#define STAND_IN_TYPE(name) #name "_Type",
#include "symbols.def"
};

void expectRefused(const shared_object::Path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
  EXPECT_EQ(load(path), -1) << path;
  EXPECT_FALSE(loader::isPythonLoaded() || shared_object::isMapped(path)) << path;
  std::filesystem::remove(path);
}

TEST(Unusable, LibrariesAreRefused) {
  std::ifstream file(standIn, std::ios::binary);
  const std::string content(std::istreambuf_iterator<char>(file), {});
  const auto folder = std::filesystem::temp_directory_path() / std::to_string(getpid());
  std::filesystem::create_directory(folder);
  EXPECT_EQ(load(""), -1);
  EXPECT_EQ(load("libc.so.6"), -1);
  // Within its headers, and its segments.
  for (const std::size_t size : std::vector<std::size_t>{0, 40, 100, 4096, 40000})
    expectRefused(folder / ("cut_at_" + std::to_string(size)), content.substr(0, size));

  for (const std::string& symbol : symbols) {
    std::string lacking = content;
    const std::string terminated = symbol + '\0';
    for (std::size_t at = 0; (at = lacking.find(terminated, at)) != lacking.npos; ++at) {
      // The linker keeps a name that ends another one in there.
      const char before = lacking[at - 1];
      if (!std::isalnum(before) && before != '_') lacking[at] = 'X';
    }
    EXPECT_NE(lacking, content) << symbol;
    expectRefused(folder / ("without_" + symbol), lacking);
  }
  EXPECT_TRUE(std::filesystem::remove(folder));
}

}  // namespace
