#include "QXPlatform/libraries/network/InflatedBody.h"

#include <array>
#include <utility>

#include "QXPlatform/foundation/ASCII.h"

namespace QXPlatform {
namespace {

// gzip and zlib, told apart by their headers.
constexpr int kAnyHeader = MAX_WBITS + 32;

URLError damaged() {
  return {URLError::Code::badServerResponse, "the compressed answer is damaged"};
}

// Some servers send raw deflate under the name of zlib's format.
bool hasHeader(std::string_view start) {
  const auto first = static_cast<unsigned char>(start[0]);
  return first == 0x1F || (first & 0x0FU) == Z_DEFLATED;
}

}  // namespace

std::optional<URLError> InflatedBody::make(std::string_view encoding, std::shared_ptr<ResponseBody> body,
                                           std::unique_ptr<InflatedBody>& made) {
  if (encoding.empty() || equalsIgnoringCase(encoding, "identity")) return std::nullopt;
  for (const std::string_view known : {"gzip", "x-gzip", "deflate"}) {
    if (!equalsIgnoringCase(encoding, known)) continue;
    made = std::make_unique<InflatedBody>(std::move(body));
    return std::nullopt;
  }
  return URLError{URLError::Code::badServerResponse, "an encoding that was not asked for"};
}

InflatedBody::InflatedBody(std::shared_ptr<ResponseBody> body) : body_(std::move(body)) {}

InflatedBody::~InflatedBody() {
  if (isOpen_) inflateEnd(&stream_);
}

bool InflatedBody::open(std::string_view start) {
  isOpen_ = inflateInit2(&stream_, hasHeader(start) ? kAnyHeader : -MAX_WBITS) == Z_OK;
  return isOpen_;
}

std::optional<URLError> InflatedBody::append(std::string_view bytes) {
  if (bytes.empty() || hasEnded_) return std::nullopt;
  if (!isOpen_ && !open(bytes)) return damaged();
  std::array<char, 16384> output;
  stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream_.avail_in = static_cast<uInt>(bytes.size());
  do {
    stream_.next_out = reinterpret_cast<Bytef*>(output.data());
    stream_.avail_out = static_cast<uInt>(output.size());
    const int status = inflate(&stream_, Z_NO_FLUSH);
    if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) return damaged();
    hasEnded_ = status == Z_STREAM_END;
    if (auto failed = body_->append({output.data(), output.size() - stream_.avail_out})) return failed;
  } while (!hasEnded_ && stream_.avail_out == 0);
  return std::nullopt;
}

std::optional<URLError> InflatedBody::finish() {
  if (!hasEnded_)
    return URLError{URLError::Code::connectionLost, "the answer broke off in its compressed body"};
  return body_->finish();
}

}  // namespace QXPlatform
