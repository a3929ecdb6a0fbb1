#include "QXPlatform/notifications/NotificationJSON.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/foundation/UUID.h"
#include "QXPlatform/notifications/NotificationRecords.h"

namespace QXPlatform {

namespace {

using RequestResult = Result<std::shared_ptr<const UNNotificationRequest>>;

std::optional<std::string> text(const Value& value) {
  const auto found = value.string();
  return found ? std::optional(std::string(*found)) : std::nullopt;
}

std::string identifierOf(std::optional<std::string> ownName, const RequestNaming& naming) {
  for (const auto* name : {&naming.identifier, &std::as_const(ownName), &naming.otherwise}) {
    if (*name) return **name;
  }
  return makeUUIDString();
}

std::shared_ptr<const UNNotificationRequest> makeRequest(std::optional<std::string> ownName,
                                                         const RequestNaming& naming,
                                                         NotificationProperties properties) {
  return std::make_shared<const UNNotificationRequest>(
      UNNotificationRequest{identifierOf(std::move(ownName), naming),
                            std::make_shared<const UNNotificationContent>(std::move(properties))});
}

// An alert is text, the body, or an object; a sound is a name, or an object with one.
RequestResult requestFromAPNs(const Value& aps, const Dictionary& push, const RequestNaming& naming) {
  NotificationProperties properties;
  const Value& alert = aps["alert"];
  properties.title = text(alert["title"]).value_or("");
  properties.subtitle = text(alert["subtitle"]).value_or("");
  properties.body = text(alert.string() ? alert : alert["body"]).value_or("");
  // However it is written: 3 and 3.0 are one number.
  if (const Value& badge = aps["badge"]; !badge.isNull()) {
    if (const auto number = decodeValue<std::int64_t>(badge)) properties.badge = *number;
  }
  const Value& sound = aps["sound"];
  properties.sound = text(sound.string() ? sound : sound["name"]);
  properties.userInfo = push;
  return makeRequest(std::nullopt, naming, std::move(properties));
}

Result<std::vector<UNNotificationAttachment>> makeAttachments(const std::vector<AttachmentRecord>& records) {
  std::vector<UNNotificationAttachment> attachments;
  for (const AttachmentRecord& record : records) {
    const auto refused = [&](const std::string& reason) {
      return Error{"/content/attachments/" + std::to_string(attachments.size()) + ": " + reason};
    };
    const auto url = URL::parse(record.url);
    if (!url) return refused("no URL");
    auto attachment = UNNotificationAttachment::make(record.identifier.value_or(""), *url);
    if (!attachment) return refused(attachment.error().message);
    attachments.push_back(*std::move(attachment));
  }
  return attachments;
}

RequestResult requestFromFullForm(const Dictionary& push, const RequestNaming& naming) {
  auto record = decodeValue<RequestRecord>(push);
  if (!record) return Error{record.error().description()};
  ContentRecord& content = record.value().content;
  auto attachments = makeAttachments(content.attachments.value_or(std::vector<AttachmentRecord>()));
  if (!attachments) return attachments.error();
  return makeRequest(std::move(record.value().identifier), naming,
                     {.title = content.title.value_or(""),
                      .subtitle = content.subtitle.value_or(""),
                      .body = content.body.value_or(""),
                      .badge = content.badge,
                      .sound = content.sound,
                      .userInfo = content.userInfo.value_or(Dictionary()),
                      .attachments = *std::move(attachments)});
}

Value attachmentsToJSON(const std::vector<UNNotificationAttachment>& attachments) {
  std::vector<Value> list;
  list.reserve(attachments.size());
  for (const UNNotificationAttachment& attachment : attachments) {
    list.emplace_back(
        Dictionary{{"identifier", attachment.identifier()}, {"url", attachment.url().absoluteString()}});
  }
  return list;
}

}  // namespace

RequestResult notificationRequestFromJSON(const Value& push, const RequestNaming& naming) {
  const auto object = push.dictionary();
  if (!object) return Error{"a push is a JSON object"};
  if (const Value* aps = object->find("aps")) return requestFromAPNs(*aps, *object, naming);
  if (object->contains("content")) return requestFromFullForm(*object, naming);
  return Error{"neither \"aps\" nor \"content\": not a push"};
}

Dictionary notificationContentToJSON(const NotificationProperties& properties) {
  constexpr std::size_t kMostMembers = 7;
  std::vector<std::pair<std::string, Value>> members;
  members.reserve(kMostMembers);
  const auto addText = [&](const char* key, const std::string& text) {
    if (!text.empty()) members.emplace_back(key, text);
  };
  addText("title", properties.title);
  addText("subtitle", properties.subtitle);
  addText("body", properties.body);
  if (properties.badge) members.emplace_back("badge", *properties.badge);
  if (properties.sound) members.emplace_back("sound", *properties.sound);
  members.emplace_back("userInfo", properties.userInfo);
  members.emplace_back("attachments", attachmentsToJSON(properties.attachments));
  return Dictionary::fromEntries(members);
}

Dictionary notificationRequestToJSON(const UNNotificationRequest& request) {
  return {{"identifier", request.identifier},
          {"content", request.content != nullptr ? notificationContentToJSON(request.content->snapshot())
                                                 : Dictionary()}};
}

}  // namespace QXPlatform
