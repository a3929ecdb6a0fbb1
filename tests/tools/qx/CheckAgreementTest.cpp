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

// A push that a device shows if it shows its carousel.
Dictionary complete(Dictionary push) {
  if (push["aps"]["mutable-content"].isNull() || push["aps"]["category"].isNull()) {
    push = push.setting("aps", Dictionary{{"alert", "Hi"}, {"mutable-content", 1}, {"category", "c"}});
  }
  return push.contains("_sid") ? push : push.setting("_sid", "VTQX");
}

// The JSON objects in a text, the outermost of each, strings of C++ that continue each other joined.
std::vector<Dictionary> objectsIn(std::string text) {
  constexpr std::size_t kLongest = 8192;
  for (std::size_t end = text.find(")\""); end != std::string::npos; end = text.find(")\"", end + 1)) {
    const std::size_t next = text.find_first_not_of(" \n", end + 2);
    if (next != std::string::npos && text.compare(next, 3, "R\"(") == 0) text.erase(end, next + 3 - end);
  }
  std::vector<Dictionary> objects;
  for (std::size_t at = text.find('{'); at != std::string::npos; at = text.find('{', at + 1)) {
    const std::size_t first = text.find_first_not_of(" \n", at + 1);
    if (first == std::string::npos || text[first] != '"') continue;
    std::size_t end = at;
    for (int depth = 0; end < std::min(text.size(), at + kLongest); ++end) {
      depth += text[end] == '{' ? 1 : text[end] == '}' ? -1 : 0;
      if (depth == 0) break;
    }
    const auto object = QXPlatform::parseJSON(std::string_view(text).substr(at, end + 1 - at));
    if (!object) continue;
    objects.push_back(*object->dictionary());
    at = end;
  }
  return objects;
}

// Every carousel that the source tree spells out.
std::vector<Dictionary> carousels() {
  const std::filesystem::path root(QX_SOURCE_DIR);
  std::vector<std::filesystem::path> files{root / "README.md"};
  for (const char* folder : {"bench", "docs", "examples", "fuzz/corpus", "scripts", "tests", "tools"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  std::map<std::string, Dictionary> found;
  for (const auto& file : files) {
    for (Dictionary object : objectsIn(support::contentsOf(file))) {
      if (object.contains("vt")) object = Dictionary{{"_rf", object}};
      if (object.contains("_rf")) found.emplace(object.description(), complete(object));
    }
  }
  std::vector<Dictionary> pushes;
  for (const auto& [text, push] : found) pushes.push_back(push);
  return pushes;
}

// Each of them plain, compressed and both, and as a full request.
std::vector<Dictionary> payloads() {
  std::vector<Dictionary> pushes = carousels();
  for (std::size_t i = 0, count = pushes.size(); i < count; ++i) {
    const auto richFeatures = pushes[i]["_rf"].dictionary();
    const auto packed = richFeatures ? qx::compressRichFeatures(*richFeatures) : QXPlatform::Error{};
    if (!packed) continue;
    pushes.push_back(pushes[i].setting("$_rf", *packed));
    pushes.push_back(pushes[i].removing("_rf").setting("$_rf", *packed));
  }
  for (std::size_t i = 0, count = pushes.size(); i < count; ++i) {
    pushes.push_back(Dictionary{{"content", Dictionary{{"userInfo", pushes[i]}}}});
  }
  return pushes;
}

// What a device does, from the push service to the panels.
class Device {
 public:
  Device() { behaviour_.showThumbnail = false; }

  bool shows(const std::string& push) {
    const auto request = QXPlatform::notificationRequestFromJSON(*QXPlatform::parseJSON(push));
    if (!request || !takes((*request)->content->userInfo())) return false;
    const auto shown = support::makeRequest(service_.run(*request).content.userInfo);
    if (!VTQXUtility::isVTQXPushNotification(*shown)) return false;
    const auto coordinator = screens_.createCoordinatorUsing(*shown);
    if (coordinator == nullptr) return false;
    coordinator->startWith(shown);
    const auto& panels = screen_->applied.panels;
    return !screen_->collapsed && panels != nullptr && !panels->empty();
  }

 private:
  // The service's limit, and what the system asks for before it runs either extension. A full request without
  // "aps" is one that it has handed over already.
  static bool takes(const Dictionary& userInfo) {
    constexpr std::size_t kMostBytes = 4096;
    const Value& aps = userInfo["aps"];
    const Value& isMutable = aps["mutable-content"];
    const bool isRun = isMutable.integer() == 1 || isMutable.number() == 1.0;
    const bool isMeantForCarousels = aps["category"].string().value_or("") != "";
    return userInfo.description().size() <= kMostBytes &&
           (!userInfo.contains("aps") || (isRun && isMeantForCarousels));
  }

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

bool hasCarousel(const Dictionary& push) {
  const Value& userInfo = push.contains("aps") ? push : push["content"]["userInfo"];
  return !userInfo["_rf"].isNull() || !userInfo["$_rf"].isNull();
}

// A push without a carousel may be good as well, so those are left out.
TEST(CheckAgreementTest, NoErrorMeansThatTheCarouselIsShown) {
  const char* given = std::getenv("QX_SEED");
  const unsigned seed = given != nullptr ? static_cast<unsigned>(std::stoul(given)) : std::random_device()();
  Random random(seed);
  RecordProperty("seed", std::to_string(seed));
  std::cout << "QX_SEED=" << seed << "\n";
  const auto originals = payloads();
  ASSERT_GT(originals.size(), 200U);
  Device device;
  int compared = 0;
  int shown = 0;
  while (compared < kMutations && !HasFailure()) {
    Value push = originals[below(random, originals.size())];
    for (std::size_t i = 1 + below(random, 3); i > 0; --i) push = mutated(push, random);
    if (!push.isDictionary() || !hasCarousel(*push.dictionary())) continue;
    // A mutation may cut a character in two; the text that travels holds none such.
    const std::string text = push.description();
    ++compared;
    const bool isShown = device.shows(text);
    shown += isShown ? 1 : 0;
    EXPECT_EQ(passes(text), isShown) << text;
  }
  EXPECT_GT(shown, kMutations / 20);
  EXPECT_LT(shown, kMutations * 19 / 20);
  std::cout << compared << " mutations of " << originals.size() << " pushes, " << shown << " of them shown\n";
}

}  // namespace
