#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <vector>

#include "QXPlatform/images/Bitmap.h"
#include "QXPlatform/images/ColorConversion.h"
#include "QXPlatform/images/Orientation.h"

namespace QXPlatform {

// Takes a picture row by row as it is decoded and keeps the middle part that fills a place, each pixel the
// mean of those it stands for. So no decoder needs to hold the picture.
class ImageSink {
 public:
  // The pixels take their memory from there.
  ImageSink(PixelSize place, std::pmr::memory_resource& memory) : place_(place), pixels_(&memory) {}

  // To be called first, with the size before it is made upright; what came before is forgotten. False when
  // the size is nothing or too much.
  bool begin(PixelSize size, Orientation orientation, ColorDescription color);
  // How many times smaller, 1, 2, 4 or 8, the picture may come without loss.
  int reduction() const;
  // It comes smaller, rounded up; to be called before the first row.
  void reduce(int reduction);
  PixelSize size() const { return size_; }
  // Four bytes a pixel: red, green, blue, and alpha that they are not multiplied by; or the four inks.
  void addRow(const std::uint8_t* row);

  // REQUIRES: all rows have been added.
  Bitmap finish() &&;

 private:
  struct Span {
    int first = 0;
    int count = 0;
  };

  void layOut();
  void layOutColumns();
  void putOutRow();

  const PixelSize place_;
  PixelSize size_;
  Orientation orientation_;
  ColorDescription color_;
  Span columns_;  // of the part that is kept
  Span rows_;
  PixelSize result_;
  int nextRow_ = 0;
  // Of each column of the result the first of those that it is the mean of, and their weights: as many for
  // each.
  std::vector<std::size_t> firstColumns_;
  std::vector<float> weights_;
  // Of the result's row that is being made, by column of the part that is kept.
  std::vector<float> sums_;
  bool isRowBegun_ = false;
  std::vector<float> means_;  // room for a row of the result
  std::size_t rowsDone_ = 0;
  bool isOpaque_ = true;
  std::pmr::vector<std::uint8_t> pixels_;
};

}  // namespace QXPlatform
