#include "QXPlatform/foundation/DecodingError.h"

#include <utility>

namespace QXPlatform {

bool DecodingErrors::add(std::string message) {
  errors_.push_back({{}, std::move(message)});
  return false;
}

void DecodingErrors::prependKey(std::size_t from, std::string_view key) {
  for (std::size_t i = from; i < errors_.size(); ++i) errors_[i].path.prependKey(key);
}

void DecodingErrors::prependIndex(std::size_t from, std::size_t index) {
  for (std::size_t i = from; i < errors_.size(); ++i) errors_[i].path.prependIndex(index);
}

std::vector<DecodingError> DecodingErrors::take(std::string_view prefix) && {
  for (DecodingError& error : errors_) error.path.prependText(prefix);
  return std::move(errors_);
}

}  // namespace QXPlatform
