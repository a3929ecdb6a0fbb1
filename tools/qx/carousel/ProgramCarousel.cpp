#include "tools/qx/carousel/ProgramCarousel.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QScopedValueRollback>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <utility>

#include "QXPlatform/foundation/JSON.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

// Beyond what a command itself takes: 20 seconds of loading, and as much again.
constexpr std::chrono::seconds kLongestAnswer(40);
// What is in flight is given up at once, but for a click that is being saved.
constexpr std::chrono::seconds kLongestExit(10);

int milliseconds(std::chrono::milliseconds time) {
  return static_cast<int>(time.count());
}

std::chrono::milliseconds timeFor(const Dictionary& command) {
  return kLongestAnswer + std::chrono::milliseconds(command["milliseconds"].integer().value_or(0));
}

}  // namespace

ProgramCarousel::~ProgramCarousel() {
  process_.closeWriteChannel();
  if (process_.state() == QProcess::NotRunning || process_.waitForFinished(milliseconds(kLongestExit)))
    return;
  process_.kill();
  process_.waitForFinished();
}

std::optional<Error> ProgramCarousel::start(const std::string& program, CarouselPlace place) {
  QStringList arguments{"--drive", "--width", QString::number(place.width)};
  if (place.hasWindow) arguments << "--window";
  process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  process_.start(QString::fromStdString(std::filesystem::absolute(program).string()), arguments);
  if (process_.waitForStarted()) return std::nullopt;
  return Error{"cannot start " + program + ": " + process_.errorString().toStdString()};
}

Result<Dictionary> ProgramCarousel::play(const Dictionary& command) {
  const auto line = QXPlatform::writeJSON(command, QXPlatform::JSONStyle::compact);
  if (!line) return line.error();
  process_.write(QByteArray::fromStdString(*line + "\n"));
  const QScopedValueRollback<bool> asking(isAsking_, true);
  const QDeadlineTimer deadline(timeFor(command));
  for (;;) {
    while (auto answer = nextAnswer()) {
      if (const auto* error = answer->find("error")) return Error{std::string(error->string().value_or(""))};
      if ((*answer)["step"] == command["step"]) return *std::move(answer);
      stepTaken_(*answer);
    }
    if (process_.state() == QProcess::NotRunning) return whyItEnded();
    if (deadline.hasExpired()) return Error{"the extension has not answered within its time"};
    process_.waitForReadyRead(static_cast<int>(deadline.remainingTime()));
  }
}

void ProgramCarousel::runWindow() {
  QEventLoop loop;
  QObject::connect(&process_, &QProcess::finished, &loop, &QEventLoop::quit);
  const auto reading =
      QObject::connect(&process_, &QProcess::readyReadStandardOutput, [this] { handleSteps(); });
  handleSteps();
  if (process_.state() != QProcess::NotRunning) loop.exec();
  QObject::disconnect(reading);
}

std::optional<Dictionary> ProgramCarousel::nextAnswer() {
  while (process_.canReadLine()) {
    const std::string line = process_.readLine().trimmed().toStdString();
    const auto answer = QXPlatform::parseJSON(line);
    auto fields = answer ? answer->dictionary() : std::nullopt;
    if (fields && (fields->contains("step") || fields->contains("error"))) return fields;
    std::cerr << "extension: " << line << '\n';
  }
  return std::nullopt;
}

void ProgramCarousel::handleSteps() {
  if (isAsking_) return;
  while (const auto answer = nextAnswer()) stepTaken_(*answer);
}

Error ProgramCarousel::whyItEnded() const {
  if (process_.exitStatus() == QProcess::CrashExit) return {"the extension crashed"};
  return {"the extension ended with exit code " + std::to_string(process_.exitCode())};
}

}  // namespace qx
