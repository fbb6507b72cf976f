#pragma once

#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "pelion_core/platform/export.h"

/// @file
/// The usage-data service as a sink that the host provides. Without one, reports go nowhere. All
/// strings are UTF-8.

namespace pelion_core {

/// What happened, and in which part of which product.
struct UsageEventId {
  std::string eventKey;              ///< what happened
  std::string product;               ///< the product that reports
  std::string applicationComponent;  ///< the part of it
};

/// Pairs of a key and a text or a truth value, in the order in which they were added.
class UsageRecord {
 public:
  /// A text or a truth value.
  using Value = std::variant<std::string, bool>;

  // Two names, since a literal given to overloads on std::string and bool would be taken as a bool.
  /// Adds a pair with a text.
  void addText(std::string key, std::string value) { add(std::move(key), std::move(value)); }
  /// Adds a pair with a truth value.
  void addBool(std::string key, bool value) { add(std::move(key), value); }

  /// The pairs, in the order in which they were added.
  const std::vector<std::pair<std::string, Value>>& pairs() const { return pairs_; }

 private:
  void add(std::string key, Value value) { pairs_.emplace_back(std::move(key), std::move(value)); }

  std::vector<std::pair<std::string, Value>> pairs_;
};

/// How to submit a report. There is nothing to choose yet.
struct UsageOptions {};

/// What the service returns. The library ignores it.
struct UsageResponse {};

/// The sink. An exception that leaves `logUsage` is swallowed and the report is not repeated.
class PELION_CORE_EXPORT UsageDataService {
 public:
  virtual ~UsageDataService();

  /// Submits one report. Called on the thread that reports.
  virtual UsageResponse logUsage(const UsageEventId& id, const UsageRecord& record,
                                 const UsageOptions& options) = 0;
};

/// Replaces the service, which the library shares from here on; null for none. A service still set
/// when the process ends is not destroyed. Not to be called while a report is made on another
/// thread.
PELION_CORE_EXPORT void setUsageDataService(std::shared_ptr<UsageDataService> service);

}  // namespace pelion_core
