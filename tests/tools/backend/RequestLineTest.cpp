#include "tools/backend/RequestLine.h"

#include <gtest/gtest.h>

namespace backend {
namespace {

TEST(RequestLineTest, ShowsTheBodyAsWhatItIs) {
  const std::pair<std::string, std::string> table[] = {
      {"", "null"},
      {R"({"a": [1, 2.5]})", R"({"a":[1,2.5]})"},
      {R"({"a": )", R"("{\"a\": ")"},
      {"caf\xC3\xA9", "\"caf\xC3\xA9\""},
      {"a\xFF"
       "b",
       "\"a\xEF\xBF\xBD"
       "b\""},
  };
  for (const auto& [body, shown] : table) {
    const Request request{"POST", "/p?q=1", {{"b", "1"}, {"A", "x"}, {"b", "2"}}, body};
    EXPECT_EQ(requestLine(request),
              R"({"body":)" + shown + R"(,"headers":{"A":"x","b":"1, 2"},"method":"POST","path":"/p?q=1"})");
  }
}

}  // namespace
}  // namespace backend
