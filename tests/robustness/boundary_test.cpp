// Libraries that cannot be loaded, or not be used, leave no trace: no instance, no mapping, no
// descriptor, and whatever was loaded before as it was.

#include <gtest/gtest.h>
#include <pelion_core/pelion_core.h>
#include <unistd.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>

namespace {

namespace fs = std::filesystem;

std::vector<std::string> symbols() {
  return {
#define FAKE_FUNCTION(result, name, parameters, arguments, failure) #name,
#include "every_function.def"
#define PELION_PYTHON_TYPE(name) #name "_Type",
#include "pelion_core/loader/c_api/python_types.def"
  };
}

class Boundary : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "boundary.XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder = name;
    fs::permissions(folder, fs::perms::all);
    std::ifstream file(FAKE_RUNTIME, std::ios::binary);
    runtime.assign(std::istreambuf_iterator<char>(file), {});
  }
  void TearDown() override { fs::remove_all(folder); }

  std::u16string write(const std::string& name, const std::string& content) {
    const fs::path path = folder / name;
    std::ofstream(path, std::ios::binary) << content;
    return path.u16string();
  }

  /// The runtime under a path of its own, with every occurrence of `symbol` spelt otherwise.
  std::u16string lacking(const std::string& symbol) {
    std::string content = runtime;
    const std::string terminated = symbol + '\0';
    std::size_t changed = 0;
    for (std::size_t at = 0; (at = content.find(terminated, at)) != content.npos; ++at) {
      // The linker keeps a name that ends another one in there.
      const char before = content[at - 1];
      if (std::isalnum(before) || before == '_') continue;
      content[at] = 'X';
      ++changed;
    }
    EXPECT_GT(changed, 0U) << symbol;
    return write("lib" + symbol + ".so", content);
  }

  /// Files that are mapped and descriptors that are open.
  static std::multiset<std::string> traces() {
    std::multiset<std::string> all;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
      const std::size_t path = line.find('/');
      if (path != line.npos) all.insert(line.substr(path));
    }
    for (const auto& each : fs::directory_iterator("/proc/self/fd")) all.insert(each.path());
    return all;
  }

  static int load(const std::u16string& library) {
    return loader::attemptToLoadPython(u"3.11", library, u"/prog", u"/home", u"", true);
  }

  void expectRefused(const std::u16string& library, const std::string& what) {
    python::IPythonAPI* const before = loader::getAPI();
    const auto tracesBefore = traces();
    EXPECT_EQ(load(library), -1) << what;
    EXPECT_EQ(loader::getAPI(), before) << what;
    EXPECT_EQ(traces(), tracesBefore) << what;
  }

  void expectEachRefused() {
    std::string other = runtime;
    other[18] = other[18] == 62 ? '\xb7' : 62;  // e_machine
    const std::pair<const char*, std::u16string> files[] = {
        {"empty", u""},
        {"blank", u" "},
        {"missing", u"/no/such/library.so"},
        {"no Python", u"libc.so.6"},
        {"folder", folder.u16string()},
        {"text", write("text.so", "no library\n")},
        {"nothing in it", write("nothing.so", "")},
        {"half a header", write("half.so", runtime.substr(0, 40))},
        {"without its headers", write("headers.so", runtime.substr(0, 100))},
        {"without its segments", write("segments.so", runtime.substr(0, 4096))},
        {"cut in a segment", write("cut.so", runtime.substr(0, 10000))},
        {"other machine", write("other.so", other)},
        {"archive", write("archive.a", "!<arch>\n")},
        {"4096 characters", u"/" + std::u16string(4095, u'x')},
        {"path of 4096 characters", std::u16string(2048, u'.').replace(0, 1, u"/") + u"/x"},
        {"ill-formed", folder.u16string() + u"/\xD800.so"},
        {"no text at all", u"\xDC00\xD800"},
        {"zero inside", std::u16string(u"/no\0such.so", 11)},
    };
    for (const auto& [what, path] : files) expectRefused(path, what);

    const std::u16string secret = write("secret.so", runtime);
    fs::permissions(folder / "secret.so", fs::perms::none);
    const bool isRoot = geteuid() == 0;  // who may read everything
    if (isRoot && seteuid(65534) != 0) FAIL();
    expectRefused(secret, "not readable");
    if (isRoot && seteuid(0) != 0) FAIL();

    for (const std::string& symbol : symbols()) expectRefused(lacking(symbol), symbol);
  }

  fs::path folder;
  std::string runtime;
};

TEST_F(Boundary, NothingUnusableLeavesATrace) {
  EXPECT_EQ(symbols().size(), 87U);
  expectEachRefused();
  EXPECT_FALSE(loader::isPythonLoaded());

  ASSERT_EQ(load(write("libwhole.so", runtime)), 0);
  pelion_core::api::APIAccessor();
  expectEachRefused();
  EXPECT_TRUE(pelion_core::api::interpreter::pyIsOpen());
}

}  // namespace
