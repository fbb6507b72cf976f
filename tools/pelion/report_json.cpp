#include "report_json.h"

namespace pelion {

using namespace pelion_core::host;

namespace {

const char* nameOf(Level level) {
  return level == Level::passed ? "passed" : level == Level::remark ? "remark" : "failed";
}

}  // namespace

nlohmann::ordered_json toJson(const Report& report) {
  const Settings& settings = report.candidate.settings;
  const Check& verdict = report.verdict();
  nlohmann::ordered_json json{
      {"version", report.version.empty() ? settings.version : report.version},
      {"kind", report.candidate.kind},
      {"found", report.candidate.found},
      {"settings",
       {{"version", settings.version},
        {"library", settings.library},
        {"program", settings.program},
        {"home", settings.home},
        {"path", settings.path}}},
      {"environment", report.candidate.environment},
      {"machines", report.machines},
      {"debug", report.debug},
      {"freeThreaded", report.freeThreaded},
      {"missingNames", report.missingNames},
      {"numpy", report.numpy},
      {"pandas", report.pandas},
      {"verdict", codeOf(verdict.verdict)},
      {"level", nameOf(verdict.level)},
      {"reason", verdict.reason},
      {"remedy", verdict.remedy},
  };
  auto checks = nlohmann::ordered_json::array();
  for (const Check& check : report.checks) {
    checks.push_back({{"subject", check.subject},
                      {"level", nameOf(check.level)},
                      {"verdict", codeOf(check.verdict)},
                      {"reason", check.reason},
                      {"remedy", check.remedy},
                      {"seconds", check.seconds}});
  }
  json["checks"] = std::move(checks);
  return json;
}

std::string text(const nlohmann::ordered_json& json) {
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace pelion
