#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "QXPlatform/foundation/Value.h"

namespace QXAgent {

// The files that come with a notification's content.

// Moves what lies below `temporary` into `files`, under names that begin with the number, and says so in the
// content. What the host keeps elsewhere is left alone.
QXPlatform::Dictionary adoptAttachments(const QXPlatform::Dictionary& content, std::int64_t number,
                                        const std::filesystem::path& temporary,
                                        const std::filesystem::path& files);

// The number of the push that such a file came with.
std::int64_t pushOfFile(const std::filesystem::path& file);

// Those of the content's files that lie in `files`.
std::vector<std::filesystem::path> attachmentsIn(const std::filesystem::path& files,
                                                 const QXPlatform::Dictionary& content);

}  // namespace QXAgent
