#include <unordered_set>

#include "pelion_core/loader/loader.h"
#include "platform/process_registry.h"
#include "platform/text.h"
#include "platform/usage_data.h"

namespace pelion_core {
namespace {

/// The keys of the reports already submitted.
struct TavricCache {
  std::unordered_set<std::string> keys;
};

void reportOnce(const std::string& version, bool outOfProcess) {
  const std::string language = "Python";
  const std::string mode = outOfProcess ? "outOfProcess" : "inProcess";
  const std::string attribute = "NA";

  auto& cache = platform::registry::getOrCreate<TavricCache>(platform::RegistryScope::Engine);
  // Before anything is sent: a report that fails is not repeated.
  const bool isNew =
      cache.keys.insert(language + "#" + version + "#" + mode + "#" + attribute).second;
  if (!isNew) return;

  UsageRecord record;
  record.addText("language", language);
  record.addText("langVersion", version);
  record.addBool("outOfProcess", outOfProcess);
  record.addText("attribute", attribute);
  platform::logUsage({"QX_EXT_INTERFACES", "QX", "QX_EXT"}, record, UsageOptions());
}

}  // namespace
}  // namespace pelion_core

namespace loader {

void sendPythonPkgInfo(const std::u16string& version, bool outOfProcess, bool suppress) {
  if (suppress) return;
  try {
    pelion_core::reportOnce(pelion_core::platform::toUtf8(version), outOfProcess);
  } catch (...) {
    // A report must never disturb the host that makes it.
  }
}

}  // namespace loader
