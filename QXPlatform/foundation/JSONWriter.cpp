#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/JSONPlainText.h"
#include "QXPlatform/foundation/JSONText.h"
#include "QXPlatform/foundation/UTF8.h"

namespace QXPlatform {

namespace {

using Kind = Value::Kind;

// What becomes of a leaf that JSON cannot hold.
enum class Misfits { refused, described };

std::string describe(double number) {
  if (std::isnan(number)) return "nan";
  if (std::isinf(number)) return number < 0 ? "-inf" : "inf";
  std::string text;
  JSONFault none;
  appendJSONNumber(text, number, none);
  return text;
}

std::string describe(Date date) {
  return formatUTCMilliseconds(date).value_or(describe(date.secondsSince1970));
}

std::string describeBytes(std::string_view bytes) {
  return std::to_string(bytes.size()) + " bytes";
}

// Gathers what is appended to a string: one that grows by each bracket and each word takes longer than all
// else together.
class Pieces {
 public:
  explicit Pieces(std::string& out) : out_(out) {}

  // What has been appended by now, to go on with directly.
  std::string& out() {
    out_.append(gathered_.data(), end_);
    end_ = gathered_.data();
    return out_;
  }

  std::size_t size() const { return out_.size() + static_cast<std::size_t>(end_ - gathered_.data()); }

  void add(char character) {
    makeRoom(1);
    *end_++ = character;
  }
  // REQUIRES: a few characters.
  void add(std::string_view word) {
    makeRoom(word.size());
    end_ = std::ranges::copy(word, end_).out;
  }
  // In quotation marks, between two characters if they are given. Returns whether it is short and stands as
  // it is, as most texts do; if not, nothing has been added.
  [[gnu::always_inline]] bool addPlainText(std::string_view text, char before = 0, char after = 0) {
    if (text.size() > kLongestPlain) return false;
    makeRoom(text.size() + 4);
    char* place = end_;
    if (before != 0) *place++ = before;
    *place++ = '"';
    if (!detail::PlainCopy::make(place, text)) return false;
    place += text.size();
    *place++ = '"';
    if (after != 0) *place++ = after;
    end_ = place;
    return true;
  }

 private:
  static constexpr std::size_t kLongestPlain = 128;

  void makeRoom(std::size_t size) {
    if (static_cast<std::size_t>(gathered_.data() + gathered_.size() - end_) < size) out();
  }

  std::string& out_;
  std::array<char, 1024> gathered_;  // on purpose not filled
  char* end_ = gathered_.data();
};

class Writer {
 public:
  Writer(std::string& out, JSONStyle style, Misfits misfits) : out_(out), style_(style), misfits_(misfits) {}

  bool write(const Value& value) {
    const bool isWritten = writeValue(value);
    out_.out();
    return isWritten;
  }

  const JSONFault& fault() const { return fault_; }

 private:
  bool writeValue(const Value& value) {
    switch (value.kind()) {
      case Kind::null:
        out_.add("null");
        return true;
      case Kind::boolean:
        out_.add(*value.boolean() ? "true" : "false");
        return true;
      case Kind::integer:
        appendJSONInteger(out_.out(), *value.integer());
        return true;
      case Kind::string:
        return writeText(*value.string());
      case Kind::array:
        return writeArray(value);
      case Kind::dictionary:
        return writeDictionary(value);
      default:
        return writeRare(value);
    }
  }

  // Apart, since what is described here takes room on the stack, which each step into the tree would make.
  [[gnu::noinline]] bool writeRare(const Value& value) {
    if (const auto number = value.number()) return writeNumber(*number);
    if (const auto date = value.date()) return misfit("a date") && writeText(describe(*date));
    return misfit("bytes") && writeText(describeBytes(*value.data()));
  }

  bool misfit(std::string_view reason) {
    fault_.reason = reason;
    return misfits_ == Misfits::described;
  }

  bool writeNumber(double number) {
    if (appendJSONNumber(out_.out(), number, fault_)) return true;
    return misfits_ == Misfits::described && writeText(describe(number));
  }

  [[gnu::noinline]] bool writeText(std::string_view text) {
    return out_.addPlainText(text) || writeSpecialText(text);
  }

  [[gnu::noinline]] bool writeSpecialText(std::string_view text) {
    std::string& out = out_.out();
    const std::size_t before = out.size();
    if (appendJSONText(out, text, fault_)) return true;
    if (misfits_ == Misfits::refused) return false;
    out.resize(before);
    return appendJSONText(out, replacingInvalidUTF8(text), fault_);
  }

  bool writeArray(const Value& array) {
    constexpr std::size_t kFew = 8;
    const auto elements = array.elements();
    if (depth_ == kJSONWritingDepthLimit) return tooDeep();
    if (elements.empty()) {
      out_.add("[]");
      return true;
    }
    open('[');
    const std::size_t start = out_.size();
    for (std::size_t i = 0; i < elements.size(); ++i) {
      if (i == 1 && elements.size() > kFew) reserveAlike(out_.out(), start, elements.size());
      startItem(i == 0);
      if (!writeValue(elements[i])) {
        fault_.where.prependIndex(i);
        return false;
      }
    }
    close(']');
    return true;
  }

  bool writeDictionary(const Value& dictionary) {
    const auto entries = dictionary.entries();
    if (depth_ == kJSONWritingDepthLimit) return tooDeep();
    if (entries.empty()) {
      out_.add("{}");
      return true;
    }
    open('{');
    bool isFirst = true;
    for (const auto& [key, value] : entries) {
      if (!writeKey(key, std::exchange(isFirst, false)) || !writeValue(value)) {
        fault_.where.prependKey(key);
        return false;
      }
    }
    close('}');
    return true;
  }

  bool writeKey(std::string_view key, bool isFirst) {
    const bool isCompact = style_ == JSONStyle::compact;
    if (isCompact && out_.addPlainText(key, isFirst ? '\0' : ',', ':')) return true;
    startItem(isFirst);
    if (!writeText(key)) return false;
    out_.add(isCompact ? ":" : " : ");
    return true;
  }

  bool tooDeep() { return misfit("nested too deeply") && writeText("..."); }

  void open(char bracket) {
    out_.add(bracket);
    ++depth_;
  }

  void close(char bracket) {
    --depth_;
    startLine();
    out_.add(bracket);
  }

  void startItem(bool first) {
    if (!first) out_.add(',');
    startLine();
  }

  void startLine() {
    if (style_ == JSONStyle::compact) return;
    out_.add('\n');
    for (int level = 0; level < depth_; ++level) out_.add("  ");
  }

  Pieces out_;
  const JSONStyle style_;
  const Misfits misfits_;
  int depth_ = 0;
  JSONFault fault_;
};

}  // namespace

bool appendJSONValue(std::string& out, const Value& value, JSONFault& fault) {
  Writer writer(out, JSONStyle::compact, Misfits::refused);
  if (writer.write(value)) return true;
  fault = writer.fault();
  return false;
}

void appendJSONOrDescription(std::string& out, const Value& value, JSONStyle style) {
  const std::size_t before = out.size();
  if (Writer(out, style, Misfits::refused).write(value)) return;
  out.resize(before);
  out += value.description();
}

Result<std::string> writeJSON(const Value& value, JSONStyle style) {
  std::string text;
  Writer writer(text, style, Misfits::refused);
  if (!writer.write(value)) return Error{writer.fault().description()};
  return text;
}

bool isValidJSONObject(const Value& value) {
  return (value.isDictionary() || value.isArray()) && writeJSON(value, JSONStyle::compact).ok();
}

std::string Value::description() const {
  switch (kind()) {
    case Kind::string:
      return std::string(*string());
    case Kind::date:
      return describe(*date());
    case Kind::data:
      return describeBytes(*data());
    case Kind::number:
      return describe(*number());
    default:
      std::string text;
      Writer(text, JSONStyle::compact, Misfits::described).write(*this);
      return text;
  }
}

}  // namespace QXPlatform
