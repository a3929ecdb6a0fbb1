#include "QXPlatform/libraries/network/DataBody.h"

namespace QXPlatform {
namespace {

URLError tooLarge() {
  return {URLError::Code::badServerResponse, "the answer is larger than 16 MB"};
}

}  // namespace

std::optional<URLError> DataBody::expect(std::size_t size) {
  if (size > kLimit) return tooLarge();
  bytes_.reserve(size);
  return std::nullopt;
}

std::optional<URLError> DataBody::append(std::string_view bytes) {
  if (bytes.size() > kLimit - bytes_.size()) return tooLarge();
  bytes_ += bytes;
  return std::nullopt;
}

}  // namespace QXPlatform
