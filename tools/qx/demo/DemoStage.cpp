#include "tools/qx/demo/DemoStage.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "AppGroupSDK/AppGroupSDK.h"
#include "QXPlatform/foundation/Date.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/UUID.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "tools/backend/RequestLine.h"
#include "tools/qx/CarouselCommand.h"
#include "tools/qx/HostContainer.h"
#include "tools/qx/SimulatedHostService.h"

namespace qx {

namespace {

namespace fs = std::filesystem;
using AppGroupSDK::DataStoreStatus;
using AppGroupSDK::ExtensionModuleName;
using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

constexpr auto kTimeLimit = std::chrono::seconds(30);
constexpr std::array kModules{ExtensionModuleName::quorixEngagement, ExtensionModuleName::mobileAppMessaging};
constexpr double kSecondsADay = 86400;

fs::path makeOutputDirectory() {
  fs::path path = "qx-demo";
  std::error_code error;
  fs::create_directories(path, error);
  if (error) throw std::runtime_error("./qx-demo cannot be made: " + error.message());
  return path;
}

void writeFile(const fs::path& path, std::string_view text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error(path.string() + " cannot be written: " + std::strerror(errno));
}

std::string appIdOf(ExtensionModuleName module) {
  return std::string(stringValue(module)) + "-demo";
}

AppGroupSDK::DeliveryReceiptsModelStore receiptStore(ExtensionModuleName module) {
  return {module, appIdOf(module)};
}

MessageIds storedMessages(ExtensionModuleName module) {
  MessageIds ids;
  const auto model = receiptStore(module).fetchModuleScopedModelData().value();
  if (!model) return ids;
  for (const auto& receipt : model->pnData()) ids.push_back(receipt.messageId());
  return ids;
}

bool isFor(ExtensionModuleName module, const backend::Request& request) {
  const bool messaging = request.path.find("/mobileapp/") != std::string::npos;
  return messaging == (module == ExtensionModuleName::mobileAppMessaging);
}

void addMessages(const backend::Request& request, MessageIds& ids) {
  const auto body = QXPlatform::parseJSON(request.body);
  if (!body) return;
  for (const QXPlatform::Value& node : (*body)["nodes"].elements()) {
    for (const QXPlatform::Value& item : node["items"].elements()) {
      ids.emplace_back(item["event"]["messageId"].string().value_or("?"));
    }
  }
}

bool saveHostRecords(const std::string& baseUrl) {
  using namespace AppGroupSDK;
  const AppDeviceInfo device(baseUrl, "demo-app", "demo-device", "demo-access-token", "5.2.0",
                             "demo-subscriber-token", "demo-tenant", "demo-session");
  bool saved = AppDeviceInfoStore().saveModelData(device) == DataStoreStatus::success;
  saved &= FeatureConfigDetailStore().saveModelData(FeatureConfigDetail(
               DeliveryReceiptConfig(FeatureFlagStatus::enabled))) == DataStoreStatus::success;
  for (const auto module : kModules) {
    saved &= AppIdProvider().storeAppId(appIdOf(module), module) == DataStoreStatus::success;
    DeliveryReceiptPNModel receipt(QXPlatform::makeUUIDString(), "yesterday", std::nullopt, "promo",
                                   QXPlatform::Date::now().secondsSince1970 - kSecondsADay, "{}",
                                   PNStatus::failed);
    saved &= receiptStore(module).saveModuleScopedModelData(DeliveryReceiptsModel({std::move(receipt)})) ==
             DataStoreStatus::success;
  }
  return saved;
}

}  // namespace

DemoRoot::DemoRoot() {
  std::error_code error;
  std::string path = (fs::temp_directory_path(error) / "qx-demo-XXXXXX").string();
  if (error || mkdtemp(path.data()) == nullptr)
    throw std::runtime_error("no temporary directory can be made");
  path_ = path;
  setenv("QX_APP_GROUPS_ROOT", path.c_str(), 1);
  setenv("TMPDIR", path.c_str(), 1);
}

DemoRoot::~DemoRoot() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

DemoStage::DemoStage(const SimulatorOptions& simulator)
    : simulator_(simulator),
      directory_(makeOutputDirectory()),
      server_({.body = R"({"code": 200, "message": "accepted"})"}),
      extension_(
          [level = simulator.logLevel] {
            return std::make_shared<SimulatedHostService>(
                HostBehaviour{.logLevel = level, .changes = {}, .raiseReason = {}, .hang = false});
          },
          kTimeLimit) {}

Result<fs::path> DemoStage::setUpHost() const {
  auto container = makeContainer();
  if (container && !saveHostRecords(server_.url())) return Error{"the host's records cannot be saved"};
  return container;
}

Result<DemoPush> DemoStage::push(const std::string& name, const Dictionary& payload) {
  const auto request = QXPlatform::notificationRequestFromJSON(payload);
  if (!request) return request.error();
  write(name + ".push.json", payload);
  DemoPush push;
  for (const auto module : kModules) {
    push.receipts[module].storedBefore = storedMessages(module);
  }
  const std::size_t requestsBefore = server_.requests().size();
  const auto result = extension_.run(*request);
  write(name + ".shown.json", result.toJSON());
  if (result.outcome != QXPlatform::ServiceExtensionResult::Outcome::delivered) {
    return Error{"the time limit came before the notification"};
  }
  push.shown = result.content;
  const auto requests = server_.requests();
  for (auto& [module, trail] : push.receipts) {
    for (std::size_t index = requestsBefore; index < requests.size(); ++index) {
      if (isFor(module, requests[index])) addMessages(requests[index], trail.received);
    }
    trail.storedAfter = storedMessages(module);
  }
  return push;
}

std::optional<Error> DemoStage::drawPanels(const std::string& name) const {
  CarouselOptions options;
  options.files = {(directory_ / (name + ".push.json")).string()};
  options.png = (directory_ / (name + ".png")).string();
  options.all = true;
  return drawCarousel(simulator_, options);
}

void DemoStage::writeRequests() const {
  std::string lines;
  for (const auto& request : server_.requests()) lines += backend::requestLine(request) + "\n";
  writeFile(directory_ / "requests.ndjson", lines);
}

void DemoStage::write(const std::string& name, const QXPlatform::Value& value) const {
  const auto text = QXPlatform::writeJSON(value, QXPlatform::JSONStyle::pretty);
  writeFile(directory_ / name, (text ? *text : value.description()) + "\n");
}

}  // namespace qx
