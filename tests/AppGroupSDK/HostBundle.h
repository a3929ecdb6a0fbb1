#pragma once

#include "QXPlatform/files/Container.h"
#include "tests/support/Test.h"

namespace support {

// A host application with an empty container. The process reads its bundle once, so every test has the same
// group, in a root of its own.
class HostBundle {
 public:
  static constexpr const char* kGroup = "group.com.example.host";

  explicit HostBundle(const std::string& plistEntries =
                          std::string("<key>VT_QUORIX_APP_GROUP_KEY</key><string>") + kGroup + "</string>") {
    directory_.write("Info.plist", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + plistEntries +
                                       "</dict></plist>");
    std::filesystem::create_directory(container());
  }

  std::string container() const { return directory_.path(kGroup); }
  std::string file(const std::string& name) const { return container() + "/" + name; }
  void write(const std::string& name, const std::string& content) const {
    directory_.write(std::string(kGroup) + "/" + name, content);
  }
  std::string read(const std::string& name) const { return contentsOf(file(name)); }
  std::vector<std::string> files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(container())) {
      names.push_back(entry.path().filename());
    }
    return names;
  }

 private:
  TemporaryDirectory directory_;
  ScopedEnvironment bundle_{"QX_BUNDLE", directory_.path()};
  ScopedEnvironment root_{"QX_APP_GROUPS_ROOT", directory_.path()};
};

}  // namespace support
