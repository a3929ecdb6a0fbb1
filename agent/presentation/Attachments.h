#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "QXPlatform/foundation/Value.h"

namespace QXAgent {

// The files that come with a notification's content. They are the extension's to bring.

// A push without the files that it names: whoever sends it has no say in what lies here.
QXPlatform::Value withoutAttachments(const QXPlatform::Value& push);

// Moves what lies below `temporary` into `files`, under names that begin with the number, and says so in the
// content. What the host keeps elsewhere is left alone.
QXPlatform::Dictionary adoptAttachments(const QXPlatform::Dictionary& content, std::int64_t number,
                                        const std::filesystem::path& temporary,
                                        const std::filesystem::path& files);

// The number of the push that such a file came with.
std::int64_t pushOfFile(const std::filesystem::path& file);

// Those of the content's files that were moved into `files` for the push of that number.
std::vector<std::filesystem::path> adoptedAttachments(const QXPlatform::Dictionary& content,
                                                      std::int64_t number,
                                                      const std::filesystem::path& files);

}  // namespace QXAgent
