#include "QXPlatform/foundation/Device.h"

#include <sys/utsname.h>

#include <fstream>
#include <iterator>

#include "QXPlatform/foundation/OSRelease.h"

namespace QXPlatform {

namespace {

std::string osRelease() {
  for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
    std::ifstream file(path);
    if (file) return {std::istreambuf_iterator<char>(file), {}};
  }
  return {};
}

Device readDevice() {
  const std::string release = osRelease();
  // Cannot fail, as the memory is ours.
  struct utsname kernel {};
  uname(&kernel);
  return {kernel.nodename, osReleaseValue(release, "NAME").value_or("Linux"),
          osReleaseValue(release, "VERSION_ID").value_or(kernel.release)};
}

}  // namespace

const Device& Device::current() {
  static const Device device = readDevice();
  return device;
}

}  // namespace QXPlatform
