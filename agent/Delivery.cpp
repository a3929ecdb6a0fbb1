#include "agent/Delivery.h"

#include <algorithm>
#include <utility>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/notifications/PushLines.h"
#include "agent/presentation/Attachments.h"

namespace QXAgent {

namespace {

using QXPlatform::Dictionary;

constexpr int kMostDeaths = 2;
constexpr std::chrono::seconds kLongestWaitForEarlier{2};
constexpr std::chrono::seconds kLongestPause{60};
// Then it is shown plainly, in case it is the picture or the like that does not please.
constexpr int kMostRefusals = 3;
constexpr std::chrono::seconds kBeforeAskingAgain{1};

std::string compact(const Dictionary& dictionary) {
  auto text = QXPlatform::writeJSON(dictionary, QXPlatform::JSONStyle::compact);
  return text ? *std::move(text) : "{}";
}

std::optional<Dictionary> readDictionary(std::string_view text) {
  const auto value = QXPlatform::parseJSON(text, QXPlatform::kFullRequestLimits);
  return value ? value->dictionary() : std::nullopt;
}

void removeFiles(const std::vector<std::filesystem::path>& files) {
  std::error_code ignored;
  for (const auto& file : files) std::filesystem::remove(file, ignored);
}

}  // namespace

Delivery::Delivery(EventLoop& loop, Spool& spool, ServiceExtension& extension, Setting setting,
                   std::function<void()> idle)
    : spool_(spool),
      extension_(extension),
      setting_(std::move(setting)),
      idle_(std::move(idle)),
      turn_(loop,
            [this] {
              askAll();
              showNext();
            }),
      retry_(loop, [this] { showNext(); }) {}

void Delivery::takeUp() {
  fillHand(kMostInHand);
  if (inHand_.empty()) return idle_();
  goOnSoon();
}

void Delivery::fillHand(std::size_t most) {
  while (inHand_.size() < most) {
    auto pushes = spool_.waitingAfter(lastTaken_, most - inHand_.size());
    if (pushes.empty()) break;
    for (WaitingPush& push : pushes) take(std::move(push));
  }
}

void Delivery::take(WaitingPush push) {
  const std::int64_t number = lastTaken_ = push.number;
  const auto parsed = QXPlatform::parseJSON(push.text, QXPlatform::kFullRequestLimits);
  const auto request =
      parsed ? QXPlatform::notificationRequestFromJSON(withoutAttachments(*parsed)) : parsed.error();
  if (!request)
    return spool_.putAsideWaiting(number, "a push in the spool is damaged: " + request.error().message);
  push.text.clear();
  InHand& taken = inHand_[number];
  taken.push = std::move(push);
  taken.request =
      QXPlatform::notificationRequestToJSON(**request).setting("identifier", taken.push.identifier);
  if (const auto answer = readDictionary(taken.push.answer.value_or(""))) makeReady(taken, *answer);
}

bool Delivery::mayBeAsked(std::int64_t number) const {
  const WaitingPush& push = inHand_.at(number).push;
  return std::ranges::none_of(inHand_, [&](const auto& other) {
    // Its place is to be taken, so it has to be there first; and answers are told apart by their identifiers.
    if (other.first < number && other.second.push.identifier == push.identifier) return true;
    // One after the other, those that were in hand when the extension died show which of them it was.
    return other.second.isAsked && other.second.push.deaths > 0 && push.deaths > 0;
  });
}

void Delivery::askAll() {
  for (auto& [number, push] : inHand_) {
    if (push.isAsked || push.content || !mayBeAsked(number)) continue;
    push.isAsked = true;
    extension_.ask(push.request,
                   [this, number = number](const auto& outcome) { finishAsking(number, outcome); });
  }
}

void Delivery::finishAsking(std::int64_t number, const ServiceExtension::Outcome& outcome) {
  InHand& push = inHand_.at(number);
  push.isAsked = false;
  goOnSoon();
  const bool isAnswered = outcome.end == ServiceExtension::End::answered;
  if (const auto answer = outcome.answer["content"].dictionary(); isAnswered && answer) {
    auto content = adoptAttachments(*answer, number, setting_.temporary, setting_.files);
    spool_.recordAnswer(number, compact(content));
    return makeReady(push, std::move(content));
  }
  spool_.noteError(isAnswered ? "the extension's answer holds no content" : outcome.problem);
  if (outcome.end == ServiceExtension::End::died) {
    spool_.recordDeath(number);
    if (++push.push.deaths < kMostDeaths) return;
  }
  makeReady(push, push.request["content"].dictionary().value_or(Dictionary()));
}

void Delivery::makeReady(InHand& push, Dictionary content) {
  push.content = std::move(content);
  push.ready = SteadyClock::now();
}

Delivery::Position Delivery::next() {
  const auto first = std::ranges::find_if(inHand_, [](const auto& push) { return !push.second.standsBack; });
  if (first == inHand_.end() || first->second.content) return first;
  const auto latest = SteadyClock::now() - kLongestWaitForEarlier;
  return std::find_if(first, inHand_.end(), [&](const auto& push) {
    return !push.second.standsBack && push.second.content && push.second.ready <= latest;
  });
}

void Delivery::showNext() {
  if (isShowing_ || retry_.isRunning()) return;
  const auto position = next();
  if (position == inHand_.end()) return waitForTurn();
  auto& [number, push] = *position;
  const auto earlier = spool_.shown(push.push.identifier);
  const bool isPlain = push.refusals >= kMostRefusals;
  push.earlier = earlier && earlier->server == presenter_->session() ? earlier->id : 0;
  const Banner banner = makeBanner(push.push.identifier, *push.content, setting_.appName);
  isShowing_ = true;
  presenter_->show(isPlain ? plainBanner(banner) : banner, isPlain ? 0 : push.earlier,
                   [this, number = number](const auto& outcome) { finishShowing(number, outcome); });
}

void Delivery::waitForTurn() {
  std::optional<SteadyClock::time_point> soonest;
  bool isAnyAsked = false;
  bool isAnyRefused = false;
  for (const auto& [number, push] : inHand_) {
    isAnyAsked = isAnyAsked || push.isAsked;
    isAnyRefused = isAnyRefused || push.standsBack;
    if (push.content && !push.standsBack && (!soonest || push.ready < *soonest)) soonest = push.ready;
  }
  if (soonest) {
    turn_.start(
        std::chrono::ceil<std::chrono::microseconds>(*soonest + kLongestWaitForEarlier - SteadyClock::now()));
  } else if (isAnyRefused && !isAnyAsked) {
    // Nothing goes through, so it is hardly their fault; the next one that waits may tell.
    letAllGoFirst();
    fillHand(inHand_.size() + 1);
    goOnSoon();
    showLater();
  }
}

void Delivery::letAllGoFirst() {
  for (auto& [number, push] : inHand_) push.standsBack = false;
}

void Delivery::showLater() {
  pause_ = std::clamp(2 * pause_, std::chrono::seconds(1), kLongestPause);
  retry_.start(pause_);
}

void Delivery::finishShowing(std::int64_t number, const Presenter::Outcome& outcome) {
  isShowing_ = false;
  // Others' words, of whatever length.
  const std::string problem = displayText(outcome.problem, kLongestProblem);
  if (outcome.end == Presenter::End::refused) return finishRefused(inHand_.find(number), problem);
  if (outcome.end == Presenter::End::failed) {
    spool_.noteError(problem);
    return showLater();
  }
  pause_ = std::chrono::seconds(0);
  ++shown_;
  letAllGoFirst();
  const auto shown = inHand_.extract(number);
  // One that was shown plainly has not replaced it.
  if (const auto earlier = shown.mapped().earlier; earlier != 0 && earlier != outcome.id)
    presenter_->close(earlier);
  const WaitingPush& push = shown.mapped().push;
  const Dictionary& content = *shown.mapped().content;
  removeFiles(spool_.recordShown(
      number, {push.identifier, presenter_->session(), outcome.id, compact(content.removing("attachments")),
               adoptedAttachments(content, number, setting_.files)}));
  takeUp();
}

void Delivery::finishRefused(Position position, const std::string& problem) {
  auto& [number, push] = *position;
  if (push.refusals == 0) push.shownBefore = shown_;
  if (++push.refusals <= kMostRefusals) {
    spool_.noteError(problem);
    return retry_.start(kBeforeAskingAgain);
  }
  if (shown_ == push.shownBefore) {
    // Perhaps nothing is shown now. Then it is not this one's fault, and it is to have its picture yet.
    push.refusals = kMostRefusals - 1;
    push.standsBack = true;
    return goOnSoon();
  }
  // It is not to hold up those behind it for ever.
  removeFiles(adoptedAttachments(*push.content, number, setting_.files));
  spool_.putAsideWaiting(number, problem);
  inHand_.erase(position);
  takeUp();
}

void Delivery::presenterChanged() {
  if (presenter_->session().empty() || isShowing_) return;
  // What the one before did not want is new to this one.
  for (auto& [number, push] : inHand_) push.refusals = 0;
  letAllGoFirst();
  retry_.stop();
  goOnSoon();
}

}  // namespace QXAgent
