#pragma once

#include "QXExtensionSDK/payload/Color.h"
#include "QXExtensionSDK/payload/TextStyle.h"

namespace QXExtensionSDK {

// What the carousel uses where the payload says nothing.
struct TextBlockDefaultValue {
  Color fontColor;
  FontSize fontSize;
  TextAlignmentMode textAlignment;
  FontStyle fontStyle;
};

struct BackgroundDefaultValue {
  Color backgroundColor;
};

struct MediaDefaultValue {
  Color background;
  TextBlockDefaultValue altText;
};

struct PanelDefaultValue {
  MediaDefaultValue media;
  TextBlockDefaultValue title;
  TextBlockDefaultValue subTitle;
  Color panelColor;
};

struct CarouselDefaultValue {
  PanelDefaultValue panel;
};

// Supplies the defaults. Any thread.
class CarouselDefaultValueProviding {
 public:
  virtual ~CarouselDefaultValueProviding() = default;
  virtual const CarouselDefaultValue& defaultValue() const = 0;
};

// The same for every carousel.
class CarouselStaticDefaultValueProvider final : public CarouselDefaultValueProviding {
 public:
  const CarouselDefaultValue& defaultValue() const override { return defaultValue_; }

 private:
  const CarouselDefaultValue defaultValue_{
      .panel = {
          .media = {.background = Color(0xE5E5E5),
                    .altText = {kBlack, FontSize::medium, TextAlignmentMode::center, FontStyle::bold}},
          .title = {Color(0x2E2E2E), FontSize::medium, TextAlignmentMode::beginning, FontStyle::bold},
          .subTitle = {Color(0x5C5C5C), FontSize::small, TextAlignmentMode::beginning, FontStyle::regular},
          .panelColor = kWhite}};
};

}  // namespace QXExtensionSDK
