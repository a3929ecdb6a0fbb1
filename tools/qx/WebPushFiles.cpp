#include "tools/qx/WebPushFiles.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>
#include <utility>

#include "QXPlatform/files/FileContents.h"
#include "QXPlatform/files/FileCoordinator.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "agent/webpush/Base64URL.h"
#include "agent/webpush/VAPID.h"

namespace qx {

namespace {

using QXPlatform::Error;
using QXPlatform::jsonField;
using QXPlatform::Result;
using QXPlatform::URL;

// Whom a push service may write to about a sender that nobody has named.
constexpr const char* kDefaultSubject = "mailto:push-author@example.com";

struct SubscriptionKeysRecord {
  std::string p256dh;
  std::string auth;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(jsonField("p256dh", &SubscriptionKeysRecord::p256dh),
                                  jsonField("auth", &SubscriptionKeysRecord::auth));
  }
};

struct SubscriptionRecord {
  std::string endpoint;
  std::optional<SubscriptionKeysRecord> keys;
  // As the agent prints them.
  std::optional<std::string> publicKey;
  std::optional<std::string> auth;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(
        jsonField("endpoint", &SubscriptionRecord::endpoint), jsonField("keys", &SubscriptionRecord::keys),
        jsonField("publicKey", &SubscriptionRecord::publicKey), jsonField("auth", &SubscriptionRecord::auth));
  }
};

struct VAPIDRecord {
  std::string privateKey;
  std::string subject;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(jsonField("privateKey", &VAPIDRecord::privateKey),
                                  jsonField("subject", &VAPIDRecord::subject));
  }
};

template <typename Record>
Result<Record> readRecord(const std::string& file) {
  constexpr std::size_t kMostBytes = 65'536;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return Error{file + ": " + std::strerror(errno)};
  std::string text(kMostBytes, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  auto record = QXPlatform::decodeJSON<Record>(text);
  if (!record) return Error{file + ": " + record.error().description()};
  return *std::move(record);
}

Result<std::filesystem::path> defaultSenderFile() {
  const auto variable = [](const char* name) -> std::filesystem::path {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
  };
  const std::filesystem::path state = variable("XDG_STATE_HOME");
  const std::filesystem::path home = variable("HOME");
  if (!state.is_absolute() && home.empty()) {
    return Error{
        "HOME is not set, so there is no place for a sender's key: set it, or name a file by --vapid"};
  }
  return (state.is_absolute() ? state : home / ".local" / "state") / "qx" / "vapid.json";
}

Result<bool> makeSender(const std::filesystem::path& file) {
  const auto text = QXPlatform::encodeJSON(
      VAPIDRecord{QXAgent::encodeBase64URL(QXAgent::makeVAPIDKey().view()), kDefaultSubject});
  std::error_code error;
  std::filesystem::create_directories(file.parent_path(), error);
  const auto write = [&](const auto& staging, const auto&) {
    return QXPlatform::writeContents(*text + "\n", staging);
  };
  const auto outcome = QXPlatform::FileCoordinator().coordinateWritingForReplacing(
      URL::file(std::filesystem::absolute(file).string()), write);
  if (outcome != QXPlatform::FileCoordinator::Outcome::replaced) {
    return Error{file.string() + ": cannot be written"};
  }
  std::cerr << "qx send: made " << file.string() << "; put your own address into its subject\n";
  return true;
}

}  // namespace

Result<WebPushReceiver> readSubscription(const std::string& file) {
  const auto record = readRecord<SubscriptionRecord>(file);
  if (!record) return record.error();
  const auto endpoint = URL::parse(record->endpoint);
  if (!endpoint || endpoint->host().empty()) return Error{file + ": endpoint is no URL to post to"};
  const auto key = record->keys ? std::optional(record->keys->p256dh) : record->publicKey;
  const auto auth = record->keys ? std::optional(record->keys->auth) : record->auth;
  if (!key || !auth) return Error{file + ": no keys"};
  auto publicKeyBytes = QXAgent::decodeBase64URL(*key);
  auto authBytes = QXAgent::decodeBase64URL(*auth);
  if (!publicKeyBytes || !authBytes) return Error{file + ": a key is not base64url without padding"};
  return WebPushReceiver{*endpoint, {std::move(*publicKeyBytes), std::move(*authBytes)}};
}

Result<WebPushSender> readOrMakeSender(const std::optional<std::string>& file) {
  const Result<std::filesystem::path> where = file ? std::filesystem::path(*file) : defaultSenderFile();
  if (!where) return where.error();
  const std::filesystem::path& path = *where;
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    if (const auto made = makeSender(path); !made) return made.error();
  }
  const auto record = readRecord<VAPIDRecord>(path.string());
  if (!record) return record.error();
  auto privateKey = QXAgent::decodeBase64URL(record->privateKey);
  if (!privateKey) return Error{path.string() + ": privateKey is not base64url without padding"};
  return WebPushSender{std::move(*privateKey), record->subject};
}

}  // namespace qx
