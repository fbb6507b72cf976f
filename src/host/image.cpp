#include "image.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>

namespace pelion_core::host {
namespace {

// What is read of one file at most; the tables of a debug build have 1 MB.
constexpr std::uint64_t mostRead = 64U << 20U;
constexpr std::uint32_t mostSlices = 16;

struct Machine {
  const char* name;
  unsigned bits;
  std::uint32_t elf;
  std::uint32_t pe;
  std::uint32_t machO;
};

constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
constexpr Machine knownMachines[] = {
    {"x86-64", 64, 62, 0x8664, 0x01000007},
    {"x86", 32, 3, 0x14c, 7},
    {"aarch64", 64, 183, 0xaa64, 0x0100000c},
    {"arm", 32, 40, 0x1c4, 12},
    {"riscv64", 64, 243, 0x5064, none},
    {"ppc64", 64, 21, none, 0x01000012},
    {"s390x", 64, 22, none, none},
    {"loongarch64", 64, 258, 0x6264, none},
};

std::string machineName(std::uint32_t Machine::*code, std::uint32_t value) {
  for (const Machine& machine : knownMachines) {
    if (machine.*code == value) return machine.name;
  }
  return "machine " + std::to_string(value);
}

unsigned usualBits(const std::string& name) {
  for (const Machine& machine : knownMachines) {
    if (machine.name == name) return machine.bits;
  }
  return 0;
}

// Thrown and caught in this file.
struct Malformed {
  const char* why;
};

constexpr const char* cutOff = "it is cut off";

/// Numbers and strings at places of a file, whichever way its bytes are ordered.
class Bytes {
 public:
  explicit Bytes(std::istream& stream) : stream_(stream) {
    stream_.clear();
    stream_.seekg(0, std::ios::end);
    const std::streamoff end = stream_.tellg();
    size_ = end < 0 ? 0 : static_cast<std::uint64_t>(end);
  }

  std::uint64_t size() const { return size_; }

  void bigEndian(bool yes) { bigEndian_ = yes; }

  std::string block(std::uint64_t offset, std::uint64_t size) {
    if (offset > size_ || size_ - offset < size) throw Malformed{cutOff};
    spend(size);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    stream_.clear();
    stream_.seekg(static_cast<std::streamoff>(offset));
    stream_.read(bytes.data(), static_cast<std::streamsize>(size));
    if (stream_.gcount() != static_cast<std::streamsize>(size)) throw Malformed{cutOff};
    return bytes;
  }

  std::uint64_t number(const std::string& bytes, std::uint64_t offset, unsigned size) const {
    if (offset > bytes.size() || bytes.size() - offset < size) throw Malformed{cutOff};
    std::uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i) {
      const std::uint64_t place = offset + (bigEndian_ ? i : size - 1 - i);
      value = value << 8U | static_cast<unsigned char>(bytes[static_cast<std::size_t>(place)]);
    }
    return value;
  }
  std::uint32_t number32(const std::string& bytes, std::uint64_t offset) const {
    return static_cast<std::uint32_t>(number(bytes, offset, 4));
  }
  std::uint32_t number16(const std::string& bytes, std::uint64_t offset) const {
    return static_cast<std::uint32_t>(number(bytes, offset, 2));
  }

  std::string stringAt(const std::string& table, std::uint64_t offset) {
    if (offset >= table.size()) throw Malformed{"its table of names makes no sense"};
    std::string text = table.c_str() + offset;  // ends at the latest where the table does
    spend(text.size());
    return text;
  }

 private:
  void spend(std::uint64_t size) {
    if (size > left_) throw Malformed{"its tables are too large for a library"};
    left_ -= size;
  }

  std::istream& stream_;
  std::uint64_t size_ = 0;
  std::uint64_t left_ = mostRead;
  bool bigEndian_ = false;
};

constexpr const char* versionName = "Py_Version";

// --- ELF ----------------------------------------------------------------------------------------

struct Section {
  std::uint64_t type, address, offset, size, link;
};

class ElfReader {
 public:
  ElfReader(Bytes& bytes, Image& image) : bytes_(bytes), image_(image) {}

  void read() {
    image_.system = "Linux";
    const std::string head = bytes_.block(0, 64);
    wide_ = head[4] == 2;
    bytes_.bigEndian(head[5] == 2);
    std::string name = machineName(&Machine::elf, bytes_.number16(head, 18));
    const unsigned bits = wide_ ? 64 : 32;
    if (usualBits(name) != 0 && usualBits(name) != bits) name += " (32-bit)";
    if (head[5] == 2 && name != "s390x") name += " (big-endian)";
    image_.machines = {name};
    constexpr std::uint32_t sharedObject = 3;
    const std::uint32_t type = bytes_.number16(head, 16);
    if (type != sharedObject) {
      image_.problem = type == 2 ? "it is a program" : "it is an object file or a memory image";
      return;
    }
    readSections(head);
    for (const Section& section : sections_) {
      constexpr std::uint64_t dynamicSymbols = 11;
      if (section.type == dynamicSymbols) readSymbols(section);
    }
  }

 private:
  std::uint64_t word(const std::string& block, std::uint64_t narrow, std::uint64_t wide) const {
    return bytes_.number(block, wide_ ? wide : narrow, wide_ ? 8 : 4);
  }

  void readSections(const std::string& head) {
    const std::uint64_t start = word(head, 32, 40);
    const std::uint64_t size = wide_ ? 64 : 40;
    const std::uint64_t count = bytes_.number16(head, wide_ ? 60 : 48);
    if (start == 0 || count == 0) return;
    const std::string table = bytes_.block(start, count * size);
    for (std::uint64_t place = 0; place < table.size(); place += size) {
      sections_.push_back({bytes_.number(table, place + 4, 4), word(table, place + 12, place + 16),
                           word(table, place + 16, place + 24), word(table, place + 20, place + 32),
                           bytes_.number(table, place + (wide_ ? 40U : 24U), 4)});
    }
  }

  void readSymbols(const Section& section) {
    if (section.link >= sections_.size()) throw Malformed{"its sections make no sense"};
    const Section& namesOf = sections_[static_cast<std::size_t>(section.link)];
    const std::string symbols = bytes_.block(section.offset, section.size);
    const std::string names = bytes_.block(namesOf.offset, namesOf.size);
    const std::uint64_t size = wide_ ? 24 : 16;
    for (std::uint64_t place = 0; place + size <= symbols.size(); place += size) {
      const std::uint64_t home = bytes_.number16(symbols, place + (wide_ ? 6U : 14U));
      const std::uint64_t info = bytes_.number(symbols, place + (wide_ ? 4U : 12U), 1);
      const std::uint64_t binding = info >> 4U;
      if (home == 0 || binding == 0 || binding > 2) continue;  // elsewhere, or local
      std::string name = bytes_.stringAt(names, bytes_.number32(symbols, place));
      if (name == versionName) readVersion(word(symbols, place + 4, place + 8), home);
      image_.names.push_back(std::move(name));
    }
    image_.namesKnown = true;
  }

  void readVersion(std::uint64_t address, std::uint64_t home) {
    if (home >= sections_.size()) return;
    const Section& section = sections_[static_cast<std::size_t>(home)];
    const unsigned size = wide_ ? 8 : 4;
    const std::string value = bytes_.block(section.offset + (address - section.address), size);
    image_.pythonVersion = static_cast<unsigned long>(bytes_.number(value, 0, size));
  }

  Bytes& bytes_;
  Image& image_;
  bool wide_ = false;
  std::vector<Section> sections_;
};

// --- PE -----------------------------------------------------------------------------------------

class PeReader {
 public:
  PeReader(Bytes& bytes, Image& image) : bytes_(bytes), image_(image) {}

  void read() {
    image_.system = "Windows";
    const std::uint64_t start = bytes_.number32(bytes_.block(0x3c, 4), 0);
    const std::string head = bytes_.block(start, 24);
    if (head.compare(0, 4, std::string("PE\0\0", 4)) != 0) throw Malformed{"it is a DOS program"};
    image_.machines = {machineName(&Machine::pe, bytes_.number16(head, 4))};
    constexpr std::uint32_t isLibrary = 0x2000;
    if ((bytes_.number16(head, 22) & isLibrary) == 0) image_.problem = "it is a program";
    const std::uint64_t count = bytes_.number16(head, 6);
    const std::uint64_t optionalSize = bytes_.number16(head, 20);
    const std::string optional = bytes_.block(start + 24, optionalSize);
    sections_ = bytes_.block(start + 24 + optionalSize, count * sectionSize);
    requireWhole();
    constexpr std::uint32_t wide = 0x20b;
    const std::uint64_t directories = bytes_.number16(optional, 0) == wide ? 112 : 96;
    const std::uint32_t exported = bytes_.number32(optional, directories);
    if (exported != 0) readExports(exported);
    image_.namesKnown = true;
  }

 private:
  static constexpr std::uint64_t sectionSize = 40;

  struct Range {
    std::uint64_t offset, size;  // in the file
  };

  // Where an address of the loaded image lies in the file, with what follows it in its section.
  Range rangeOf(std::uint64_t address) const {
    for (std::uint64_t place = 0; place < sections_.size(); place += sectionSize) {
      const std::uint64_t from = bytes_.number32(sections_, place + 12);
      const std::uint64_t size = bytes_.number32(sections_, place + 16);
      if (address >= from && address - from < size) {
        return {bytes_.number32(sections_, place + 20) + (address - from), size - (address - from)};
      }
    }
    throw Malformed{"its sections make no sense"};
  }

  void requireWhole() const {
    for (std::uint64_t place = 0; place < sections_.size(); place += sectionSize) {
      const std::uint64_t size = bytes_.number32(sections_, place + 16);
      if (size != 0 && bytes_.number32(sections_, place + 20) + size > bytes_.size()) {
        throw Malformed{cutOff};
      }
    }
  }

  std::string array(std::uint64_t address, std::uint64_t size) {
    return bytes_.block(rangeOf(address).offset, size);
  }

  void readExports(std::uint32_t exported) {
    const std::string directory = array(exported, 40);
    const std::uint64_t count = bytes_.number32(directory, 24);
    const std::string addresses = array(bytes_.number32(directory, 32), count * 4);
    if (count == 0) return;
    // The names follow one another from the first one on.
    const std::uint32_t first = bytes_.number32(addresses, 0);
    const Range range = rangeOf(first);
    const std::string names = bytes_.block(range.offset, range.size);
    for (std::uint64_t i = 0; i < count; ++i) {
      image_.names.push_back(
          bytes_.stringAt(names, std::uint64_t{bytes_.number32(addresses, i * 4)} - first));
      if (image_.names.back() == versionName) readVersion(directory, i);
    }
  }

  void readVersion(const std::string& directory, std::uint64_t index) {
    const std::string ordinal = array(bytes_.number32(directory, 36) + index * 2, 2);
    const std::uint64_t place =
        bytes_.number32(directory, 28) + std::uint64_t{bytes_.number16(ordinal, 0)} * 4;
    const std::string value = array(bytes_.number32(array(place, 4), 0), 4);
    image_.pythonVersion = bytes_.number32(value, 0);
  }

  Bytes& bytes_;
  Image& image_;
  std::string sections_;
};

// --- Mach-O -------------------------------------------------------------------------------------

class MachOReader {
 public:
  MachOReader(Bytes& bytes, Image& image) : bytes_(bytes), image_(image) {}

  void readFat() {
    bytes_.bigEndian(true);
    const std::uint32_t count = bytes_.number32(bytes_.block(4, 4), 0);
    if (count == 0 || count > mostSlices) throw Malformed{"it is no library"};  // a Java class?
    const std::string table = bytes_.block(8, std::uint64_t{count} * 20);
    for (std::uint32_t i = 0; i < count; ++i) {
      bytes_.bigEndian(true);
      readThin(bytes_.number32(table, i * 20 + 8));
    }
  }

  void readThin(std::uint64_t start) {
    image_.system = "macOS";
    const std::string magic = bytes_.block(start, 4);
    bytes_.bigEndian(magic[0] == '\xfe');
    const bool wide = (bytes_.number32(magic, 0) & 1U) != 0;
    const std::uint64_t headSize = wide ? 32 : 28;
    const std::string head = bytes_.block(start, headSize);
    image_.machines.push_back(machineName(&Machine::machO, bytes_.number32(head, 4)));
    constexpr std::uint32_t dynamicLibrary = 6;
    if (bytes_.number32(head, 12) != dynamicLibrary) image_.problem = "it is a program";
    const std::uint64_t count = bytes_.number32(head, 16);
    const std::string commands = bytes_.block(start + headSize, bytes_.number32(head, 20));
    std::uint64_t place = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
      constexpr std::uint32_t symbolTable = 2;
      const std::uint32_t size = bytes_.number32(commands, place + 4);
      if (bytes_.number32(commands, place) == symbolTable) {
        readSymbols(start, commands, place, wide);
      }
      if (size < 8 || size > commands.size()) throw Malformed{"its load commands make no sense"};
      place += size;
    }
  }

 private:
  void readSymbols(std::uint64_t start, const std::string& commands, std::uint64_t place,
                   bool wide) {
    const std::uint64_t size = wide ? 16 : 12;
    const std::uint64_t count = bytes_.number32(commands, place + 12);
    const std::string symbols =
        bytes_.block(start + bytes_.number32(commands, place + 8), count * size);
    const std::string names = bytes_.block(start + bytes_.number32(commands, place + 16),
                                           bytes_.number32(commands, place + 20));
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t type = bytes_.number(symbols, i * size + 4, 1);
      const bool external = (type & 0x01U) != 0;
      const bool defined = (type & 0x0eU) != 0 && (type & 0xe0U) == 0;
      if (!external || !defined) continue;
      const std::string name = bytes_.stringAt(names, bytes_.number32(symbols, i * size));
      if (!name.empty()) image_.names.push_back(name.substr(1));  // C names begin with "_"
    }
    image_.namesKnown = true;
  }

  Bytes& bytes_;
  Image& image_;
};

// What a file is that is no library, for people who named it.
std::string describe(const std::string& start) {
  if (start.empty()) return "it is empty";
  if (start.compare(0, 7, "!<arch>") == 0) return "it is an archive for static linking";
  if (start.compare(0, 2, "#!") == 0) return "it is a script";
  const bool text = std::all_of(start.begin(), start.end(), [](unsigned char c) {
    return c >= 0x20 || c == '\n' || c == '\r' || c == '\t';
  });
  return text ? "it is a text file" : "it has no header of a library";
}

void readAny(Bytes& bytes, const std::string& magic, Image& image) {
  if (magic ==
      "\x7f"
      "ELF") {
    ElfReader(bytes, image).read();
  } else if (magic.compare(0, 2, "MZ") == 0) {
    PeReader(bytes, image).read();
  } else if (magic == "\xca\xfe\xba\xbe") {
    MachOReader(bytes, image).readFat();
  } else if (magic == "\xcf\xfa\xed\xfe" || magic == "\xce\xfa\xed\xfe" ||
             magic == "\xfe\xed\xfa\xcf" || magic == "\xfe\xed\xfa\xce") {
    MachOReader(bytes, image).readThin(0);
  } else {
    throw Malformed{nullptr};
  }
}

}  // namespace

Image readImage(std::istream& file) {
  Image image;
  std::string start(32, '\0');
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  start.resize(static_cast<std::size_t>(file.gcount()));
  Bytes bytes(file);
  try {
    readAny(bytes, start.substr(0, 4), image);
  } catch (const Malformed& malformed) {
    image.problem = malformed.why != nullptr ? malformed.why : describe(start);
  }
  std::sort(image.names.begin(), image.names.end());
  return image;
}

const Image& ownImage() {
  static const Image own = [] {
    Image image;
#if defined(_WIN32)
    image.system = "Windows";
#elif defined(__APPLE__)
    image.system = "macOS";
#else
    image.system = "Linux";
#endif
#if defined(__x86_64__) || defined(_M_X64)
    image.machines = {sizeof(void*) == 8 ? "x86-64" : "x86-64 (32-bit)"};
#elif defined(__i386__) || defined(_M_IX86)
    image.machines = {"x86"};
#elif defined(__aarch64__) || defined(_M_ARM64)
    image.machines = {"aarch64"};
#elif defined(__arm__)
    image.machines = {"arm"};
#elif defined(__riscv) && __riscv_xlen == 64
    image.machines = {"riscv64"};
#elif defined(__powerpc64__)
    image.machines = {"ppc64"};
#elif defined(__s390x__)
    image.machines = {"s390x"};
#elif defined(__loongarch64)
    image.machines = {"loongarch64"};
#else
#error "Name this machine as knownMachines does."
#endif
    return image;
  }();
  return own;
}

bool Image::fits() const {
  const Image& own = ownImage();
  return system == own.system &&
         std::find(machines.begin(), machines.end(), own.machines.front()) != machines.end();
}

bool Image::exports(const char* name) const {
  return std::binary_search(names.begin(), names.end(), name);
}

std::string Image::target() const {
  std::string text;
  for (const std::string& machine : machines) text += (text.empty() ? "" : " and ") + machine;
  return system == ownImage().system ? text : system + " on " + text;
}

}  // namespace pelion_core::host
