#pragma once

#include <string>
#include <string_view>

namespace QXExtensionSDK {

// Names device, host application and framework to the back end. Any thread.
class UserAgentProvider {
 public:
  UserAgentProvider() = delete;

  // Such as
  //   QuorixSdk/5.2.0 (Debian GNU/Linux 12; en_US; Apple/pixel) com.example.host/3.1;
  //   QuorixExtensionSdk/1.0.0
  // Everything but the version comes from the process's surroundings, which are looked at once.
  static std::string userAgent(std::string_view qxsdkVersion);
};

}  // namespace QXExtensionSDK
