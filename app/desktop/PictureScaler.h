#pragma once

#include <QImage>
#include <QRectF>
#include <cstdint>
#include <vector>

#include "clip/ClipInfo.h"

/// How the code values of a clip are shown: exposure in stops and a gamma, on top of what the
/// clip's own encoding asks for. Changes what is seen, never what is rendered.
struct SViewGrade {
  double stops = 0.0;  ///< -6 to 6
  double gamma = 1.0;  ///< 0.25 to 4; above 1 lifts the shadows
  friend bool operator==(const SViewGrade&, const SViewGrade&) = default;
};

/// Makes 8-bit pictures for the screen from 16-bit frames: scaled down by averaging every source
/// pixel that a screen pixel covers, in 16 bits, graded last; scaled up by repeating pixels, which
/// are then visible as such. THREAD: one at a time.
class CPictureScaler {
 public:
  /// The code values of this clip from now on. Half-precision codes are scene light and get the
  /// screen's transfer curve (IEC 61966-2-1).
  void setClip(const SClipInfo& info);
  void setGrade(const SViewGrade& grade);
  const SViewGrade& grade() const { return grade_; }

  /// The part `source` of a frame (picture pixels; may reach beyond it), `size` pixels large.
  /// What lies outside the frame is transparent. `samples`: as a reader gives them.
  QImage scale(const std::uint16_t* samples, const QRectF& source, QSize size);
  /// The picture as wide and high as the clip.
  QSize picture() const { return {width_, height_}; }

 private:
  struct SAxis {
    std::vector<int> first;  ///< for each target pixel: its first source pixel, -1 outside
    std::vector<int> end;
  };
  static SAxis axis(double from, double length, int target, int limit);
  void makeCurve();
  void sumRows(const std::uint16_t* samples, int first, int end, int left, int right);
  void writeRow(const SAxis& columns, int rows, int left, QRgb* target) const;

  int width_ = 0;
  int height_ = 0;
  bool floatSamples_ = false;
  double white_ = 65535.0;
  SViewGrade grade_;
  std::vector<std::uint8_t> curve_;
  std::vector<std::uint32_t> sums_;
};
