#include "QXPlatform/foundation/PropertyList.h"

#include "QXPlatform/foundation/Base64.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

using namespace std::string_literals;

const Value kEverything(Dictionary{{"CFBundleIdentifier", "com.example.a"},
                                   {"n", -5},
                                   {"big", 3000000000},
                                   {"r", 0.5},
                                   {"b", true},
                                   {"u", "\u00E9\U0001F600"},
                                   {"d", Date{1714554187}},
                                   {"x", Data("\0\xFF"s)},
                                   {"a", std::vector<Value>{1, Dictionary{{"k", "v"}}}},
                                   {"e", Dictionary()}});

std::string xml(std::string_view content) {
  return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)" + std::string(content) + "</plist>";
}

TEST(PropertyListTest, ReadsXML) {
  EXPECT_EQ(
      parsePropertyList(xml(
          "<dict><key>CFBundleIdentifier</key><string>com.example.a</string><key>n</key><integer>-5</integer>"
          "<key>big</key><integer>3000000000</integer><key>r</key><real>0.5</real><key>b</key><true/>"
          "<key>u</key><string>\u00E9&#x1F600;</string><key>d</key><date>2024-05-01T09:03:07Z</date>"
          "<key>x</key><data>AP8=</data><key>a</key><array><integer>1</integer>"
          "<dict><key>k</key><string>v</string></dict></array><key>e</key><dict/></dict>")),
      kEverything);
  EXPECT_EQ(parsePropertyList(xml("<string></string>")), Value(""));
}

TEST(PropertyListTest, ReadsBinary) {
  const auto bytes = decodeBase64(
      "YnBsaXN0MDDaAQIDBAUGBwgJCgsMERITFBUWFxhfEBJDRkJ1bmRsZUlkZW50aWZpZXJRYVFiU2JpZ1FkUWVRblFyUXVReF1jb20uZX"
      "hhbXBs"
      "ZS5hog0OEAHRDxBRa1F2CRKy0F4AM0HF8R5lgAAA0BP/////////+yM/"
      "4AAAAAAAAGMA6dg93gBCAP8IHTI0Njo8PkBCREZUV1lcXmBhZm9w"
      "eYKJAAAAAAAAAQEAAAAAAAAAGQAAAAAAAAAAAAAAAAAAAIw=");
  ASSERT_TRUE(bytes);
  EXPECT_EQ(parsePropertyList(bytes->view()), kEverything);
  for (std::size_t size = 0; size < bytes->size(); ++size) parsePropertyList(bytes->view().substr(0, size));
  for (std::size_t place = 0; place < bytes->size(); ++place) {
    for (const int change : {1, 0x0F, 0x80, 0xFF}) {
      std::string damaged(bytes->view());
      damaged[place] = static_cast<char>(damaged[place] ^ change);
      parsePropertyList(damaged);
    }
  }
}

// Objects as bytes; offsets take two bytes, references one.
std::string binary(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += static_cast<char>(bytes.size() >> 8U);
    offsets += static_cast<char>(bytes.size());
    bytes += object;
  }
  const auto table = bytes.size();
  bytes += offsets + "\0\0\0\0\0\0\2\1"s + "\0\0\0\0\0\0\0"s + static_cast<char>(objects.size()) +
           "\0\0\0\0\0\0\0\0"s + "\0\0\0\0\0\0"s;
  bytes += static_cast<char>(table >> 8U);
  return bytes + static_cast<char>(table);
}

TEST(PropertyListTest, RefusesHostileFiles) {
  EXPECT_EQ(parsePropertyList(binary({"\xA1\1"s, "\x09"s})), Value(std::vector<Value>{true}));

  EXPECT_EQ(parsePropertyList(binary({"\xD1\1\2"s, "\x51k"s, "\x09"s})), Value(Dictionary{{"k", true}}));
  EXPECT_EQ(parsePropertyList(binary({"\xD1\1\1"s, "\x09"s})), std::nullopt);
  EXPECT_EQ(parsePropertyList(binary({"\xD1\1\2"s, "\x52k\0"s, "\x09"s})), std::nullopt);
  EXPECT_EQ(parsePropertyList(binary({"\xD1\1\2"s, "\x62\0k\0\0"s, "\x09"s})), std::nullopt);
  EXPECT_EQ(parsePropertyList(binary({"\xD1\1\2"s, "\x61\1\0"s, "\x09"s})),
            Value(Dictionary{{"\u0100", true}}));

  std::vector<std::string> doubling;
  for (char i = 1; i <= 40; ++i) doubling.push_back("\xA2"s + i + i);
  doubling.push_back("\x09");
  EXPECT_EQ(parsePropertyList(binary(doubling)), std::nullopt);
  EXPECT_EQ(parsePropertyList(binary({"\xA1\0"s})), std::nullopt);
  EXPECT_EQ(parsePropertyList(binary({"\xA1\1"s, "\xA1\0"s})), std::nullopt);
  EXPECT_EQ(parsePropertyList(binary({"\xA1\x7F"s})), std::nullopt);
  EXPECT_EQ(parsePropertyList(binary({"\xAF\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s})), std::nullopt);
  EXPECT_EQ(parsePropertyList(binary({"\x5F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s})), std::nullopt);

  std::string open;
  std::string close;
  for (int i = 0; i < 5000; ++i) {
    open += "<array>";
    close += "</array>";
  }
  EXPECT_EQ(parsePropertyList(xml(open + close)), std::nullopt);
  EXPECT_EQ(parsePropertyList(xml(open)), std::nullopt);
  EXPECT_EQ(parsePropertyList(xml(open + open + open + close + close + close)), std::nullopt);
  EXPECT_EQ(parsePropertyList(xml(std::string(1'000'000, ' '))), std::nullopt);
}

TEST(PropertyListTest, RefusesWhatIsNone) {
  for (const std::string& bytes :
       {""s, "x"s, "{}"s, "bplist00"s, xml(""), xml("<unknown/>"), "<plist>"s, "<"s, "\0"s}) {
    EXPECT_EQ(parsePropertyList(bytes), std::nullopt) << bytes;
  }
}

}  // namespace
}  // namespace QXPlatform
