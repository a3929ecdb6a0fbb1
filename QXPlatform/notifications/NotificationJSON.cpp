#include "QXPlatform/notifications/NotificationJSON.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "QXPlatform/foundation/JSONCoder.h"
#include "QXPlatform/foundation/UUID.h"

namespace QXPlatform {

namespace {

using RequestResult = Result<std::shared_ptr<const UNNotificationRequest>>;

std::optional<std::string> textAt(const Value* object, std::string_view key) {
  const Value* value = object != nullptr ? object->find(key) : nullptr;
  const auto text = value != nullptr ? value->string() : std::nullopt;
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

// However it is written: 3 and 3.0 are one number.
std::optional<std::int64_t> wholeNumber(const Value& value) {
  std::int64_t number = 0;
  DecodingError ignored;
  return JSONCoder<std::int64_t>::decode(value, number, ignored) ? std::optional(number) : std::nullopt;
}

std::shared_ptr<const UNNotificationRequest> makeRequest(std::string identifier,
                                                         NotificationProperties properties) {
  return std::make_shared<const UNNotificationRequest>(UNNotificationRequest{
      std::move(identifier), std::make_shared<const UNNotificationContent>(std::move(properties))});
}

// An alert is text, the body, or an object; a sound is a name, or an object with one.
RequestResult requestFromAPNs(const Value& aps, const Value& push) {
  NotificationProperties properties;
  const Value* alert = aps.find("alert");
  if (alert != nullptr && alert->string()) {
    properties.body = *alert->string();
  } else {
    properties.title = textAt(alert, "title").value_or("");
    properties.subtitle = textAt(alert, "subtitle").value_or("");
    properties.body = textAt(alert, "body").value_or("");
  }
  if (const Value* badge = aps.find("badge")) properties.badge = wholeNumber(*badge);
  properties.sound = textAt(&aps, "sound");
  if (!properties.sound) properties.sound = textAt(aps.find("sound"), "name");
  properties.userInfo = push.dictionary().value_or(Dictionary());
  return makeRequest(makeUUIDString(), std::move(properties));
}

// Reads the members of a full request's content and remembers the first that is wrong.
class ContentReader {
 public:
  explicit ContentReader(const Value& content) : content_(content) {}

  template <typename T>
  void readText(std::string_view key, T& target) {
    if (const Value* value = present(key)) {
      if (const auto text = value->string()) {
        target = std::string(*text);
      } else {
        fail(key, "is not text");
      }
    }
  }

  void readBadge(std::optional<std::int64_t>& target) {
    if (const Value* value = present("badge")) {
      target = wholeNumber(*value);
      if (!target) fail("badge", "is not an integer");
    }
  }

  void readUserInfo(Dictionary& target) {
    if (const Value* value = present("userInfo")) {
      if (auto dictionary = value->dictionary()) {
        target = *std::move(dictionary);
      } else {
        fail("userInfo", "is not an object");
      }
    }
  }

  void readAttachments(std::vector<UNNotificationAttachment>& target) {
    const Value* value = present("attachments");
    if (value == nullptr) return;
    if (!value->isArray()) fail("attachments", "is not a list");
    for (std::size_t i = 0; i < value->elements().size(); ++i) {
      readAttachment(value->elements()[i], "attachments/" + std::to_string(i), target);
    }
  }

  const std::optional<Error>& error() const { return error_; }

 private:
  const Value* present(std::string_view key) const {
    const Value* value = content_.find(key);
    return value != nullptr && !value->isNull() ? value : nullptr;
  }

  void readAttachment(const Value& element, const std::string& place,
                      std::vector<UNNotificationAttachment>& target) {
    const auto url = URL::parse(textAt(&element, "url").value_or(""));
    if (!url) return fail(place, "has no url");
    auto attachment = UNNotificationAttachment::make(textAt(&element, "identifier").value_or(""), *url);
    if (!attachment) return fail(place, attachment.error().message);
    target.push_back(*std::move(attachment));
  }

  void fail(std::string_view key, std::string_view problem) {
    if (!error_) error_ = Error{"/content/" + std::string(key) + " " + std::string(problem)};
  }

  const Value& content_;
  std::optional<Error> error_;
};

RequestResult requestFromFullForm(const Value& content, const Value& push) {
  if (!content.isDictionary()) return Error{"/content is not an object"};
  NotificationProperties properties;
  ContentReader reader(content);
  reader.readText("title", properties.title);
  reader.readText("subtitle", properties.subtitle);
  reader.readText("body", properties.body);
  reader.readBadge(properties.badge);
  reader.readText("sound", properties.sound);
  reader.readUserInfo(properties.userInfo);
  reader.readAttachments(properties.attachments);
  if (reader.error()) return *reader.error();
  const Value* identifier = push.find("identifier");
  if (identifier == nullptr || identifier->isNull())
    return makeRequest(makeUUIDString(), std::move(properties));
  if (!identifier->string()) return Error{"/identifier is not text"};
  return makeRequest(std::string(*identifier->string()), std::move(properties));
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

RequestResult notificationRequestFromJSON(const Value& push) {
  if (!push.isDictionary()) return Error{"a push is a JSON object"};
  if (const Value* aps = push.find("aps")) return requestFromAPNs(*aps, push);
  if (const Value* content = push.find("content")) return requestFromFullForm(*content, push);
  return Error{"neither \"aps\" nor \"content\": not a push"};
}

Dictionary notificationContentToJSON(const NotificationProperties& properties) {
  std::vector<std::pair<std::string, Value>> members;
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
