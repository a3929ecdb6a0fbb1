#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "QXExtensionSDK/content/CarouselPresenter.h"
#include "QXExtensionSDK/payload/PayloadCarouselModelParser.h"
#include "QXPlatform/foundation/FatalError.h"
#include "QXPlatform/foundation/JSON.h"

namespace {

using QXExtensionSDK::CarouselModel;
using QXExtensionSDK::Logger;
using QXExtensionSDK::PayloadCarouselModelParser;
using QXPlatform::fatalError;

std::shared_ptr<const QXPlatform::UNNotificationContent> contentOf(const QXPlatform::Value& richFeatures) {
  QXPlatform::NotificationProperties properties;
  properties.userInfo = {{"_rf", richFeatures}};
  return std::make_shared<QXPlatform::UNNotificationContent>(std::move(properties));
}

void checkRoundTrip(const CarouselModel& model) {
  const auto text = QXPlatform::encodeJSON(model);
  if (!text) fatalError("Refused to write what was read");
  const auto back = QXPlatform::decodeJSON<CarouselModel>(*text);
  if (!back || !(*back == model)) fatalError("Read back as something else");
}

void checkPresentation(const CarouselModel& model) {
  const auto viewModel = QXExtensionSDK::CarouselPresenter(Logger::content()).viewModel(model);
  const auto& items = model.viewTemplate.items;
  if (viewModel.panels->size() != items.size()) fatalError("A panel is missing");
  for (std::size_t i = 0; i < items.size(); ++i) {
    const auto& panel = (*viewModel.panels)[i];
    if (panel.title.has_value() != items[i].title.has_value()) fatalError("A title is missing");
    if (panel.media.url != items[i].media.url) fatalError("The panels changed their order");
  }
}

}  // namespace

// Rich features that decode can be presented panel by panel, and written and read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Logger::setGlobalLoglevel(4);
  const auto richFeatures = QXPlatform::parseJSON({reinterpret_cast<const char*>(data), size});
  if (!richFeatures) return 0;
  const auto model = PayloadCarouselModelParser(Logger::content())
                         .parse({.identifier = "", .content = contentOf(*richFeatures)});
  if (!model) return 0;
  checkRoundTrip(*model);
  checkPresentation(*model);
  return 0;
}
