// A module's receipts from push to acknowledgement, the bare client that posts the same bytes to the same
// server in another thread, and the bare libraries and system calls that do the whole of it.

#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <stdlib.h>

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "AppGroupSDK/AppGroupSDK.h"
#include "QXExtensionSDK/receipts/DeliveryReceiptManagerProvider.h"
#include "bench/BareFile.h"
#include "bench/BareJSON.h"
#include "tools/backend/LoopbackServer.h"

namespace {

using AppGroupSDK::DeliveryReceiptPNModel;
using AppGroupSDK::DeliveryReceiptsModel;
using AppGroupSDK::DeliveryReceiptsModelStore;
using AppGroupSDK::ExtensionModuleName;
using AppGroupSDK::PNStatus;
using QXExtensionSDK::DeliveryReceiptData;

constexpr auto kModule = ExtensionModuleName::quorixEngagement;
constexpr auto kAppId = "bench";

// In memory where there is such a place: what a disk takes to make a record durable is measured elsewhere.
std::string makeDirectory() {
  const bool memory = std::filesystem::is_directory("/dev/shm");
  std::string path = std::string(memory ? "/dev/shm" : "/tmp") + "/qx-bench-XXXXXX";
  if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("No directory");
  std::filesystem::create_directory(path + "/group.bench");
  std::ofstream(path + "/Info.plist") << "<plist version=\"1.0\"><dict><key>VT_QUORIX_APP_GROUP_KEY</key>"
                                         "<string>group.bench</string></dict></plist>";
  return path;
}

// A host application that is set up for receipts, and its back end.
class Host {
 public:
  Host() {
    ::setenv("QX_BUNDLE", directory_.c_str(), 1);
    ::setenv("QX_APP_GROUPS_ROOT", directory_.c_str(), 1);
    AppGroupSDK::AppDeviceInfoStore().saveModelData(
        {server_.url(), "app-1", "device-1", "access", "5.2.0", "subscriber", "tenant", "session"});
  }
  ~Host() { std::filesystem::remove_all(directory_); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  const backend::LoopbackServer& server() const { return server_; }
  std::string container() const { return directory_ + "/group.bench"; }
  std::string deviceFile() const { return container() + "/com.veltro.qx.extensionsdk.appDeviceInfo.data"; }
  std::string receiptFile() const {
    return container() + "/com.veltro.qx.extensionsdk.deliveryReceipt.quorixEngagement.bench.data";
  }

 private:
  const backend::LoopbackServer server_{{.body = R"({"code":200,"message":"accepted","requestId":"r"})"}};
  const std::string directory_ = makeDirectory();
};

// New ones each time: what was acknowledged once would not be sent again.
void putPending(std::int64_t count) {
  static std::int64_t made = 0;
  std::vector<DeliveryReceiptPNModel> receipts;
  for (std::int64_t index = 0; index < count; ++index) {
    const std::string number = std::to_string(100000 + index);
    receipts.emplace_back("6F9619FF-8B86-D011-B42D-" + std::to_string(100'000'000'000 + made++),
                          "message-" + number, "request-" + number, "OUTBOUND",
                          1714554187.25 + static_cast<double>(index),
                          R"({"campaign":"spring","variant":"B"})", PNStatus::pending);
  }
  DeliveryReceiptsModelStore(kModule, kAppId)
      .saveModuleScopedModelData(DeliveryReceiptsModel(std::move(receipts)));
}

bool runCycle(const DeliveryReceiptData& push) {
  std::mutex mutex;
  std::condition_variable ended;
  std::optional<bool> outcome;
  // Gone before the answer comes, as in a push.
  auto manager = QXExtensionSDK::DeliveryReceiptManagerProvider(kModule, kAppId).makeManager();
  if (!manager->storeReceipt(push)) return false;
  manager->sendReceipts([&](bool succeeded) {
    const std::lock_guard lock(mutex);
    outcome = succeeded;
    ended.notify_one();
  });
  manager.reset();
  std::unique_lock lock(mutex);
  ended.wait(lock, [&] { return outcome.has_value(); });
  return *outcome;
}

const DeliveryReceiptData kPush{"message-100149", QXPlatform::Dictionary{{"campaign", "spring"}},
                                "request-100149", "OUTBOUND"};

void BM_ReceiptCycle(benchmark::State& state) {
  const Host host;
  for (auto _ : state) {
    state.PauseTiming();
    putPending(state.range(0) - 1);
    state.ResumeTiming();
    if (!runCycle(kPush)) state.SkipWithError("not acknowledged");
  }
}

std::size_t append(char* bytes, std::size_t size, std::size_t count, void* text) {
  static_cast<std::string*>(text)->append(bytes, size * count);
  return size * count;
}

// The library alone, posting what one run has posted.
class BarePost {
 public:
  explicit BarePost(const backend::Request& request, const std::string& url) : body_(request.body) {
    for (const auto& [name, value] : request.headers) {
      if (name == "Host" || name == "Content-Length") continue;
      headers_ = curl_slist_append(headers_, (name + ": " + value).c_str());
    }
    curl_easy_setopt(curl_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl_, CURLOPT_HTTPHEADER, headers_);
    curl_easy_setopt(curl_, CURLOPT_WRITEFUNCTION, &append);
    curl_easy_setopt(curl_, CURLOPT_WRITEDATA, &answer_);
  }
  ~BarePost() {
    curl_slist_free_all(headers_);
    curl_easy_cleanup(curl_);
  }
  BarePost(const BarePost&) = delete;
  BarePost& operator=(const BarePost&) = delete;

  const std::string& body() const { return body_; }

  // Whether a JSON text came back.
  bool perform(const std::string& body) {
    answer_.clear();
    curl_easy_setopt(curl_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(curl_, CURLOPT_POSTFIELDS, body.data());
    return curl_easy_perform(curl_) == CURLE_OK && bench::bareParse(answer_);
  }

 private:
  const std::string body_;
  std::string answer_;
  CURL* const curl_ = curl_easy_init();
  curl_slist* headers_ = curl_slist_append(nullptr, "Expect:");
};

// Posts on a thread of its own: sending holds nobody up, and its outcome never comes on the sender's thread.
class BackgroundPost {
 public:
  explicit BackgroundPost(BarePost& post) : post_(post), thread_([this] { run(); }) {}
  ~BackgroundPost() {
    hand(Stage::stopped);
    thread_.join();
  }
  BackgroundPost(const BackgroundPost&) = delete;
  BackgroundPost& operator=(const BackgroundPost&) = delete;

  bool perform(std::string body) {
    body_ = std::move(body);
    hand(Stage::given);
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return stage_ == Stage::done; });
    return posted_;
  }

 private:
  enum class Stage { idle, given, done, stopped };

  void hand(Stage stage) {
    const std::lock_guard lock(mutex_);
    stage_ = stage;
    changed_.notify_one();
  }
  void run() {
    while (isGiven()) {
      posted_ = post_.perform(body_);
      hand(Stage::done);
    }
  }
  bool isGiven() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return stage_ == Stage::given || stage_ == Stage::stopped; });
    return stage_ == Stage::given;
  }

  BarePost& post_;
  std::mutex mutex_;
  std::condition_variable changed_;
  Stage stage_ = Stage::idle;  // guarded by mutex_
  std::string body_;           // the thread's from given to done, as posted_
  bool posted_ = false;
  std::thread thread_;
};

std::unique_ptr<BarePost> makeBarePost(const Host& host, std::int64_t count) {
  putPending(count - 1);
  if (!runCycle(kPush)) throw std::runtime_error("not acknowledged");
  const backend::Request request = host.server().requests().front();
  return std::make_unique<BarePost>(request, host.server().url(request.path));
}

void BM_FloorPost(benchmark::State& state) {
  const Host host;
  const auto post = makeBarePost(host, state.range(0));
  for (auto _ : state) {
    if (!post->perform(post->body())) state.SkipWithError("post failed");
  }
}

// All that no cycle can do without, by the bare libraries and system calls: reads whom to tell, reads the
// receipts, writes one more of them, makes the request, posts it in the background, reads the answer, and
// writes the receipts without those that it covers.
void BM_FloorCycle(benchmark::State& state) {
  const Host host;
  const auto post = makeBarePost(host, state.range(0));
  const std::string container = host.container();
  const std::string file = host.receiptFile();
  const bench::BareTree body(post->body());
  BackgroundPost background(*post);
  for (auto _ : state) {
    state.PauseTiming();
    putPending(state.range(0));
    state.ResumeTiming();
    const bench::BareTree stored(bench::bareRead(container, file));
    const bool held = bench::bareSave(container, file, stored.text()) &&
                      bench::bareParse(bench::bareRead(container, host.deviceFile())) &&
                      background.perform(body.text()) && bench::bareSave(container, file, R"({"pnData":[]})");
    if (!held) state.SkipWithError("cycle failed");
  }
}

}  // namespace

BENCHMARK(BM_ReceiptCycle)->Arg(1)->Arg(150)->UseRealTime();
BENCHMARK(BM_FloorPost)->Arg(1)->Arg(150)->UseRealTime();
BENCHMARK(BM_FloorCycle)->Arg(1)->Arg(150)->UseRealTime();
