#include "QXPlatform/images/ImageSink.h"

#include <algorithm>
#include <array>
#include <utility>

namespace QXPlatform {

namespace {

constexpr std::size_t kChannels = 4;
constexpr std::int64_t kMostPixels = 100'000'000;

// The largest size of that shape inside the picture.
PixelSize partOf(PixelSize picture, PixelSize shape) {
  const std::int64_t byHeight = std::int64_t{picture.height} * shape.width;
  const std::int64_t byWidth = std::int64_t{picture.width} * shape.height;
  if (byWidth > byHeight) {
    return {std::max(1, static_cast<int>(byHeight / shape.height)), picture.height};
  }
  return {picture.width, std::max(1, static_cast<int>(byWidth / shape.width))};
}

}  // namespace

bool ImageSink::begin(PixelSize size, Orientation orientation, ColorDescription color) {
  if (size.empty() || std::int64_t{size.width} * size.height > kMostPixels) return false;
  size_ = size;
  orientation_ = orientation;
  color_ = std::move(color);
  nextRow_ = 0;
  weight_ = 0;
  pixels_.clear();
  layOut();
  return true;
}

int ImageSink::reduction() const {
  constexpr std::array kReductions{8, 4, 2};
  const auto fits = [this](int reduction) {
    return columns_.count / reduction >= result_.width && rows_.count / reduction >= result_.height;
  };
  const auto* const largest = std::ranges::find_if(kReductions, fits);
  return largest == kReductions.end() ? 1 : *largest;
}

void ImageSink::reduce(int reduction) {
  const auto reduced = [reduction](int length) { return (length + reduction - 1) / reduction; };
  size_ = {reduced(size_.width), reduced(size_.height)};
  layOut();
}

void ImageSink::layOut() {
  const PixelSize shape = orientation_.swapsAxes ? place_.transposed() : place_;
  const PixelSize part = partOf(size_, shape);
  columns_ = {(size_.width - part.width) / 2, part.width};
  rows_ = {(size_.height - part.height) / 2, part.height};
  result_ = {std::min(part.width, shape.width), std::min(part.height, shape.height)};
  const std::size_t rowValues = static_cast<std::size_t>(result_.width) * kChannels;
  rowSums_.resize(rowValues);
  sums_.assign(rowValues, 0);
  pixels_.reserve(rowValues * static_cast<std::size_t>(result_.height));
}

void ImageSink::addRow(const std::uint8_t* row) {
  const int index = nextRow_++ - rows_.first;
  if (index < 0 || index >= rows_.count) return;
  sumUpRow(row + static_cast<std::size_t>(columns_.first) * kChannels);
  // In rows of the result, from where to where this one reaches; at most into the next.
  const double scale = static_cast<double>(result_.height) / rows_.count;
  const double top = index * scale;
  const double bottom = (index + 1) * scale;
  const std::size_t rowsDone = pixels_.size() / rowSums_.size();
  const auto current = static_cast<double>(rowsDone);
  const auto add = [this](double share) {
    const auto weight = static_cast<float>(share);
    for (std::size_t i = 0; i < sums_.size(); ++i) sums_[i] += weight * rowSums_[i];
    weight_ += weight;
  };
  constexpr double kRounding = 1e-6;
  if (bottom < current + 1 - kRounding) return add(bottom - top);
  add(current + 1 - top);
  putOutRow();
  if (bottom > current + 1 + kRounding) add(bottom - current - 1);
}

// Each value the mean over the columns that a pixel of the result stands for.
void ImageSink::sumUpRow(const std::uint8_t* row) {
  const bool hasAlpha = color_.model == ColorDescription::Model::rgb;
  const double scale = static_cast<double>(columns_.count) / result_.width;
  for (int x = 0; x < result_.width; ++x) {
    const double left = x * scale;
    const double right = std::min<double>((x + 1) * scale, columns_.count);
    std::array<float, kChannels> sum{};
    for (int from = static_cast<int>(left); from < right; ++from) {
      const auto weight = static_cast<float>(std::min(right, from + 1.0) - std::max<double>(left, from));
      const std::uint8_t* pixel = row + static_cast<std::size_t>(from) * kChannels;
      const float colorWeight = hasAlpha ? weight * static_cast<float>(pixel[3]) / 255 : weight;
      for (std::size_t i = 0; i < 3; ++i) sum[i] += colorWeight * static_cast<float>(pixel[i]);
      sum[3] += weight * static_cast<float>(pixel[3]);
    }
    for (std::size_t i = 0; i < kChannels; ++i) {
      rowSums_[static_cast<std::size_t>(x) * kChannels + i] = sum[i] / static_cast<float>(scale);
    }
  }
}

void ImageSink::putOutRow() {
  for (float& sum : sums_) {
    pixels_.push_back(static_cast<std::uint8_t>(std::clamp(sum / weight_ + 0.5F, 0.F, 255.F)));
    sum = 0;
  }
  weight_ = 0;
}

Bitmap ImageSink::finish() && {
  Bitmap bitmap{result_, std::move(pixels_)};
  convertToSRGB(bitmap, color_);
  return upright(std::move(bitmap), orientation_);
}

}  // namespace QXPlatform
