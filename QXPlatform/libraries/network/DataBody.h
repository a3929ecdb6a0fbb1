#pragma once

#include <utility>

#include "QXPlatform/libraries/network/ResponseBody.h"

namespace QXPlatform {

// Holds the answer in memory, up to a limit that keeps a server from exhausting it.
class DataBody final : public ResponseBody {
 public:
  explicit DataBody(std::size_t limit) : limit_(limit) {}

  std::optional<URLError> expect(std::size_t size) override;
  std::optional<URLError> append(std::string_view bytes) override;
  std::optional<URLError> finish() override { return std::nullopt; }

  Data take() { return Data(std::move(bytes_)); }

 private:
  URLError tooLarge() const;

  const std::size_t limit_;
  std::string bytes_;
};

}  // namespace QXPlatform
