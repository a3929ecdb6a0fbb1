#include "QXExtensionSDK/payload/Action.h"

#include <utility>

#include "QXPlatform/foundation/FatalError.h"

namespace QXExtensionSDK {

namespace {

using DecodedAction = QXPlatform::Result<ActionSerDeWrapper, QXPlatform::DecodingError>;

struct ActionKind {
  ActionType type = ActionType::openApp;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("t", &ActionKind::type));
  }
};

template <typename Record>
DecodedAction decodeAs(const QXPlatform::Value& value) {
  auto record = QXPlatform::decodeValue<Record>(value);
  if (!record) return record.error();
  return ActionSerDeWrapper{*std::move(record)};
}

}  // namespace

DecodedAction ActionSerDeWrapper::decodeJSON(const QXPlatform::Value& value) {
  const auto kind = QXPlatform::decodeValue<ActionKind>(value);
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
  QXPlatform::fatalError("An action type outside 0 to 3");
}

bool ActionSerDeWrapper::encodeJSON(std::string& out, QXPlatform::JSONFault& fault) const {
  return std::visit(
      [&]<typename Record>(const Record& record) {
        return QXPlatform::JSONCoder<Record>::encode(out, record, fault);
      },
      action);
}

}  // namespace QXExtensionSDK
