#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// Where the containers lie: $QX_APP_GROUPS_ROOT, or else $XDG_DATA_HOME/app-groups ($HOME/.local/share when
// that is unset). Nothing when the environment has none of them. Any thread.
std::optional<std::filesystem::path> containersRoot();

// The directory there that the processes of one application group share. Nothing when the directory does not
// exist, or when the identifier is empty or holds a slash, "..", or a control character. Any thread.
std::optional<URL> containerURLForSecurityApplicationGroupIdentifier(std::string_view group);

// While it lives, what the calling thread has once found out of a container stays as it was found: for work
// that asks again and again. Inside another it does nothing.
class ContainerLookupScope {
 public:
  ContainerLookupScope();
  ~ContainerLookupScope();
  ContainerLookupScope(const ContainerLookupScope&) = delete;
  ContainerLookupScope& operator=(const ContainerLookupScope&) = delete;

 private:
  friend std::optional<URL> containerURLForSecurityApplicationGroupIdentifier(std::string_view group);

  ContainerLookupScope* const outer_;
  std::optional<std::string> group_;  // whose container has been looked up
  std::optional<URL> found_;
};

// The installer's side: where that directory is to be made. Nothing for an identifier that can have none.
std::optional<std::filesystem::path> containerPathForGroup(std::string_view group);

}  // namespace QXPlatform
