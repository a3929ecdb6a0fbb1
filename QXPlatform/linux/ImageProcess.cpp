#include "QXPlatform/images/ImageProcess.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory_resource>
#include <mutex>
#include <new>
#include <span>
#include <string>
#include <utility>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/foundation/NeverDestroyed.h"
#include "QXPlatform/images/ImageDecoder.h"

namespace QXPlatform {

namespace {

constexpr rlim_t kMostProcessorSeconds = 2;
// What a process may take beside the decoding and the picture that comes of it: single lines, and what the
// allocator rounds up.
constexpr rlim_t kAllowanceBytes = 16'000'000;
// On a machine with hardly a processor to spare.
constexpr std::chrono::seconds kLongestWait(60);
constexpr std::chrono::milliseconds kWantedInterval(20);

struct Request {
  PixelSize place;
  std::uint64_t length = 0;
};

struct Answer {
  PixelSize size;
  bool isOpaque = false;
};

std::size_t pixelCount(PixelSize size) {
  return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
}

std::size_t pictureBytes(PixelSize size) {
  return pixelCount(size) * sizeof(std::uint32_t);
}

bool sendAll(int socket, const void* bytes, std::size_t count) {
  const auto* next = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t sent = retryInterrupted([&] { return ::send(socket, next, count, MSG_NOSIGNAL); });
    if (sent <= 0) return false;
    next += sent;
    count -= static_cast<std::size_t>(sent);
  }
  return true;
}

// `mayGoOn` is asked before each piece.
template <typename MayGoOn>
bool receiveAll(int socket, void* bytes, std::size_t count, const MayGoOn& mayGoOn) {
  auto* next = static_cast<char*>(bytes);
  while (count > 0) {
    if (!mayGoOn()) return false;
    const ssize_t received = retryInterrupted([&] { return ::recv(socket, next, count, 0); });
    if (received <= 0) return false;
    next += received;
    count -= static_cast<std::size_t>(received);
  }
  return true;
}

// What a process gets for an image.
struct Channel {
  FileDescriptor socket{-1};
  FileDescriptor memory{-1};  // where the picture comes
};

// A message of one byte and, beside it, descriptors.
struct DescriptorMessage {
  explicit DescriptorMessage() {
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
  }
  DescriptorMessage(const DescriptorMessage&) = delete;
  DescriptorMessage& operator=(const DescriptorMessage&) = delete;

  using Descriptors = std::array<int, 2>;

  char byte = 0;
  iovec piece{&byte, 1};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(Descriptors))> control{};
  msghdr message{};
};

bool sendChannel(int socket, const Channel& channel) {
  const DescriptorMessage::Descriptors descriptors{channel.socket.get(), channel.memory.get()};
  DescriptorMessage holder;
  cmsghdr* header = CMSG_FIRSTHDR(&holder.message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof descriptors);
  std::memcpy(CMSG_DATA(header), descriptors.data(), sizeof descriptors);
  return retryInterrupted([&] { return ::sendmsg(socket, &holder.message, MSG_NOSIGNAL); }) > 0;
}

// Invalid when the other end is closed.
Channel receiveChannel(int socket) {
  DescriptorMessage holder;
  const ssize_t count =
      retryInterrupted([&] { return ::recvmsg(socket, &holder.message, MSG_CMSG_CLOEXEC); });
  const cmsghdr* header = CMSG_FIRSTHDR(&holder.message);
  if (count <= 0 || header == nullptr || header->cmsg_type != SCM_RIGHTS) return {};
  DescriptorMessage::Descriptors descriptors{-1, -1};
  std::memcpy(descriptors.data(), CMSG_DATA(header), sizeof descriptors);
  return {FileDescriptor(descriptors[0]), FileDescriptor(descriptors[1])};
}

// Shared memory of a size that nobody can change any more: whoever reads it needs to fear no end.
FileDescriptor makeMemory(std::size_t size) {
  FileDescriptor memory(::memfd_create("picture", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  const bool isMade = memory.valid() && ::ftruncate(memory.get(), static_cast<off_t>(size)) == 0 &&
                      ::fcntl(memory.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) == 0;
  return isMade ? std::move(memory) : FileDescriptor(-1);
}

// Null when there is no room for it.
std::shared_ptr<std::uint32_t> map(int memory, std::size_t size, int protection, int flags) {
  void* const start = ::mmap(nullptr, size, protection, MAP_SHARED | flags, memory, 0);
  if (start == MAP_FAILED) return nullptr;
  return {static_cast<std::uint32_t*>(start), [size](std::uint32_t* pixels) { ::munmap(pixels, size); }};
}

// Of the pages that it hands out all are made at once, in half the time that they take one by one as they are
// first written to.
class PictureMemory final : public std::pmr::memory_resource {
 public:
  PictureMemory(void* start, std::size_t size) : memory_(start, size) {}

 private:
  void* do_allocate(std::size_t size, std::size_t alignment) override {
    void* const start = memory_.allocate(size, alignment);
    ::madvise(start, size, MADV_POPULATE_WRITE);  // not every system can
    return start;
  }
  void do_deallocate(void* start, std::size_t size, std::size_t alignment) override {
    memory_.deallocate(start, size, alignment);
  }
  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

  std::pmr::monotonic_buffer_resource memory_;
};

// To where it may be already.
void putPicture(const Bitmap& bitmap, std::uint32_t* target) {
  const void* source = bitmap.pixels.data();
  if (source != target) std::memcpy(target, source, bitmap.pixels.size());
  if constexpr (std::endian::native == std::endian::big) {
    for (std::uint32_t& pixel : std::span(target, pixelCount(bitmap.size))) pixel = __builtin_bswap32(pixel);
  }
}

rlim_t addressSpaceInUse() {
  rlim_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
}

void limit(__rlimit_resource resource, rlim_t most) {
  const rlimit limits{most, most};
  ::setrlimit(resource, &limits);
}

// Ends this process as soon as nobody waits for its answer any more, by the signal's default action.
void endWithoutReceiver(int socket) {
  ::fcntl(socket, F_SETOWN, ::getpid());
  ::fcntl(socket, F_SETFL, O_ASYNC);
  pollfd hangUp{socket, 0, 0};
  if (::poll(&hangUp, 1, 0) > 0) ::_exit(1);
}

// As it is read and, beside that, as it is turned: what is shown must not depend on how large it is shown.
rlim_t bytesOfPicture(PixelSize place) {
  constexpr rlim_t kPictures = 2;
  constexpr rlim_t kBytesAPixel = 4;
  return kPictures * kBytesAPixel * static_cast<rlim_t>(place.width) * static_cast<rlim_t>(place.height);
}

// In the process of one image, which began with so much address space in use. Whatever fails ends it, which
// the receiver takes for the answer.
void answer(const Channel& channel, rlim_t inUse) {
  const int socket = channel.socket.get();
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_CPU, kMostProcessorSeconds);
  const auto always = [] { return true; };
  Request request;
  if (!receiveAll(socket, &request, sizeof request, always)) return;
  std::string bytes(request.length, '\0');
  if (!receiveAll(socket, bytes.data(), bytes.size(), always)) return;
  const auto pixels = map(channel.memory.get(), pictureBytes(request.place), PROT_READ | PROT_WRITE, 0);
  if (pixels == nullptr) return;
  limit(RLIMIT_AS, inUse + request.length + pictureBytes(request.place) + kMostDecodingBytes +
                       kAllowanceBytes + bytesOfPicture(request.place));
  endWithoutReceiver(socket);
  // Straight to where it is waited for.
  PictureMemory memory(pixels.get(), pictureBytes(request.place));
  const auto bitmap = decodeImage(bytes, request.place, memory);
  if (!bitmap) return;
  putPicture(*bitmap, pixels.get());
  const Answer answer{bitmap->size, bitmap->isOpaque};
  sendAll(socket, &answer, sizeof answer);
}

// In the process to fork from: one more for each descriptor that arrives, until the program ends.
[[noreturn]] void serve(int control) {
  constexpr int kKept = 3;
  ::prctl(PR_SET_NAME, "image decoding");
  std::signal(SIGCHLD, SIG_IGN);  // Nobody waits for them.
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGTERM, SIG_DFL);
  std::signal(SIGIO, SIG_DFL);
  // Nobody else's pipes and sockets are to be held open by this process, and what a codec library says of an
  // image is no line of the program's.
  const FileDescriptor null(::open("/dev/null", O_RDWR | O_CLOEXEC));
  ::dup2(null.get(), STDIN_FILENO);
  ::dup2(null.get(), STDOUT_FILENO);
  ::dup2(null.get(), STDERR_FILENO);
  ::dup2(control, kKept);
  ::close_range(kKept + 1, ~0U, 0);
  const rlim_t inUse = addressSpaceInUse();
  for (;;) {
    const Channel channel = receiveChannel(kKept);
    if (!channel.socket.valid()) ::_exit(0);
    if (::fork() != 0) continue;
    try {
      answer(channel, inUse);
    } catch (const std::bad_alloc&) {
      ::_exit(1);
    }
    ::_exit(0);
  }
}

// Both ends, closed when a program is started.
std::array<FileDescriptor, 2> socketPair(int type) {
  std::array<int, 2> ends{-1, -1};
  if (::socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends.data()) != 0) ends = {-1, -1};
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

class ForkedImageProcess final : public ImageProcess {
 public:
  void start() override {
    const std::lock_guard lock(mutex_);
    if (!control_) fork();
  }

  std::optional<Picture> decode(std::string_view bytes, PixelSize place,
                                const std::function<bool()>& isWanted) override {
    if (place.empty() || !isWanted()) return std::nullopt;
    const Channel channel = connect(pictureBytes(place));
    const int socket = channel.socket.get();
    const Request request{place, bytes.size()};
    const bool isAsked = channel.socket.valid() && sendAll(socket, &request, sizeof request) &&
                         sendAll(socket, bytes.data(), bytes.size());
    return isAsked ? receive(channel, place, isWanted) : std::nullopt;
  }

 private:
  // To a new process; invalid when there can be none.
  Channel connect(std::size_t memorySize) {
    const std::lock_guard lock(mutex_);
    auto [own, others] = socketPair(SOCK_STREAM);
    Channel theirs{std::move(others), makeMemory(memorySize)};
    constexpr int kAttempts = 2;
    const bool isMade = theirs.socket.valid() && theirs.memory.valid();
    for (int attempt = 0; attempt < kAttempts && isMade; ++attempt) {
      if (!control_) fork();
      if (!control_) break;
      if (sendChannel(control_->get(), theirs)) return {std::move(own), std::move(theirs.memory)};
      // Somebody has ended it.
      control_.reset();
      retryInterrupted([this] { return ::waitpid(process_, nullptr, 0); });
    }
    return {};
  }

  void fork() {
    auto ends = socketPair(SOCK_SEQPACKET);
    if (!ends[0].valid()) return;
    process_ = ::fork();
    if (process_ == 0) serve(ends[1].get());
    if (process_ > 0) control_.emplace(std::move(ends[0]));
  }

  static std::optional<Picture> receive(const Channel& channel, PixelSize place,
                                        const std::function<bool()>& isWanted) {
    const int socket = channel.socket.get();
    const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
    const auto hasArrived = [&] {
      for (pollfd arrival{socket, POLLIN, 0}; isWanted() && std::chrono::steady_clock::now() < deadline;) {
        if (::poll(&arrival, 1, static_cast<int>(kWantedInterval.count())) > 0) return true;
      }
      return false;
    };
    Answer answer;
    if (!receiveAll(socket, &answer, sizeof answer, hasArrived)) return std::nullopt;
    const PixelSize size = answer.size;
    if (size.empty() || size.width > place.width || size.height > place.height) return std::nullopt;
    auto pixels = map(channel.memory.get(), pictureBytes(size), PROT_READ, MAP_POPULATE);
    if (pixels == nullptr) return std::nullopt;
    return Picture{size, answer.isOpaque, std::move(pixels)};
  }

  std::mutex mutex_;
  std::optional<FileDescriptor> control_;
  pid_t process_ = -1;  // while there is control_
};

}  // namespace

ImageProcess& ImageProcess::shared() {
  // Never destroyed: a decoding thread may outlast the objects of the program.
  static NeverDestroyed<ForkedImageProcess> process;
  return *process;
}

}  // namespace QXPlatform
