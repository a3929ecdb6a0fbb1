#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Value.h"

namespace QXAgent {

enum class Urgency : std::uint8_t { low = 0, normal = 1, critical = 2 };

// A notification as a desktop can show it, every text fit for the bus.
struct Banner {
  std::string identifier;
  std::string title;
  std::string subtitle;
  std::string body;
  std::optional<std::filesystem::path> image;
  std::optional<std::string> sound;  // absent: silent
  std::optional<std::int64_t> badge;
  Urgency urgency = Urgency::normal;
  bool isExpandable = false;  // there is a carousel behind it
  bool isPlain = false;       // nothing but its texts is to be shown
};

// From a notification's content as JSON. `appName` stands in for a title.
Banner makeBanner(const std::string& identifier, const QXPlatform::Dictionary& content,
                  const std::string& appName);

// Its texts alone.
Banner plainBanner(const Banner& banner);

// The body that a server shows: subtitle and body, one below the other, with what is markup to it escaped.
std::string bannerBody(const Banner& banner, bool rendersMarkup);

// Without what the bus refuses or nobody can see: control characters (line breaks and tabs stay) go,
// noncharacters become replacement characters, and what is longer than a screen is cut.
std::string displayText(std::string_view text, std::size_t limit);
// Of another program's words on what went wrong, to be kept.
inline constexpr std::size_t kLongestProblem = 500;

}  // namespace QXAgent
