#include "QXPlatform/foundation/UUID.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace QXPlatform {
namespace {

TEST(UUIDTest, IsARandomUUIDInUpperCase) {
  std::set<std::string> seen;
  for (int i = 0; i < 1000; ++i) {
    const std::string uuid = makeUUIDString();
    ASSERT_THAT(uuid,
                testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    EXPECT_TRUE(seen.insert(uuid).second);
  }
}

}  // namespace
}  // namespace QXPlatform
