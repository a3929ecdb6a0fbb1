#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// Where the containers lie: $QX_APP_GROUPS_ROOT, or else $XDG_DATA_HOME/app-groups ($HOME/.local/share when
// that is unset). Nothing when the environment has none of them. Any thread.
std::optional<std::filesystem::path> containersRoot();

// The directory there that the processes of one application group share. Nothing when the directory does not
// exist, or when the identifier is empty or holds a slash, "..", or a control character. Any thread.
std::optional<URL> containerURLForSecurityApplicationGroupIdentifier(std::string_view group);

// The installer's side: where that directory is to be made. Nothing for an identifier that can have none.
std::optional<std::filesystem::path> containerPathForGroup(std::string_view group);

}  // namespace QXPlatform
