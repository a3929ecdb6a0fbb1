// The page that `qx carousel --gallery` writes, as a browser shows it.

#include <QImage>
#include <QString>

#include "tests/support/CarouselPayloads.h"
#include "tests/support/Program.h"
#include "tests/support/Test.h"
#include "tools/backend/LoopbackServer.h"

namespace {

class Gallery : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kBrowser)) GTEST_SKIP() << "there is no browser: " << kBrowser;
  }

  // What the browser prints or draws of the page.
  support::ProgramResult browse(const std::vector<std::string>& task) const {
    std::vector<std::string> arguments{"--headless",
                                       "--no-sandbox",
                                       "--disable-gpu",
                                       "--hide-scrollbars",
                                       "--disable-dev-shm-usage",
                                       "--user-data-dir=" + directory_.path("browser")};
    arguments.insert(arguments.end(), task.begin(), task.end());
    arguments.push_back("file://" + directory_.path("gallery.html"));
    return support::runProgram(kBrowser, arguments);
  }

  static constexpr const char* kBrowser = "/usr/bin/chromium";
  support::TemporaryDirectory directory_;
  backend::LoopbackServer server_;
};

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
  return found;
}

TEST_F(Gallery, ShowsEveryPanelAndRunsNothingOfAPayload) {
  const std::string hostile = R"(<script>document.title='owned'</script>\"' onload='x)";
  const std::string items = R"([{"id":"a","md":{"ul":")" + server_.url("/files/sunrise.png") +
                            R"("},"ti":{"tx":")" + hostile + R"("}},{"id":"b","md":{"ul":"u"}}])";
  directory_.write("pushes.ndjson", R"({"aps":{"alert":{"title":")" + hostile +
                                        R"("}},"_sid":"VTQX","_rf":)" + support::carousel(items) + "}\n" +
                                        R"({"aps":{},"_sid":"OTHER"})");
  const auto written = support::runProgram(
      "qx", {"carousel", "--gallery", directory_.path("gallery.html"), directory_.path("pushes.ndjson")});
  ASSERT_EQ(written.exitCode, 0) << written.errors;
  const auto line = written.lines().at(0);
  EXPECT_EQ(line["pushes"].integer(), 2);
  EXPECT_EQ(line["pictures"].integer(), 24);
  EXPECT_GT(line["errors"].integer(), 1);
  std::ostringstream source;
  source << std::ifstream(directory_.path("gallery.html")).rdbuf();
  for (const char* active : {"<script", "src=\"http", "href=\"http", "url("}) {
    EXPECT_EQ(count(source.str(), active), 0U) << active;
  }

  const std::string page = browse({"--dump-dom"}).output;
  EXPECT_EQ(count(page, "<img "), 24U);
  EXPECT_EQ(count(page, "onload="), count(page, "onload='x"));
  EXPECT_EQ(page.find("<title>owned"), std::string::npos);
  EXPECT_EQ(count(page, "class=\"collapsed\""), 1U);

  browse({"--window-size=1500,2400", "--screenshot=" + directory_.path("page.png")});
  const QImage drawn = QImage(QString::fromStdString(directory_.path("page.png"))).scaled(300, 480);
  ASSERT_FALSE(drawn.isNull());
  int colorful = 0;
  for (int i = 0; i < drawn.width() * drawn.height(); ++i) {
    colorful += drawn.pixelColor(i % drawn.width(), i / drawn.width()).saturation() > 60 ? 1 : 0;
  }
  EXPECT_GT(colorful, 5000);  // skies
}

}  // namespace
