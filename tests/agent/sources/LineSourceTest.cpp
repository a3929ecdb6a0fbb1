#include "agent/sources/LineSource.h"

#include <fcntl.h>
#include <unistd.h>

#include "QXPlatform/files/FileDescriptor.h"
#include "QXPlatform/notifications/PushLines.h"
#include "tests/support/Test.h"

namespace QXAgent {
namespace {

using QXPlatform::FileDescriptor;
using testing::ElementsAre;

// What is taken from a descriptor until its end, when the first attempt at each of some lines fails.
std::vector<std::string> takeAll(int descriptor, std::vector<std::string> notAtOnce = {}) {
  EventLoop loop;
  std::vector<std::string> lines;
  const auto take = [&](std::string_view line) {
    if (std::erase(notAtOnce, line) > 0) return false;
    lines.emplace_back(line);
    return true;
  };
  const LineSource source(
      loop, descriptor,
      {take, [&](const std::string& reason) { lines.push_back(reason); },
       [&](const std::string& reason) { lines.push_back(reason); }, [&] { loop.stop(0); }});
  Timer patience(loop, [&] { loop.stop(1); });
  patience.start(std::chrono::seconds(20));
  EXPECT_EQ(loop.run(), 0);
  return lines;
}

TEST(LineSourceTest, APipesLinesComeWholeAndInOrderHoweverTheyAreCut) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  const FileDescriptor input(ends[0]);
  std::thread writer([output = ends[1]] {
    const std::string tooLong(QXPlatform::kLongestPush + 100'000, 'x');
    for (const std::string& part :
         {std::string("a\n\n  \nb"), std::string("b\nc\n"), tooLong, std::string("\nd")}) {
      for (std::size_t done = 0; done < part.size();)
        done += static_cast<std::size_t>(write(output, part.data() + done, part.size() - done));
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    close(output);
  });
  EXPECT_THAT(takeAll(input.get(), {"bb"}), ElementsAre("a", "bb", "c", "a line of more than 4 MiB", "d"));
  writer.join();
}

TEST(LineSourceTest, WhatAnotherReaderHasTakenIsNoEnd) {
  EventLoop loop;
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
  const FileDescriptor input(ends[0]);
  const FileDescriptor sameInput(dup(ends[0]));
  const FileDescriptor output(ends[1]);
  std::string said;
  const auto note = [&](std::string_view text) { return !said.append(text).empty(); };
  const LineSource::Handlers handlers{note, note, note, [&] { note("end"); }};
  const LineSource one(loop, input.get(), handlers);
  const LineSource other(loop, sameInput.get(), handlers);
  ASSERT_EQ(write(output.get(), "a\n", 2), 2);
  for (int i = 0; i < 4; ++i) sd_event_run(loop.get(), 10'000);
  EXPECT_EQ(said, "a");
}

TEST(LineSourceTest, AFailureToReadIsReported) {
  const FileDescriptor directory(open("/", O_RDONLY | O_CLOEXEC));
  EXPECT_THAT(takeAll(directory.get()), ElementsAre("the lines cannot be read: Is a directory"));
}

TEST(LineSourceTest, AFileIsReadToItsEnd) {
  const support::TemporaryDirectory directory;
  std::string text;
  for (int i = 0; i < 50'000; ++i) text += "push " + std::to_string(i) + "\n";
  const FileDescriptor file(open(directory.write("pushes", text).c_str(), O_RDONLY | O_CLOEXEC));
  const auto lines = takeAll(file.get());
  ASSERT_EQ(lines.size(), 50'000U);
  EXPECT_EQ(lines.back(), "push 49999");
}

}  // namespace
}  // namespace QXAgent
