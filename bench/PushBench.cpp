// A compressed push: the bare libraries, here and on another thread, the decorator, and the whole way from
// request to content handler.

#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <openssl/evp.h>

#include <cstdlib>
#include <memory>
#include <semaphore>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "QXExtensionSDK/QXExtensionSDK.h"
#include "QXExtensionSDK/decoration/DecompressionDecorator.h"
#include "QXPlatform/foundation/Base64.h"
#include "QXPlatform/foundation/Handle.h"
#include "bench/BareJSON.h"

namespace {

using QXPlatform::Dictionary;

constexpr std::size_t kBufferSize = 65536;

// Rich features as an author would write them, of about so many bytes: panels with texts and styles, no image
// that the thumbnail step would fetch.
std::string makeRichFeatures(std::size_t size) {
  std::string text = R"({"vt":{"t":"0","tms":3000,"s":{"bgc":"E5E5E5"},"it":[)";
  for (int panel = 0; text.size() < size - 250; ++panel) {
    const std::string number = std::to_string(panel);
    text.append(panel > 0 ? "," : "").append(R"({"id":"panel-)").append(number);
    text.append(R"(","md":{"at":{"tx":"A view of place )").append(number);
    text.append(R"("}},"ti":{"tx":"Title number )").append(number);
    text.append(R"( of many","s":{"fc":"2E2E2E","fz":"L","an":"C"}},"sti":{"tx":"Caf\u00e9 and more"},)");
    text.append(R"("ac":[{"t":"2","ul":"https://example.com/offer?id=)").append(number).append(R"("}]})");
  }
  text.append(R"(],"pad":")");
  text.append(size - text.size() - 3, 'x');
  return text.append(R"("}})");
}

std::string deflateBase64(const std::string& text) {
  libdeflate_compressor* compressor = libdeflate_alloc_compressor(9);
  std::string compressed(libdeflate_deflate_compress_bound(compressor, text.size()), '\0');
  compressed.resize(libdeflate_deflate_compress(compressor, text.data(), text.size(), compressed.data(),
                                                compressed.size()));
  libdeflate_free_compressor(compressor);
  return QXPlatform::encodeBase64(compressed);
}

std::string packed(const benchmark::State& state) {
  return deflateBase64(makeRichFeatures(static_cast<std::size_t>(state.range(0))));
}

std::shared_ptr<const QXPlatform::UNNotificationRequest> makeRequest(const std::string& compressed) {
  QXPlatform::NotificationProperties properties;
  properties.userInfo = {{"_sid", "VTQX"}, {"_m", "message"}, {"$_rf", compressed}};
  return std::make_shared<const QXPlatform::UNNotificationRequest>(QXPlatform::UNNotificationRequest{
      "bench", std::make_shared<const QXPlatform::UNNotificationContent>(std::move(properties))});
}

// QX_BENCH_ITERATIONS: so many and no more, for who counts what one takes.
void sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(1536)->Arg(12288)->Arg(61440);
  if (const char* const count = std::getenv("QX_BENCH_ITERATIONS")) bench->Iterations(std::stol(count));
}

class BareDecoder {
 public:
  explicit BareDecoder(std::string text) : text_(std::move(text)) {}

  void decode() const {
    std::string bytes(text_.size() / 4 * 3, '\0');
    const int decoded =
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                        reinterpret_cast<const unsigned char*>(text_.data()), static_cast<int>(text_.size()));
    const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
    std::size_t count = 0;
    libdeflate_deflate_decompress(inflater_.get(), bytes.data(), static_cast<std::size_t>(decoded),
                                  buffer.get(), kBufferSize, &count);
    benchmark::DoNotOptimize(bench::bareParse({buffer.get(), count}));
  }

 private:
  const std::string text_;
  const QXPlatform::Handle<libdeflate_decompressor, &libdeflate_free_decompressor> inflater_{
      libdeflate_alloc_decompressor()};
};

void BM_Floor(benchmark::State& state) {
  const BareDecoder decoder(packed(state));
  for (auto _ : state) decoder.decode();
}
BENCHMARK(BM_Floor)->Apply(sizes);

// A push is handed to another thread and back, whatever decodes it.
void BM_FloorPush(benchmark::State& state) {
  const BareDecoder decoder(packed(state));
  std::binary_semaphore received(0);
  std::binary_semaphore delivered(0);
  std::jthread other([&](const std::stop_token& over) {
    for (received.acquire(); !over.stop_requested(); received.acquire()) {
      decoder.decode();
      delivered.release();
    }
  });
  for (auto _ : state) {
    received.release();
    delivered.acquire();
  }
  other.request_stop();
  received.release();
}
BENCHMARK(BM_FloorPush)->Apply(sizes)->UseRealTime();

void BM_Decorate(benchmark::State& state) {
  using namespace QXExtensionSDK;
  Logger::setGlobalLoglevel(static_cast<std::int64_t>(LogLevel::none));
  const DecompressionDecorator decorator(
      Logger::service(), std::make_unique<const ConcreteDecompressionContext>(Logger::service()));
  const auto request = makeRequest(packed(state));
  const Dictionary userInfo = request->content->userInfo();
  for (auto _ : state) {
    auto changes = decorator.decorate(userInfo, *request);
    if (!changes) throw std::runtime_error("not inflated");
    benchmark::DoNotOptimize(changes);
  }
}
BENCHMARK(BM_Decorate)->Apply(sizes);

void BM_Push(benchmark::State& state) {
  const auto service = std::make_shared<QXExtensionSDK::VTQXNotificationService>();
  const auto request = makeRequest(packed(state));
  std::binary_semaphore delivered(0);
  for (auto _ : state) {
    service->didReceiveNotificationRequest(request, [&](const auto&) { delivered.release(); });
    delivered.acquire();
  }
}
BENCHMARK(BM_Push)->Apply(sizes)->UseRealTime();

}  // namespace
