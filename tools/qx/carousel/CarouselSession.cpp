#include "tools/qx/carousel/CarouselSession.h"

#include <algorithm>
#include <iostream>
#include <utility>
#include <vector>

#include "QXPlatform/ui/Appearance.h"
#include "tools/qx/Results.h"
#include "tools/qx/carousel/CarouselPush.h"
#include "tools/qx/carousel/FileWatch.h"
#include "tools/qx/carousel/PanelDrawing.h"
#include "tools/qx/check/PlacedFindings.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Value;
using Kind = CarouselStep::Kind;

std::filesystem::path numbered(const std::filesystem::path& file, std::size_t index) {
  std::filesystem::path name = file.stem();
  name += "-" + std::to_string(index);
  name += file.extension();
  return file.parent_path() / name;
}

Dictionary note(const char* kind, const std::string& text) {
  return {{"kind", kind}, {"text", text}};
}

Dictionary remark(const std::string& text) {
  return note("remark", text);
}

// "line 7: /_rf/vt/it/0/ti/s/fz: not one of S, M, L; write \"S\"".
std::vector<Value> notesOn(const std::vector<LocatedFinding>& findings) {
  std::vector<Value> notes;
  for (const auto& [finding, file, position, line] : findings) {
    std::string text = "line " + std::to_string(position.line) + ": ";
    if (!finding.at.empty()) text.append(finding.at).append(": ");
    text.append(finding.message);
    if (!finding.hint.empty()) text.append("; ").append(finding.hint);
    notes.push_back(note(finding.isError() ? "error" : "warning", text));
  }
  return notes;
}

}  // namespace

CarouselSession::CarouselSession(const CarouselInvocation& invocation, PlayedCarousel& carousel)
    : invocation_(invocation), carousel_(carousel) {}

CarouselSession::Refusal CarouselSession::play(const Dictionary& command) {
  auto state = carousel_.play(command);
  if (!state) return state.error();
  state_ = *std::move(state);
  return std::nullopt;
}

CarouselSession::Refusal CarouselSession::look() {
  Dictionary command{{"step", "look"}, {"dark", invocation_.carousel.dark}};
  // Without the option the language of the user decides.
  if (invocation_.carousel.rtl) command = command.setting("rightToLeft", true);
  return play(command);
}

CarouselSession::Refusal CarouselSession::load(std::string_view step, const std::string& file) {
  const auto request = readCarouselRequest(file);
  if (!request) return request.error();
  if (auto refused = look()) return refused;
  if (auto refused = play({{"step", step}, {"request", *request}})) return refused;
  reportMissingFont();
  report();
  return std::nullopt;
}

void CarouselSession::reportMissingFont() {
  if (isMissingFontReported_) return;
  for (const auto& panel : state_["panels"].elements()) {
    for (const char* key : {"title", "subTitle", "altText"}) {
      const std::string text(panel[key]["text"].string().value_or(""));
      if (QXPlatform::hasGlyphsFor(text)) continue;
      std::cerr << "qx carousel: no font of this system has all letters of \"" << text << "\"\n";
      isMissingFontReported_ = true;
      return;
    }
  }
}

bool CarouselSession::isShown() const {
  return state_["outcome"].string() == "carousel";
}

std::size_t CarouselSession::panelCount() const {
  return state_["panels"].elements().size();
}

void CarouselSession::report() const {
  printResult(invocation_.simulator, state_);
}

CarouselSession::Refusal CarouselSession::runScript() {
  std::vector<CarouselStep> steps;
  if (invocation_.carousel.steps) {
    auto parsed = parseCarouselSteps(*invocation_.carousel.steps);
    if (!parsed) return parsed.error();
    steps = *std::move(parsed);
  }
  if (auto refused = load("load", file())) return refused;
  for (const CarouselStep& step : steps) {
    if (auto refused = take(step)) return refused;
  }
  if (invocation_.carousel.png) {
    if (auto refused = draw()) return refused;
  }
  return judgeImages();
}

CarouselSession::Refusal CarouselSession::runWithoutScreen() {
  if (auto refused = load("load", file())) return refused;
  if (!isShown() && !invocation_.carousel.watch) return std::nullopt;
  return Error{"there is no screen for a window; --png draws into a file"};
}

CarouselSession::Refusal CarouselSession::runWindow() {
  if (auto refused = load("load", file())) return refused;
  if (!isShown()) {
    std::cerr << "qx carousel: nothing to show, the notification keeps its ordinary look\n";
    return std::nullopt;
  }
  if (auto refused = play({{"step", "open"}, {"title", "qx carousel"}})) return refused;
  carousel_.runWindow();
  return judgeImages();
}

CarouselSession::Refusal CarouselSession::runWatch() {
  if (!std::filesystem::exists(file())) return readCarouselRequest(file()).error();
  // Nothing to see until there is a push.
  const Dictionary nothing{{"content", Dictionary()}};
  if (auto refused = look()) return refused;
  if (auto refused = play({{"step", "load"}, {"request", nothing}})) return refused;
  const Dictionary open{{"step", "open"}, {"title", file() + " - qx carousel"}, {"staysOpen", true}};
  if (auto refused = play(open)) return refused;
  const FileWatch watch(file(), [this](const auto& text) { follow(text); });
  carousel_.runWindow();
  return judgeImages();
}

// What is no push leaves the one before in the window.
void CarouselSession::follow(const std::optional<std::string>& text) {
  std::vector<Value> notes;
  if (text) {
    const auto request = carouselRequest(*text);
    if (request && !play({{"step", hasLoaded_ ? "refresh" : "load"}, {"request", *request}})) {
      hasLoaded_ = true;
      reportMissingFont();
      report();
    }
    notes = notesOn(findPlaced(*text, {.file = file(), .name = file()}, PushLimit::apns));
    if (request && !isShown())
      notes.push_back(remark("No carousel: the notification keeps its ordinary look."));
    if (!request && hasLoaded_) notes.push_back(remark("The carousel is the one before."));
    if (notes.empty()) notes.push_back(remark("No findings."));
  } else {
    notes.push_back(remark("The file is gone. It is shown again when it is back."));
  }
  if (const auto noted = carousel_.play({{"step", "note"}, {"notes", notes}}); !noted) {
    fail("carousel", noted.error().message);
  }
}

CarouselSession::Refusal CarouselSession::take(const CarouselStep& step) {
  if (step.kind == Kind::refresh) return load(step.name(), step.file);
  // A tap waits until its click is stored, and an image may come meanwhile.
  if (step.kind == Kind::tap && invocation_.simulator.stable) {
    if (auto refused = waitForImages()) return refused;
  }
  Dictionary command{{"step", step.name()}};
  if (step.kind == Kind::wait) command = command.setting("milliseconds", step.time.count());
  if (auto refused = play(command)) return refused;
  report();
  return std::nullopt;
}

CarouselSession::Refusal CarouselSession::waitForImages() {
  return play({{"step", "wait"}, {"milliseconds", 0}});
}

CarouselSession::Refusal CarouselSession::judgeImages() {
  if (!invocation_.carousel.failOnFailedImage || !isShown()) return std::nullopt;
  if (auto refused = waitForImages()) return refused;
  const auto panels = state_["panels"].elements();
  const auto failed = std::ranges::find_if(
      panels, [](const auto& panel) { return panel["imageState"].string() == "failed"; });
  if (failed == panels.end()) return std::nullopt;
  return Error{"the image of panel " + std::to_string(failed - panels.begin()) +
               " failed: " + std::string((*failed)["url"].string().value_or(""))};
}

CarouselSession::Refusal CarouselSession::draw() {
  if (!isShown()) return Error{"nothing to draw, the notification keeps its ordinary look"};
  if (auto refused = drawPanels()) return refused;
  state_ = state_.setting("step", "draw");
  report();
  return std::nullopt;
}

CarouselSession::Refusal CarouselSession::drawPanels() {
  const CarouselOptions& options = invocation_.carousel;
  const std::size_t count = panelCount();
  if (options.all) {
    Refusal refused;
    for (std::size_t i = 0; i < count && !refused; ++i) refused = drawTo(i, numbered(*options.png, i));
    return refused;
  }
  if (options.panel && static_cast<std::size_t>(*options.panel) >= count) {
    return Error{"--panel " + std::to_string(*options.panel) + ": the carousel has " + std::to_string(count) +
                 (count == 1 ? " panel" : " panels") + ", counted from 0"};
  }
  const auto index = options.panel ? *options.panel : state_["currentPanelIndex"].integer().value_or(0);
  return drawTo(static_cast<std::size_t>(index), *options.png);
}

CarouselSession::Refusal CarouselSession::drawTo(std::size_t index, const std::filesystem::path& file) {
  auto drawn = drawPanel(carousel_, index, std::filesystem::absolute(file));
  if (!drawn) return drawn.error();
  state_ = *std::move(drawn);
  return std::nullopt;
}

}  // namespace qx
