#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"

namespace support {

// `json` as a dictionary; throws for anything else, which is a mistake of the test.
inline QXPlatform::Dictionary dictionary(std::string_view json) {
  const auto value = QXPlatform::parseJSON(json);
  if (!value || !value->isDictionary()) throw std::runtime_error("No JSON object: " + std::string(json));
  return *value->dictionary();
}

inline std::shared_ptr<const QXPlatform::UNNotificationRequest> makeRequest(
    QXPlatform::Dictionary userInfo, std::string identifier = "request") {
  QXPlatform::NotificationProperties properties;
  properties.userInfo = std::move(userInfo);
  return std::make_shared<const QXPlatform::UNNotificationRequest>(QXPlatform::UNNotificationRequest{
      std::move(identifier), std::make_shared<QXPlatform::UNNotificationContent>(std::move(properties))});
}

// The rich features of a carousel: `items` is the JSON text of its panels, `more` of further members of the
// template, such as R("tms":3000,).
inline std::string carousel(std::string_view items, std::string_view more = "") {
  return R"({"vt":{"t":"0",)" + std::string(more) + R"("it":)" + std::string(items) + "}}";
}

// `count` panels with an image and nothing else.
inline std::string plainPanels(int count) {
  std::string panels;
  for (int i = 0; i < count; ++i) {
    panels += (i == 0 ? "" : ",") + (R"({"id":"p)" + std::to_string(i)) + R"(","md":{"ul":"u"}})";
  }
  return "[" + panels + "]";
}

}  // namespace support
