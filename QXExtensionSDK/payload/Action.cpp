#include "QXExtensionSDK/payload/Action.h"

#include "QXPlatform/foundation/FatalError.h"

namespace QXExtensionSDK {

namespace {

struct ActionKind {
  ActionType type = ActionType::openApp;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("t", &ActionKind::type));
  }
};

Action emptyAction(ActionType type) {
  switch (type) {
    case ActionType::openApp:
      return OpenAppAction();
    case ActionType::openDeepLink:
      return OpenDeeplinkAction();
    case ActionType::openWebUrl:
      return OpenWebUrlAction();
    case ActionType::openCloudPage:
      return OpenCloudPageAction();
  }
  QXPlatform::fatalError("An action type outside 0 to 3");
}

}  // namespace

bool ActionSerDeWrapper::decodeJSON(const QXPlatform::Value& value, ActionSerDeWrapper& out,
                                    QXPlatform::DecodingErrors& errors) {
  ActionKind kind;
  if (!QXPlatform::JSONCoder<ActionKind>::decode(value, kind, errors)) return false;
  out.action = emptyAction(kind.type);
  return std::visit(
      [&]<typename Record>(Record& record) {
        return QXPlatform::JSONCoder<Record>::decode(value, record, errors);
      },
      out.action);
}

bool ActionSerDeWrapper::encodeJSON(std::string& out, QXPlatform::JSONFault& fault) const {
  return std::visit(
      [&]<typename Record>(const Record& record) {
        return QXPlatform::JSONCoder<Record>::encode(out, record, fault);
      },
      action);
}

}  // namespace QXExtensionSDK
