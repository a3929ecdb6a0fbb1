#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/JSON.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "bench/BareJSON.h"

namespace {

struct Receipt {
  std::string uuid;
  std::string messageId;
  std::optional<std::string> requestId;
  std::string messageType;
  double eventDateUtc = 0;
  std::optional<std::string> propertyBag;
  int status = 0;

  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(
        jsonField("uuid", &Receipt::uuid), jsonField("messageId", &Receipt::messageId),
        jsonField("requestId", &Receipt::requestId), jsonField("messageType", &Receipt::messageType),
        jsonField("eventDateUtc", &Receipt::eventDateUtc), jsonField("propertyBag", &Receipt::propertyBag),
        jsonField("status", &Receipt::status));
  }
};

struct Receipts {
  std::vector<Receipt> pnData;

  static constexpr auto jsonFields() {
    return QXPlatform::jsonFields(QXPlatform::jsonField("pnData", &Receipts::pnData));
  }
};

Receipts makeReceipts(int count) {
  Receipts receipts;
  for (int i = 0; i < count; ++i) {
    receipts.pnData.push_back({"5F0C2A6E-0D4B-4E0B-9C56-0123456789AB", "message-" + std::to_string(i),
                               "request-" + std::to_string(i), "push", 1714554187.25 + i * 0.37,
                               R"({"campaign":"spring"})", 1 + i % 2});
  }
  return receipts;
}

// A carousel payload of about that many bytes.
std::string makePayload(std::size_t bytes) {
  std::string panels;
  for (int i = 0; panels.size() + 120 < bytes; ++i) {
    if (i > 0) panels += ',';
    panels += R"({"id":"p)" + std::to_string(i) + R"(","md":{"ul":"https://media.example.com/images/)" +
              std::to_string(i) +
              R"(.png","at":{"tx":"Alt \"text\""}},"ti":{"tx":"Title","s":{"fc":"2E2E2E","fz":"L"}},)"
              R"("ac":[{"t":"2","ul":"https://example.com"}],"w":0.75})";
  }
  return R"({"aps":{"mutable-content":1,"alert":{"title":"T"}},"_rf":{"vt":{"t":"0","tms":3000,"it":[)" +
         panels + "]}}}";
}

void BM_ParseJSON(benchmark::State& state) {
  const std::string text = makePayload(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(QXPlatform::parseJSON(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_ParseJSON)->Arg(300)->Arg(4096)->Arg(12288)->Arg(65536);

void BM_FloorParseJSON(benchmark::State& state) {
  const std::string text = makePayload(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(bench::bareParse(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_FloorParseJSON)->Arg(300)->Arg(4096)->Arg(12288)->Arg(65536);

void BM_WriteJSON(benchmark::State& state) {
  const auto value = *QXPlatform::parseJSON(makePayload(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) benchmark::DoNotOptimize(QXPlatform::writeJSON(value, QXPlatform::JSONStyle::compact));
}
BENCHMARK(BM_WriteJSON)->Arg(4096)->Arg(65536);

void BM_EncodeReceipts(benchmark::State& state) {
  const Receipts receipts = makeReceipts(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(QXPlatform::encodeJSON(receipts));
}
BENCHMARK(BM_EncodeReceipts)->Arg(1)->Arg(300);

void BM_DecodeReceipts(benchmark::State& state) {
  const std::string text = *QXPlatform::encodeJSON(makeReceipts(static_cast<int>(state.range(0))));
  for (auto _ : state) benchmark::DoNotOptimize(QXPlatform::decodeJSON<Receipts>(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_DecodeReceipts)->Arg(1)->Arg(300);

void BM_FloorDecodeReceipts(benchmark::State& state) {
  const std::string text = *QXPlatform::encodeJSON(makeReceipts(static_cast<int>(state.range(0))));
  for (auto _ : state) benchmark::DoNotOptimize(bench::bareParse(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_FloorDecodeReceipts)->Arg(1)->Arg(300);

void BM_DecodeBase64(benchmark::State& state) {
  const std::string text =
      QXPlatform::encodeBase64(std::string(static_cast<std::size_t>(state.range(0)), 'x'));
  for (auto _ : state) benchmark::DoNotOptimize(QXPlatform::decodeBase64(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_DecodeBase64)->Arg(4096);

}  // namespace
