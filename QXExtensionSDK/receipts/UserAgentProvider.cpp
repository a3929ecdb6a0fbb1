#include "QXExtensionSDK/receipts/UserAgentProvider.h"

#include "QXExtensionSDK/Version.h"
#include "QXPlatform/foundation/Bundle.h"
#include "QXPlatform/foundation/Device.h"
#include "QXPlatform/foundation/Locale.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXExtensionSDK {

namespace {

constexpr std::string_view kVersionPlaceholder = "{qxsdk_version}";

std::string hostApplication() {
  const auto& bundle = QXPlatform::Bundle::main();
  const auto identifier = bundle.bundleIdentifier();
  const auto version = bundle.objectForInfoDictionaryKey("CFBundleShortVersionString").string();
  return identifier && version ? (*identifier + "/").append(*version) : std::string();
}

std::string makeTemplate() {
  const auto& device = QXPlatform::Device::current();
  return std::string("QuorixSdk/").append(kVersionPlaceholder) + " (" + device.systemName + " " +
         device.systemVersion + "; " + QXPlatform::Locale::currentIdentifier() + "; Apple/" + device.name +
         ") " + hostApplication() + "; QuorixExtensionSdk/" +
         reinterpret_cast<const char*>(QXExtensionSDKVersionString);
}

}  // namespace

std::string UserAgentProvider::userAgent(std::string_view qxsdkVersion) {
  static const QXPlatform::NeverDestroyed<std::string> userAgentTemplate(makeTemplate());
  std::string text = *userAgentTemplate;
  for (auto at = text.find(kVersionPlaceholder); at != std::string::npos;
       at = text.find(kVersionPlaceholder, at + qxsdkVersion.size())) {
    text.replace(at, kVersionPlaceholder.size(), qxsdkVersion);
  }
  return text;
}

}  // namespace QXExtensionSDK
