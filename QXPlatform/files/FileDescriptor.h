#pragma once

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

namespace QXPlatform {

// Owns a file descriptor.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&&) = delete;
  ~FileDescriptor() {
    if (valid()) ::close(descriptor_);
  }

  bool valid() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }
  // For a descriptor that was written to: whether the system reports the writes as done.
  bool close() { return ::close(std::exchange(descriptor_, -1)) == 0; }

 private:
  int descriptor_;
};

// Repeats a system call for as long as a signal interrupts it.
template <typename Call>
auto retryInterrupted(const Call& call) {
  while (true) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

inline bool isScarcity(int error) {
  return error == EMFILE || error == ENFILE || error == ENOMEM || error == ENOLCK;
}

// Repeats a system call that fails for want of descriptors, memory or locks for up to two seconds: a file
// that cannot be opened for the moment must not pass for one that is not there.
template <typename Call>
auto retryScarce(const Call& call) {
  constexpr int kAttempts = 200;
  for (int attempt = 1;; ++attempt) {
    const auto result = retryInterrupted(call);
    if (result != -1 || !isScarcity(errno) || attempt == kAttempts) return result;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

}  // namespace QXPlatform
