#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "QXPlatform/foundation/JSONCoding.h"

namespace QXExtensionSDK {

// What a click on a panel leads to.
enum class ActionType : std::uint8_t { openApp = 0, openDeepLink = 1, openWebUrl = 2, openCloudPage = 3 };
constexpr auto rawValues(QXPlatform::RawValuesOf<ActionType>) {
  return std::to_array<QXPlatform::RawCase<ActionType>>({{ActionType::openApp, "0"},
                                                         {ActionType::openDeepLink, "1"},
                                                         {ActionType::openWebUrl, "2"},
                                                         {ActionType::openCloudPage, "3"}});
}

// Brings up the app, without a target.
struct OpenAppAction {
  ActionType type = ActionType::openApp;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("t", &OpenAppAction::type));
  }
  friend bool operator==(const OpenAppAction&, const OpenAppAction&) = default;
};

// An action with a target, which is as the payload gives it: maybe absent, maybe no URL at all.
template <ActionType kType>
struct LinkAction {
  ActionType type = kType;
  std::optional<std::string> url;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("t", &LinkAction::type),
                                  QXPlatform::jsonField("ul", &LinkAction::url));
  }
  friend bool operator==(const LinkAction&, const LinkAction&) = default;
};

using OpenDeeplinkAction = LinkAction<ActionType::openDeepLink>;
using OpenWebUrlAction = LinkAction<ActionType::openWebUrl>;
using OpenCloudPageAction = LinkAction<ActionType::openCloudPage>;

// One of the four records.
using Action = std::variant<OpenAppAction, OpenDeeplinkAction, OpenWebUrlAction, OpenCloudPageAction>;

// An action on its way from and to JSON: first its kind is read, then the same object as the record of that
// kind.
struct ActionSerDeWrapper {
  Action action;

  ActionType type() const {
    return std::visit([](const auto& record) { return record.type; }, action);
  }

  static bool decodeJSON(const QXPlatform::Value& value, ActionSerDeWrapper& out,
                         QXPlatform::DecodingErrors& errors);
  bool encodeJSON(std::string& out, QXPlatform::JSONFault& fault) const;

  friend bool operator==(const ActionSerDeWrapper&, const ActionSerDeWrapper&) = default;
};

}  // namespace QXExtensionSDK
