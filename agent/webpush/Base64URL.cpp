#include "agent/webpush/Base64URL.h"

#include <algorithm>

#include "QXPlatform/foundation/Base64.h"

namespace QXAgent {

std::optional<QXPlatform::Data> decodeBase64URL(std::string_view text) {
  if (text.find_first_of("+/=") != std::string_view::npos) return std::nullopt;
  std::string standard(text);
  std::replace(standard.begin(), standard.end(), '-', '+');
  std::replace(standard.begin(), standard.end(), '_', '/');
  standard.append((4 - standard.size() % 4) % 4, '=');
  return QXPlatform::decodeBase64(standard);
}

std::string encodeBase64URL(std::string_view bytes) {
  std::string text = QXPlatform::encodeBase64(bytes);
  while (text.ends_with('=')) text.pop_back();
  std::replace(text.begin(), text.end(), '+', '-');
  std::replace(text.begin(), text.end(), '/', '_');
  return text;
}

}  // namespace QXAgent
