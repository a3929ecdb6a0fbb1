#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/foundation/Result.h"
#include "tools/backend/HTTPMessages.h"

namespace qx {

// One answer of a script, for the requests that it fits. What it does not say is as without a script.
struct ScriptedAnswer {
  std::optional<std::string> path;    // with its query or without
  std::optional<std::string> method;  // in any letter case
  std::optional<std::int64_t> times;  // how often; absent: from then on
  std::optional<std::int64_t> status;
  std::optional<QXPlatform::Dictionary> headers;
  std::optional<QXPlatform::Value> body;  // text is sent as it is, anything else as JSON
  std::optional<double> delay;            // seconds
  std::optional<bool> close;              // drops the connection without an answer

  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(
        jsonField("path", &ScriptedAnswer::path), jsonField("method", &ScriptedAnswer::method),
        jsonField("times", &ScriptedAnswer::times), jsonField("status", &ScriptedAnswer::status),
        jsonField("headers", &ScriptedAnswer::headers), jsonField("body", &ScriptedAnswer::body),
        jsonField("delay", &ScriptedAnswer::delay), jsonField("close", &ScriptedAnswer::close));
  }
};

// Answers in the order of a list: the first that fits a request and is not used up. Any thread.
class BackendScript {
 public:
  // From a JSON list. Fails, saying where, for what is no such list.
  static QXPlatform::Result<std::vector<ScriptedAnswer>> read(const std::string& file);

  // `otherwise`: the answer without a script, on which a fitting one is laid.
  BackendScript(const std::vector<ScriptedAnswer>& answers, backend::Response otherwise);

  // Nothing when no answer fits.
  std::optional<backend::Response> answer(const backend::Request& request);

 private:
  struct Entry {
    ScriptedAnswer answer;
    std::optional<std::int64_t> left;  // absent: any number
  };

  const ScriptedAnswer* take(const backend::Request& request);

  const backend::Response otherwise_;
  std::mutex mutex_;
  std::vector<Entry> entries_;  // how many are left: guarded by mutex_
};

}  // namespace qx
