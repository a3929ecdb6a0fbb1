#pragma once

#include <utility>

#include "QXExtensionSDK/payload/Action.h"
#include "QXPlatform/foundation/URL.h"

namespace QXExtensionSDK {

// What a tap on a panel really does: an action of the payload whose target has proved to be a URL. Immutable;
// any thread.
class UserAction {
 public:
  virtual ~UserAction() = default;

  virtual ActionType kind() const = 0;
  // Null unless this is a link. Lives as long as the action.
  virtual const QXPlatform::URL* url() const { return nullptr; }
};

class OpenAppUserAction final : public UserAction {
 public:
  ActionType kind() const override { return ActionType::openApp; }
};

template <ActionType kKind>
class LinkUserAction final : public UserAction {
 public:
  explicit LinkUserAction(QXPlatform::URL url) : url_(std::move(url)) {}

  ActionType kind() const override { return kKind; }
  const QXPlatform::URL* url() const override { return &url_; }

 private:
  QXPlatform::URL url_;
};

using OpenDeeplinkUserAction = LinkUserAction<ActionType::openDeepLink>;
using OpenWebUrlUserAction = LinkUserAction<ActionType::openWebUrl>;
using OpenCloudPageUserAction = LinkUserAction<ActionType::openCloudPage>;

}  // namespace QXExtensionSDK
