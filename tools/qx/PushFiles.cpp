#include "tools/qx/PushFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <utility>

#include "QXPlatform/foundation/JSONTextError.h"
#include "QXPlatform/notifications/StandardInput.h"

namespace qx {

namespace {

// The whole file, or more than the limit of one that is larger. Grows as it reads: the buffer lives as long
// as the push, whose memory counts.
std::string readUpTo(std::size_t limit, std::istream& file) {
  constexpr std::size_t kPiece = 16'384;
  std::string text;
  while (file && text.size() <= limit) {
    const std::size_t size = text.size();
    text.resize(size + kPiece);
    file.read(text.data() + size, kPiece);
    text.resize(size + static_cast<std::size_t>(file.gcount()));
  }
  return text;
}

QXPlatform::Error tooLong() {
  return {"a push of more than 4 MiB"};
}

// Whether lines that follow could make it one push: it ends within an object, or begins as one that was
// broken by hand or by an editor does.
bool mayBeginPush(std::string_view line) {
  using namespace std::string_view_literals;
  constexpr std::string_view kBegins = "{/#\xEF\xFE\xFF\0"sv;  // with comments, and marks of encodings
  const auto error = QXPlatform::findJSONTextError(line);
  if (!error || error->offset == line.size()) return error.has_value();
  line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
  const std::string_view end = line.substr(0, line.find_last_not_of(" \t\r,") + 1);
  return !end.empty() && !end.ends_with('}') && kBegins.find(end.front()) != std::string_view::npos;
}

// Whether one of the lines is an object by itself.
bool holdsWholeLine(const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const bool isObject = line.starts_with('{');
    if (isObject && !QXPlatform::findJSONTextError(line)) return true;
  }
  return false;
}

// What was read of a stream, and then what is left of it.
class ReadAgain final : public std::streambuf {
 public:
  ReadAgain(std::string text, std::istream& rest) : piece_(std::move(text)), rest_(rest) {
    setg(piece_.data(), piece_.data(), piece_.data() + piece_.size());
  }

 private:
  int_type underflow() override {
    constexpr std::streamsize kPiece = 16'384;
    piece_.resize(kPiece);
    rest_.read(piece_.data(), kPiece);
    setg(piece_.data(), piece_.data(), piece_.data() + rest_.gcount());
    return rest_.gcount() == 0 ? traits_type::eof() : traits_type::to_int_type(piece_.front());
  }

  std::string piece_;
  std::istream& rest_;
};

// Of all files together; nothing when one of them is a pipe or the like.
std::optional<std::uintmax_t> totalSize(const std::vector<std::string>& names) {
  std::uintmax_t total = 0;
  for (const std::string& name : names) {
    const std::filesystem::path path = name == "-" ? "/dev/stdin" : name;
    std::error_code error;
    if (std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error)) {
      return std::nullopt;
    }
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (!error) total += size;
  }
  return total;
}

}  // namespace

PushFiles::PushFiles(std::vector<std::string> names)
    : names_(names.empty() ? std::vector<std::string>{"-"} : std::move(names)), size_(totalSize(names_)) {}

std::optional<QXPlatform::PushText> PushFiles::next() {
  auto push = nextUncounted();
  if (push) {
    sizeTaken_ += push->text.size() + 1;
    ++taken_;
  }
  return push;
}

std::optional<double> PushFiles::partOf(std::size_t answered) const {
  if (!size_ || *size_ == 0 || taken_ == 0) return std::nullopt;
  const double average = static_cast<double>(sizeTaken_) / static_cast<double>(taken_);
  return std::min(1.0, static_cast<double>(answered) * average / static_cast<double>(*size_));
}

std::optional<QXPlatform::PushText> PushFiles::nextUncounted() {
  for (;;) {
    if (lines_ != nullptr) {
      if (auto push = lines_->next()) return push;
      lines_.reset();
    }
    if (nextName_ == names_.size()) return std::nullopt;
    if (auto push = open(names_[nextName_++])) return push;
  }
}

// The whole file's push; nothing when the file holds lines, which then come next.
std::optional<QXPlatform::PushText> PushFiles::open(const std::string& name) {
  const std::string shownName = names_.size() > 1 ? name : "";
  if (name == "-") return openStandardInput(shownName);
  const auto unreadable = [&](const std::string& reason) {
    return QXPlatform::PushText{{}, 1, shownName, QXPlatform::Error{name + ": " + reason}};
  };
  std::error_code ignored;
  if (std::filesystem::is_directory(name, ignored)) return unreadable(std::strerror(EISDIR));
  file_ = std::ifstream(name, std::ios::binary);
  if (!file_) return unreadable(std::strerror(errno));
  if (std::filesystem::path(name).extension() == ".ndjson") {
    lines_ = std::make_unique<QXPlatform::PushLineSource>(file_, shownName);
    return std::nullopt;
  }
  std::string text = readUpTo(QXPlatform::kLongestPush, file_);
  if (file_.bad()) return unreadable("cannot be read");
  if (text.size() > QXPlatform::kLongestPush) return unreadable(tooLong().message);
  return QXPlatform::PushText{std::move(text), 1, shownName, std::nullopt};
}

// A first line that is JSON is handed out before anything else is read.
std::optional<QXPlatform::PushText> PushFiles::openStandardInput(const std::string& shownName) {
  std::istream& input = QXPlatform::standardInput();
  lines_ = std::make_unique<QXPlatform::PushLineSource>(input, shownName);
  auto first = lines_->next();
  if (!first || first->unreadable || !mayBeginPush(first->text)) return first;
  const std::string rest = readUpTo(QXPlatform::kLongestPush, input);
  std::string whole = first->text + "\n" + rest;
  if (QXPlatform::findJSONTextError(whole) && holdsWholeLine(rest)) {
    // The first push of several is broken.
    readAgain_ = std::make_unique<ReadAgain>(std::string(first->line - 1, '\n') + whole, input);
    readAgainInput_.rdbuf(readAgain_.get());
    lines_ = std::make_unique<QXPlatform::PushLineSource>(readAgainInput_, shownName);
    return std::nullopt;
  }
  lines_.reset();
  first->text = std::move(whole);
  if (first->text.size() > QXPlatform::kLongestPush) first->unreadable = tooLong();
  return first;
}

}  // namespace qx
