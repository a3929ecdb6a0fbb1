#include "QXPlatform/libraries/network/Transfer.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/libraries/network/Endpoint.h"
#include "QXPlatform/network/HeaderField.h"
#include "QXPlatform/network/URLRefusal.h"

namespace QXPlatform {
namespace {

constexpr int kMaximumRedirects = 20;
constexpr std::size_t kHeaderLimit = std::size_t{256} << 10;
constexpr long kBufferSize = 16L << 10;
// The limits on time are this file's own, by the process's clock; the library's are put out of the way.
constexpr long kConnectTimeoutSeconds = 7L * 24 * 60 * 60;

Clock::Duration bounded(std::chrono::duration<double> limit) {
  constexpr std::chrono::duration<double> kLongest = std::chrono::hours(24 * 365);
  if (!(limit.count() > 0)) return Clock::Duration::zero();
  return std::chrono::duration_cast<Clock::Duration>(std::min(limit, kLongest));
}

std::string seconds(Clock::Duration duration) {
  return std::to_string(std::lround(std::chrono::duration<double>(duration).count())) + " s";
}

bool isRedirect(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

// What a redirect makes of the method; nothing when it stays.
bool becomesGet(int status, std::string_view method) {
  if (status == 303) return method != "GET" && method != "HEAD";
  return (status == 301 || status == 302) && method == "POST";
}

URLError::Code kindOf(CURLcode code) {
  using Code = URLError::Code;
  switch (code) {
    case CURLE_URL_MALFORMAT:
      return Code::unsupportedURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return Code::cannotFindHost;
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
      return Code::cannotConnect;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_PEER_FAILED_VERIFICATION:
      return Code::secureConnectionFailed;
    case CURLE_OPERATION_TIMEDOUT:
      return Code::timedOut;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_BAD_CONTENT_ENCODING:
      return Code::badServerResponse;
    default:
      return Code::connectionLost;
  }
}

}  // namespace

Transfer::Transfer(URLRequest request, const URLSessionConfiguration& configuration,
                   std::shared_ptr<ResponseBody> body, Completion completion)
    : request_(std::move(request)),
      requestTimeout_(bounded(std::min(request_.timeoutInterval, configuration.timeoutIntervalForRequest))),
      resourceTimeout_(bounded(configuration.timeoutIntervalForResource)),
      body_(std::move(body)),
      completion_(std::move(completion)) {}

std::optional<URLError> Transfer::begin() {
  started_ = lastProgress_ = Clock::current().now();
  return prepareHop();
}

void Transfer::configureHandle() {
  CURL* const handle = easy_.get();
  curl_easy_setopt(handle, CURLOPT_PRIVATE, this);
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  // A look-up of a name cannot be stopped; without this the end of the transfer would wait for it.
  curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, kConnectTimeoutSeconds);
  curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, kBufferSize);
  curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, kBufferSize);
  // The other encodings the library knows need megabytes to decode.
  curl_easy_setopt(handle, CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
  // Nor does it notice that a compressed body has broken off.
  curl_easy_setopt(handle, CURLOPT_HTTP_CONTENT_DECODING, 0L);
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &takeHeader);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &takeBody);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, &takeProgress);
  curl_easy_setopt(handle, CURLOPT_XFERINFODATA, this);
  curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, &takeConnection);
  curl_easy_setopt(handle, CURLOPT_PREREQDATA, this);
  trustStore_.applyTo(handle);
}

std::optional<URLError> Transfer::prepareHop() {
  const auto endpoint = Endpoint::of(request_.url);
  if (auto refused = refusal(request_.url, endpoint)) return refused;
  headers_.clear();
  headerBytes_ = 0;
  headersComplete_ = false;
  bodyBegun_ = false;
  inflated_.reset();
  bytesMoved_ = 0;
  // A new one for each answer: what a first header that begins with a space continues the library looks for
  // in the answer before, although it has freed that.
  easy_.reset(curl_easy_init());
  if (!easy_) return error(URLError::Code::cannotConnect, "out of memory");
  configureHandle();
  curl_easy_setopt(easy(), CURLOPT_URL, request_.url.absoluteString().c_str());
  // A proxy of the environment's is for what lies outside.
  curl_easy_setopt(easy(), CURLOPT_PROXY, endpoint->isLoopback() ? "" : nullptr);
  configureMethod();
  if (!configureHeaders()) return error(URLError::Code::cannotConnect, "out of memory");
  return std::nullopt;
}

void Transfer::configureMethod() {
  const std::string& method = request_.httpMethod;
  const bool sendsBody = request_.httpBody || method == "POST" || method == "PUT";
  if (sendsBody) {
    const std::string_view body = request_.httpBody ? request_.httpBody->view() : std::string_view("");
    curl_easy_setopt(easy(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(easy(), CURLOPT_POSTFIELDS, body.data());
  } else if (method == "HEAD") {
    curl_easy_setopt(easy(), CURLOPT_NOBODY, 1L);
  }
  curl_easy_setopt(easy(), CURLOPT_CUSTOMREQUEST, method.c_str());
}

bool Transfer::configureHeaders() {
  std::vector<std::string> lines;
  for (const auto& [name, value] : request_.headers()) {
    std::string& line = lines.emplace_back(name);
    value.empty() ? line += ';' : line.append(": ").append(value);
  }
  // The library's own additions, taken out unless the request brings them: a wait before a body, and the
  // type of a form.
  for (const std::string name : {"Expect", "Content-Type"}) {
    const bool brought =
        std::any_of(request_.headers().begin(), request_.headers().end(),
                    [&name](const auto& header) { return equalsIgnoringCase(header.first, name); });
    if (!brought) lines.push_back(name + ":");
  }
  HeaderList list;
  for (const std::string& line : lines) {
    curl_slist* const extended = curl_slist_append(list.get(), line.c_str());
    if (extended == nullptr) return false;
    static_cast<void>(list.release());
    list.reset(extended);
  }
  curl_easy_setopt(easy(), CURLOPT_HTTPHEADER, list.get());
  headerList_ = std::move(list);
  return true;
}

Clock::TimePoint Transfer::deadline() const {
  return std::min(lastProgress_ + requestTimeout_, started_ + resourceTimeout_);
}

URLError Transfer::timeOutError() const {
  if (lastProgress_ + requestTimeout_ < started_ + resourceTimeout_) {
    return error(URLError::Code::timedOut, "no progress for " + seconds(requestTimeout_));
  }
  return error(URLError::Code::timedOut, "not done within " + seconds(resourceTimeout_));
}

std::size_t Transfer::takeHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  try {
    transfer.headerLine({bytes, size * count});
  } catch (const std::exception&) {
    transfer.error_ = URLError{URLError::Code::badServerResponse, "out of memory"};
  }
  return transfer.error_ ? 0 : size * count;
}

void Transfer::headerLine(std::string_view line) {
  noteProgress();
  headerBytes_ += line.size();
  if (headerBytes_ > kHeaderLimit) {
    error_ = error(URLError::Code::badServerResponse, "more than 256 KB of headers");
    return;
  }
  if (line.starts_with("HTTP/")) {
    // An interim answer or a proxy's own may have come before.
    headers_.clear();
    headersComplete_ = false;
    return;
  }
  const auto colon = line.find(':');
  if (colon != std::string_view::npos) {
    headers_.emplace_back(line.substr(0, colon), trimmedHeaderValue(line.substr(colon + 1)));
  } else if (trimmedHeaderValue(line).empty()) {
    headersComplete_ = true;
  }
}

std::size_t Transfer::takeBody(char* bytes, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  try {
    transfer.bodyBytes({bytes, size * count});
  } catch (const std::exception&) {
    transfer.error_ = URLError{URLError::Code::badServerResponse, "out of memory"};
  }
  return transfer.error_ ? 0 : size * count;
}

void Transfer::bodyBytes(std::string_view bytes) {
  noteProgress();
  if (redirectTarget()) return;
  if (!bodyBegun_) beginBody();
  if (!error_) take(inflated_ != nullptr ? inflated_->append(bytes) : body_->append(bytes));
}

void Transfer::beginBody() {
  bodyBegun_ = true;
  curl_off_t size = -1;
  curl_easy_getinfo(easy(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size);
  if (size > 0) take(body_->expect(static_cast<std::size_t>(size)));
  for (const auto& [name, value] : headers_) {
    if (!error_ && equalsIgnoringCase(name, "Content-Encoding")) {
      take(inflated_ == nullptr ? InflatedBody::make(value, body_, inflated_)
                                : URLError{URLError::Code::badServerResponse, "encoded more than once"});
    }
  }
}

int Transfer::takeProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent) {
  auto& transfer = *static_cast<Transfer*>(self);
  if (received + sent != transfer.bytesMoved_) {
    transfer.bytesMoved_ = received + sent;
    transfer.noteProgress();
  }
  return 0;
}

int Transfer::takeConnection(void* self, char*, char*, int, int) {
  static_cast<Transfer*>(self)->noteProgress();
  return CURL_PREREQFUNC_OK;
}

int Transfer::statusCode() const {
  long status = 0;
  curl_easy_getinfo(easy(), CURLINFO_RESPONSE_CODE, &status);
  return static_cast<int>(status);
}

std::optional<std::string> Transfer::redirectTarget() const {
  const int status = statusCode();
  if (!isRedirect(status)) return std::nullopt;
  // The body would be lost: that is for the caller to know.
  if (request_.httpBody && becomesGet(status, request_.httpMethod)) return std::nullopt;
  const auto location = std::find_if(headers_.begin(), headers_.end(), [](const auto& header) {
    return equalsIgnoringCase(header.first, "Location");
  });
  if (location == headers_.end()) return std::nullopt;
  // Resolved against the URL of the hop; there once the hop has ended.
  const char* target = nullptr;
  curl_easy_getinfo(easy(), CURLINFO_REDIRECT_URL, &target);
  return target == nullptr ? location->second : target;
}

bool Transfer::continueAfter(CURLcode code) {
  if (error_) return false;
  if (code == CURLE_OUT_OF_MEMORY && !headersComplete_) {
    // What the library says of a line beyond its own bound.
    error_ = error(URLError::Code::badServerResponse, "a header of more than 100 KB");
    return false;
  }
  if (code != CURLE_OK) {
    error_ = error(kindOf(code), curl_easy_strerror(code));
    return false;
  }
  if (!headersComplete_) {
    error_ = error(URLError::Code::connectionLost, "the answer broke off in its headers");
    return false;
  }
  if (const auto target = redirectTarget()) {
    error_ = follow(*target, statusCode());
    return !error_;
  }
  take(inflated_ != nullptr ? inflated_->finish() : body_->finish());
  return false;
}

std::optional<URLError> Transfer::follow(const std::string& target, int status) {
  if (redirects_ == kMaximumRedirects) {
    return error(URLError::Code::tooManyRedirects, "more than 20 redirects");
  }
  redirects_ += 1;
  auto next = URL::parse(target);
  if (!next) return error(URLError::Code::badServerResponse, "redirects to a malformed address");
  if (Endpoint::of(*next) != Endpoint::of(request_.url)) {
    request_.removeHeadersExcept({"Content-Type", "User-Agent"});
  }
  request_.url = *std::move(next);
  if (becomesGet(status, request_.httpMethod)) request_.httpMethod = "GET";
  return prepareHop();
}

void Transfer::complete(std::optional<URLError> failed) {
  if (failed) error_ = std::move(failed);
  std::shared_ptr<const URLResponse> response;
  if (!error_) {
    response = std::make_shared<HTTPURLResponse>(request_.url, statusCode(), std::move(headers_));
  }
  easy_.reset();
  // Ahead of the completion, which counts on being the body's last owner.
  inflated_.reset();
  body_.reset();
  std::exchange(completion_, nullptr)(std::move(response), std::move(error_));
}

// Adds the host to what the body says.
void Transfer::take(const std::optional<URLError>& failed) {
  if (failed) error_ = error(failed->code, failed->message);
}

URLError Transfer::error(URLError::Code code, std::string_view cause) const {
  return {code, (request_.url.host() + ": ").append(cause)};
}

}  // namespace QXPlatform
