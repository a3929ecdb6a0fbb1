#include "tools/backend/LoopbackServer.h"

#include <sys/socket.h>

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <condition_variable>
#include <list>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "QXPlatform/foundation/ASCII.h"
#include "tools/backend/FileStore.h"
#include "tools/backend/ThrowAwayCertificate.h"

namespace backend {
namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::uint64_t kBodyLimit = std::uint64_t{256} << 20;

bool hasBody(int status) {
  return status >= 200 && status != 204 && status != 304;
}

bool hasHeader(const Response& response, std::string_view name) {
  return std::any_of(response.headers.begin(), response.headers.end(), [name](const Header& header) {
    return QXPlatform::equalsIgnoringCase(header.first, name);
  });
}

std::string statusLine(int status) {
  const auto known = http::int_to_status(static_cast<unsigned>(status));
  std::string line = "HTTP/1.1 " + std::to_string(status) + " ";
  if (known != http::status::unknown) line += std::string_view(http::obsolete_reason(known));
  return line + "\r\n";
}

std::string headerSection(const Response& response, bool keepAlive) {
  std::string text = statusLine(response.status);
  for (const auto& [name, value] : response.headers) text.append(name).append(": ").append(value) += "\r\n";
  if (hasBody(response.status)) {
    if (response.chunked) {
      text += "Transfer-Encoding: chunked\r\n";
    } else if (!hasHeader(response, "Content-Length")) {
      text += "Content-Length: " + std::to_string(response.body.size()) + "\r\n";
    }
  }
  if (!keepAlive) text += "Connection: close\r\n";
  return text + "\r\n";
}

std::string chunk(std::string_view piece) {
  char size[20];
  const int digits = std::snprintf(size, sizeof size, "%zx\r\n", piece.size());
  return std::string(size, static_cast<std::size_t>(digits)).append(piece) + "\r\n";
}

Request recorded(const http::request<http::string_body>& message) {
  Request request;
  request.method = message.method_string();
  request.path = message.target();
  for (const auto& field : message) request.headers.emplace_back(field.name_string(), field.value());
  request.body = message.body();
  return request;
}

}  // namespace

class LoopbackServer::State {
 public:
  explicit State(Options options)
      : options_(std::move(options)),
        files_(options_.files),
        acceptor_(context_),
        tls_(asio::ssl::context::tls_server) {
    if (options_.tls) useCertificate();
    listen();
    acceptNext();
    acceptThread_ = std::thread([this] { context_.run(); });
  }

  ~State() {
    context_.stop();
    acceptThread_.join();
    {
      const std::lock_guard lock(mutex_);
      stopping_ = true;
      for (Connection& connection : connections_) disconnect(connection);
    }
    changed_.notify_all();
    for (Connection& connection : connections_) connection.thread.join();
  }

  std::uint16_t port() const { return port_; }
  bool usesTLS() const { return options_.tls; }

  std::filesystem::path caFile() const {
    return certificate_ ? certificate_->caFile() : std::filesystem::path();
  }

  std::vector<Request> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

  std::size_t connectionCount() const {
    const std::lock_guard lock(mutex_);
    return connectionCount_;
  }

  bool waitForRequests(std::size_t count, std::chrono::steady_clock::time_point deadline) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_until(lock, deadline, [&] { return requestCount_ >= count; });
  }

 private:
  struct Connection {
    explicit Connection(tcp::socket accepted) : socket(std::move(accepted)) {}

    tcp::socket socket;
    std::thread thread;
    bool ended = false;  // guarded by mutex_; the socket is closed
  };

  void useCertificate() {
    certificate_.emplace();
    tls_.use_certificate_chain(asio::buffer(certificate_->certificatePEM()));
    tls_.use_private_key(asio::buffer(certificate_->keyPEM()), asio::ssl::context::pem);
  }

  void listen() {
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), options_.port);
    error_code error;
    acceptor_.open(endpoint.protocol());
    acceptor_.set_option(tcp::acceptor::reuse_address(true));
    acceptor_.bind(endpoint, error);
    if (!error) acceptor_.listen(tcp::acceptor::max_listen_connections, error);
    if (error) {
      throw std::runtime_error("cannot listen on port " + std::to_string(options_.port) + ": " +
                               error.message());
    }
    port_ = acceptor_.local_endpoint().port();
  }

  void acceptNext() {
    acceptor_.async_accept([this](error_code error, tcp::socket socket) {
      if (!error) {
        start(std::move(socket));
      } else {
        // Out of descriptors, most likely: some connection must end first.
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
      acceptNext();
    });
  }

  void start(tcp::socket socket) {
    const std::lock_guard lock(mutex_);
    connectionCount_ += 1;
    connections_.remove_if([](Connection& connection) {
      if (connection.ended) connection.thread.join();
      return connection.ended;
    });
    Connection& connection = connections_.emplace_back(std::move(socket));
    try {
      connection.thread = std::thread([this, &connection] { run(connection); });
    } catch (const std::system_error&) {
      // No thread to be had: this client finds its connection closed, the next one may have better luck.
      connections_.pop_back();
    }
  }

  void run(Connection& connection) {
    error_code ignored;
    connection.socket.set_option(tcp::no_delay(true), ignored);
    if (options_.tls) {
      asio::ssl::stream<tcp::socket&> stream(connection.socket, tls_);
      error_code error;
      stream.handshake(asio::ssl::stream_base::server, error);
      if (!error) {
        serve(stream, connection);
        if (!reset(connection)) stream.shutdown(error);
      }
    } else {
      serve(connection.socket, connection);
    }
    const std::lock_guard lock(mutex_);
    connection.socket.close(ignored);
    connection.ended = true;
  }

  // The sockets are closed by their own threads alone; this merely wakes those.
  static void disconnect(Connection& connection) {
    if (!connection.ended) ::shutdown(connection.socket.native_handle(), SHUT_RDWR);
  }

  static bool reset(const Connection& connection) {
    tcp::socket::linger linger;
    error_code error;
    connection.socket.get_option(linger, error);
    return !error && linger.enabled();
  }

  template <typename Stream>
  void serve(Stream& stream, Connection& connection) {
    boost::beast::flat_buffer buffer;
    bool keepAlive = true;
    while (keepAlive) {
      http::request_parser<http::string_body> parser;
      parser.body_limit(kBodyLimit);
      if (!read(stream, buffer, parser)) return;
      const Request request = recorded(parser.get());
      keepAlive = answer(stream, connection, request, parser.get().keep_alive());
      if (options_.onAnswered) options_.onAnswered(request);
    }
  }

  template <typename Stream, typename Parser>
  static bool read(Stream& stream, boost::beast::flat_buffer& buffer, Parser& parser) {
    error_code error;
    http::read_header(stream, buffer, parser, error);
    if (error) return false;
    if (parser.get()[http::field::expect] == "100-continue" && !write(stream, statusLine(100) + "\r\n"))
      return false;
    http::read(stream, buffer, parser, error);
    return !error;
  }

  // Returns whether the connection can take another request.
  template <typename Stream>
  bool answer(Stream& stream, Connection& connection, const Request& request, bool keepAlive) {
    record(request);
    const Response response = responseTo(request);
    if (!pause(response.delay)) return false;
    for (const int status : response.interimStatuses) {
      if (!write(stream, statusLine(status) + "\r\n")) return false;
    }
    const std::string head = headerSection(response, keepAlive);
    const bool bodyless = request.method == "HEAD" || !hasBody(response.status);
    const std::string_view body = bodyless ? std::string_view() : response.body;
    switch (response.fault) {
      case Fault::none:
        return write(stream, head) && sendBody(stream, response, body) && keepAlive;
      case Fault::neverAnswer:
        waitForEnd(stream);
        return false;
      case Fault::closeWithoutAnswer:
        return false;
      case Fault::resetInHeaders:
        write(stream, std::string_view(head).substr(0, head.size() / 2));
        prepareReset(connection);
        return false;
      case Fault::resetInBody:
      case Fault::truncatedBody:
        if (write(stream, head)) sendPieces(stream, response, body.substr(0, body.size() / 2));
        if (response.fault == Fault::resetInBody) prepareReset(connection);
        return false;
    }
    return false;
  }

  void record(const Request& request) {
    const std::lock_guard order(callbackMutex_);
    {
      const std::lock_guard lock(mutex_);
      requestCount_ += 1;
      if (options_.keepsRequests) requests_.push_back(request);
    }
    changed_.notify_all();
    if (options_.onRequest) options_.onRequest(request);
  }

  Response responseTo(const Request& request) const {
    if (options_.handler) {
      try {
        if (auto response = options_.handler(request)) return *std::move(response);
      } catch (const std::exception& failure) {
        Response response;
        response.status = 500;
        response.body = failure.what();
        return response;
      }
    }
    Response response = files_.answer(request.path).value_or(standardResponse());
    response.delay = options_.delay;
    if (options_.hang) response.fault = Fault::neverAnswer;
    if (options_.close) response.fault = Fault::closeWithoutAnswer;
    return response;
  }

  Response standardResponse() const {
    Response response;
    response.status = options_.status;
    response.headers = options_.headers;
    if (!options_.body.empty() && !hasHeader(response, "Content-Type")) {
      response.headers.emplace_back("Content-Type", options_.contentType);
    }
    response.body = options_.body;
    return response;
  }

  template <typename Stream>
  bool sendBody(Stream& stream, const Response& response, std::string_view body) const {
    return sendPieces(stream, response, body) && (!response.chunked || write(stream, chunk("")));
  }

  template <typename Stream>
  bool sendPieces(Stream& stream, const Response& response, std::string_view body) const {
    while (!body.empty()) {
      if (response.pacing && !pause(response.pacing->pause)) return false;
      const std::string_view piece = body.substr(0, response.pacing ? response.pacing->bytes : body.size());
      if (!(response.chunked ? write(stream, chunk(piece)) : write(stream, piece))) return false;
      body.remove_prefix(piece.size());
    }
    return true;
  }

  template <typename Stream>
  static bool write(Stream& stream, std::string_view bytes) {
    error_code error;
    asio::write(stream, asio::buffer(bytes), error);
    return !error;
  }

  template <typename Stream>
  static void waitForEnd(Stream& stream) {
    error_code error;
    char discarded[64];
    while (!error) stream.read_some(asio::buffer(discarded), error);
  }

  // Closing then sends a reset instead of an end.
  static void prepareReset(Connection& connection) {
    error_code ignored;
    connection.socket.set_option(tcp::socket::linger(true, 0), ignored);
  }

  // False when the server stops meanwhile.
  bool pause(std::chrono::milliseconds duration) const {
    if (duration.count() == 0) return true;
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, duration, [this] { return stopping_; });
  }

  const Options options_;
  const FileStore files_;
  std::optional<ThrowAwayCertificate> certificate_;
  asio::io_context context_;
  tcp::acceptor acceptor_;
  asio::ssl::context tls_;
  std::uint16_t port_ = 0;
  std::thread acceptThread_;

  std::mutex callbackMutex_;  // keeps onRequest in the order of requests_; taken before mutex_

  mutable std::mutex mutex_;  // guards what follows
  mutable std::condition_variable changed_;
  std::list<Connection> connections_;
  std::vector<Request> requests_;
  std::size_t requestCount_ = 0;
  std::size_t connectionCount_ = 0;
  bool stopping_ = false;
};

LoopbackServer::LoopbackServer(Options options) : state_(std::make_unique<State>(std::move(options))) {}
LoopbackServer::~LoopbackServer() = default;

std::uint16_t LoopbackServer::port() const {
  return state_->port();
}

std::string LoopbackServer::url(std::string_view path) const {
  const std::string scheme = state_->usesTLS() ? "https" : "http";
  return (scheme + "://127.0.0.1:" + std::to_string(port())).append(path);
}

std::filesystem::path LoopbackServer::caFile() const {
  return state_->caFile();
}
std::vector<Request> LoopbackServer::requests() const {
  return state_->requests();
}
std::size_t LoopbackServer::connectionCount() const {
  return state_->connectionCount();
}

bool LoopbackServer::waitForRequests(std::size_t count,
                                     std::chrono::steady_clock::time_point deadline) const {
  return state_->waitForRequests(count, deadline);
}

}  // namespace backend
