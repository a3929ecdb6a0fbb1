// How a host tests its hook: pushes go through the whole framework, and 30 seconds pass at once.

#include <QXTestSupport/ExtensionHost.h>
#include <QXTestSupport/LogRecorder.h>
#include <QXTestSupport/LoopbackBackend.h>
#include <QXTestSupport/ManualClock.h>
#include <QXTestSupport/TemporaryContainer.h>

#include <cstdio>

#include "NotificationService.h"

namespace {

using QXTestSupport::ExtensionHost;

// A hook that never answers.
class SilentService final : public QXExtensionSDK::VTQXNotificationService {
  void vtqxDidReceiveRequest(const std::shared_ptr<const QXPlatform::UNNotificationRequest>&,
                             const std::shared_ptr<QXPlatform::UNMutableNotificationContent>&,
                             QXExtensionSDK::ClientContentHandler contentHandler) override {
    static std::vector<QXExtensionSDK::ClientContentHandler> kept;
    kept.push_back(std::move(contentHandler));
  }
};

int failures = 0;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "not so: %s\n", what);
  ++failures;
}

void testGreeting() {
  const auto shown = ExtensionHost::of<NotificationService>().push(
      R"({"identifier": "1", "content": {"body": "Three things", "userInfo": {"a": 1}}})");
  expect(shown.content.title == "News for you", "a push without a title gets one");
  expect(shown.content.userInfo["greeting"].string() == "Hello from 1", "the app finds a greeting");
  expect(shown.content.userInfo["a"].integer() == 1, "what the push brought stays");
}

void testThumbnail() {
  const QXTestSupport::LoopbackBackend backend;
  const auto shown = ExtensionHost::of<NotificationService>().push(
      R"({"aps": {"alert": {"title": "New"}, "mutable-content": 1}, "_sid": "VTQX", "_m": "m", "_mt": "push",
          "_rf": {"vt": {"t": "0", "it": [{"id": "p1", "md": {"ul": ")" +
      backend.url("/files/sunrise.png") + R"("}}]}}})");
  expect(backend.requests().size() == 1, "the image is asked for once");
  expect(shown.content.attachments.size() == 1, "the carousel's first image is the thumbnail");
}

void testHookThatNeverAnswers() {
  QXTestSupport::ManualClock clock;
  ExtensionHost host = ExtensionHost::of<SilentService>();
  auto shown = host.startPush(R"({"aps": {"alert": {"title": "As it came"}}})");
  const auto seconds = clock.secondsUntil(
      [&] { return shown.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }, 29);
  expect(seconds.has_value() && *seconds <= 30, "the notification is shown within the time limit");
  expect(seconds && shown.get().content.title == "As it came", "and as it came");
}

}  // namespace

int main() {
  const QXTestSupport::TemporaryContainer container;
  const QXTestSupport::ScopedLogRecorder log;
  testGreeting();
  testThumbnail();
  testHookThatNeverAnswers();
  if (failures != 0) {
    for (const std::string& line : log->lines()) std::fprintf(stderr, "%s\n", line.c_str());
  }
  return failures == 0 ? 0 : 1;
}
