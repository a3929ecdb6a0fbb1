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

std::string between(const std::string& text, const std::string& begin, const std::string& end,
                    std::size_t from) {
  const std::size_t start = text.find(begin, from) + begin.size();
  return text.substr(start, text.find(end, start) - start);
}

// Each is described in other words, and is another picture, which is what they say.
void expectEveryLook(const std::string& page) {
  std::map<std::string, QImage> looks;
  std::set<std::string> pictures;
  for (std::size_t at = page.find("<img "); at != std::string::npos; at = page.find("<img ", at + 1)) {
    const std::string data = between(page, "src=\"data:image/webp;base64,", "\"", at);
    pictures.insert(data);
    looks[between(page, "alt=\"", "\"", at)].loadFromData(
        QByteArray::fromBase64(QByteArray::fromStdString(data)));
  }
  EXPECT_EQ(looks.size(), 24U);
  EXPECT_EQ(pictures.size(), 24U);
  for (const auto& [words, picture] : looks) {
    const auto says = [&text = words](const char* part) { return text.find(part) != std::string::npos; };
    EXPECT_EQ(picture.width(), says("320 points") ? 640 : 860) << words;
    EXPECT_EQ(picture.pixelColor(0, 0).lightness() < 60, says("(dark")) << words;
    if (!says("200 percent")) continue;
    const std::string ordinary = words.substr(0, words.find(", text at")) + ")";
    EXPECT_GT(picture.height(), looks.at(ordinary).height()) << words;
  }
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
  expectEveryLook(page);
  const auto findings = support::runProgram("qx", {"check", directory_.path("pushes.ndjson")}).lines();
  EXPECT_EQ(count(page, "class=\"tag\""), findings.size());
  for (const auto& finding : findings) {
    EXPECT_NE(page.find("<code>" + std::string(*finding["at"].string()) + "</code>"), std::string::npos);
  }
  EXPECT_NE(between(page, "<code>_sid</code>", "</tr>", 0).find(">13<"), std::string::npos);
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
