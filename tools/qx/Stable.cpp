#include "tools/qx/Stable.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <vector>

#include "AppGroupSDK/store/AppGroupDirectoryProvider.h"
#include "QXPlatform/files/Container.h"
#include "QXPlatform/foundation/URL.h"

namespace qx {

namespace {

namespace fs = std::filesystem;
using QXPlatform::Dictionary;
using QXPlatform::Value;

// As it was before a number was put behind it because another file had the name: which number depends on who
// came first.
std::string nameBeforeClash(const fs::path& file) {
  const std::string stem = file.stem();
  const std::size_t digits = stem.find_last_not_of("0123456789") + 1;
  if (digits < 2 || digits == stem.size() || stem[digits - 1] != '-') return file.filename();
  const std::string before = stem.substr(0, digits - 1) + file.extension().native();
  std::error_code ignored;
  return fs::exists(file.parent_path() / before, ignored) ? before : file.filename().native();
}

Value stableAttachment(const Value& attachment, std::string_view identifier, const fs::path& directory) {
  const auto url = QXPlatform::URL::parse(attachment["url"].string().value_or(""));
  const fs::path file = url && url->isFileURL() ? url->filePath() : "";
  if (file.parent_path() != directory) return attachment;
  const fs::path shown = fs::path("/stable") / identifier / nameBeforeClash(file);
  return attachment.dictionary()->setting("url", QXPlatform::URL::file(shown.native()).absoluteString());
}

}  // namespace

std::string countedIdentifier(std::size_t number) {
  constexpr std::size_t kDigits = 12;
  std::string digits = std::to_string(number);
  digits.insert(0, kDigits - std::min(kDigits, digits.size()), '0');
  return "00000000-0000-0000-0000-" + digits;
}

Dictionary stableAnswer(const Dictionary& answer, const std::optional<fs::path>& attachments) {
  if (!answer.contains("elapsedMs")) return answer;
  Dictionary stable = answer.setting("elapsedMs", 0);
  const auto content = answer["content"].dictionary();
  if (!attachments || !content) return stable;
  std::error_code ignored;
  const fs::path directory = fs::absolute(*attachments, ignored).lexically_normal();
  std::vector<Value> shown;
  for (const Value& each : (*content)["attachments"].elements()) {
    shown.push_back(stableAttachment(each, answer["identifier"].string().value_or(""), directory));
  }
  return stable.setting("content", content->setting("attachments", shown));
}

std::string stablePath(const std::string& path) {
  const auto group = AppGroupSDK::AppGroupDirectoryProvider::groupIdentifier();
  const auto container = group ? QXPlatform::containerPathForGroup(*group) : std::nullopt;
  if (!container || !path.starts_with(container->native())) return path;
  return "/stable/" + *group + path.substr(container->native().size());
}

Dictionary stableReceipt(const Dictionary& receipt, std::size_t number) {
  return receipt.setting("uuid", countedIdentifier(number)).setting("eventDateUtc", 0);
}

}  // namespace qx
