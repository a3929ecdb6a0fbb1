#pragma once

#include <string>

namespace QXPlatform {

// What the process knows of the machine it runs on. Read once per process; any thread.
struct Device {
  std::string name;           // user-visible: the host name
  std::string systemName;     // from os-release; "Linux" when it says nothing
  std::string systemVersion;  // likewise; the kernel release when it says nothing

  static const Device& current();
};

}  // namespace QXPlatform
