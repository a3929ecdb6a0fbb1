#include <cmath>
#include <string>

#include "QXPlatform/foundation/JSON.h"
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

class Writer {
 public:
  Writer(std::string& out, JSONStyle style, Misfits misfits) : out_(out), style_(style), misfits_(misfits) {}

  bool write(const Value& value) {
    switch (value.kind()) {
      case Kind::null:
        out_ += "null";
        return true;
      case Kind::boolean:
        out_ += *value.boolean() ? "true" : "false";
        return true;
      case Kind::integer:
        appendJSONInteger(out_, *value.integer());
        return true;
      case Kind::number:
        return writeNumber(*value.number());
      case Kind::string:
        return writeText(*value.string());
      case Kind::date:
        return misfit("a date") && writeText(describe(*value.date()));
      case Kind::data:
        return misfit("bytes") && writeText(describeBytes(*value.data()));
      case Kind::array:
        return writeArray(value);
      case Kind::dictionary:
        return writeDictionary(value);
    }
    return true;
  }

  const JSONFault& fault() const { return fault_; }

 private:
  bool misfit(std::string_view reason) {
    fault_.reason = reason;
    return misfits_ == Misfits::described;
  }

  bool writeNumber(double number) {
    if (appendJSONNumber(out_, number, fault_)) return true;
    return misfits_ == Misfits::described && writeText(describe(number));
  }

  bool writeText(std::string_view text) {
    const std::size_t before = out_.size();
    if (appendJSONText(out_, text, fault_)) return true;
    if (misfits_ == Misfits::refused) return false;
    out_.resize(before);
    return appendJSONText(out_, replacingInvalidUTF8(text), fault_);
  }

  bool writeArray(const Value& array) {
    const auto elements = array.elements();
    if (depth_ == kJSONWritingDepthLimit) return tooDeep();
    if (elements.empty()) {
      out_ += "[]";
      return true;
    }
    open('[');
    for (std::size_t i = 0; i < elements.size(); ++i) {
      startItem(i == 0);
      if (!write(elements[i])) {
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
      out_ += "{}";
      return true;
    }
    open('{');
    bool first = true;
    for (const auto& [key, value] : entries) {
      startItem(std::exchange(first, false));
      if (!writeMember(key, value)) {
        fault_.where.prependKey(key);
        return false;
      }
    }
    close('}');
    return true;
  }

  bool writeMember(std::string_view key, const Value& value) {
    if (!writeText(key)) return false;
    out_ += style_ == JSONStyle::pretty ? " : " : ":";
    return write(value);
  }

  bool tooDeep() { return misfit("nested too deeply") && writeText("..."); }

  void open(char bracket) {
    out_ += bracket;
    ++depth_;
  }

  void close(char bracket) {
    --depth_;
    startLine();
    out_ += bracket;
  }

  void startItem(bool first) {
    if (!first) out_ += ',';
    startLine();
  }

  void startLine() {
    if (style_ == JSONStyle::compact) return;
    out_ += '\n';
    out_.append(static_cast<std::size_t>(depth_) * 2, ' ');
  }

  std::string& out_;
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
