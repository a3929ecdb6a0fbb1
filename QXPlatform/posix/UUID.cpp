#include "QXPlatform/foundation/UUID.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

#include "QXPlatform/dispatch/BriefLock.h"
#include "QXPlatform/foundation/ASCII.h"
#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/NeverDestroyed.h"

namespace QXPlatform {

namespace {

constexpr std::size_t kGroups[] = {4, 2, 2, 2, 6};
constexpr std::size_t kTextLength = 36;
using UUIDBytes = std::array<std::uint8_t, 16>;

// Hands out the system's random numbers. They are asked for by the dozen, since a system call costs more than
// the rest of a UUID, and never handed out twice: neither here nor in a process that is forked from this one.
class RandomBytes {
 public:
  static RandomBytes& shared() {
    static NeverDestroyed<RandomBytes> bytes;
    return *bytes;
  }

  UUIDBytes next() {
    const auto lock = lockBriefly(mutex_);
    if (left_ == 0) refill();
    return kept_[--left_];
  }

 private:
  friend class NeverDestroyed<RandomBytes>;
  RandomBytes() {
    pthread_atfork([] { shared().mutex_.lock(); }, [] { shared().mutex_.unlock(); },
                   [] {
                     shared().left_ = 0;
                     shared().mutex_.unlock();
                   });
  }

  void refill() {
    if (::getentropy(kept_.data(), sizeof(kept_)) != 0) fatalError("The system has no random numbers");
    left_ = kept_.size();
  }

  std::mutex mutex_;
  // Below, guarded by mutex_.
  std::array<UUIDBytes, 16> kept_;  // as much as the system gives at once
  std::size_t left_ = 0;
};

}  // namespace

std::string makeUUIDString() {
  UUIDBytes bytes = RandomBytes::shared().next();
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // its variant
  std::string text(kTextLength, '-');
  auto place = text.begin();
  auto byte = bytes.begin();
  for (const std::size_t count : kGroups) {
    for (const auto end = byte + static_cast<std::ptrdiff_t>(count); byte != end; ++byte) {
      *place++ = kUppercaseHexDigits[*byte >> 4U];
      *place++ = kUppercaseHexDigits[*byte & 0xFU];
    }
    if (place != text.end()) ++place;
  }
  return text;
}

}  // namespace QXPlatform
