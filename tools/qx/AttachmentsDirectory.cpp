#include "tools/qx/AttachmentsDirectory.h"

#include <stdlib.h>

#include <system_error>

namespace qx {

AttachmentsDirectory::AttachmentsDirectory(const std::optional<std::string>& option)
    : isNamed_(option && *option != "none"), isDropped_(option == "none") {
  std::error_code error;
  if (isNamed_) {
    path_ = std::filesystem::absolute(*option, error);
    return;
  }
  std::string path = (std::filesystem::temp_directory_path(error) / "qx-attachments-XXXXXX").native();
  if (!error && mkdtemp(path.data()) != nullptr) path_ = path;
}

AttachmentsDirectory::~AttachmentsDirectory() {
  std::error_code ignored;
  if (isNamed_ || !path_) return;
  if (isDropped_) {
    std::filesystem::remove_all(*path_, ignored);
  } else {
    std::filesystem::remove(*path_, ignored);
  }
}

}  // namespace qx
