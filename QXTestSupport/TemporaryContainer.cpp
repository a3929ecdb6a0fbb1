#include "QXTestSupport/TemporaryContainer.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace QXTestSupport {
namespace {

class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::string& value) : name_(name) {
    if (const char* previous = getenv(name)) previous_ = previous;
    setenv(name, value.c_str(), 1);
  }
  ~ScopedVariable() {
    if (previous_) {
      setenv(name_, previous_->c_str(), 1);
    } else {
      unsetenv(name_);
    }
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  const char* const name_;
  std::optional<std::string> previous_;
};

std::string makeDirectory() {
  std::string path = (std::filesystem::temp_directory_path() / "qx-container-XXXXXX").string();
  if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("No temporary directory can be made");
  return path;
}

}  // namespace

class TemporaryContainer::State {
 public:
  explicit State(std::string group) : group_(std::move(group)) {
    std::filesystem::create_directory(container());
    std::ofstream(root_ + "/Info.plist")
        << R"(<?xml version="1.0"?><plist version="1.0"><dict><key>VT_QUORIX_APP_GROUP_KEY</key><string>)"
        << group_ << "</string></dict></plist>";
  }
  ~State() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  std::string container() const { return root_ + "/" + group_; }

 private:
  const std::string group_;
  const std::string root_ = makeDirectory();
  const ScopedVariable bundle_{"QX_BUNDLE", root_};
  const ScopedVariable containers_{"QX_APP_GROUPS_ROOT", root_};
};

TemporaryContainer::TemporaryContainer(const std::string& group) : state_(std::make_unique<State>(group)) {}

TemporaryContainer::~TemporaryContainer() = default;

std::string TemporaryContainer::path() const {
  return state_->container();
}

std::string TemporaryContainer::read(std::string_view file) const {
  std::ifstream stream(path() + "/" + std::string(file), std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace QXTestSupport
