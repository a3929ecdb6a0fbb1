#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "QXPlatform/foundation/URL.h"

namespace QXPlatform {

// The directory that the processes of one application group share: $QX_APP_GROUPS_ROOT/<group>, or else
// $XDG_DATA_HOME/app-groups/<group> ($HOME/.local/share when that is unset). Nothing when the directory does
// not exist, or when the identifier is empty or holds a slash, "..", or a control character. Any thread.
std::optional<URL> containerURLForSecurityApplicationGroupIdentifier(std::string_view group);

// The installer's side: where that directory is to be made. Nothing for an identifier that can have none.
std::optional<std::filesystem::path> containerPathForGroup(std::string_view group);

}  // namespace QXPlatform
