// `qx carousel` as a program: what it reports, draws and refuses.

#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QString>
#include <QTimer>

#include "AppGroupSDK/context/AppIdProvider.h"
#include "QXExtensionSDK/content/CarouselContentView.h"
#include "QXPlatform/ui/Application.h"
#include "tests/AppGroupSDK/HostBundle.h"
#include "tests/support/CarouselPayloads.h"
#include "tests/support/Deflate.h"
#include "tests/support/EncodedImages.h"
#include "tests/support/Program.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"
#include "tools/qx/Results.h"
#include "tools/qx/carousel/CarouselSession.h"

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Value;
using support::ProgramResult;

// A directory with pushes, and a server with images.
class CarouselCommand : public testing::Test {
 protected:
  ProgramResult carousel(std::vector<std::string> arguments, const std::string& input = {}) const {
    arguments.insert(arguments.begin(), "carousel");
    return support::runProgram("qx", arguments, input);
  }

  std::string panels(int count) const {
    std::string list;
    for (int i = 0; i < count; ++i) {
      list += (i == 0 ? "" : ",") + (R"({"id":"p","md":{"ul":")" + server_.url("/files/sunrise.png")) +
              R"(","at":{"tx":"Bay"}},"ti":{"tx":"Title"},"ac":[{"t":"2","ul":"https://a.example"}]})";
    }
    return "[" + list + "]";
  }

  std::string write(const std::string& name, const std::string& push) const {
    return directory_.write(name, push);
  }
  std::string writeCarousel(const std::string& name, const std::string& items,
                            std::string_view more = "") const {
    return write(name, R"({"aps":{"alert":"Hi"},"_sid":"VTQX","_m":"m","_rf":)" +
                           support::carousel(items, more) + "}");
  }
  std::string path(const std::string& name) const { return directory_.path(name); }

  support::TemporaryDirectory directory_;
  backend::LoopbackServer server_;
};

std::string text(const Dictionary& line, std::string_view key) {
  const Value* value = line.find(key);
  return value == nullptr ? "absent" : std::string(value->string().value_or("no text"));
}

std::int64_t index(const Dictionary& line) {
  return line.find("currentPanelIndex")->integer().value_or(-1);
}

TEST_F(CarouselCommand, ReportsTheViewModelAfterLoadingAndAfterEachStep) {
  const auto result = carousel({writeCarousel("push.json", panels(3), R"("tms":3000,"s":{"bgc":"102030"},)"),
                                "--do", "next,back,tick,tick,wait:0,tap,next"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  const auto lines = result.lines();
  ASSERT_EQ(lines.size(), 8U);
  const std::array<const char*, 8> steps{"load", "next", "back", "tick", "tick", "wait", "tap", "next"};
  const std::array<std::int64_t, 8> indices{0, 1, 0, 1, 2, 2, 2, 2};
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(text(lines[i], "step"), steps[i]);
    EXPECT_EQ(index(lines[i]), indices[i]) << i;
    EXPECT_EQ(text(lines[i], "outcome"), "carousel");
    EXPECT_EQ(text(lines[i], "timerState"), i < 4 ? "running" : "stopped") << i;
    EXPECT_EQ(lines[i].find("defaultActionPerformed")->boolean(), i >= 6) << i;
  }
  EXPECT_EQ(*lines[1].find("navigationState"), Value(Dictionary{{"showNavigationButtons", true},
                                                                {"backButtonEnabled", true},
                                                                {"nextButtonEnabled", true},
                                                                {"buttonClickState", "next"}}));
  const Value& panel = lines[5].find("panels")->elements()[2];
  EXPECT_EQ(panel, Value(support::dictionary(R"({"url":")" + server_.url("/files/sunrise.png") + R"(",
      "mediaBackground":"102030","panelColor":"FFFFFF","textState":"onlyTitle","imageState":"success",
      "imageDownloadCount":1,"action":{"kind":"openWebUrl","url":"https://a.example"},
      "altText":{"text":"Bay","size":14,"style":"bold","alignment":"center","color":"000000"},
      "title":{"text":"Title","size":14,"style":"bold","alignment":"beginning","color":"2E2E2E"}})")));
}

TEST_F(CarouselCommand, ReportsACollapsedViewForWhatCannotBeShown) {
  const std::string good = writeCarousel("good.json", panels(1));
  const std::string ticking = writeCarousel("ticking.json", panels(3), R"("tms":10,)");
  const std::string other = write("other.json", R"({"aps":{"alert":"Hi"},"_sid":"OTHER"})");
  const auto check = [](const Dictionary& line) {
    EXPECT_EQ(text(line, "outcome"), "collapsed");
    EXPECT_EQ(*line.find("preferredContentSize"), Value(std::vector<Value>{360, 1}));
    EXPECT_TRUE(line.find("panels")->isArray() && line.find("panels")->elements().empty());
  };
  const auto alone = carousel({other});
  EXPECT_EQ(alone.exitCode, 0);
  EXPECT_EQ(carousel({other, "--watch"}).exitCode, 1);
  ASSERT_EQ(alone.lines().size(), 1U);
  check(alone.lines()[0]);

  const auto refreshed = carousel({ticking, "--do", "refresh:" + other + ",wait:50,tap,refresh:" + good});
  EXPECT_EQ(refreshed.exitCode, 0);
  ASSERT_EQ(refreshed.lines().size(), 5U);
  for (const std::size_t line : {1U, 2U, 3U}) check(refreshed.lines()[line]);
  EXPECT_EQ(refreshed.lines()[3].find("defaultActionPerformed")->boolean(), false);
  EXPECT_EQ(text(refreshed.lines()[4], "outcome"), "carousel");

  const auto drawn = carousel({other, "--png", path("none.png")});
  EXPECT_EQ(drawn.exitCode, 1);
  EXPECT_TRUE(drawn.errors.starts_with("qx carousel: nothing to draw")) << drawn.errors;
  EXPECT_FALSE(std::filesystem::exists(path("none.png")));
}

TEST_F(CarouselCommand, InflatesWhatTheServiceExtensionWouldHave) {
  const std::string features = support::packed(support::carousel(panels(2)));
  for (const std::string plain : {"", R"(,"_rf":{"vt":{}})"}) {
    const auto result =
        carousel({"-"}, R"({"aps":{},"_sid":"VTQX","$_rf":")" + features + '"' + plain + "}\n");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.errors.starts_with("qx carousel: there is no screen")) << result.errors;
    ASSERT_EQ(result.lines().size(), 1U);
    EXPECT_EQ(result.lines()[0]["panels"].elements().size(), 2U);
  }
}

TEST_F(CarouselCommand, AsksForNoResponseWhenItReports) {
  const support::ScopedEnvironment emptyIsNone("QX_BUNDLE", "");
  const auto result = support::runProgram(
      "qx", {"--log-level", "debug", "carousel", writeCarousel("push.json", panels(2)), "--do", "next,back"});
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  ASSERT_EQ(result.lines().size(), 3U);
  EXPECT_EQ(text(result.lines()[2], "responseOption"), "dismissAndForwardAction");
  EXPECT_EQ(result.errors.find("dismissAndForwardAction"), std::string::npos) << result.errors;
}

TEST_F(CarouselCommand, DrawsThePanelsThatAreAskedFor) {
  const std::string file = writeCarousel("push.json", panels(3), R"("tms":1,)");
  ASSERT_EQ(carousel({file, "--png", path("all.png"), "--all", "--width", "300", "--scale", "1.5"}).exitCode,
            0);
  for (const char* name : {"all-0.png", "all-1.png", "all-2.png"}) {
    const QImage image(QString::fromStdString(path(name)));
    EXPECT_EQ(image.width(), 450) << name;
    // The image has arrived: the sky is no grey.
    EXPECT_GT(image.pixelColor(225, 60).saturation(), 40) << name;
  }
  ASSERT_EQ(carousel({file, "--png", path("one.png"), "--panel", "1"}).exitCode, 0);
  ASSERT_EQ(carousel({file, "--png", path("dark.png"), "--panel", "1", "--dark"}).exitCode, 0);
  const QImage light(QString::fromStdString(path("one.png")));
  const QImage dark(QString::fromStdString(path("dark.png")));
  EXPECT_EQ(light.size(), dark.size());
  EXPECT_EQ(light.width(), 720);
  EXPECT_GT(light.pixelColor(0, 0).lightness(), 200);
  EXPECT_LT(dark.pixelColor(0, 0).lightness(), 60);
}

TEST_F(CarouselCommand, DrivesAHostsOwnExtensionAsItsOwn) {
#ifdef QX_SANITIZED
  GTEST_SKIP() << "the toolkit starts a program in a way that the thread sanitizer ends over";
#endif
  const std::string file = writeCarousel("push.json", panels(3));
  const std::string steps = "wait:0,next,wait:0,back,tap,refresh:" + file + ",wait:0";
  const auto own =
      carousel({file, "--do", steps, "--png", path("own.png"), "--panel", "2", "--rtl", "--dark"});
  const auto hosts = carousel({file, "--do", steps, "--png", path("hosts.png"), "--panel", "2", "--rtl",
                               "--dark", "--extension", support::programPath("example-content-extension")});
  ASSERT_EQ(hosts.exitCode, 0) << hosts.errors;
  EXPECT_EQ(hosts.lines(), own.lines());
  EXPECT_EQ(QImage(QString::fromStdString(path("hosts.png"))),
            QImage(QString::fromStdString(path("own.png"))));
  const std::string other = write("other.json", R"({"aps":{"alert":"Hi"},"_sid":"OTHER"})");
  const auto collapsed = carousel({other, "--extension", support::programPath("example-content-extension")});
  EXPECT_EQ(text(collapsed.lines().at(0), "outcome"), "collapsed");

  const std::string dying = write("dying", "#!/bin/sh\nread line; echo chatter; exit 3\n");
  std::filesystem::permissions(dying, std::filesystem::perms::owner_all);
  const auto died = carousel({file, "--do", "next", "--extension", dying});
  EXPECT_EQ(died.exitCode, 1);
  EXPECT_NE(died.errors.find("extension: chatter"), std::string::npos) << died.errors;
  EXPECT_NE(died.errors.find("ended with exit code 3"), std::string::npos) << died.errors;
}

TEST_F(CarouselCommand, SaysOnceThatNoFontHasALetter) {
  const auto push = writeCarousel(
      "push.json", R"([{"id":"p","md":{"ul":"u"},"ti":{"tx":"\uDB84\uDE34"},"sti":{"tx":"\uDB84\uDE35"}}])");
  const auto result = carousel({push, "--do", "refresh:" + push});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "qx carousel: no font of this system has all letters of \"\U000F1234\"\n");
}

TEST_F(CarouselCommand, SaysWhatItDrewAndWhichImageFailed) {
  const std::string missing =
      R"([{"id":"p","md":{"ul":")" + server_.url("/files/none.png") + R"("}},)" + panels(1).substr(1);
  const std::string file = writeCarousel("push.json", missing);
  for (const bool fails : {false, true}) {
    std::vector<std::string> arguments{file, "--png", path("drawn.png"), "--all"};
    if (fails) arguments.insert(arguments.end(), {"--fail-on", "failed-image"});
    const auto result = carousel(arguments);
    EXPECT_EQ(result.exitCode, fails ? 1 : 0);
    EXPECT_EQ(
        result.errors,
        fails ? "qx carousel: the image of panel 0 failed: " + server_.url("/files/none.png") + "\n" : "");
    ASSERT_EQ(result.lines().size(), 2U);
    const auto drawn = result.lines()[1];
    EXPECT_EQ(text(drawn, "step"), "draw");
    EXPECT_EQ(drawn["panels"].elements()[0]["imageState"].string(), "failed");
    EXPECT_EQ(drawn["panels"].elements()[1]["imageState"].string(), "success");
  }
  // What the images' arrival would change between two runs.
  const auto stable = [&] { return carousel({file, "--stable", "--do", "tap,next,tap,back"}).output; };
  EXPECT_EQ(stable(), stable());
  const support::ScopedEnvironment platform("QT_QPA_PLATFORM", "no-such-platform");
  EXPECT_EQ(carousel({file}).errors,
            "qx carousel: cannot open a window: no view platform works with this screen\n");
}

TEST_F(CarouselCommand, KeepsTheEarlierPageWhenThereIsNoPushForANewOne) {
  const std::string page = path("keep.html");
  const auto written = carousel({"--gallery", page, writeCarousel("push.json", "[]")});
  ASSERT_EQ(written.exitCode, 0);
  EXPECT_EQ(written.errors, "");  // what the framework logs is not asked for
  const auto size = std::filesystem::file_size(page);
  const auto refused = carousel({"--gallery", page, write("typo.json", "{"), path("missing.json")});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.output, "");
  EXPECT_EQ(std::filesystem::file_size(page), size);
}

TEST_F(CarouselCommand, SaysWhatItRefuses) {
  const std::string file = writeCarousel("push.json", panels(2));
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{path("missing.json")}, "No such file"},
      {{directory_.path()}, "Is a directory"},
      {{write("broken.json", "{")}, "incomplete JSON at column 2"},
      {{write("none.json", "{}")}, "not a push"},
      {{file, "--png", path("a.png"), "--panel", "2"}, "2 panels, counted from 0"},
      {{file, "--png", path("no/such/directory.png")}, "cannot write"},
      {{file, "--do", "refresh:" + path("missing.json")}, "No such file"}};
  for (const auto& [arguments, reason] : cases) {
    const auto result = carousel(arguments);
    EXPECT_EQ(result.exitCode, 1) << reason;
    EXPECT_NE(result.errors.find(reason), std::string::npos) << result.errors;
  }
  EXPECT_EQ(carousel({write("several.ndjson", "{}\n{}"), "--watch"}).exitCode, 2);
  for (const char* option : {"--dark", "--rtl", "--width=320"})
    EXPECT_EQ(carousel({file, "--gallery", path("page.html"), option}).exitCode, 2) << option;
}

#ifdef QX_SANITIZED
constexpr QSize kPhotograph{1000, 750};  // a sanitizer takes long over each pixel
#else
constexpr QSize kPhotograph{4000, 3000};  // 48 MB when it is decoded as it is
#define QX_MEMORY_IS_TAKEN_AS_IT_IS
#endif

TEST_F(CarouselCommand, KeepsTwentyPhotographsInLittleMemory) {
  const std::string photograph = support::encodedImage("JPEG", kPhotograph, Qt::darkGreen);
  const std::string progressive = support::encodedProgressiveJPEG(kPhotograph);
  backend::LoopbackServerOptions options;
  options.handler = [&](const backend::Request& request) {
    return backend::Response{.body = request.path.ends_with("5") ? photograph : progressive};
  };
  const backend::LoopbackServer server(std::move(options));
  std::string items;
  std::string steps = "wait:0";
  for (int i = 0; i < 20; ++i) {
    items +=
        (i == 0 ? "" : ",") + (R"({"id":"p","md":{"ul":")" + server.url("/" + std::to_string(i))) + "\"}}";
    if (i > 0) steps += ",next,wait:0";
  }
  const auto result =
      support::runProgram("qx", {"carousel", writeCarousel("push.json", "[" + items + "]"), "--do", steps});
  ASSERT_EQ(result.exitCode, 0) << result.errors;
  const Dictionary last = result.lines().back();
  for (const Value& panel : last.find("panels")->elements()) {
    EXPECT_EQ(panel.find("imageState")->string(), "success");
  }
#ifdef QX_MEMORY_IS_TAKEN_AS_IT_IS
  constexpr std::int64_t kMostKilobytes = 100'000;
  EXPECT_LT(support::largestChildMemory(), kMostKilobytes);
#endif
}

// In the window that a person would see.
TEST_F(CarouselCommand, ClosesTheWindowAtATapAsADeviceWould) {
  const auto application = QXPlatform::makeApplication(QXPlatform::ScreenUse::none);
  qx::CarouselInvocation invocation;
  invocation.carousel.files = {write(
      "tapped.json", R"({"aps":{},"_sid":"VTQX","_m":"m","_rf":)" + support::carousel(panels(2)) + "}")};
  const auto carousel = qx::makeCarousel(invocation, {.width = 360, .hasWindow = true},
                                         [](const Dictionary& state) { qx::printResult({}, state); });
  ASSERT_TRUE(carousel);
  qx::CarouselSession session(invocation, **carousel);
  QTimer::singleShot(0, application.get(), [] {
    for (QWidget* widget : QApplication::allWidgets()) {
      auto* panel = dynamic_cast<QXExtensionSDK::CarouselContentView*>(widget);
      if (panel == nullptr) continue;
      const QPointF middle = panel->rect().center();
      for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                              QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, middle, panel->mapToGlobal(middle), Qt::LeftButton, Qt::LeftButton, {});
        QApplication::sendEvent(panel, &event);
      }
    }
  });
  testing::internal::CaptureStdout();
  EXPECT_FALSE(session.runWindow());
  const ProgramResult shown{.exitCode = 0, .output = testing::internal::GetCapturedStdout(), .errors = {}};
  ASSERT_EQ(shown.lines().size(), 2U) << shown.output;
  EXPECT_EQ(text(shown.lines()[1], "step"), "tap");
  EXPECT_EQ(shown.lines()[1].find("defaultActionPerformed")->boolean(), true);
}

void press(Qt::Key key) {
  for (QWidget* widget : QApplication::allWidgets()) {
    if (dynamic_cast<QXExtensionSDK::CarouselContentView*>(widget) == nullptr) continue;
    QKeyEvent event(QEvent::KeyPress, key, {});
    QApplication::sendEvent(widget, &event);
    return;
  }
}

std::string shownNotes() {
  for (QWidget* widget : QApplication::allWidgets()) {
    if (const auto* label = qobject_cast<QLabel*>(widget)) return label->text().toStdString();
  }
  return {};
}

TEST_F(CarouselCommand, FollowsAFileThroughEveryWayOfSavingIt) {
  const auto application = QXPlatform::makeApplication(QXPlatform::ScreenUse::none);
  const auto push = [&](int count, const std::string& type) {
    return R"({"aps":{"alert":"Hi","mutable-content":1,"category":"carousel"},"_sid":"VTQX","_m":"m","_mt":)" +
           type + R"(,"_rf":)" + support::carousel(panels(count)) + "}";
  };
  const std::string file = write("push.json", push(2, R"("push")"));
  const std::string whole = push(3, "1");
  std::vector<std::pair<std::string, std::function<void()>>> story{
      {"No findings",
       [&] {
         press(Qt::Key_Right);
         press(Qt::Key_Left);
         write("push.json", whole.substr(0, 40));
       }},
      {"The carousel is the one before", [&] { write("push.json", whole); }},
      {"/_mt", [&] { std::filesystem::remove(file); }},
      {"gone", [&] { std::filesystem::rename(write("saved", push(1, R"("push")")), file); }},
      {"No findings", [] { QApplication::closeAllWindows(); }}};
  QTimer teller;
  QObject::connect(&teller, &QTimer::timeout, [&, next = std::size_t{0}]() mutable {
    if (next == story.size() || shownNotes().find(story[next].first) == std::string::npos) return;
    story[next++].second();
  });
  teller.start(5);
  QTimer::singleShot(support::kPatience, application.get(), [] { QApplication::closeAllWindows(); });

  qx::CarouselInvocation invocation;
  invocation.carousel.files = {file};
  const auto carousel = qx::makeCarousel(invocation, {.width = 360, .hasWindow = true},
                                         [](const Dictionary& state) { qx::printResult({}, state); });
  ASSERT_TRUE(carousel);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(qx::CarouselSession(invocation, **carousel).runWatch());
  const ProgramResult shown{.exitCode = 0, .output = testing::internal::GetCapturedStdout(), .errors = {}};
  const auto lines = shown.lines();
  const std::vector<std::tuple<std::string, std::size_t, std::int64_t>> expected{
      {"load", 2, 0}, {"next", 2, 1}, {"back", 2, 0}, {"refresh", 3, 0}, {"refresh", 1, 0}};
  ASSERT_EQ(lines.size(), expected.size()) << shown.output;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(std::tuple(text(lines[i], "step"), lines[i]["panels"].elements().size(), index(lines[i])),
              expected[i]);
  }
}

TEST(ContentExtensionMain, AnswersOneLineANotification) {
  const std::string push =
      R"({"aps":{},"_sid":"VTQX","_rf":)" + support::carousel(R"([{"id":"p","md":{"ul":"u"}}])") + "}\n";
  const auto result = support::runProgram("example-content-extension", {"--width", "200"},
                                          push + "\n{}\n" + R"({"aps":{"alert":"Hi"}})");
  EXPECT_EQ(result.exitCode, 1);
  const auto lines = result.lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(text(lines[0], "outcome"), "shown");
  EXPECT_EQ(lines[0].find("preferredContentSize")->elements()[0].integer(), 200);
  EXPECT_EQ(text(lines[0], "responseOption"), "dismissAndForwardAction");
  EXPECT_EQ(lines[1].find("line")->integer(), 3);
  EXPECT_EQ(text(lines[2], "outcome"), "collapsed");
  EXPECT_EQ(support::runProgram("example-content-extension", {"--width", "wide"}).exitCode, 2);
}

TEST(ContentExtensionMain, TakesATapWhoseClickCannotBeSaved) {
#ifdef QX_THREADS_SANITIZED
  GTEST_SKIP() << "The sanitizer writes a file of its own before anything runs";
#endif
  const support::HostBundle host;
  AppGroupSDK::AppIdProvider().storeAppId("app", AppGroupSDK::ExtensionModuleName::quorixEngagement);
  const std::string load =
      R"({"step":"load","request":{"identifier":"i","content":{"userInfo":{"_sid":"VTQX","_m":"m","_rf":)" +
      support::carousel(R"([{"id":"p","md":{"ul":"u"},"ac":[{"t":"0"}]}])") + "}}}}\n";
  const auto result = support::runProgram(
      "/bin/sh",
      {"-c", R"((ulimit -f 0; exec "$0" --drive) | cat)", support::programPath("example-content-extension")},
      load + "{\"step\":\"tap\"}\n");
  EXPECT_EQ(result.lines().size(), 2U) << result.output;
}

}  // namespace
