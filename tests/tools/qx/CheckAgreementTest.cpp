// `qx check` and the framework agree on every push: no error means that the carousel is shown.

#include "QXExtensionSDK/content/DefaultCoordinatorFactory.h"
#include "QXExtensionSDK/payload/VTQXUtility.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/NotificationJSON.h"
#include "QXPlatform/notifications/ServiceExtensionHost.h"
#include "tests/QXExtensionSDK/content/FakeCarouselScreen.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Test.h"
#include "tools/qx/CompressedRichFeatures.h"
#include "tools/qx/SimulatedHostService.h"
#include "tools/qx/check/PushChecks.h"

namespace {

using namespace QXExtensionSDK;
using QXPlatform::Dictionary;
using QXPlatform::Value;
using Random = std::mt19937;

constexpr int kMutations = 20'000;

std::size_t below(Random& random, std::size_t end) {
  return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
}

const Value& oddValue(Random& random) {
  static const auto values = QXPlatform::parseJSON(
      R"([null,true,-1,0,3,1.5,3000.0,1e300,9223372036854775808,"","0","1","2","S","é"," ","VTQX","ff0000","#fff",
          "file:///x.png","not a url",[],[[]],[{}],{},{"t":"1"},{"t":"0","ul":7},{"tx":"x"},{"tx":7},
          {"id":"x","md":{"ul":"u"}},{"":{"~/":[]}}])");
  return values->elements()[below(random, values->elements().size())];
}

std::string mutatedText(std::string text, Random& random) {
  const std::size_t at = below(random, text.size() + 1);
  return below(random, 2) == 0 ? text.substr(0, at) : text.insert(at, 1, 'A');
}

// Something else in one place of the tree: a value or a key taken out, replaced, added or misspelt.
Value mutated(const Value& value, Random& random) {
  const auto object = value.dictionary();
  const auto elements = value.elements();
  const std::size_t change = below(random, 8);
  if (change == 0) return oddValue(random);
  if (object && !object->empty()) {
    const auto& [key, member] =
        *(object->begin() + static_cast<std::ptrdiff_t>(below(random, object->size())));
    const std::string name(key);
    if (change == 1) return object->removing(name);
    if (change == 2) return object->removing(name).setting(mutatedText(name, random), member);
    return change == 3 ? object->setting("more", oddValue(random))
                       : object->setting(name, mutated(member, random));
  }
  if (!elements.empty()) {
    std::vector<Value> list(elements.begin(), elements.end());
    const auto place = list.begin() + static_cast<std::ptrdiff_t>(below(random, list.size()));
    if (change == 1) {
      list.erase(place);
    } else if (change == 2) {
      list.insert(place, oddValue(random));
    } else {
      *place = mutated(*place, random);
    }
    return list;
  }
  const auto text = value.string();
  return text && change < 5 ? Value(mutatedText(std::string(*text), random)) : oddValue(random);
}

Dictionary asPush(const Value& richFeatures) {
  return Dictionary{{"aps", Dictionary{{"mutable-content", 1}, {"category", "c"}}}, {"_sid", "VTQX"}}.setting(
      "_rf", richFeatures);
}

// Every payload of the source tree, plain and compressed, and one that is both.
std::vector<Dictionary> payloads() {
  const std::filesystem::path root(QX_SOURCE_DIR);
  std::vector<Dictionary> pushes;
  for (const auto& file : std::filesystem::directory_iterator(root / "fuzz/corpus/carousel")) {
    if (const auto richFeatures = QXPlatform::parseJSON(support::contentsOf(file)))
      pushes.push_back(asPush(*richFeatures));
  }
  const std::string guide = support::contentsOf(root / "docs/payload.md");
  const std::size_t start = guide.find("```json") + 7;
  pushes.push_back(support::dictionary(guide.substr(start, guide.find("```", start) - start)));
  for (std::size_t i = 0, count = pushes.size(); i < count; ++i) {
    const auto richFeatures = pushes[i]["_rf"].dictionary();
    if (!richFeatures) continue;
    const auto packed = qx::compressRichFeatures(*richFeatures);
    pushes.push_back(pushes[i].setting("$_rf", *packed));
    pushes.push_back(pushes[i].removing("_rf").setting("$_rf", *packed));
  }
  return pushes;
}

// What a device does, from the push to the panels.
class Device {
 public:
  Device() { behaviour_.showThumbnail = false; }

  bool shows(const std::string& push) {
    const auto request = QXPlatform::notificationRequestFromJSON(*QXPlatform::parseJSON(push));
    if (!request) return false;
    const auto shown = support::makeRequest(service_.run(*request).content.userInfo);
    if (!VTQXUtility::isVTQXPushNotification(*shown)) return false;
    const auto coordinator = screens_.createCoordinatorUsing(*shown);
    if (coordinator == nullptr) return false;
    coordinator->startWith(shown);
    const auto& panels = screen_->applied.panels;
    return !screen_->collapsed && panels != nullptr && !panels->empty();
  }

 private:
  qx::HostBehaviour behaviour_;
  QXPlatform::ServiceExtensionHost service_{
      [this] { return std::make_shared<qx::SimulatedHostService>(behaviour_); }, std::chrono::seconds(30)};
  std::shared_ptr<FakeCarouselScreen> screen_;
  DefaultCoordinatorFactory screens_{
      [this](auto&&...) { return screen_ = std::make_shared<FakeCarouselScreen>(); }, [](auto&&...) {}};
};

bool passes(const std::string& push) {
  const auto document = qx::PushDocument::parse(push);
  return document &&
         std::ranges::none_of(qx::checkPush(*document, qx::PushLimit::apns), &qx::Finding::isError);
}

// A device without an operating system around it has no use for "aps", so that stays as it is; and a push
// without a carousel may be good as well.
TEST(CheckAgreementTest, NoErrorMeansThatTheCarouselIsShown) {
  const char* given = std::getenv("QX_SEED");
  const unsigned seed = given != nullptr ? static_cast<unsigned>(std::stoul(given)) : std::random_device()();
  Random random(seed);
  RecordProperty("seed", std::to_string(seed));
  std::cout << "QX_SEED=" << seed << "\n";
  const auto originals = payloads();
  ASSERT_GT(originals.size(), 6U);
  Device device;
  int compared = 0;
  int shown = 0;
  while (compared < kMutations && !HasFailure()) {
    const Dictionary& original = originals[below(random, originals.size())];
    Value push = original.removing("aps");
    for (std::size_t i = 1 + below(random, 3); i > 0; --i) push = mutated(push, random);
    if (!push.isDictionary()) continue;
    const Dictionary whole = push.dictionary()->setting("aps", original["aps"]);
    const bool hasCarousel = whole.contains("_rf") || whole.contains("$_rf");
    // A mutation may cut a character in two; the text that travels holds none such.
    const std::string text = whole.description();
    if (!hasCarousel || text.size() > 4096) continue;
    ++compared;
    const bool isShown = device.shows(text);
    shown += isShown ? 1 : 0;
    EXPECT_EQ(passes(text), isShown) << text;
  }
  EXPECT_GT(shown, kMutations / 20);
  EXPECT_LT(shown, kMutations * 19 / 20);
  std::cout << compared << " pushes, " << shown << " of them shown\n";
}

}  // namespace
