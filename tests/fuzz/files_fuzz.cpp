// What is read of the files of strangers: headers of libraries, and the text beside them. Whatever
// the bytes are, what is found stands in them.

#include <algorithm>
#include <sstream>

#include "files.h"
#include "host.h"
#include "image.h"
#include "installation.h"

using namespace fuzz;
using namespace pelion_core::host;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const auto stands = [&bytes](const std::string& part) {
    return bytes.find(part) != std::string::npos;
  };

  std::istringstream file(bytes);
  const Image image = readImage(file);
  check(std::is_sorted(image.names.begin(), image.names.end()), "sorted");
  check(std::all_of(image.names.begin(), image.names.end(), stands), "an exported name");
  check(!image.problem.empty() || !image.machines.empty(), "a machine or a problem");

  for (const auto& [key, value] : environmentConfig(bytes)) {
    check(stands(value), "a value of pyvenv.cfg");
  }
  check(stands(buildVariable(bytes, "LIBDIR")), "a build variable");
  check(stands(metadataField(bytes, "Version")), "a field of metadata");
  check(stands(versionNumber(bytes, 3)), "a version");
  buildDetails(bytes);
  check(namesLibrary(bytes) || !buildName(bytes).debug || stands("d") || stands("D"), "a build");
  return 0;
}
