#include "agent/presentation/Banner.h"

#include "QXPlatform/foundation/JSON.h"
#include "agent/presentation/Attachments.h"
#include "tests/support/Test.h"

namespace QXAgent {
namespace {

using QXPlatform::Dictionary;

Dictionary content(std::string_view json) {
  return *QXPlatform::parseJSON(json).value().dictionary();
}

TEST(BannerTest, TextIsWhatTheBusTakesAndAScreenShows) {
  const struct {
    std::string text;
    std::string shown;
  } table[] = {
      {"plain \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80\n\tx",
       "plain \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80\n\tx"},
      {std::string("a\0b\x1B[1m\x7F", 8), "ab[1m"},
      {"\xC2\x85|", "|"},
      {"\xEF\xBF\xBE|\xEF\xB7\x90|\xF4\x8F\xBF\xBF", "\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD"},
      {"\xFF|\xC3", "\xEF\xBF\xBD|\xEF\xBF\xBD"},
      {std::string(98, 'x') + "\xE2\x82\xAC\xE2\x82\xAC", std::string(98, 'x') + "\xE2\x80\xA6"},
  };
  for (const auto& row : table) EXPECT_EQ(displayText(row.text, 100), row.shown);
}

TEST(BannerTest, MarkupIsEscapedWhereItIsRendered) {
  const Banner banner = makeBanner("i", content(R"({"title":"<t>","subtitle":"s & s","body":"<b>"})"), "App");
  EXPECT_EQ(banner.title, "<t>");
  EXPECT_EQ(bannerBody(banner, true), "s &amp; s\n&lt;b&gt;");
  EXPECT_EQ(bannerBody(banner, false), "s & s\n<b>");
  EXPECT_EQ(bannerBody(makeBanner("i", content(R"({"body":"b"})"), "App"), true), "b");
}

TEST(BannerTest, ABannerShowsWhatTheContentHolds) {
  const Banner plain = makeBanner("i", content(R"({"userInfo":{"aps":{"alert":"x"}}})"), "App");
  EXPECT_EQ(plain.title, "App");
  EXPECT_FALSE(plain.image || plain.sound || plain.badge || plain.isExpandable);
  EXPECT_EQ(plain.urgency, Urgency::normal);

  const Banner rich = makeBanner("i", content(R"({
      "title": "t", "badge": 3, "sound": "ding.oga",
      "attachments": [{"identifier": "a", "url": "file:///x/a.mp3"}, {"identifier": "b", "url": "file:///x/b%20c.PNG"}],
      "userInfo": {"aps": {"interruption-level": "critical"},
                   "_rf": {"vt": {"t": "0", "it": [{"id": "p", "md": {"ul": "https://x.example/a.png"}}]}}}})"),
                                 "App");
  EXPECT_EQ(rich.badge, 3);
  EXPECT_EQ(rich.sound, "ding.oga");
  EXPECT_EQ(rich.image, "/x/b c.PNG");
  EXPECT_EQ(rich.urgency, Urgency::critical);
  EXPECT_TRUE(rich.isExpandable);
}

TEST(AttachmentsTest, OnlyWhatTheExtensionDownloadedIsMoved) {
  const support::TemporaryDirectory directory;
  for (const char* folder : {"tmp", "files", "host"})
    std::filesystem::create_directory(directory.path(folder));
  const std::string downloaded = directory.write("tmp/a.png", "image");
  const std::string hosts = directory.write("host/b.png", "image");
  std::filesystem::create_directory_symlink(directory.path("host"), directory.path("tmp/link"));
  const auto before =
      content(R"({"attachments": [{"identifier": "a", "url": "file://)" + downloaded +
              R"("}, {"identifier": "b", "url": "file://)" + hosts +
              R"("}, {"identifier": "c", "url": "file://)" + directory.path("tmp/../host/b.png") +
              R"("}, {"identifier": "d", "url": "file://)" + directory.path("tmp/link/b.png") + R"("}]})");
  const auto after = adoptAttachments(before, 7, directory.path("tmp"), directory.path("files"));
  EXPECT_FALSE(std::filesystem::exists(downloaded));
  EXPECT_TRUE(std::filesystem::exists(hosts));
  EXPECT_EQ(after.find("attachments")->elements().size(), 3U);
  const auto files = adoptedAttachments(after, 7, directory.path("files"));
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files[0], directory.path("files/7-0.png"));
  EXPECT_TRUE(std::filesystem::exists(files[0]));
}

}  // namespace
}  // namespace QXAgent
