#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "AppGroupSDK/ExtensionModuleName.h"
#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/notifications/ServiceExtensionHost.h"
#include "tools/backend/LoopbackServer.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

using MessageIds = std::vector<std::string>;

// One module's receipts around a push, by the messages that they are for.
struct ReceiptTrail {
  MessageIds storedBefore;
  MessageIds received;  // by the back end, meanwhile
  MessageIds storedAfter;
};

using ReceiptTrails = std::map<AppGroupSDK::ExtensionModuleName, ReceiptTrail>;

struct DemoPush {
  QXPlatform::NotificationProperties shown;
  ReceiptTrails receipts;
};

// A directory of this process for what goes with the demonstration: the containers, and whatever is put into
// the system's temporary directory, such as thumbnails.
class DemoRoot {
 public:
  // Throws std::runtime_error when it cannot be made. REQUIRES: no other thread runs.
  DemoRoot();
  ~DemoRoot();
  DemoRoot(const DemoRoot&) = delete;
  DemoRoot& operator=(const DemoRoot&) = delete;

 private:
  std::filesystem::path path_;
};

// Where the demonstration plays: a container and a back end of its own, gone with this object, and the
// directory for what stays. What cannot be made or written is a std::runtime_error.
class DemoStage {
 public:
  explicit DemoStage(const SimulatorOptions& simulator);
  DemoStage(const DemoStage&) = delete;
  DemoStage& operator=(const DemoStage&) = delete;

  const backend::LoopbackServer& server() const { return server_; }
  // ./qx-demo
  const std::filesystem::path& directory() const { return directory_; }

  // The host application's records, and a receipt for each module that an earlier push has left.
  QXPlatform::Result<std::filesystem::path> setUpHost() const;

  // Sends a push over the air through the service extension. Leaves <name>.push.json and <name>.shown.json.
  QXPlatform::Result<DemoPush> push(const std::string& name, const QXPlatform::Dictionary& payload);

  // Draws each panel of the carousel that was pushed under that name, as <name>-0.png and so on.
  std::optional<QXPlatform::Error> drawPanels(const std::string& name) const;

  // Leaves every request that the back end has received in requests.ndjson.
  void writeRequests() const;

 private:
  void write(const std::string& name, const QXPlatform::Value& value) const;

  const SimulatorOptions simulator_;
  const std::filesystem::path directory_;
  const DemoRoot root_;
  const backend::LoopbackServer server_;
  QXPlatform::ServiceExtensionHost extension_;
};

}  // namespace qx
