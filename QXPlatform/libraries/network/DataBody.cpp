#include "QXPlatform/libraries/network/DataBody.h"

namespace QXPlatform {

URLError DataBody::tooLarge() const {
  return {URLError::Code::badServerResponse,
          "the answer is larger than " + std::to_string(limit_ >> 20) + " MB"};
}

std::optional<URLError> DataBody::expect(std::size_t size) {
  if (size > limit_) return tooLarge();
  bytes_.reserve(size);
  return std::nullopt;
}

std::optional<URLError> DataBody::append(std::string_view bytes) {
  if (bytes.size() > limit_ - bytes_.size()) return tooLarge();
  bytes_ += bytes;
  return std::nullopt;
}

}  // namespace QXPlatform
