#include "QXPlatform/files/LockHolder.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <array>
#include <cstdio>
#include <fstream>

namespace QXPlatform {
namespace {

// How the system's list of locks names a file: its device in hexadecimal, its number in decimal.
std::optional<std::string> nameInList(const FileDescriptor& file) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) return std::nullopt;
  std::array<char, 64> name{};
  std::snprintf(name.data(), name.size(), "%02x:%02x:%ju", major(status.st_dev), minor(status.st_dev),
                static_cast<std::uintmax_t>(status.st_ino));
  return name.data();
}

std::string describeProcess(const std::string& process) {
  std::string name;
  std::getline(std::ifstream("/proc/" + process + "/comm"), name);
  return "process " + process + (name.empty() ? "" : " (" + name + ")");
}

}  // namespace

std::optional<std::string> lockHolder(const FileDescriptor& file) {
  const auto name = nameInList(file);
  std::ifstream locks("/proc/locks");
  // 1: FLOCK  ADVISORY  WRITE 4711 fe:00:1234 0 EOF; whoever waits stands behind an arrow instead.
  std::string number;
  std::string kind;
  std::string advisory;
  std::string access;
  std::string process;
  std::string locked;
  std::string range;
  while (name && locks >> number >> kind) {
    const bool holds = kind == "FLOCK" && locks >> advisory >> access >> process >> locked;
    std::getline(locks, range);
    // A process of another namespace has no number here.
    if (holds && locked == *name && process != "0") return describeProcess(process);
  }
  return std::nullopt;
}

}  // namespace QXPlatform
