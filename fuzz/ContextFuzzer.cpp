#include <cstddef>
#include <cstdint>
#include <string>

#include "AppGroupSDK/context/PNContextUtils.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/FatalError.h"

namespace {

using AppGroupSDK::PNContextInfo;
using AppGroupSDK::PNContextUtils;
using QXPlatform::fatalError;

// Names what it does not know nowhere, and says the same once more when it is written out.
void check(const PNContextInfo& context) {
  if (context.destinations().size() != context.destinationsArray().size()) fatalError("Not a destination");
  std::int64_t bits = 0;
  for (const std::int64_t bit : context.destinationsArray()) bits |= bit;
  const std::string text = std::to_string(QXPlatform::rawValue(context.source())) + ":" +
                           std::to_string(bits) + ":" + context.businessUnitId().value_or("");
  if (!(PNContextUtils::parseContextInfoFromContextString(QXPlatform::encodeBase64(text)) == context)) {
    fatalError("Read back as something else");
  }
}

}  // namespace

// A push context is read from whatever text it comes as, and from whatever that text is the base64 of.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  check(PNContextUtils::parseContextInfoFromContextString(input));
  check(PNContextUtils::parseContextInfoFromContextString(QXPlatform::encodeBase64(input)));
  return 0;
}
