#pragma once

#include <string_view>

#include "QXPlatform/images/ImageSink.h"

namespace QXPlatform {

// Each brings the image's rows into the sink, or returns false.
bool decodeAVIF(std::string_view bytes, ImageSink& sink);
bool decodeBMP(std::string_view bytes, ImageSink& sink);
bool decodeGIF(std::string_view bytes, ImageSink& sink);
bool decodeJPEG(std::string_view bytes, ImageSink& sink);
bool decodePNG(std::string_view bytes, ImageSink& sink);
bool decodeWebP(std::string_view bytes, ImageSink& sink);

}  // namespace QXPlatform
