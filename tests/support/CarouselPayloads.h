#pragma once

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/notifications/UNNotificationRequest.h"
#include "tests/support/Test.h"

namespace support {

// `json` as a dictionary; throws for anything else, which is a mistake of the test.
inline QXPlatform::Dictionary dictionary(std::string_view json) {
  const auto value = QXPlatform::parseJSON(json);
  if (!value || !value->isDictionary()) throw std::runtime_error("No JSON object: " + std::string(json));
  return *value->dictionary();
}

inline std::shared_ptr<const QXPlatform::UNNotificationRequest> requestWith(
    QXPlatform::NotificationProperties properties, std::string identifier = "request") {
  return std::make_shared<const QXPlatform::UNNotificationRequest>(QXPlatform::UNNotificationRequest{
      std::move(identifier),
      std::make_shared<const QXPlatform::UNNotificationContent>(std::move(properties))});
}

inline std::shared_ptr<const QXPlatform::UNNotificationRequest> makeRequest(
    QXPlatform::Dictionary userInfo, std::string identifier = "request") {
  QXPlatform::NotificationProperties properties;
  properties.title = "Title";
  properties.userInfo = std::move(userInfo);
  return requestWith(std::move(properties), std::move(identifier));
}

inline std::shared_ptr<const QXPlatform::UNNotificationRequest> requestOf(std::string_view userInfo) {
  return makeRequest(dictionary(userInfo));
}

// The rich features of a carousel: `items` is the JSON text of its panels, `more` of further members of the
// template, such as R("tms":3000,).
inline std::string carousel(std::string_view items, std::string_view more = "") {
  return R"({"vt":{"t":"0",)" + std::string(more) + R"("it":)" + std::string(items) + "}}";
}

// `count` panels with an image and nothing else.
inline std::string plainPanels(int count, const std::string& imageURL = "u") {
  std::string panels;
  for (int i = 0; i < count; ++i) {
    panels +=
        (i == 0 ? "" : ",") + (R"({"id":"p)" + std::to_string(i)) + R"(","md":{"ul":")" + imageURL + R"("}})";
  }
  return "[" + panels + "]";
}

}  // namespace support
