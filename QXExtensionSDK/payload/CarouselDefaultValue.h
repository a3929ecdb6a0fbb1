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

// What is drawn behind a panel or its image.
struct BackgroundDefaultValue {
  Color backgroundColor;
};

// A panel's image: what is behind it, and the text that stands for it.
struct MediaDefaultValue {
  Color background;
  TextBlockDefaultValue altText;
};

// A panel: its image, its two lines of text and its colour.
struct PanelDefaultValue {
  MediaDefaultValue media;
  TextBlockDefaultValue title;
  TextBlockDefaultValue subTitle;
  Color panelColor;
};

// All of a carousel's.
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
