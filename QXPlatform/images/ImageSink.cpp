#include "QXPlatform/images/ImageSink.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <type_traits>
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

// Four values that the processor takes at a time.
using Pixel [[gnu::vector_size(kChannels * sizeof(float))]] = float;

Pixel pixelAt(const float* values) {
  Pixel pixel;
  std::memcpy(&pixel, values, sizeof pixel);
  return pixel;
}

// The loops over a row are plain, and apart, for the compiler to see that they can be taken in large steps.

bool isOpaque(const std::uint8_t* row, std::size_t count) {
  unsigned alpha = 0xFF;
  for (std::size_t i = kChannels - 1; i < count; i += kChannels) alpha &= row[i];
  return alpha == 0xFF;
}

// What is `first` of a sum takes its place, rather than being added to nothing.

template <bool first>
void addOpaque(float* sums, const std::uint8_t* row, std::size_t count, float share) {
  for (std::size_t i = 0; i < count; ++i) {
    const float value = share * static_cast<float>(row[i]);
    sums[i] = first ? value : sums[i] + value;
  }
}

template <bool first>
void addTransparent(float* sums, const std::uint8_t* row, std::size_t count, float share) {
  for (std::size_t i = 0; i < count; i += kChannels) {
    const float alpha = share * static_cast<float>(row[i + 3]);
    for (std::size_t color = i; color < i + 3; ++color) {
      const float value = alpha / 255 * static_cast<float>(row[color]);
      sums[color] = first ? value : sums[color] + value;
    }
    sums[i + 3] = first ? alpha : sums[i + 3] + alpha;
  }
}

template <bool first>
void add(bool isOpaque, float* sums, const std::uint8_t* row, std::size_t count, float share) {
  (isOpaque ? addOpaque<first> : addTransparent<first>)(sums, row, count, share);
}

// Of as many sums for each first column, by their weights, in the painter's order. A count that is known when
// this is compiled saves a fifth of the time.
void putOutMeans(std::span<const std::size_t> firstColumns, auto count, const float* weight,
                 const float* sums, float* target) {
  for (const std::size_t first : firstColumns) {
    const float* value = sums + first * kChannels;
    Pixel sum = *weight * pixelAt(value);
    for (std::size_t i = 1; i < count; ++i) sum += weight[i] * pixelAt(value + i * kChannels);
    const Pixel mean{sum[2], sum[1], sum[0], sum[3]};
    std::memcpy(target, &mean, sizeof mean);
    weight += count;
    target += kChannels;
  }
}

void roundAll(const float* values, std::size_t count, std::uint8_t* rounded) {
  constexpr float kHalf = 0.5F;
  for (std::size_t i = 0; i < count; ++i)
    rounded[i] = static_cast<std::uint8_t>(static_cast<int>(values[i] + kHalf));
}

}  // namespace

bool ImageSink::begin(PixelSize size, Orientation orientation, ColorDescription color) {
  if (size.empty() || std::int64_t{size.width} * size.height > kMostPixels) return false;
  size_ = size;
  orientation_ = orientation;
  color_ = std::move(color);
  nextRow_ = 0;
  rowsDone_ = 0;
  isRowBegun_ = false;
  isOpaque_ = true;
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
  if (reduction == 1) return;
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
  layOutColumns();
  sums_.resize(static_cast<std::size_t>(part.width) * kChannels);
  means_.resize(static_cast<std::size_t>(result_.width) * kChannels);
  pixels_.reserve(means_.size() * static_cast<std::size_t>(result_.height));
}

// In columns of the part that is kept, from where to where each one of the result reaches.
void ImageSink::layOutColumns() {
  const double scale = static_cast<double>(columns_.count) / result_.width;
  const int most =
      std::min(columns_.count, columns_.count == result_.width ? 1 : static_cast<int>(scale) + 2);
  firstColumns_.clear();
  weights_.clear();
  for (int x = 0; x < result_.width; ++x) {
    const double left = x * scale;
    const double right = std::min<double>((x + 1) * scale, columns_.count);
    const int first = std::min(static_cast<int>(left), columns_.count - most);
    firstColumns_.push_back(static_cast<std::size_t>(first));
    for (int column = first; column < first + most; ++column) {
      const double share = std::min(right, column + 1.0) - std::max<double>(left, column);
      weights_.push_back(static_cast<float>(std::max(0.0, share) / scale));
    }
  }
}

void ImageSink::addRow(const std::uint8_t* row) {
  const int index = nextRow_++ - rows_.first;
  if (index < 0 || index >= rows_.count) return;
  row += static_cast<std::size_t>(columns_.first) * kChannels;
  const bool isOpaque = color_.isOpaque || QXPlatform::isOpaque(row, sums_.size());
  isOpaque_ = isOpaque_ && isOpaque;
  // In rows of the result, from where to where this one reaches; at most into the next.
  const double scale = static_cast<double>(result_.height) / rows_.count;
  const double top = index * scale;
  const double bottom = (index + 1) * scale;
  const auto end = static_cast<double>(rowsDone_ + 1);
  constexpr double kRounding = 1e-6;
  const auto addShare = [&](double share) {
    const auto addRow = std::exchange(isRowBegun_, true) ? add<false> : add<true>;
    addRow(isOpaque, sums_.data(), row, sums_.size(), static_cast<float>(share));
  };
  if (bottom < end - kRounding) return addShare(bottom - top);
  addShare(end - top);
  putOutRow();
  if (bottom > end + kRounding) addShare(bottom - end);
}

void ImageSink::putOutRow() {
  const std::size_t columns = weights_.size() / firstColumns_.size();
  const auto takeMeans = [this](auto count) {
    putOutMeans(firstColumns_, count, weights_.data(), sums_.data(), means_.data());
  };
  // What a picture has that is up to twice as wide as its place.
  constexpr std::integral_constant<std::size_t, 3> kUsual{};
  columns == kUsual ? takeMeans(kUsual) : takeMeans(columns);
  pixels_.resize(pixels_.size() + means_.size());
  roundAll(means_.data(), means_.size(), pixels_.data() + rowsDone_ * means_.size());
  ++rowsDone_;
  isRowBegun_ = false;
}

Bitmap ImageSink::finish() && {
  Bitmap bitmap{result_, std::move(pixels_), isOpaque_};
  convertToSRGB(bitmap, color_);
  return upright(std::move(bitmap), orientation_);
}

}  // namespace QXPlatform
