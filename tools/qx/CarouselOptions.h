#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QXPlatform/foundation/JSONCoding.h"
#include "tools/qx/SimulatorOptions.h"

namespace qx {

// Pixels a point, where neither an option nor a screen says so.
constexpr double kDrawingScale = 2;
// Of a picture, from left to right.
constexpr int kMostPixelsAcross = 16'384;

struct CarouselOptions {
  std::vector<std::string> files;        // "-" is standard input; several for a gallery alone
  bool watch = false;                    // the window follows the file
  std::optional<std::string> gallery;    // writes a page instead of opening a window
  std::optional<std::string> extension;  // a host's own program, in place of the framework's extension
  std::optional<std::string> png;        // draws instead of opening a window
  std::optional<int> panel;              // from 0; with png
  bool all = false;                      // every panel; with png
  int width = 360;                       // points
  std::optional<double> scale;           // absent: kDrawingScale for a drawing, the screen's for a window
  bool dark = false;
  bool rtl = false;
  std::optional<std::string> steps;  // "next,back,wait:500"
  bool failOnFailedImage = false;

  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(
        jsonField("files", &CarouselOptions::files), jsonField("watch", &CarouselOptions::watch),
        jsonField("gallery", &CarouselOptions::gallery), jsonField("extension", &CarouselOptions::extension),
        jsonField("png", &CarouselOptions::png), jsonField("panel", &CarouselOptions::panel),
        jsonField("all", &CarouselOptions::all), jsonField("width", &CarouselOptions::width),
        jsonField("scale", &CarouselOptions::scale), jsonField("dark", &CarouselOptions::dark),
        jsonField("rtl", &CarouselOptions::rtl), jsonField("steps", &CarouselOptions::steps),
        jsonField("failOnFailedImage", &CarouselOptions::failOnFailedImage));
  }
};

// What the simulator's own program hands to the one that draws.
struct CarouselInvocation {
  SimulatorOptions simulator;
  CarouselOptions carousel;

  // As the single argument of that program.
  static constexpr auto jsonFields() {
    using QXPlatform::jsonField;
    return QXPlatform::jsonFields(jsonField("simulator", &CarouselInvocation::simulator),
                                  jsonField("carousel", &CarouselInvocation::carousel));
  }
};

}  // namespace qx
