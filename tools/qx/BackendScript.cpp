#include "tools/qx/BackendScript.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include "QXPlatform/foundation/ASCII.h"
#include "tools/qx/NearestWord.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

// A misspelt key would be an answer that nobody understands.
std::optional<Error> findUnknownKey(const Dictionary& answer) {
  static const std::vector<std::string> kKnown{"path",    "method", "times", "status",
                                               "headers", "body",   "delay", "close"};
  for (const auto& [key, value] : answer) {
    if (std::ranges::find(kKnown, key) != kKnown.end()) continue;
    const auto meant = nearestWord(key, kKnown);
    return Error{"there is no key \"" + std::string(key) + "\"" +
                 (meant ? "; did you mean \"" + *meant + "\"?" : "")};
  }
  return std::nullopt;
}

bool isOutside(const std::optional<std::int64_t>& number, std::int64_t least, std::int64_t most) {
  return number && (*number < least || *number > most);
}

std::optional<Error> findBadValue(const ScriptedAnswer& answer) {
  constexpr double kDay = 86'400;
  if (isOutside(answer.status, 100, 599)) return Error{"status must be from 100 to 599"};
  if (isOutside(answer.times, 1, INT64_MAX)) return Error{"times must be at least 1"};
  if (answer.delay && !(*answer.delay >= 0 && *answer.delay <= kDay)) {
    return Error{"delay must be at least 0 and at most a day"};
  }
  for (const auto& [name, value] : answer.headers.value_or(Dictionary())) {
    if (!value.string()) return Error{"header " + std::string(name) + " must be text"};
    const std::string line = std::string(name).append(*value.string());
    if (line.find_first_of("\r\n") != std::string::npos) {
      return Error{"header " + std::string(name) + " must be one line"};
    }
    if (QXPlatform::equalsIgnoringCase(name, "Content-Length")) {
      return Error{"Content-Length follows from the body"};
    }
  }
  return std::nullopt;
}

Result<ScriptedAnswer> parseAnswer(const QXPlatform::Value& value) {
  auto answer = QXPlatform::decodeValue<ScriptedAnswer>(value);
  if (!answer) return Error{answer.error().description()};
  if (auto unknown = findUnknownKey(*value.dictionary())) return *unknown;
  if (auto bad = findBadValue(*answer)) return *bad;
  return *std::move(answer);
}

bool fits(const ScriptedAnswer& answer, const backend::Request& request) {
  const std::string_view path = request.path;
  if (answer.path && *answer.path != path && *answer.path != path.substr(0, path.find('?'))) return false;
  return !answer.method || QXPlatform::equalsIgnoringCase(*answer.method, request.method);
}

void replaceHeader(backend::Response& response, std::string_view name, std::string_view value) {
  std::erase_if(response.headers, [name](const backend::Header& header) {
    return QXPlatform::equalsIgnoringCase(header.first, name);
  });
  response.headers.emplace_back(name, value);
}

void layBody(backend::Response& response, const QXPlatform::Value& body) {
  response.body = body.string() ? std::string(*body.string()) : body.description();
  replaceHeader(response, "Content-Type", body.string() ? "text/plain; charset=utf-8" : "application/json");
}

}  // namespace

Result<std::vector<ScriptedAnswer>> BackendScript::read(const std::string& file) {
  std::error_code ignored;
  if (std::filesystem::is_directory(file, ignored)) return Error{file + ": " + std::strerror(EISDIR)};
  std::ifstream input(file, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(input), {}};
  if (!input) return Error{file + ": " + std::strerror(errno)};
  const auto list = QXPlatform::parseJSON(text);
  if (!list) return Error{file + ": " + list.error().message};
  if (!list->isArray()) return Error{file + ": not a list of answers"};
  std::vector<ScriptedAnswer> answers;
  for (const auto& value : list->elements()) {
    auto answer = parseAnswer(value);
    if (!answer) return Error{file + ": /" + std::to_string(answers.size()) + ": " + answer.error().message};
    answers.push_back(*std::move(answer));
  }
  return answers;
}

BackendScript::BackendScript(const std::vector<ScriptedAnswer>& answers, backend::Response otherwise)
    : otherwise_(std::move(otherwise)) {
  for (const ScriptedAnswer& answer : answers) entries_.push_back({answer, answer.times});
}

std::optional<backend::Response> BackendScript::answer(const backend::Request& request) {
  const ScriptedAnswer* scripted = take(request);
  if (scripted == nullptr) return std::nullopt;
  backend::Response response = otherwise_;
  if (scripted->status) response.status = static_cast<int>(*scripted->status);
  if (scripted->body) layBody(response, *scripted->body);
  for (const auto& [name, value] : scripted->headers.value_or(Dictionary())) {
    replaceHeader(response, name, *value.string());
  }
  if (scripted->delay) {
    response.delay =
        std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(*scripted->delay));
  }
  if (scripted->close == true) response.fault = backend::Fault::closeWithoutAnswer;
  return response;
}

const ScriptedAnswer* BackendScript::take(const backend::Request& request) {
  const std::lock_guard lock(mutex_);
  for (Entry& entry : entries_) {
    if (entry.left == 0 || !fits(entry.answer, request)) continue;
    if (entry.left) --*entry.left;
    return &entry.answer;
  }
  return nullptr;
}

}  // namespace qx
