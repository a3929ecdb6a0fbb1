#include "tools/qx/PushVerdicts.h"

#include <algorithm>

#include "QXExtensionSDK/payload/PayloadKeys.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXExtensionSDK/runtime/logging/LogCategory.h"
#include "QXPlatform/log/LogSubject.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;

bool isError(const QXPlatform::LogRecord& record) {
  using QXExtensionSDK::LogCategory;
  return record.type >= QXPlatform::LogType::error &&
         record.category != QXExtensionSDK::categoryString(LogCategory::module);
}

}  // namespace

bool asksForThumbnail(const Dictionary& userInfo) {
  using namespace QXExtensionSDK;
  if (!VTQXUtility::isVTQXPush(userInfo)) return false;
  if (!userInfo[kRichFeaturesKey].isDictionary()) {
    return !userInfo[kCompressedRichFeaturesKey].string().value_or("").empty();
  }
  const auto panels = userInfo[kRichFeaturesKey]["vt"]["it"].elements();
  return !panels.empty() && panels.front()["md"]["ul"].string().has_value();
}

bool PushVerdicts::failsOn(PushFailure failure) const {
  return std::ranges::find(failOn_, failure) != failOn_.end();
}

void PushVerdicts::note(const QXPlatform::AnsweredPush& answered, const std::string& name) {
  Verdict verdict{{.name = name}, {}};
  TestCase& test = verdict.test;
  if (!answered.answer) {
    test.error = answered.answer.error().message;
  } else {
    const Dictionary& answer = *answered.answer;
    verdict.identifier = answer["identifier"].string().value_or("");
    constexpr double kMillisecondsASecond = 1000;
    test.seconds = answer["elapsedMs"].number().value_or(0) / kMillisecondsASecond;
    if (failsOn(PushFailure::expired) && answer["outcome"].string() == "expired") {
      test.failures.emplace_back("expired");
    }
    const auto& content = answer["content"];
    if (failsOn(PushFailure::noAttachment) && content["attachments"].elements().empty() &&
        asksForThumbnail(content["userInfo"].dictionary().value_or(Dictionary()))) {
      test.failures.emplace_back("no attachment");
    }
  }
  const std::lock_guard lock(mutex_);
  verdicts_.emplace(answered.position, std::move(verdict));
}

void PushVerdicts::note(const QXPlatform::LogRecord& record, const std::optional<std::string>& identifier) {
  if (!failsOn(PushFailure::logError) || !isError(record)) return;
  const std::lock_guard lock(mutex_);
  logged_.emplace(identifier.value_or(""), record.message);
}

std::vector<TestCase> PushVerdicts::testCases() const {
  const std::lock_guard lock(mutex_);
  std::vector<TestCase> cases;
  for (const auto& [position, verdict] : verdicts_) {
    cases.push_back(verdict.test);
    const auto addLogged = [&](const std::string& identifier) {
      const auto [begin, end] = logged_.equal_range(identifier);
      for (auto each = begin; each != end; ++each) cases.back().failures.push_back("logged: " + each->second);
    };
    if (!verdict.identifier.empty()) addLogged(verdict.identifier);
    if (position == verdicts_.rbegin()->first) addLogged("");
  }
  return cases;
}

void JudgedLog::write(const QXPlatform::LogRecord& record) {
  const auto subject = QXPlatform::currentLogSubject();
  verdicts_.note(record, subject == nullptr ? std::nullopt : std::optional(*subject));
  next_.write(record);
}

}  // namespace qx
