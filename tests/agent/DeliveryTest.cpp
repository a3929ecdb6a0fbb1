#include "agent/Delivery.h"
#include "tests/support/Test.h"

namespace QXAgent {
namespace {

using testing::ElementsAre;

// A desktop that remembers what it shows; failing on demand.
class RecordingPresenter final : public Presenter {
 public:
  const std::string& session() const override { return session_; }
  bool knowsSession() const override { return true; }
  void show(const Banner& banner, std::uint32_t replaces, Completion completion) override {
    if (failures > 0) {
      --failures;
      return completion({End::failed, 0, "away"});
    }
    if ((!shown.empty() && refusals-- > 0) || banner.title == refused ||
        (banner.title == refusedUnlessPlain && !banner.isPlain))
      return completion({End::refused, 0, "unwanted"});
    shown.push_back(banner.title);
    replaced.push_back(replaces);
    completion({End::shown, static_cast<std::uint32_t>(shown.size()), {}});
  }
  void close(std::uint32_t id) override { closed.push_back(id); }

  int failures = 0;
  int refusals = 0;  // of whatever comes after the first
  std::string refused;
  std::string refusedUnlessPlain;
  std::vector<std::string> shown;
  std::vector<std::uint32_t> replaced;
  std::vector<std::uint32_t> closed;

 private:
  const std::string session_ = "session";
};

// Answers each push as soon as it comes, with a title that ends in "!"; but dies, keeps silent or refuses
// when the push says so.
constexpr const char* kExtension = R"(#!/usr/bin/python3
import json, os, sys, threading, time
def answer(push, seconds):
    time.sleep(seconds)
    push["content"]["title"] += "!"
    os.write(1, (json.dumps({"identifier": push["identifier"], "outcome": "delivered", "content": push["content"]}) + "\n").encode())
for number, line in enumerate(sys.stdin, 1):
    push = json.loads(line)
    title = push["content"]["title"]
    if title == "die": os.abort()
    if title.startswith("hold "): held = bytearray(int(title[5:])); time.sleep(20)
    if title == "die once" and not os.path.exists(sys.argv[1]):
        open(sys.argv[1], "w").close()
        os.abort()
    if title == "nothing": os.write(1, (json.dumps({"identifier": push["identifier"], "outcome": "delivered", "content": None}) + "\n").encode())
    elif title == "refuse": os.write(1, (json.dumps({"line": number, "error": "no"}) + "\n").encode())
    else: threading.Thread(target=answer, args=(push, 0.5 if title == "slow" else 4 if title == "very slow" else 0)).start()
)";

class DeliveryTest : public testing::Test {
 protected:
  DeliveryTest() : database_(directory_.path(kDatabaseName)), spool_(database_) {
    use(directory_.write("extension", kExtension));
  }

  void use(const std::string& program) {
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    use([this, program] { return startChild({program, {directory_.path("died")}, {}}); });
  }

  void use(const ServiceExtension::Starter& start) {
    extension_ = std::make_unique<ServiceExtension>(loop_, start, [] {});
    delivery_ =
        std::make_unique<Delivery>(loop_, spool_, *extension_,
                                   Delivery::Setting{"App", directory_.path("tmp"), directory_.path("files")},
                                   [this] { loop_.stop(0); });
    delivery_->setPresenter(presenter_);
  }

  void take(const std::string& title, const std::string& identifier) {
    spool_.take("", identifier, R"({"content":{"title":")" + title + R"("}})");
  }
  void take(const std::string& title) { take(title, title); }

  // Until all is shown, or too long.
  void deliver() {
    Timer patience(loop_, [this] { loop_.stop(1); });
    patience.start(std::chrono::seconds(20));
    delivery_->takeUp();
    EXPECT_EQ(loop_.run(), 0) << "not all is shown";
    EXPECT_EQ(spool_.account().waiting, 0);
  }

  const support::TemporaryDirectory directory_;
  EventLoop loop_;
  Database database_;
  Spool spool_;
  RecordingPresenter presenter_;
  std::unique_ptr<ServiceExtension> extension_;
  std::unique_ptr<Delivery> delivery_;
};

TEST_F(DeliveryTest, PushesAreShownInTheirOrderButNoneWaitsLongForASlowOne) {
  for (const char* title : {"very slow", "a", "slow", "b"}) take(title);
  deliver();
  EXPECT_THAT(presenter_.shown, ElementsAre("a!", "b!", "slow!", "very slow!"));
}

TEST_F(DeliveryTest, AShortWaitKeepsTheOrderAndALaterPushOfAnIdentifierReplacesTheEarlier) {
  take("slow", "x");
  take("b", "x");
  for (int i = 0; i < 40; ++i) take(std::to_string(i));
  deliver();
  ASSERT_EQ(presenter_.shown.size(), 42U);
  EXPECT_EQ(presenter_.shown[0], "slow!");
  EXPECT_EQ(presenter_.shown[1], "b!");
  EXPECT_EQ(presenter_.replaced[1], 1U);
  for (std::size_t i = 0; i < 40; ++i) EXPECT_EQ(presenter_.shown[i + 2], std::to_string(i) + "!");
  EXPECT_EQ(spool_.shown("x")->id, 2U);
}

TEST_F(DeliveryTest, AnExtensionThatDiesIsStartedAgainAndAPushThatKillsItTwiceIsShownAsItCame) {
  for (const char* title : {"a", "die once", "b", "die", "refuse", "nothing"}) take(title);
  deliver();
  ASSERT_EQ(presenter_.shown.size(), 6U);
  EXPECT_EQ(presenter_.shown[1], "die once!");
  EXPECT_EQ(presenter_.shown[3], "die");
  EXPECT_EQ(presenter_.shown[4].substr(0, 6), "refuse");
  EXPECT_EQ(presenter_.shown[5], "nothing");
  EXPECT_EQ(spool_.account().shown, 6);
}

TEST_F(DeliveryTest, AnExtensionThatHoldsTooMuchIsEnded) {
  if (kExtensionMemory > std::size_t{100} << 20) GTEST_SKIP() << "a sanitizer's extension may hold much";
  const std::string title = "hold " + std::to_string(2 * kExtensionMemory);
  take(title);
  deliver();
  EXPECT_THAT(presenter_.shown, ElementsAre(title));
  EXPECT_THAT(spool_.account().lastError.value_or(""), testing::HasSubstr("the extension holds"));
}

TEST_F(DeliveryTest, WithoutAnExtensionPushesAreShownAsTheyCame) {
  extension_ = nullptr;
  use(directory_.write("broken", "no program"));
  take("a");
  deliver();
  EXPECT_THAT(presenter_.shown, ElementsAre("a"));
  EXPECT_NE(spool_.account().lastError.value_or("").find("cannot start"), std::string::npos);
}

TEST_F(DeliveryTest, FilesThatAPushNamesAreLeftAloneAndNeedNotBeThere) {
  for (const char* folder : {"tmp", "files"}) std::filesystem::create_directory(directory_.path(folder));
  const std::string own = directory_.write("files/1-0.png", "own");
  for (const std::string& file : {own, directory_.write("tmp/a.png", "other"), std::string("/gone.png")})
    spool_.take("", file, R"({"content":{"title":"a","attachments":[{"url":"file://)" + file + R"("}]}})");
  deliver();
  EXPECT_EQ(presenter_.shown.size(), 3U);
  EXPECT_TRUE(std::filesystem::exists(directory_.path("tmp/a.png")));
  for (const ShownNotification& notification : spool_.allShown())
    EXPECT_TRUE(notification.files.empty()) << notification.identifier;
}

TEST_F(DeliveryTest, WhatCannotBeShownWaitsAndKeepsItsAnswerOverARestart) {
  presenter_.failures = 1;
  spool_.take("", "damaged", "{");
  take("a");
  take("b");
  spool_.recordAnswer(3, R"({"title":"made before"})");
  deliver();
  EXPECT_THAT(presenter_.shown, ElementsAre("a!", "made before"));
  EXPECT_EQ(spool_.account().putAside, 1);
}

TEST_F(DeliveryTest, WhatNobodyWantsToShowIsShownPlainlyOrElsePutAside) {
  presenter_.refused = "a!";
  presenter_.refusedUnlessPlain = "b!";
  presenter_.refusals = 4;
  take("earlier", "b");
  for (const char* title : {"not its fault", "a", "b", "c"}) take(title);
  deliver();
  EXPECT_THAT(presenter_.shown, ElementsAre("earlier!", "b!", "not its fault!", "c!"));
  EXPECT_THAT(presenter_.closed, ElementsAre(1U));
  EXPECT_EQ(spool_.account().putAside, 1);
  EXPECT_EQ(spool_.account().lastError, "unwanted");
}

// A program that no kill reaches.
class Invulnerable final : public Program {
 public:
  explicit Invulnerable(std::unique_ptr<Program> program) : program_(std::move(program)) {}
  ~Invulnerable() override { program_->kill(); }
  Invulnerable(const Invulnerable&) = delete;
  Invulnerable& operator=(const Invulnerable&) = delete;
  int exitDescriptor() const override { return program_->exitDescriptor(); }
  void kill() override {}
  void release() override { program_->release(); }
  std::optional<int> exitStatus() override { return program_->exitStatus(); }
  int processId() const override { return program_->processId(); }

 private:
  const std::unique_ptr<Program> program_;
};

TEST_F(DeliveryTest, AnExtensionThatCannotBeEndedIsWaitedForNoLonger) {
  if (kExtensionMemory > std::size_t{100} << 20) GTEST_SKIP() << "a sanitizer's extension may hold much";
  use([program = directory_.path("extension")] {
    auto started = startChild({program, {}, {}});
    started.value().program = std::make_unique<Invulnerable>(std::move(started.value().program));
    return started;
  });
  const std::string title = "hold " + std::to_string(2 * kExtensionMemory);
  take(title);
  deliver();
  EXPECT_THAT(presenter_.shown, ElementsAre(title));
}

}  // namespace
}  // namespace QXAgent
