#include "agent/Agent.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "AppGroupSDK/records/CarouselRichFeatureMetaUtils.h"
#include "QXPlatform/files/Container.h"
#include "QXPlatform/foundation/Bundle.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/UUID.h"
#include "QXPlatform/log/Log.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/notifications/PushLines.h"
#include "agent/presentation/Attachments.h"
#include "agent/presentation/NotificationServer.h"
#include "agent/presentation/PortalPresenter.h"

namespace QXAgent {

namespace {

using QXPlatform::Value;

constexpr std::string_view kDefaultAction = "default";
constexpr std::string_view kExpandAction = "expand";
constexpr std::string_view kAppGroupKey = "VT_QUORIX_APP_GROUP_KEY";

// What a later push names to take its place: the identifier that it brings, or that of its message.
std::string identifierOf(const Value& push, const QXPlatform::UNNotificationRequest& request) {
  const auto identifier = push.find("aps") == nullptr ? push["identifier"].string() : std::nullopt;
  if (identifier && !identifier->empty()) return std::string(*identifier);
  const auto message =
      AppGroupSDK::CarouselRichFeatureMetaUtils::getUniqueNotificationIdFrom(request.content->userInfo());
  return message ? *message : request.identifier;
}

std::filesystem::path temporaryOf(const std::filesystem::path& state) {
  return state / "tmp";
}

std::filesystem::path filesOf(const std::filesystem::path& state) {
  return state / "files";
}

void logLine(const std::string& message) {
  QXPlatform::os_log({"qx-agent", "Agent", QXPlatform::LogType::default_, message});
}

void removeAll(const std::vector<std::filesystem::path>& files) {
  std::error_code ignored;
  for (const auto& file : files) std::filesystem::remove(file, ignored);
}

}  // namespace

Agent::Agent(EventLoop& loop, const Bus& bus, const Database& database, Setting setting)
    : loop_(loop),
      bus_(bus),
      setting_(std::move(setting)),
      spool_(database),
      registrations_(database),
      usesUnits_(hasUserManager()),
      extension_(
          loop, [this] { return startServiceExtension(); },
          [this] {
            // What a burst of pushes has left behind is not to stay for as long as the agent does.
            malloc_trim(0);
            if (windows_.empty()) emptyTemporary();
            if (!idle_.isRunning() && !isBusy()) endWhenIdle();
          }),
      delivery_(loop, spool_, extension_,
                {setting_.installation.name, temporaryOf(setting_.state), filesOf(setting_.state)},
                [this] { settle(); }),
      activation_(loop, bus, setting_.installation.app,
                  [this](const std::string& why) { spool_.noteError(why); }),
      unifiedPush_(
          loop, bus, registrations_, *this,
          {setting_.installation.busName(), setting_.installation.name, setting_.installation.distributor}),
      connector_(bus, unifiedPush_),
      pushObject_(bus, unifiedPush_, *this),
      tidy_(loop,
            [this] { windows_.remove_if([](const auto& window) { return window.second->hasEnded(); }); }),
      idle_(loop, [this] { endWhenIdle(); }) {
  const auto& installation = setting_.installation;
  if (isSandboxed()) {
    presenter_ = std::make_unique<PortalPresenter>(bus, presenterEvents());
  } else {
    presenter_ = std::make_unique<NotificationServer>(
        loop, bus,
        AppIdentity{installation.app, installation.name, installation.icon, installation.bundle.value_or("")},
        presenterEvents());
  }
  delivery_.setPresenter(*presenter_);
}

Agent::~Agent() = default;

ProgramStart Agent::extensionStart(const std::filesystem::path& program) const {
  ProgramStart start{
      program, {"--jobs", std::to_string(kMostInHand)}, {"TMPDIR=" + temporaryOf(setting_.state).native()}};
  if (setting_.installation.bundle)
    start.environment.push_back("QX_BUNDLE=" + setting_.installation.bundle->native());
  return start;
}

UnitLimits Agent::unitLimits() const {
  const auto& installation = setting_.installation;
  const QXPlatform::Bundle bundle(installation.bundle.value_or(installation.serviceExtension.parent_path()));
  std::vector<std::filesystem::path> writable{temporaryOf(setting_.state)};
  const auto group = bundle.objectForInfoDictionaryKey(kAppGroupKey).string();
  if (const auto container = QXPlatform::containerPathForGroup(group.value_or("")))
    writable.push_back(*container);
  return {"Service extension of " + installation.app, kExtensionMemory, std::move(writable)};
}

QXPlatform::Result<StartedProgram> Agent::startServiceExtension() {
  const ProgramStart start = extensionStart(setting_.installation.serviceExtension);
  if (usesUnits_) {
    auto started = startUnit(start, unitLimits());
    const bool failedBefore = std::exchange(unitFailed_, !started.ok());
    if (started) return started;
    if (!failedBefore)
      logLine("the extension runs without a unit, and its memory is watched: " + started.error().message);
  }
  return startChild(start);
}

void Agent::start() {
  if (!usesUnits_) logLine("no service manager is on the bus: the extension's memory is watched instead");
  std::error_code ignored;
  for (const auto& directory : {temporaryOf(setting_.state), filesOf(setting_.state)})
    std::filesystem::create_directories(directory, ignored);
  emptyTemporary();
  // What is on its way then is kept for the next run.
  loop_.setEndHandler([this] { bus_.releaseName(setting_.installation.busName()); });
  forgetEarlierSessions();
  removeForgottenFiles();
  if (setting_.wasDamaged) {
    report("the spool was damaged: it lies beside, and has been begun anew");
    // The keys have gone with it.
    unifiedPush_.registerApp([](const auto&) {});
  } else {
    unifiedPush_.renew();
  }
  delivery_.takeUp();
  if (setting_.readsLines) {
    lines_.emplace(loop_, STDIN_FILENO, lineHandlers());
  }
}

LineSource::Handlers Agent::lineHandlers() {
  return {.take = [this](std::string_view line) { return receive("", line); },
          .refuse = [this](const std::string& reason) { spool_.putAside("", "", "no push: " + reason); },
          .failed =
              [this](const std::string& reason) {
                report(reason);
                exitCode_ = 1;
              },
          .ended =
              [this] {
                linesEnded_ = true;
                settle();
              }};
}

bool Agent::receive(std::string_view key, std::string_view text) {
  const auto parsed = QXPlatform::parseJSON(text);
  const auto request =
      parsed ? QXPlatform::notificationRequestFromJSON(withoutAttachments(*parsed)) : parsed.error();
  const auto reception = request ? spool_.take(key, identifierOf(*parsed, **request), text)
                                 : spool_.putAside(key, text, "no push: " + request.error().message);
  if (reception == Spool::Reception::taken) delivery_.takeUp();
  return reception != Spool::Reception::failed;
}

void Agent::refuse(std::string_view reason) {
  spool_.countRefusal(reason);
}

void Agent::report(std::string_view problem) {
  const std::string text = displayText(problem, kLongestProblem);
  logLine(text);
  spool_.noteError(text);
}

PresenterEvents Agent::presenterEvents() {
  return {.invoked = [this](std::uint32_t id, const std::string& action,
                            const std::string& token) { invoked(id, action, token); },
          .closed = [this](std::uint32_t id) { closed(id); },
          .sessionChanged =
              [this] {
                forgetEarlierSessions();
                delivery_.presenterChanged();
                settle();
              }};
}

void Agent::invoked(std::uint32_t id, const std::string& action, const std::string& token) {
  const auto notification = spool_.shown(presenter_->session(), id);
  if (!notification || (action != kDefaultAction && action != kExpandAction)) return;
  const auto content = QXPlatform::parseJSON(notification->content, QXPlatform::kFullRequestLimits);
  const bool isCarousel = content && content->dictionary() &&
                          makeBanner(notification->identifier, *content->dictionary(), "").isExpandable;
  if (isCarousel && setting_.installation.contentExtension) return openWindow(*notification, token);
  presenter_->close(id);
  bringUpApp(notification->identifier, token);
}

void Agent::openWindow(const ShownNotification& notification, const std::string& token) {
  const std::string& identifier = notification.identifier;
  const auto shows = [&](const auto& window) {
    return window.first == identifier && !window.second->hasEnded();
  };
  if (std::ranges::any_of(windows_, shows)) return;
  ProgramStart start = extensionStart(*setting_.installation.contentExtension);
  start.arguments = {"--window"};
  if (!token.empty()) start.environment.push_back("XDG_ACTIVATION_TOKEN=" + token);
  start.input = R"({"identifier":)" +
                QXPlatform::writeJSON(identifier, QXPlatform::JSONStyle::compact).value() + R"(,"content":)" +
                notification.content + "}\n";
  auto started = startChild(start);
  if (!started) {
    spool_.noteError(started.error().message);
    return bringUpApp(identifier, token);
  }
  windows_.emplace_back(identifier, std::make_unique<ContentWindow>(loop_, *std::move(started),
                                                                    [this, identifier, token](auto end) {
                                                                      windowEnded(identifier, end, token);
                                                                    }));
  settle();
}

void Agent::windowEnded(const std::string& identifier, ContentWindow::End end, const std::string& token) {
  if (end != ContentWindow::End::dismissed) {
    if (const auto notification = spool_.shown(identifier);
        notification && notification->server == presenter_->session())
      presenter_->close(notification->id);
    bringUpApp(identifier, token);
  }
  tidy_.start(std::chrono::microseconds(0));
  settle();
}

void Agent::bringUpApp(const std::string& identifier, const std::string& token) {
  activation_.activate(identifier, token);
}

void Agent::closed(std::uint32_t id) {
  if (const auto notification = spool_.shown(presenter_->session(), id)) forget(*notification);
  settle();
}

void Agent::forget(const ShownNotification& notification) {
  removeAll(notification.files);
  spool_.forgetShown(notification.identifier);
}

void Agent::forgetEarlierSessions() {
  if (!presenter_->knowsSession()) return;
  for (const ShownNotification& notification : spool_.allShown()) {
    if (notification.server != presenter_->session()) forget(notification);
  }
}

void Agent::emptyTemporary() {
  std::error_code ignored;
  for (const auto& file : std::filesystem::directory_iterator(temporaryOf(setting_.state), ignored))
    std::filesystem::remove_all(file, ignored);
}

void Agent::removeForgottenFiles() {
  std::error_code ignored;
  for (const auto& file : std::filesystem::directory_iterator(filesOf(setting_.state), ignored)) {
    if (!spool_.isInUse(pushOfFile(file), file)) std::filesystem::remove(file, ignored);
  }
}

bool Agent::isBusy() {
  const auto isOpen = [](const auto& window) { return !window.second->hasEnded(); };
  if (!delivery_.isIdle() || std::ranges::any_of(windows_, isOpen)) return true;
  return setting_.readsLines ? !linesEnded_ : unifiedPush_.isBusy() || spool_.hasShown();
}

void Agent::settle() {
  if (isBusy()) {
    idle_.stop();
  } else {
    idle_.start(setting_.readsLines ? std::chrono::seconds(0) : setting_.idle);
  }
}

void Agent::endWhenIdle() {
  if (isBusy()) return;
  // What it has in hand besides pushes, such as receipts; its end leads here again.
  if (extension_.isRunning()) return extension_.retire();
  bus_.releaseName(setting_.installation.busName());
  // A push that was on its way; should another agent have the name by now, it takes up all that waits.
  if (isBusy() && bus_.requestName(setting_.installation.busName())) return;
  loop_.stop(exitCode_);
}

}  // namespace QXAgent
