#include "QXPlatform/notifications/StandardInput.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <istream>
#include <streambuf>
#include <system_error>

namespace QXPlatform {

namespace {

class StandardInputBuffer final : public std::streambuf {
 protected:
  int_type underflow() override {
    ssize_t count = 0;
    do count = ::read(STDIN_FILENO, bytes_.data(), bytes_.size());
    while (count < 0 && errno == EINTR);
    // Makes the stream bad, which the end does not.
    if (count < 0) throw std::system_error(errno, std::generic_category());
    setg(bytes_.data(), bytes_.data(), bytes_.data() + count);
    return count == 0 ? traits_type::eof() : traits_type::to_int_type(bytes_.front());
  }

 private:
  std::array<char, 16384> bytes_;
};

}  // namespace

std::istream& standardInput() {
  static StandardInputBuffer buffer;
  static std::istream stream(&buffer);
  return stream;
}

}  // namespace QXPlatform
