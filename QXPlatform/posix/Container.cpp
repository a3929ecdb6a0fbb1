#include "QXPlatform/files/Container.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <string>
#include <system_error>

#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXPlatform {

namespace {

bool canNameContainer(std::string_view group) {
  const auto isForbidden = [](char c) {
    return c == '/' || static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
  };
  return !group.empty() && group != "." && group.find("..") == std::string_view::npos &&
         std::none_of(group.begin(), group.end(), isForbidden);
}

std::filesystem::path environmentPath(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// The URL of the container that was asked for last: to make one costs more than to look whether it is there.
class LastContainer {
 public:
  static LastContainer& shared() {
    static NeverDestroyed<LastContainer> last;
    return *last;
  }

  URL url(const std::string& path) {
    const std::lock_guard lock(mutex_);
    if (path_ != path || !url_) {
      url_.reset();  // nothing that was another's stays when memory is wanting in between
      path_ = path;
      url_ = URL::file(path);
    }
    return *url_;
  }

 private:
  std::mutex mutex_;
  // Below, guarded by mutex_.
  std::string path_;
  std::optional<URL> url_;
};

std::optional<URL> lookUp(std::string_view group) {
  const auto path = containerPathForGroup(group);
  std::error_code error;
  if (!path || !std::filesystem::is_directory(*path, error)) return std::nullopt;
  return LastContainer::shared().url(path->native());
}

thread_local ContainerLookupScope* currentScope = nullptr;

}  // namespace

std::optional<std::filesystem::path> containersRoot() {
  if (auto root = environmentPath("QX_APP_GROUPS_ROOT"); !root.empty()) return root;
  // A relative data home is to be ignored, by the base-directory rules.
  if (const auto data = environmentPath("XDG_DATA_HOME"); data.is_absolute()) return data / "app-groups";
  const auto home = environmentPath("HOME");
  return home.empty() ? std::nullopt : std::optional(home / ".local" / "share" / "app-groups");
}

std::optional<std::filesystem::path> containerPathForGroup(std::string_view group) {
  if (!canNameContainer(group)) return std::nullopt;
  const auto root = containersRoot();
  if (!root) return std::nullopt;
  std::error_code error;
  auto path = std::filesystem::absolute(*root / group, error);
  if (error) return std::nullopt;
  return path;
}

std::optional<URL> containerURLForSecurityApplicationGroupIdentifier(std::string_view group) {
  ContainerLookupScope* const scope = currentScope;
  if (scope == nullptr) return lookUp(group);
  if (scope->group_ != group) {
    scope->found_ = lookUp(group);
    scope->group_ = group;
  }
  return scope->found_;
}

ContainerLookupScope::ContainerLookupScope() : outer_(currentScope) {
  if (outer_ == nullptr) currentScope = this;
}

ContainerLookupScope::~ContainerLookupScope() {
  if (outer_ == nullptr) currentScope = nullptr;
}

}  // namespace QXPlatform
