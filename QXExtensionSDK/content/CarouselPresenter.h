#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "QXExtensionSDK/content/CarouselViewModel.h"
#include "QXExtensionSDK/payload/CarouselDefaultValue.h"
#include "QXExtensionSDK/payload/CarouselModel.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

// Turns a carousel model into what the screen shows. Main thread.
class CarouselPresenting {
 public:
  virtual ~CarouselPresenting() = default;

  // The panel that the next view model stands at.
  virtual void setCurrentSelectedPanelIndex(std::int64_t index) = 0;
  virtual CarouselViewModel viewModel(const CarouselModel& model) const = 0;
};

// Fills in the defaults; logs what the payload asks for and cannot have.
class CarouselPresenter final : public CarouselPresenting {
 public:
  // `logger` must outlive the presenter.
  explicit CarouselPresenter(const Logger& logger,
                             std::unique_ptr<const CarouselDefaultValueProviding> defaultValueProvider =
                                 std::make_unique<CarouselStaticDefaultValueProvider>());

  void setCurrentSelectedPanelIndex(std::int64_t index) override { currentSelectedPanelIndex_ = index; }
  CarouselViewModel viewModel(const CarouselModel& model) const override;

 private:
  PanelItemComponent panel(const PanelItem& item, const ViewTemplate& viewTemplate,
                           ViewTextState textState) const;
  MediaComponent media(const Media& media, const ViewTemplate& viewTemplate) const;
  Color background(const std::optional<GenericStyle>& style, const BackgroundDefaultValue& slot) const;
  std::optional<TextComponent> text(const std::optional<TextBlock>& block,
                                    const TextBlockDefaultValue& slot) const;

  const Logger& logger_;
  const std::unique_ptr<const CarouselDefaultValueProviding> defaultValueProvider_;
  const CarouselDefaultValue& defaultValue_;
  std::int64_t currentSelectedPanelIndex_ = 0;
};

}  // namespace QXExtensionSDK
