#include "QXExtensionSDK/payload/Action.h"

#include <utility>

#include "platform/foundation/FatalError.h"

namespace QXExtensionSDK {

namespace {

using DecodedAction = platform::Result<ActionSerDeWrapper, platform::DecodingError>;

struct ActionKind {
  ActionType type = ActionType::openApp;

  static constexpr auto jsonFields() {
    return platform::jsonFields(platform::jsonField("t", &ActionKind::type));
  }
};

template <typename Record>
DecodedAction decodeAs(const platform::Value& value) {
  auto record = platform::decodeValue<Record>(value);
  if (!record) return record.error();
  return ActionSerDeWrapper{*std::move(record)};
}

}  // namespace

DecodedAction ActionSerDeWrapper::decodeJSON(const platform::Value& value) {
  const auto kind = platform::decodeValue<ActionKind>(value);
  if (!kind) return kind.error();
  switch (kind->type) {
    case ActionType::openApp:
      return decodeAs<OpenAppAction>(value);
    case ActionType::openDeepLink:
      return decodeAs<OpenDeeplinkAction>(value);
    case ActionType::openWebUrl:
      return decodeAs<OpenWebUrlAction>(value);
    case ActionType::openCloudPage:
      return decodeAs<OpenCloudPageAction>(value);
  }
  platform::fatalError("An action type outside 0 to 3");
}

bool ActionSerDeWrapper::encodeJSON(std::string& out, platform::JSONFault& fault) const {
  return std::visit(
      [&]<typename Record>(const Record& record) {
        return platform::JSONCoder<Record>::encode(out, record, fault);
      },
      action);
}

}  // namespace QXExtensionSDK
