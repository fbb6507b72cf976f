#include "platform/usage_data.h"

namespace pelion_core {
namespace {

using Service = std::shared_ptr<UsageDataService>;

// Never destroyed: a static of the host may still report while the process ends.
Service& theService() {
  static Service& service = *new Service;
  return service;
}

}  // namespace

UsageDataService::~UsageDataService() = default;

void setUsageDataService(std::shared_ptr<UsageDataService> service) {
  theService() = std::move(service);
}

namespace platform {

UsageResponse logUsage(const UsageEventId& id, const UsageRecord& record,
                       const UsageOptions& options) {
  const Service service = theService();  // shared, since it may replace itself while it is called
  return service != nullptr ? service->logUsage(id, record, options) : UsageResponse{};
}

}  // namespace platform
}  // namespace pelion_core
