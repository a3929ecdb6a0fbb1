#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace QXExtensionSDK {

// What a click on a panel leads to.
enum class ActionType : std::uint8_t { openApp = 0, openDeepLink = 1, openWebUrl = 2, openCloudPage = 3 };

struct OpenAppAction {
  static constexpr ActionType type = ActionType::openApp;

  friend bool operator==(const OpenAppAction&, const OpenAppAction&) = default;
};

// An action with a target. The target is as the payload gives it: maybe absent, maybe no URL at all.
template <ActionType kType>
struct LinkAction {
  static constexpr ActionType type = kType;

  std::optional<std::string> url;

  friend bool operator==(const LinkAction&, const LinkAction&) = default;
};

using OpenDeeplinkAction = LinkAction<ActionType::openDeepLink>;
using OpenWebUrlAction = LinkAction<ActionType::openWebUrl>;
using OpenCloudPageAction = LinkAction<ActionType::openCloudPage>;

// One of the four.
using Action = std::variant<OpenAppAction, OpenDeeplinkAction, OpenWebUrlAction, OpenCloudPageAction>;

// An action on its way from or to JSON: the kind is read first, then the record of that kind.
struct ActionSerDeWrapper {
  Action action;

  ActionType type() const {
    return std::visit([](const auto& record) { return record.type; }, action);
  }

  friend bool operator==(const ActionSerDeWrapper&, const ActionSerDeWrapper&) = default;
};

}  // namespace QXExtensionSDK
