#include "tools/qx/EachPush.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <iostream>
#include <list>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "QXPlatform/foundation/MemoryUse.h"
#include "tools/qx/PushFiles.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

// What a thread takes at a time: enough that the taking does not count, and little to hold.
constexpr std::size_t kMostPushesABatch = 32;
constexpr std::size_t kMostBytesABatch = std::size_t{256} * 1024;
// How many a thread may be behind what is read.
constexpr std::size_t kMostBatchesAThread = 4;

struct Task {
  QXPlatform::PushText push;
  PushPlace place;
  PushReport report;
};

struct Batch {
  std::vector<Task> tasks;
  std::thread::id examinedBy = {};

  bool isExamined() const { return examinedBy != std::thread::id(); }
};

std::string shownName(const std::string& file) {
  return file == "-" ? "standard input" : file;
}

// Below a directory: a file of pushes, or what cannot be looked into, and why.
struct DirectoryPart {
  std::string path;
  std::string unreadable;
};

// What is there as a name alone, such as a link that leads nowhere, says why when it is opened.
bool mayHoldPushes(const std::filesystem::directory_entry& entry) {
  const auto extension = entry.path().extension();
  std::error_code ignored;
  return (extension == ".json" || extension == ".ndjson") &&
         (entry.is_regular_file(ignored) || !entry.exists(ignored));
}

void listParts(const std::filesystem::path& directory, std::vector<DirectoryPart>& parts) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (!entry->is_symlink(ignored) && entry->is_directory(ignored)) {
      listParts(entry->path(), parts);
    } else if (mayHoldPushes(*entry)) {
      parts.push_back({entry->path().string(), ""});
    }
  }
  if (error) parts.push_back({directory.string(), error.message()});
}

// In the order of their names, below the directory too.
std::vector<DirectoryPart> partsOf(const std::string& directory) {
  std::vector<DirectoryPart> parts;
  listParts(directory, parts);
  std::ranges::sort(parts, {}, &DirectoryPart::path);
  return parts;
}

// On a terminal, too, what comes before it is seen before.
void failInTurn(std::string_view command, const std::string& reason) {
  std::cout.flush();
  fail(command, reason);
}

bool print(const std::string& line) {
  std::cout << line;
  return true;
}

// A file that cannot be opened is named in the reason already.
std::string withPlace(const PushPlace& place, const Error& error) {
  const std::string file = shownName(place.file);
  return error.message.starts_with(file + ": ") ? error.message : place.name + ": " + error.message;
}

// Has batches of pushes looked at by several threads, of which the one that adds them is one, and reports on
// them in their order on that one. A single job looks at each push as it comes.
class Examination {
 public:
  Examination(std::string_view command, std::size_t jobs,
              const std::function<PushReport(const std::string&, const PushPlace&)>& examine,
              const std::function<void(const PushPlace&, const Error&)>& unreadable)
      : command_(command), jobs_(jobs), examine_(examine), unreadable_(unreadable) {}
  ~Examination() {
    {
      const std::lock_guard lock(mutex_);
      isOver_ = true;
    }
    isDue_.notify_all();
  }
  Examination(const Examination&) = delete;
  Examination& operator=(const Examination&) = delete;

  void add(QXPlatform::PushText push, PushPlace place) {
    bytesRead_ += push.text.size();
    read_.push_back({std::move(push), std::move(place), {}});
    if (jobs_ == 1 || read_.size() == kMostPushesABatch || bytesRead_ > kMostBytesABatch) handOver();
  }

  void flush() {
    handOver();
    while (!batches_.empty()) reportOnFirst();
  }

  // In the place of a push, what is said of a file that has none.
  void addUnreadable(const std::string& file, std::string reason) {
    add({{}, 1, "", Error{std::move(reason)}}, {.file = file, .name = shownName(file)});
  }

  int exitCode() const { return exitCode_; }

 private:
  void handOver() {
    if (helpers_.size() + 1 < jobs_) helpers_.emplace_back([this] { help(); });
    bytesRead_ = 0;
    {
      const std::lock_guard lock(mutex_);
      batches_.push_back({std::exchange(read_, {})});
      due_.push_back(&batches_.back());
    }
    isDue_.notify_one();
    while (batches_.size() > (jobs_ == 1 ? 0 : jobs_ * kMostBatchesAThread)) reportOnFirst();
  }

  void help() {
    std::unique_lock lock(mutex_);
    for (;;) {
      isDue_.wait(lock, [this] { return isOver_ || !due_.empty(); });
      if (due_.empty()) return;
      std::list<Batch> reported = std::exchange(reported_, {});
      lock.unlock();
      reported.clear();
      lock.lock();
      if (!due_.empty()) examineNext(lock);
    }
  }

  // Looks at others while the first is with another thread.
  void reportOnFirst() {
    Batch& first = batches_.front();
    {
      std::unique_lock lock(mutex_);
      while (!first.isExamined() && !due_.empty()) examineNext(lock);
      isExamined_.wait(lock, [&] { return first.isExamined(); });
    }
    for (const Task& task : first.tasks) {
      if (!task.report()) exitCode_ = 1;
    }
    std::cout.flush();
    letGoOfFirst();
  }

  // Memory is given back by the thread that took it: threads that free each other's hold each other up.
  void letGoOfFirst() {
    Batch& first = batches_.front();
    if (first.examinedBy == std::this_thread::get_id()) return batches_.pop_front();
    for (Task& task : first.tasks) task.push = {};
    const std::lock_guard lock(mutex_);
    reported_.splice(reported_.end(), batches_, batches_.begin());
  }

  void examineNext(std::unique_lock<std::mutex>& lock) {
    Batch& batch = *due_.front();
    due_.pop_front();
    lock.unlock();
    for (Task& task : batch.tasks) examine(task);
    lock.lock();
    batch.examinedBy = std::this_thread::get_id();
    isExamined_.notify_one();
  }

  void examine(Task& task) const {
    if (!task.push.unreadable) {
      task.report = examine_(task.push.text, task.place);
    } else {
      task.report = [this, &task] {
        failInTurn(command_, withPlace(task.place, *task.push.unreadable));
        if (unreadable_) unreadable_(task.place, *task.push.unreadable);
        return false;
      };
    }
  }

  const std::string_view command_;
  const std::size_t jobs_;
  const std::function<PushReport(const std::string&, const PushPlace&)>& examine_;
  const std::function<void(const PushPlace&, const Error&)>& unreadable_;
  std::vector<Task> read_;
  std::size_t bytesRead_ = 0;
  std::list<Batch> batches_;  // handed over and not reported on
  int exitCode_ = 0;

  std::mutex mutex_;
  std::condition_variable isDue_;
  std::condition_variable isExamined_;
  // Below, guarded by mutex_, as is whether a batch is examined.
  std::deque<Batch*> due_;
  std::list<Batch> reported_;  // that helpers looked at
  bool isOver_ = false;
  std::vector<std::jthread> helpers_;
};

void examineFile(const std::string& file, Examination& examination) {
  PushFiles source({file});
  auto push = source.next();
  if (!push) examination.addUnreadable(file, "no push");
  bool several = false;
  while (push && std::cout) {
    auto following = source.next();
    several = several || following;
    PushPlace place{file, push->line, several, shownName(file)};
    if (several) place.name += ": line " + std::to_string(push->line);
    examination.add(*std::move(push), std::move(place));
    push = std::move(following);
  }
}

}  // namespace

int forEachPush(std::string_view command, const PushInput& input,
                const std::function<PushReport(const std::string& text, const PushPlace& place)>& examine,
                const std::function<void(const PushPlace& place, const Error& reason)>& unreadable) {
  QXPlatform::keepMemoryUseEven(static_cast<int>(input.jobs));
  Examination examination(command, input.jobs, examine, unreadable);
  for (const std::string& file : input.files) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(file, ignored)) {
      examineFile(file, examination);
      continue;
    }
    const auto parts = partsOf(file);
    if (parts.empty()) examination.addUnreadable(file, "no .json and no .ndjson file");
    for (const auto& [path, reason] : parts) {
      if (reason.empty()) {
        examineFile(path, examination);
      } else {
        examination.addUnreadable(path, reason);
      }
    }
  }
  examination.flush();
  return examination.exitCode();
}

int printEachChanged(const SimulatorOptions& simulator, std::string_view command, const PushInput& input,
                     const std::function<Result<Dictionary>(const Dictionary&)>& change,
                     const std::function<void(const PushPlace& place, const Dictionary& before,
                                              const Dictionary& after)>& report) {
  return forEachPush(command, input, [&](const std::string& text, const PushPlace& place) -> PushReport {
    const auto failed = [&](const Error& error) {
      return [=, message = withPlace(place, error)] {
        failInTurn(command, message);
        return false;
      };
    };
    const auto push = PushDocument::parse(text);
    if (!push) return failed(push.error());
    const auto userInfo = change(push->userInfo());
    if (!userInfo) return failed(userInfo.error());
    std::string line = resultText(simulator, push->replacingUserInfo(*userInfo));
    // What nobody asks for is let go here, where it was made.
    if (!report) return [line = std::move(line)] { return print(line); };
    return [&, place, before = push->userInfo(), after = *userInfo, line = std::move(line)] {
      print(line);
      report(place, before, after);
      return true;
    };
  });
}

}  // namespace qx
