#include "QXPlatform/files/Container.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

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

struct Place {
  std::string path;
  URL url;
};

std::shared_ptr<const Place> makePlace(std::string_view group) {
  const auto path = containerPathForGroup(group);
  return path ? std::make_shared<const Place>(Place{path->native(), URL::file(path->native())}) : nullptr;
}

// All that the place depends on, but for the working directory.
class PlaceKey {
 public:
  PlaceKey() = default;
  explicit PlaceKey(std::string_view group) : group_(group) {
    for (std::size_t i = 0; i < kVariables.size(); ++i) values_[i] = variable(i);
  }
  bool isStill(std::string_view group) const {
    for (std::size_t i = 0; i < kVariables.size(); ++i) {
      if (values_[i] != variable(i)) return false;
    }
    return group_ == group;
  }

 private:
  static constexpr std::array kVariables{"QX_APP_GROUPS_ROOT", "XDG_DATA_HOME", "HOME"};
  static std::string_view variable(std::size_t number) {
    const char* value = std::getenv(kVariables[number]);
    return value == nullptr ? "" : value;
  }

  std::string group_;
  std::array<std::string, kVariables.size()> values_;
};

// Where the container lies that was asked for last: to find out costs more than to look whether it is there.
class LastPlace {
 public:
  static LastPlace& shared() {
    static NeverDestroyed<LastPlace> last;
    return *last;
  }

  // Null when there is none.
  std::shared_ptr<const Place> of(std::string_view group) {
    const std::lock_guard lock(mutex_);
    if (place_ != nullptr && key_.isStill(group)) return place_;
    place_ = nullptr;  // nothing that was another's stays when memory is wanting in between
    auto place = makePlace(group);
    const auto root = containersRoot();
    if (!root || !root->is_absolute()) return place;
    key_ = PlaceKey(group);
    place_ = place;
    return place;
  }

 private:
  std::mutex mutex_;
  // Below, guarded by mutex_.
  PlaceKey key_;
  std::shared_ptr<const Place> place_;
};

std::optional<URL> lookUp(std::string_view group) {
  const auto place = LastPlace::shared().of(group);
  struct stat status {};
  const bool isThere =
      place != nullptr && ::stat(place->path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
  return isThere ? std::optional(place->url) : std::nullopt;
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
