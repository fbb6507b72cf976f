#include <stdexcept>

#include "stand_in_test.h"

namespace {

/// Collects what the library would send.
class Sink : public UsageDataService {
 public:
  UsageResponse logUsage(const UsageEventId& id, const UsageRecord& record,
                         const UsageOptions&) override {
    lines += id.eventKey + " " + id.product + " " + id.applicationComponent;
    for (const auto& [key, value] : record.pairs()) {
      const bool* const flag = std::get_if<bool>(&value);
      lines += " " + key + "=" + (flag ? *flag ? "true" : "false" : std::get<std::string>(value));
    }
    throw std::runtime_error("no network");
  }

  std::string lines;
};

TEST(Usage, IsReportedOnceForEachVersionAndMode) {
  loader::sendPythonPkgInfo(u"3.0", false, false);  // nobody listens, and it counts as reported
  const auto sink = std::make_shared<Sink>();
  setUsageDataService(sink);
  for (int i = 0; i < 2; ++i) {
    loader::sendPythonPkgInfo(u"3.0", false, false);
    loader::sendPythonPkgInfo(u"3.11", false, false);
    loader::sendPythonPkgInfo(u"3.11", true, false);
    loader::sendPythonPkgInfo(u"3.12", true, true);
  }
  setUsageDataService(nullptr);
  const std::string event = "QX_EXT_INTERFACES QX QX_EXT language=Python langVersion=3.11 ";
  EXPECT_EQ(sink->lines,
            event + "outOfProcess=false attribute=NA" + event + "outOfProcess=true attribute=NA");
}

}  // namespace
