#include <cstddef>
#include <cstdint>

// Nothing is linked against Python, so packagers and tools that read the dependencies of a file
// would not see it. This ELF note says what is opened at run time:
// https://systemd.io/ELF_DLOPEN_METADATA
namespace {

constexpr char content[] =
    R"([{"feature":"python","description":"The Python runtime that the host names",)"
    R"("priority":"recommended","soname":[)"
    R"("libpython3.15.so.1.0","libpython3.14.so.1.0","libpython3.13.so.1.0",)"
    R"("libpython3.12.so.1.0","libpython3.11.so.1.0",)"
    R"("libpython3.10.so.1.0","libpython3.9.so.1.0","libpython3.8.so.1.0",)"
    R"("libpython3.7m.so.1.0","libpython3.6m.so.1.0"]}])";

struct Note {
  std::uint32_t ownerSize;
  std::uint32_t contentSize;
  std::uint32_t type;
  char owner[4];
  char content[(sizeof(::content) + 3) / 4 * 4];
};

template <std::size_t size>
constexpr Note makeNote(const char (&text)[size]) {
  Note note{4, size, 0x407c0c0a, {'F', 'D', 'O', '\0'}, {}};
  for (std::size_t i = 0; i < size; ++i) note.content[i] = text[i];
  return note;
}

[[gnu::used, gnu::retain, gnu::section(".note.dlopen"), gnu::aligned(4)]] constexpr Note note =
    makeNote(content);

}  // namespace
