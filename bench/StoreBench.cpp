// What a store costs above the bare system calls and the bare parser, for the same bytes in the same place.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "AppGroupSDK/records/DeliveryReceiptsModelStore.h"
#include "bench/BareFile.h"
#include "bench/BareJSON.h"

namespace {

using AppGroupSDK::DataStoreStatus;
using AppGroupSDK::DeliveryReceiptPNModel;
using AppGroupSDK::DeliveryReceiptsModel;
using AppGroupSDK::DeliveryReceiptsModelStore;
using AppGroupSDK::PNStatus;

// A host's bundle and container, for the whole run.
class Host {
 public:
  static const Host& shared() {
    static const Host host;
    return host;
  }
  ~Host() { std::filesystem::remove_all(directory_); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  std::string recordFile() const { return file(std::string(DeliveryReceiptsModel::dataStoreFileName())); }
  std::string file(const std::string& name) const { return directory_ + "/group.bench/" + name; }

 private:
  Host() : directory_((std::filesystem::temp_directory_path() / "qx-bench-XXXXXX").string()) {
    if (mkdtemp(directory_.data()) == nullptr) std::abort();
    std::filesystem::create_directory(directory_ + "/group.bench");
    std::ofstream(directory_ + "/Info.plist")
        << "<plist version=\"1.0\"><dict><key>VT_QUORIX_APP_GROUP_KEY</key>"
           "<string>group.bench</string></dict></plist>";
    setenv("QX_BUNDLE", directory_.c_str(), 1);
    setenv("QX_APP_GROUPS_ROOT", directory_.c_str(), 1);
  }

  std::string directory_;
};

DeliveryReceiptsModel makeReceipts(std::int64_t count) {
  std::vector<DeliveryReceiptPNModel> receipts;
  for (std::int64_t index = 0; index < count; ++index) {
    receipts.emplace_back("6F9619FF-8B86-D011-B42D-00CF4FC964FF", "message-" + std::to_string(index),
                          "request-" + std::to_string(index), "OUTBOUND",
                          1714554187.25 + static_cast<double>(index),
                          R"({"campaign":"spring","variant":"B"})", PNStatus::pending);
  }
  return DeliveryReceiptsModel(std::move(receipts));
}

// Saves the receipts once and gives the bytes that came of it.
std::string storedBytes(std::int64_t count) {
  const std::string path = Host::shared().recordFile();
  if (DeliveryReceiptsModelStore().saveModelData(makeReceipts(count)) != DataStoreStatus::success)
    std::abort();
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void BM_SaveReceipts(benchmark::State& state) {
  Host::shared();
  const DeliveryReceiptsModelStore store;
  const auto receipts = makeReceipts(state.range(0));
  for (auto _ : state) {
    if (store.saveModelData(receipts) != DataStoreStatus::success) state.SkipWithError("save failed");
  }
}

void BM_FloorSave(benchmark::State& state) {
  const std::string bytes = storedBytes(state.range(0));
  for (auto _ : state) {
    if (!bench::bareSave(Host::shared().file(""), Host::shared().file("floor"), bytes)) {
      state.SkipWithError("save failed");
    }
  }
}

void BM_FetchReceipts(benchmark::State& state) {
  storedBytes(state.range(0));
  const DeliveryReceiptsModelStore store;
  for (auto _ : state) {
    const auto fetched = store.fetchModelData();
    if (!fetched.value()) state.SkipWithError("fetch failed");
    benchmark::DoNotOptimize(fetched);
  }
}

void BM_FloorFetch(benchmark::State& state) {
  storedBytes(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        bench::bareParse(bench::bareRead(Host::shared().file(""), Host::shared().recordFile())));
  }
}

// By the wall clock: the disk's time counts.
BENCHMARK(BM_SaveReceipts)->Arg(1)->Arg(300)->UseRealTime();
BENCHMARK(BM_FloorSave)->Arg(1)->Arg(300)->UseRealTime();
BENCHMARK(BM_FetchReceipts)->Arg(1)->Arg(75)->Arg(150)->Arg(300)->UseRealTime();
BENCHMARK(BM_FloorFetch)->Arg(1)->Arg(75)->Arg(150)->Arg(300)->UseRealTime();

}  // namespace
