#include "tools/qx/PushForPeople.h"

#include <cmath>
#include <string_view>

#include "AppGroupSDK/records/DeliveryReceiptsModel.h"
#include "QXPlatform/foundation/URL.h"
#include "tools/qx/HostRecords.h"
#include "tools/qx/Printable.h"
#include "tools/qx/PushVerdicts.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Value;

constexpr std::string_view kBold = "1";
constexpr std::string_view kFaint = "2";
constexpr std::string_view kRed = "31";

class Page {
 public:
  explicit Page(bool inColour) : inColour_(inColour) {}

  void add(std::string_view line, std::string_view code = "") {
    if (line.empty()) return;
    const bool coloured = inColour_ && !code.empty();
    if (coloured) text_.append("\033[").append(code).append("m");
    text_ += printable(line);
    if (coloured) text_ += "\033[0m";
    text_ += '\n';
  }
  void addField(const std::string& name, std::string_view text) {
    constexpr std::size_t kWidth = 10;
    if (text.empty()) return;
    add("  " + name + std::string(kWidth - name.size(), ' ') + std::string(text));
  }
  std::string take() { return std::move(text_); }

 private:
  const bool inColour_;
  std::string text_;
};

std::string text(const Value& value) {
  return std::string(value.string().value_or(""));
}

std::string indented(const Value& value) {
  const std::string line = text(value);
  return line.empty() ? line : "  " + line;
}

std::string howItWent(const Dictionary& answer) {
  const auto milliseconds = std::llround(answer["elapsedMs"].number().value_or(0));
  return "  " + text(answer["outcome"]) + " after " + std::to_string(milliseconds) + " ms, " +
         text(answer["identifier"]);
}

std::string keysOf(const Dictionary& userInfo) {
  std::string keys;
  for (const auto& [key, value] : userInfo) {
    keys += (keys.empty() ? "" : ", ") + std::string(key);
  }
  return keys;
}

// A file that cannot be opened is named in the reason already.
std::string refusal(const QXPlatform::AnsweredPush& answered) {
  const std::string& reason = answered.answer.error().message;
  const std::string& file = answered.push.source;
  std::string place = "line " + std::to_string(answered.push.line) + ": " + reason;
  if (file.empty()) return place;
  return reason.starts_with(file + ": ") ? reason : file + ": " + place;
}

}  // namespace

std::string pushForPeople(const QXPlatform::AnsweredPush& answered, bool inColour) {
  Page page(inColour);
  if (!answered.answer) {
    page.add("✗ " + refusal(answered), kRed);
    return page.take();
  }
  const Dictionary& answer = *answered.answer;
  const Value& content = answer["content"];
  const std::string title = text(content["title"]);
  page.add(title.empty() ? "(no title)" : title, kBold);
  page.add(indented(content["subtitle"]));
  page.add(indented(content["body"]));
  if (content["badge"].integer()) page.addField("badge", std::to_string(*content["badge"].integer()));
  if (content["sound"].string()) page.addField("sound", text(content["sound"]));
  for (const Value& attachment : content["attachments"].elements()) {
    const auto url = QXPlatform::URL::parse(text(attachment["url"]));
    page.addField("image", url && url->isFileURL() ? url->filePath() : text(attachment["url"]));
  }
  const Dictionary userInfo = content["userInfo"].dictionary().value_or(Dictionary());
  if (content["attachments"].elements().empty() && asksForThumbnail(userInfo)) page.addField("image", "none");
  page.addField("userInfo", keysOf(userInfo));
  page.add(howItWent(answer), answer["outcome"].string() == "expired" ? kRed : kFaint);
  return page.take();
}

std::string receiptsForPeople() {
  using AppGroupSDK::DeliveryReceiptsModel;
  std::string lines;
  for (const auto module : rawValues(QXPlatform::RawValuesOf<ExtensionModuleName>())) {
    const auto receipts = fetchRecord<DeliveryReceiptsModel>(module);
    if (!receipts) continue;
    const std::size_t waiting = receipts->value() ? receipts->value()->pnData().size() : 0;
    lines += "receipts of " + std::string(stringValue(module)) + ": " +
             (waiting == 0 ? "none waits" : std::to_string(waiting) + " not delivered yet") + "\n";
  }
  return lines;
}

}  // namespace qx
