#pragma once

#include "QXExtensionSDK/runtime/NotificationServiceWorker.h"
#include "tests/QXExtensionSDK/ServiceTestKit.h"
#include "tests/support/Test.h"

namespace QXExtensionSDK {

// A processor that does what the test says.
class ScriptedProcessor final : public AsyncProcessing {
 public:
  using Script = std::function<void(QXPlatform::UNMutableNotificationContent&, const ProcessingCompletion&)>;

  explicit ScriptedProcessor(Script script) : script_(std::move(script)) {}

  void process(const std::shared_ptr<const QXPlatform::UNNotificationRequest>&,
               const std::shared_ptr<QXPlatform::UNMutableNotificationContent>& content,
               ProcessingCompletion completion) override {
    script_(*content, completion);
  }
  std::string_view description() const override { return "ScriptedProcessor"; }

 private:
  const Script script_;
};

class ScriptedProvider final : public ModuleProvider {
 public:
  explicit ScriptedProvider(std::vector<ScriptedProcessor::Script> scripts) : scripts_(std::move(scripts)) {}

  std::vector<std::unique_ptr<AsyncProcessing>> processors() const override {
    std::vector<std::unique_ptr<AsyncProcessing>> processors;
    for (const auto& script : scripts_) processors.push_back(std::make_unique<ScriptedProcessor>(script));
    return processors;
  }

 private:
  const std::vector<ScriptedProcessor::Script> scripts_;
};

}  // namespace QXExtensionSDK
