#pragma once

#include <filesystem>
#include <string>

namespace backend {

// A fresh key and a self-signed certificate for 127.0.0.1, ::1 and localhost, valid for a day. The
// certificate lies in a temporary file for clients to trust; the file goes with the object, the key never
// leaves memory.
class ThrowAwayCertificate {
 public:
  // Throws std::runtime_error when it cannot be made.
  ThrowAwayCertificate();
  ~ThrowAwayCertificate();
  ThrowAwayCertificate(const ThrowAwayCertificate&) = delete;
  ThrowAwayCertificate& operator=(const ThrowAwayCertificate&) = delete;

  const std::filesystem::path& caFile() const { return caFile_; }
  const std::string& certificatePEM() const { return certificatePEM_; }
  const std::string& keyPEM() const { return keyPEM_; }

 private:
  std::string certificatePEM_;
  std::string keyPEM_;
  std::filesystem::path caFile_;
};

}  // namespace backend
