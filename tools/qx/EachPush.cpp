#include "tools/qx/EachPush.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <thread>
#include <utility>

#include "tools/qx/PushFiles.h"
#include "tools/qx/Results.h"

namespace qx {

namespace {

using QXPlatform::Dictionary;
using QXPlatform::Error;
using QXPlatform::Result;

// Pushes of one thread that wait for the others'.
constexpr std::size_t kBatchAThread = 16;

struct Task {
  QXPlatform::PushText push;
  PushPlace place;
  PushReport report;
};

std::string shownName(const std::string& file) {
  return file == "-" ? "standard input" : file;
}

bool holdsPushes(const std::filesystem::directory_entry& entry) {
  const auto extension = entry.path().extension();
  return entry.is_regular_file() && (extension == ".json" || extension == ".ndjson");
}

// In the order of their names, below the directory too.
std::vector<std::string> filesIn(const std::string& directory) {
  std::vector<std::string> files;
  std::error_code error;
  for (std::filesystem::recursive_directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    if (holdsPushes(*entry)) files.push_back(entry->path().string());
  }
  std::ranges::sort(files);
  return files;
}

// A file that cannot be opened is named in the reason already.
std::string withPlace(const PushPlace& place, const Error& error) {
  const std::string file = shownName(place.file);
  return error.message.starts_with(file + ": ") ? error.message : place.name + ": " + error.message;
}

// Looks at pushes in batches, one as large as there are threads to share it.
class Examination {
 public:
  Examination(std::string_view command, std::size_t jobs,
              const std::function<PushReport(const std::string&, const PushPlace&)>& examine,
              const std::function<void(const PushPlace&, const Error&)>& unreadable)
      : command_(command), jobs_(jobs), examine_(examine), unreadable_(unreadable) {}

  void add(QXPlatform::PushText push, PushPlace place) {
    tasks_.push_back({std::move(push), std::move(place), {}});
    if (tasks_.size() >= (jobs_ == 1 ? 1 : jobs_ * kBatchAThread)) flush();
  }

  void flush() {
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
      for (std::size_t i = next++; i < tasks_.size(); i = next++) examine(tasks_[i]);
    };
    std::vector<std::jthread> helpers;
    for (std::size_t i = 1; i < std::min(jobs_, tasks_.size()); ++i) helpers.emplace_back(work);
    work();
    helpers.clear();
    for (const Task& task : tasks_) {
      if (!task.report()) exitCode_ = 1;
    }
    tasks_.clear();
  }

  // In the place of a push, what is said of a file that has none.
  void addUnreadable(const std::string& file, const char* reason) {
    add({{}, 1, "", Error{reason}}, {.file = file, .name = shownName(file)});
  }

  int exitCode() const { return exitCode_; }

 private:
  void examine(Task& task) const {
    if (!task.push.unreadable) {
      task.report = examine_(task.push.text, task.place);
    } else {
      task.report = [this, &task] {
        fail(command_, withPlace(task.place, *task.push.unreadable));
        if (unreadable_) unreadable_(task.place, *task.push.unreadable);
        return false;
      };
    }
  }

  const std::string_view command_;
  const std::size_t jobs_;
  const std::function<PushReport(const std::string&, const PushPlace&)>& examine_;
  const std::function<void(const PushPlace&, const Error&)>& unreadable_;
  std::vector<Task> tasks_;
  int exitCode_ = 0;
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
  Examination examination(command, input.jobs, examine, unreadable);
  for (const std::string& file : input.files) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(file, ignored)) {
      examineFile(file, examination);
      continue;
    }
    const auto files = filesIn(file);
    if (files.empty()) examination.addUnreadable(file, "no .json and no .ndjson file");
    for (const std::string& each : files) examineFile(each, examination);
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
        fail(command, message);
        return false;
      };
    };
    const auto push = PushDocument::parse(text);
    if (!push) return failed(push.error());
    const auto userInfo = change(push->userInfo());
    if (!userInfo) return failed(userInfo.error());
    return [&, place, before = push->userInfo(), after = *userInfo,
            line = resultText(simulator, push->replacingUserInfo(*userInfo))] {
      std::cout << line << std::flush;
      if (report) report(place, before, after);
      return true;
    };
  });
}

}  // namespace qx
