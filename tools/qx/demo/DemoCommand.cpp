#include "tools/qx/demo/DemoCommand.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/JSON.h"
#include "tools/backend/Panels.h"
#include "tools/qx/CarouselCommand.h"
#include "tools/qx/RawDeflate.h"
#include "tools/qx/Results.h"
#include "tools/qx/StandardErrorLogSink.h"
#include "tools/qx/demo/DemoReport.h"
#include "tools/qx/demo/DemoStage.h"

namespace qx {

namespace {

using AppGroupSDK::ExtensionModuleName;
using QXPlatform::Dictionary;
using QXPlatform::Value;

constexpr auto kEngagement = ExtensionModuleName::quorixEngagement;
constexpr auto kMessaging = ExtensionModuleName::mobileAppMessaging;

// One step of the demonstration; the later ones build on the earlier ones.
struct DemoStep {
  std::string_view title;
  DemoFinding (*run)(DemoStage& stage);
};

DemoFinding failed(std::string reason) {
  return {.notes = {}, .receipts = {}, .failure = std::move(reason)};
}

// Remembers the first thing that is not as it should be.
void expect(DemoFinding& finding, bool holds, std::string_view what) {
  if (!holds && !finding.failure) finding.failure = std::string("expected ").append(what);
}

std::string inQuotes(std::string_view text) {
  return std::string("\"").append(text).append("\"");
}

// The beginning of a value's JSON: enough to see what became of a push.
std::string inBrief(const Value& value) {
  constexpr std::size_t kShown = 72;
  if (value.isNull()) return "-";
  const std::string text = value.string() ? inQuotes(*value.string()) : value.description();
  return text.size() <= kShown ? text : text.substr(0, kShown) + "...";
}

Dictionary alert(std::string_view title, std::string_view body) {
  return {{"alert", Dictionary{{"title", title}, {"body", body}}}};
}

// A carousel with a panel for every image of the back end.
Dictionary carousel(const DemoStage& stage) {
  std::vector<Value> panels;
  for (const backend::Panel& panel : backend::panels()) {
    const std::string name(panel.name.substr(0, panel.name.find('.')));
    panels.push_back(Dictionary{
        {"id", name},
        {"md", Dictionary{{"ul", stage.server().url("/files/").append(panel.name)},
                          {"at", Dictionary{{"tx", "A picture of the " + name}}}}},
        {"ti", Dictionary{{"tx", "The " + name}}},
        {"sti", Dictionary{{"tx", "Panel " + std::to_string(panels.size() + 1)}}},
        {"ac", std::vector<Value>{Dictionary{{"t", "2"}, {"ul", "https://example.com/" + name}}}}});
  }
  return {{"vt", Dictionary{{"t", "0"}, {"tms", 3000}, {"it", panels}}}};
}

std::filesystem::path drawing(const DemoStage& stage, std::size_t panel) {
  return stage.directory() / ("carousel-" + std::to_string(panel) + ".png");
}

DemoFinding setUpHost(DemoStage& stage) {
  const auto container = stage.setUpHost();
  if (!container) return failed(container.error().message);
  return {.notes = {"container  " + container->string(), "back end   " + stage.server().url(),
                    "One receipt of yesterday waits for each module."},
          .receipts = {},
          .failure = {}};
}

DemoFinding pushCarousel(DemoStage& stage) {
  const std::string plain = *QXPlatform::writeJSON(carousel(stage), QXPlatform::JSONStyle::compact);
  const std::string packed = QXPlatform::encodeBase64(deflateRaw(plain));
  const auto push = stage.push("carousel", {{"aps", alert("Four views", "Swipe through them")},
                                            {"_sid", "VTQX"},
                                            {"_m", "carousel"},
                                            {"_mt", "promo"},
                                            {"_r", "request-1"},
                                            {"_co", QXPlatform::encodeBase64("1:3:")},
                                            {"_pb", Dictionary{{"campaign", "demo"}}},
                                            {"$_rf", packed}});
  if (!push) return failed(push.error().message);
  DemoFinding finding;
  finding.receipts = push->receipts;
  finding.notes = {
      "before  $_rf = " + inBrief(packed), "after   $_rf = " + inBrief(push->shown.userInfo["$_rf"]),
      "        _rf  = " + inBrief(push->shown.userInfo["_rf"]),
      std::to_string(packed.size()) + " bytes of rich features became " + std::to_string(plain.size()),
      "shown as " + inQuotes(push->shown.title) + " with " + std::to_string(push->shown.attachments.size()) +
          " attachment"};
  expect(finding, push->shown.userInfo["_rf"] == Value(carousel(stage)), "the inflated carousel under _rf");
  expect(finding, push->shown.attachments.size() == 1, "the first panel's image as thumbnail");
  for (const auto& [module, trail] : push->receipts) {
    expect(finding, trail.received == MessageIds{"yesterday", "carousel"},
           "the receipts of yesterday and of this push at the back end");
    expect(finding, trail.storedAfter.empty(), "no receipt left");
  }
  return finding;
}

DemoFinding drawCarousel(DemoStage& stage) {
  const std::size_t count = backend::panels().size();
  DemoFinding finding;
  if (!hasCarousel()) {
    finding.leftOut = "the carousel is not in this build";
    return finding;
  }
  finding.notes = {std::to_string(count) + " panels, carousel-0.png to carousel-" +
                   std::to_string(count - 1) + ".png"};
  for (std::size_t i = 0; i < count; ++i) std::filesystem::remove(drawing(stage, i));
  if (const auto refused = stage.drawPanels("carousel")) return failed(refused->message);
  for (std::size_t i = 0; i < count; ++i) {
    expect(finding, std::filesystem::exists(drawing(stage, i)), drawing(stage, i).string());
  }
  return finding;
}

DemoFinding pushPlain(DemoStage& stage) {
  const auto push = stage.push(
      "plain",
      {{"aps", alert("Hello", "Nothing but text")}, {"_sid", "VTQX"}, {"_m", "plain"}, {"_mt", "promo"}});
  if (!push) return failed(push.error().message);
  DemoFinding finding;
  finding.receipts = push->receipts;
  finding.notes = {"shown as " + inQuotes(push->shown.title) +
                   "; without a context it is the engagement module's"};
  expect(finding, push->shown.attachments.empty(), "no attachment");
  expect(finding, push->receipts.at(kEngagement).received == MessageIds{"plain"}, "this push's receipt");
  expect(finding, push->receipts.at(kMessaging).received.empty(), "no receipt of the other module");
  return finding;
}

DemoFinding pushOfAnotherSender(DemoStage& stage) {
  const Dictionary payload{
      {"aps", alert("News", "From somebody else")}, {"_sid", "OTHER"}, {"_m", "other"}, {"_mt", "promo"}};
  const auto push = stage.push("other-sender", payload);
  if (!push) return failed(push.error().message);
  DemoFinding finding;
  finding.receipts = push->receipts;
  finding.notes = {"shown as " + inQuotes(push->shown.title) + ", as it came"};
  expect(finding, push->shown.userInfo == payload, "an unchanged payload");
  for (const auto& [module, trail] : push->receipts) {
    expect(finding, trail.received.empty() && trail.storedAfter.empty(), "no receipt");
  }
  return finding;
}

constexpr std::array kSteps{
    DemoStep{"A host application sets itself up", setUpHost},
    DemoStep{"A compressed carousel for both modules", pushCarousel},
    DemoStep{"Its panels, as the content extension draws them", drawCarousel},
    DemoStep{"A plain push", pushPlain},
    DemoStep{"Another sender's push", pushOfAnotherSender},
};

}  // namespace

int runDemo(const SimulatorOptions& simulator) {
  StandardErrorLogSink sink(simulator.logFormat);
  const QXPlatform::ScopedLogSink logging(sink);
  try {
    DemoStage stage(simulator);
    DemoReport report(simulator);
    for (const DemoStep& step : kSteps) {
      const auto start = std::chrono::steady_clock::now();
      const DemoFinding finding = step.run(stage);
      report.step(step.title, finding, std::chrono::steady_clock::now() - start);
    }
    stage.writeRequests();
    report.end(stage.directory());
    return report.everythingHeld() ? 0 : 1;
  } catch (const std::runtime_error& error) {
    return fail("demo", error.what());
  }
}

}  // namespace qx
