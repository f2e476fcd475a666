#include "PictureScaler.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int COMPONENTS = 3;
constexpr int CODES = 65536;

/// The number that a code of twice a half's bit pattern stands for.
double lightOfHalfCode(int code) {
  const int bits = code >> 1;
  const int exponent = bits >> 10;
  const int mantissa = bits & 0x3FF;
  if (exponent == 0) return std::ldexp(mantissa, -24);
  return std::ldexp(1024 + mantissa, exponent - 25);
}

double screenCurve(double light) {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1.0 / 2.4) - 0.055;
}

}  // namespace

void CPictureScaler::setClip(const SClipInfo& info) {
  width_ = info.format.getPixelsPerLine();
  height_ = info.format.getLinesPerFrame();
  floatSamples_ = info.floatSamples;
  makeCurve();
}

void CPictureScaler::setGrade(const SViewGrade& grade) {
  if (grade == grade_) return;
  grade_ = grade;
  makeCurve();
}

void CPictureScaler::makeCurve() {
  curve_.resize(CODES);
  const double gain = std::exp2(grade_.stops);
  for (int code = 0; code < CODES; ++code) {
    double value = floatSamples_ ? screenCurve(lightOfHalfCode(code) * gain) : code / white_ * gain;
    value = std::pow(std::clamp(value, 0.0, 1.0), 1.0 / grade_.gamma);
    curve_[static_cast<std::size_t>(code)] = static_cast<std::uint8_t>(std::lround(value * 255.0));
  }
}

CPictureScaler::SAxis CPictureScaler::axis(double from, double length, int target, int limit) {
  SAxis result;
  const double step = length / target;
  for (int i = 0; i < target; ++i) {
    int first = static_cast<int>(std::floor(from + i * step + (step < 1.0 ? step / 2.0 : 0.0)));
    int end = step <= 1.0 ? first + 1 : static_cast<int>(std::floor(from + (i + 1) * step));
    end = std::max(end, first + 1);
    first = std::max(first, 0);
    end = std::min(end, limit);
    result.first.push_back(first < end ? first : -1);
    result.end.push_back(end);
  }
  return result;
}

QImage CPictureScaler::scale(const std::uint16_t* samples, const QRectF& source, QSize size) {
  QImage image(size, QImage::Format_ARGB32_Premultiplied);
  const SAxis columns = axis(source.left(), source.width(), size.width(), width_);
  const SAxis rows = axis(source.top(), source.height(), size.height(), height_);
  int left = width_;
  int right = 0;
  for (std::size_t x = 0; x < columns.first.size(); ++x) {
    if (columns.first[x] < 0) continue;
    left = std::min(left, columns.first[x]);
    right = std::max(right, columns.end[x]);
  }
  const std::size_t bytes = static_cast<std::size_t>(size.width()) * sizeof(QRgb);
  for (int y = 0; y < size.height(); ++y) {
    auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
    const auto row = static_cast<std::size_t>(y);
    if (rows.first[row] < 0 || left >= right) {
      std::fill(line, line + size.width(), 0U);
    } else if (y > 0 && rows.first[row] == rows.first[row - 1] &&
               rows.end[row] == rows.end[row - 1]) {
      std::copy_n(image.constScanLine(y - 1), bytes, image.scanLine(y));
    } else {
      sumRows(samples, rows.first[row], rows.end[row], left, right);
      writeRow(columns, rows.end[row] - rows.first[row], left, line);
    }
  }
  return image;
}

void CPictureScaler::sumRows(const std::uint16_t* samples, int first, int end, int left,
                             int right) {
  const std::size_t count = static_cast<std::size_t>(right - left) * COMPONENTS;
  sums_.assign(count, 0U);
  for (int y = first; y < end; ++y) {
    const std::uint16_t* row = samples + (static_cast<std::size_t>(y) * width_ + left) * COMPONENTS;
    for (std::size_t i = 0; i < count; ++i) sums_[i] += row[i];
  }
}

void CPictureScaler::writeRow(const SAxis& columns, int rows, int left, QRgb* target) const {
  for (std::size_t x = 0; x < columns.first.size(); ++x) {
    const int first = columns.first[x];
    if (first < 0) {
      target[x] = 0U;
      continue;
    }
    const int end = columns.end[x];
    std::uint64_t sum[COMPONENTS] = {};
    const std::uint32_t* source = &sums_[static_cast<std::size_t>(first - left) * COMPONENTS];
    for (int i = first; i < end; ++i)
      for (std::uint64_t& component : sum) component += *source++;
    const auto count = static_cast<std::uint64_t>(end - first) * static_cast<unsigned>(rows);
    target[x] = qRgb(curve_[sum[0] / count], curve_[sum[1] / count], curve_[sum[2] / count]);
  }
}
