#include "QXPlatform/notifications/UNNotificationAttachment.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace QXPlatform {
namespace {

constexpr std::uintmax_t kMegabyte = std::uintmax_t{1024} * 1024;

class UNNotificationAttachmentTest : public testing::Test {
 protected:
  // The error text of an attachment of that file; empty when it is made.
  std::string errorFor(const std::string& name) const {
    const auto attachment = UNNotificationAttachment::make("id", URL::file(directory_.path(name)));
    return attachment.ok() ? "" : attachment.error().message;
  }
  // An image's first bytes and then no blocks, so that the large ones cost nothing.
  void makeFile(const std::string& name, std::uintmax_t size) const {
    directory_.write(name, "\xff\xd8\xff");
    std::filesystem::resize_file(directory_.path(name), size);
  }

  support::TemporaryDirectory directory_;
};

TEST_F(UNNotificationAttachmentTest, TakesTheTypesThatCanBeShownUpToTheirSize) {
  const std::vector<std::pair<std::vector<std::string>, std::uintmax_t>> kinds{
      {{"jpg", "jpeg", "png", "gif", "JPG", "Png"}, 10 * kMegabyte},
      {{"aif", "aiff", "wav", "mp3", "m4a"}, 5 * kMegabyte},
      {{"mpg", "mpeg", "mp4", "m4v", "avi"}, 50 * kMegabyte},
  };
  for (const auto& [extensions, most] : kinds) {
    for (const std::string& extension : extensions) {
      const std::string name = "media." + extension;
      makeFile(name, 3);
      EXPECT_EQ(errorFor(name), "");
      makeFile(name, most);
      EXPECT_EQ(errorFor(name), "");
      makeFile(name, most + 1);
      EXPECT_NE(errorFor(name).find("larger than the " + std::to_string(most / kMegabyte) + " MB"),
                std::string::npos);
    }
  }
}

TEST_F(UNNotificationAttachmentTest, SaysWhyAFileIsRefused) {
  makeFile("empty.png", 0);
  makeFile("page.html", 1);
  makeFile("none", 1);
  makeFile(".png", 1);
  makeFile("dot.", 1);
  makeFile("long.pngx", 1);
  makeFile("real.png", 3);
  makeFile("short.png", 2);
  directory_.write("page.png", "<html></html>");
  directory_.write("webp.png", "RIFF....WEBP");
  std::filesystem::create_symlink("real.png", directory_.path("link.png"));
  std::filesystem::create_symlink("nowhere.png", directory_.path("dangling.png"));
  std::filesystem::create_directory(directory_.path("directory.png"));
  ASSERT_EQ(mkfifo(directory_.path("fifo.png").c_str(), 0600), 0);
  const std::vector<std::pair<std::string, std::string>> table{
      {"missing.png", "the file does not exist"},
      {"real.png/below.png", "the file does not exist"},
      {"empty.png", "the file is empty"},
      {"short.png", "it is not an image"},
      {"page.png", "it is not an image"},
      {"webp.png", "it is not an image"},
      {"page.html", "its type is not one that can be shown"},
      {"none", "its type is not one that can be shown"},
      {".png", "its type is not one that can be shown"},
      {"dot.", "its type is not one that can be shown"},
      {"long.pngx", "its type is not one that can be shown"},
      {"link.png", "it is not a regular file"},
      {"dangling.png", "it is not a regular file"},
      {"directory.png", "it is not a regular file"},
      {"fifo.png", "it is not a regular file"},
  };
  for (const auto& [name, reason] : table) {
    const std::string file = std::filesystem::path(name).filename();
    EXPECT_EQ(errorFor(name),
              std::string("Attachment \"").append(file).append("\" refused: ").append(reason));
  }
}

TEST_F(UNNotificationAttachmentTest, KeepsIdentifierAndURLOfAFileURLOnly) {
  makeFile("an image #1.png", 3);
  const URL url = URL::file(directory_.path("an image #1.png"));
  const auto attachment = UNNotificationAttachment::make("picture", url);
  ASSERT_TRUE(attachment.ok());
  EXPECT_EQ(attachment->identifier(), "picture");
  EXPECT_EQ(attachment->url(), url);
  const auto remote = UNNotificationAttachment::make("picture", *URL::parse("https://example.com/image.png"));
  ASSERT_FALSE(remote.ok());
  EXPECT_EQ(remote.error().message, "Attachment is not a file URL");
}

}  // namespace
}  // namespace QXPlatform
