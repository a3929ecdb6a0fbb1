#pragma once

#include <zlib.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/libraries/network/ResponseBody.h"

namespace QXPlatform {

// Decodes an answer on its way into its body. One whose compressed form ends too early is an error, which the
// length that a server names does not tell.
class InflatedBody {
 public:
  // By the value of Content-Encoding. Null when nothing is encoded; an error for what nobody has asked for.
  static std::optional<URLError> make(std::string_view encoding, std::shared_ptr<ResponseBody> body,
                                      std::unique_ptr<InflatedBody>& made);

  explicit InflatedBody(std::shared_ptr<ResponseBody> body);
  ~InflatedBody();
  InflatedBody(const InflatedBody&) = delete;
  InflatedBody& operator=(const InflatedBody&) = delete;

  std::optional<URLError> append(std::string_view bytes);
  std::optional<URLError> finish();

 private:
  bool open(std::string_view start);

  const std::shared_ptr<ResponseBody> body_;
  z_stream stream_{};
  bool isOpen_ = false;
  bool hasEnded_ = false;
};

}  // namespace QXPlatform
