#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "api/expression.h"

namespace pelion_core::detail {

/// Whether every element of a sequence is an instance of `datetime.<name>`; the first that is not
/// leaves its position, counted from 1.
bool eachIsInstance(Borrowed sequence, const char* name, std::uint64_t& firstBad);

/// The time zone text of a `datetime.datetime`.
std::string timezoneOf(Borrowed datetime);

/// The same for one after the other. The text of a zone that cannot change is asked for once.
class ZoneReader {
 public:
  /// Valid until the next question.
  const std::string& operator()(Borrowed datetime);

 private:
  Reference name_ = str(std::string("tzinfo"));
  std::vector<std::pair<Reference, std::string>> known_;  ///< the zones that keep their text
  std::string text_;                                      ///< of the last one that may not
};

}  // namespace pelion_core::detail
