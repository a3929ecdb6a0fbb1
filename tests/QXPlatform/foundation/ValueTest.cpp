#include "QXPlatform/foundation/Value.h"

#include "QXPlatform/foundation/ValueArena.h"
#include "tests/support/Test.h"

namespace QXPlatform {
namespace {

TEST(ValueTest, AnswersOnlyForItsOwnKind) {
  const Value text("7");
  EXPECT_EQ(text.string(), "7");
  EXPECT_EQ(text.integer(), std::nullopt);
  const Value integer(7);
  EXPECT_EQ(integer.integer(), 7);
  EXPECT_EQ(integer.number(), std::nullopt);
  EXPECT_EQ(integer.boolean(), std::nullopt);
  EXPECT_EQ(Value(Date{1.5}).number(), std::nullopt);
  EXPECT_EQ(Value(Data("ab")).string(), std::nullopt);
  EXPECT_EQ(text.find("x"), nullptr);
  EXPECT_TRUE(text.elements().empty());
}

TEST(ValueTest, TheLastOfEqualKeysCounts) {
  const Dictionary dictionary{{"b", 1}, {"a", 2}, {"b", 3}, {"", 4}, {"b", 5}};
  ASSERT_EQ(dictionary.size(), 3U);
  EXPECT_EQ(dictionary.find("b")->integer(), 5);
  EXPECT_EQ(dictionary.find("")->integer(), 4);
  EXPECT_EQ(dictionary.find("c"), nullptr);
}

TEST(ValueTest, MergingLetsChangesWinAndLeavesTheOriginalAlone) {
  const Dictionary base{{"a", 1}, {"c", 3}, {"d", 4}};
  const Dictionary merged = base.merging({{"b", 20}, {"c", 30}, {"e", 50}});
  EXPECT_EQ(merged, (Dictionary{{"a", 1}, {"b", 20}, {"c", 30}, {"d", 4}, {"e", 50}}));
  EXPECT_EQ(base, (Dictionary{{"a", 1}, {"c", 3}, {"d", 4}}));
  EXPECT_EQ(merged.removing("c").removing("zz").size(), 4U);
  EXPECT_EQ(Dictionary().setting("x", "y").find("x")->string(), "y");
}

TEST(ValueTest, FindsEveryKeyOfALargeDictionary) {
  std::vector<std::pair<std::string, Value>> entries;
  entries.reserve(5000);
  for (int i = 0; i < 5000; ++i) entries.emplace_back("key" + std::to_string(i * 7919 % 5000), i);
  const Dictionary dictionary = Dictionary::fromEntries(entries);
  ASSERT_EQ(dictionary.size(), 5000U);
  for (const auto& [key, value] : entries) ASSERT_EQ(dictionary.find(key)->integer(), value.integer());
}

TEST(ValueTest, PartsOutliveTheTreeTheyCameFrom) {
  ValueArena arena(16);
  std::vector<ValueArena::RawValue> elements;
  elements.reserve(100);
  for (int i = 0; i < 100; ++i) elements.push_back(arena.string(arena.store("text ", std::to_string(i))));
  std::vector<ValueArena::RawEntry> entries{{arena.store("it"), arena.array(elements)},
                                            {arena.store("t"), ValueArena::number(0.5)}};
  const ValueArena::RawValue root = arena.dictionary(entries);
  auto tree = std::make_unique<Value>(std::move(arena).finish(root));
  const Value part = tree->find("it")->elements()[42];
  const Dictionary other{{"kept", *tree->find("it")}};
  tree.reset();
  EXPECT_EQ(part.string(), "text 42");
  EXPECT_EQ(other.find("kept")->elements()[99].string(), "text 99");
}

TEST(ValueTest, CopiesAreReadAndDroppedOnManyThreads) {
  const Value shared(Dictionary{{"list", std::vector<Value>{"a", "b", Dictionary{{"deep", "text"}}}}});
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([copy = shared] {
      for (int round = 0; round < 1000; ++round) {
        const Value element = copy.find("list")->elements()[2];
        ASSERT_EQ(element.find("deep")->string(), "text");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace QXPlatform
