// `qx demo` as a program.

#include "tests/support/Program.h"
#include "tests/support/Test.h"

namespace {

using support::runProgram;

class DemoCommandTest : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::current_path(directory_.path()); }
  void TearDown() override { std::filesystem::current_path("/"); }

  // Whether nothing is left where temporary files go.
  bool leftNothing() const { return std::filesystem::is_empty(temporary_.path()); }

  support::TemporaryDirectory directory_;
  support::TemporaryDirectory temporary_;
  support::ScopedEnvironment environment_{"TMPDIR", temporary_.path()};
};

TEST_F(DemoCommandTest, EveryStepHoldsAndLeavesItsFiles) {
  if (!std::filesystem::exists(support::programPath("qx-carousel"))) GTEST_SKIP() << "nothing draws";
  // With every thread speaking.
  const auto result = runProgram("qx", {"demo", "--log-level", "debug"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  ASSERT_GE(result.lines().size(), 4U);
  for (const auto& line : result.lines()) {
    EXPECT_EQ(line.find("held")->boolean(), true) << line.find("step")->description();
  }
  for (const auto* name :
       {"carousel.push.json", "carousel.shown.json", "plain.shown.json", "other-sender.shown.json",
        "requests.ndjson", "carousel-0.png", "carousel-3.png"}) {
    EXPECT_GT(std::filesystem::file_size(directory_.path("qx-demo/") + name), 0U) << name;
  }
  EXPECT_EQ(result.errors.find('\033'), std::string::npos);  // no colours outside a terminal
  EXPECT_TRUE(leftNothing());
}

// As in a build that leaves the view toolkit out.
TEST_F(DemoCommandTest, SaysThatTheCarouselIsNotThereAndDoesTheRest) {
  const std::string program = directory_.path("qx");
  std::filesystem::copy_file(support::programPath("qx"), program);
  directory_.write("Info.plist",
                   "<plist version=\"1.0\"><dict><key>VT_QUORIX_APP_GROUP_KEY</key>"
                   "<string>group.demo</string></dict></plist>");
  const auto demo = runProgram(program, {"demo", "--bundle", directory_.path()});
  EXPECT_EQ(demo.exitCode, 0) << demo.errors;
  const std::string reason = "the carousel is not in this build";
  for (const auto& line : demo.lines()) {
    const bool isDrawing = line["step"].string() == "Its panels, as the content extension draws them";
    EXPECT_EQ(line["leftOut"].string(), isDrawing ? std::optional<std::string_view>(reason) : std::nullopt);
    EXPECT_EQ(line.contains("held"), !isDrawing);
  }
  const auto carousel = runProgram(program, {"carousel", "qx-demo/carousel.push.json"});
  EXPECT_EQ(carousel.exitCode, 1);
  EXPECT_TRUE(carousel.errors.starts_with("qx carousel: " + reason)) << carousel.errors;
}

TEST_F(DemoCommandTest, AStepThatDoesNotHoldIsAnError) {
  directory_.write("Info.plist", "<plist version=\"1.0\"><dict></dict></plist>");
  const auto withoutGroup = runProgram("qx", {"demo", "--bundle", directory_.path()});
  EXPECT_EQ(withoutGroup.exitCode, 1);
  EXPECT_EQ(withoutGroup.lines().front().find("held")->boolean(), false);
  std::filesystem::remove_all("qx-demo");
  directory_.write("qx-demo", "in the way");
  EXPECT_EQ(runProgram("qx", {"demo"}).exitCode, 1);
  EXPECT_TRUE(leftNothing());
}

TEST_F(DemoCommandTest, WhatCannotBeWrittenIsAnErrorInOneLine) {
  for (const std::string name : {"carousel.push.json", "requests.ndjson"}) {
    std::filesystem::remove_all("qx-demo");
    std::filesystem::create_directory("qx-demo");
    std::filesystem::create_symlink("/dev/full", "qx-demo/" + name);
    const auto result = runProgram("qx", {"demo"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(
        result.errors.ends_with("qx demo: qx-demo/" + name + " cannot be written: No space left on device\n"))
        << result.errors;
    EXPECT_TRUE(leftNothing());
  }
}

}  // namespace
