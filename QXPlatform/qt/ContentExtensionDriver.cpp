#include "QXPlatform/ui/ContentExtensionDriver.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <cmath>
#include <utility>
#include <vector>

#include "QXPlatform/log/Log.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/ui/Appearance.h"
#include "QXPlatform/ui/UIInspectable.h"

namespace QXPlatform {

namespace {

// An image has 15 seconds without progress, and some seconds of progress.
constexpr std::chrono::seconds kLongestLoading(20);

struct NoLog final : LogSink {
  void write(const LogRecord& /*record*/) override {}
};

// Asks without leaving a trace: nobody has answered the notification.
UNNotificationContentExtensionResponseOption responseOption(ContentExtensionHost& host) {
  NoLog sink;
  const ScopedLogSink quiet(sink);
  return host.respond();
}

void runEventsFor(std::chrono::milliseconds time) {
  QEventLoop loop;
  QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
  loop.exec();
}

std::string text(const Dictionary& command, std::string_view name) {
  const Value* value = command.find(name);
  return std::string(value == nullptr ? "" : value->string().value_or(""));
}

std::optional<bool> flag(const Dictionary& command, std::string_view name) {
  const Value* value = command.find(name);
  return value == nullptr ? std::nullopt : value->boolean();
}

// What the command does not name stays.
void look(const Dictionary& command) {
  if (const auto dark = flag(command, "dark")) {
    setUserInterfaceStyle(*dark ? UserInterfaceStyle::dark : UserInterfaceStyle::light);
  }
  if (const auto rightToLeft = flag(command, "rightToLeft")) {
    QApplication::setLayoutDirection(*rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
  }
  if (const Value* scale = command.find("textScale")) {
    setTextScale(scale->number().value_or(static_cast<double>(scale->integer().value_or(1))));
  }
}

WindowNote::Kind kindNamed(std::string_view name) {
  if (name == "error") return WindowNote::Kind::error;
  return name == "warning" ? WindowNote::Kind::warning : WindowNote::Kind::remark;
}

}  // namespace

ContentExtensionDriver::ContentExtensionDriver(ContentExtensionHost& host,
                                               std::function<void(const Dictionary&)> stepTaken)
    : host_(host), stepTaken_(std::move(stepTaken)) {}

Result<Dictionary> ContentExtensionDriver::carryOut(const Dictionary& command) {
  const std::string step = text(command, "step");
  std::optional<Error> refused;
  if (const Value* request = command.find("request")) {
    refused = deliver(*request);
  } else if (step == "wait") {
    const Value* time = command.find("milliseconds");
    wait(std::chrono::milliseconds(time == nullptr ? 0 : time->integer().value_or(0)));
  } else if (step == "look") {
    look(command);
  } else if (step == "draw") {
    refused = draw(text(command, "file"));
  } else if (step == "open") {
    open(command);
  } else if (step == "note") {
    note(command["notes"]);
  } else if (auto* controller = host_.inspectable(); controller != nullptr && !host_.isCollapsed()) {
    controller->take(step);
  }
  if (refused) return *refused;
  return state(step);
}

Dictionary ContentExtensionDriver::state(std::string_view step) {
  const Size size = host_.preferredContentSize();
  const Dictionary seen{
      {"step", step},
      {"outcome", host_.isCollapsed() ? "collapsed" : "carousel"},
      {"preferredContentSize", std::vector<Value>{std::llround(size.width), std::llround(size.height)}},
      {"defaultActionPerformed", host_.isDefaultActionPerformed()},
      {"responseOption", responseOptionName(responseOption(host_))}};
  const auto* controller = host_.inspectable();
  return controller == nullptr ? seen : seen.merging(controller->inspect(!host_.isCollapsed()));
}

std::optional<Error> ContentExtensionDriver::deliver(const Value& request) {
  auto read = notificationRequestFromJSON(request);
  if (!read) return read.error();
  host_.deliver(*std::move(read));
  return std::nullopt;
}

void ContentExtensionDriver::wait(std::chrono::milliseconds time) {
  constexpr std::chrono::milliseconds kPause(2);
  const auto* controller = host_.inspectable();
  runEventsFor(time);
  const QDeadlineTimer deadline(kLongestLoading);
  while (controller != nullptr && !host_.isCollapsed() && controller->isLoading() && !deadline.hasExpired()) {
    runEventsFor(kPause);
  }
}

std::optional<Error> ContentExtensionDriver::draw(const std::string& file) {
  constexpr int kQuality = 90;
  constexpr int kDefault = -1;
  const bool isSmall = file.ends_with(".webp");
  const QPixmap drawn = host_.view().grab();
  if (drawn.save(QString::fromStdString(file), isSmall ? "WEBP" : "PNG", isSmall ? kQuality : kDefault)) {
    return std::nullopt;
  }
  return Error{"cannot write " + file};
}

void ContentExtensionDriver::open(const Dictionary& command) {
  window_ = std::make_unique<ContentExtensionWindow>(host_, text(command, "title"));
  const bool staysOpen = flag(command, "staysOpen").value_or(false);
  if (auto* controller = host_.inspectable()) {
    controller->setStepHandler([this](std::string_view step) { stepTaken_(state(step)); });
  }
  window_->open([this, staysOpen] {
    stepTaken_(state("tap"));
    if (!staysOpen) window_->close();
  });
}

void ContentExtensionDriver::note(const Value& notes) {
  if (window_ == nullptr) return;
  std::vector<WindowNote> written;
  for (const Value& note : notes.elements()) {
    written.push_back(
        {kindNamed(note["kind"].string().value_or("")), std::string(note["text"].string().value_or(""))});
  }
  window_->setNotes(written);
}

}  // namespace QXPlatform
