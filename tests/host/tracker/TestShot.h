#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <random>
#include <vector>

#include "support/ImageFormat.h"
#include "support/Rect.h"
#include "tracker/ShotTracker.h"

/// A texture that is known at every real position: sinusoids of 6 to 40 pixels and soft spots.
class CTexture {
 public:
  explicit CTexture(unsigned seed, double shortest = 6.0, double contrast = 0.12,
                    int extent = 160) {
    std::mt19937 random(seed);
    const auto uniform = [&](double a, double b) {
      return a + (b - a) * static_cast<double>(random()) / 4294967296.0;
    };
    for (int i = 0; i < 32; ++i) {
      const double period = uniform(shortest, 40.0);
      const double angle = uniform(0.0, std::numbers::pi);
      const double w = 2.0 * std::numbers::pi / period;
      waves_.push_back(
          {w * std::cos(angle), w * std::sin(angle), uniform(0.0, 6.28), contrast / 4.4});
    }
    for (int i = 0; i < 8; ++i) {
      spots_.push_back({uniform(0.0, extent), uniform(0.0, extent), uniform(2.0, 5.0),
                        uniform(-1.0, 1.0) * contrast});
    }
  }
  double operator()(double x, double y) const {
    double v = 0.45;
    for (const SWave& w : waves_) v += w.amplitude * std::sin(w.x * x + w.y * y + w.phase);
    for (const SSpot& s : spots_) {
      const double d = ((x - s.x) * (x - s.x) + (y - s.y) * (y - s.y)) / (2.0 * s.size * s.size);
      if (d < 20.0) v += s.height * std::exp(-d);
    }
    return v;
  }

  /// The texture moved by (dx, dy), at every pixel of a frame, row by row. Much faster than asking
  /// for each pixel: along a row each wave is a rotating pointer.
  std::vector<double> render(int width, int height, double dx, double dy) const {
    std::vector<double> values(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                               0.45);
    for (int y = 0; y < height; ++y) {
      double* row = values.data() + static_cast<std::ptrdiff_t>(y) * width;
      for (const SWave& w : waves_) {
        const double start = -w.x * dx + w.y * (y - dy) + w.phase;
        double s = w.amplitude * std::sin(start);
        double c = w.amplitude * std::cos(start);
        const double stepSin = std::sin(w.x);
        const double stepCos = std::cos(w.x);
        for (int x = 0; x < width; ++x) {
          row[x] += s;
          const double next = s * stepCos + c * stepSin;
          c = c * stepCos - s * stepSin;
          s = next;
        }
      }
    }
    for (const SSpot& spot : spots_) addSpot(spot, width, height, dx, dy, values);
    return values;
  }

 private:
  struct SWave {
    double x, y, phase, amplitude;
  };
  struct SSpot {
    double x, y, size, height;
  };

  static void addSpot(const SSpot& spot, int width, int height, double dx, double dy,
                      std::vector<double>& values) {
    const double reach = 6.4 * spot.size;
    for (int y = std::max(0, static_cast<int>(spot.y + dy - reach));
         y <= std::min(height - 1, static_cast<int>(spot.y + dy + reach)); ++y) {
      for (int x = std::max(0, static_cast<int>(spot.x + dx - reach));
           x <= std::min(width - 1, static_cast<int>(spot.x + dx + reach)); ++x) {
        const double ex = x - dx - spot.x;
        const double ey = y - dy - spot.y;
        const double d = (ex * ex + ey * ey) / (2.0 * spot.size * spot.size);
        if (d < 20.0) {
          values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                 static_cast<std::size_t>(x)] += spot.height * std::exp(-d);
        }
      }
    }
  }

  std::vector<SWave> waves_;
  std::vector<SSpot> spots_;
};

/// What stands at pixel (x, y) instead of `value`.
using COverlay = std::function<double(int x, int y, double value)>;

/// Frames of a shot that the test draws. Values in code range 0 to 1; `noise` is the standard
/// deviation of white noise in each.
class CTestShot {
 public:
  CTestShot(int width, int height, unsigned seed = 1)
      : format_(width, height),
        random_(seed),
        samples_(3 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

  const CImageFormat& format() const { return format_; }
  int width() const { return format_.getPixelsPerLine(); }
  int height() const { return format_.getLinesPerFrame(); }
  SRect frame() const { return {0, 0, width() - 1, height() - 1}; }

  /// The texture, moved.
  const std::uint16_t* draw(const CTexture& texture, SPoint2 shift, double noise = 0.0,
                            const COverlay& overlay = {}) {
    return put(texture.render(width(), height(), shift.x, shift.y), noise, overlay);
  }
  /// Any picture.
  const std::uint16_t* drawAny(const std::function<double(double, double)>& picture,
                               double noise = 0.0) {
    std::vector<double> values;
    for (int y = 0; y < height(); ++y) {
      for (int x = 0; x < width(); ++x) values.push_back(picture(x, y));
    }
    return put(values, noise, {});
  }

  STrackSettings settings(int half = 10, int search = 20) const {
    STrackSettings s;
    s.trackBoxExtentX = s.trackBoxExtentY = half;
    s.searchLeft = s.searchRight = s.searchUp = s.searchDown = search;
    s.region = frame();
    return s;
  }

 private:
  const std::uint16_t* put(const std::vector<double>& values, double noise,
                           const COverlay& overlay) {
    std::normal_distribution<double> grain(0.0, 1.0);
    std::size_t at = 0;
    for (int y = 0; y < height(); ++y) {
      for (int x = 0; x < width(); ++x) {
        double v = values[at];
        if (overlay) v = overlay(x, y, v);
        if (noise > 0.0) v += noise * grain(random_);
        const auto code =
            static_cast<std::uint16_t>(std::lround(std::clamp(v, 0.0, 1.0) * 65535.0));
        for (std::size_t c = 0; c < 3; ++c) samples_[3 * at + c] = code;
        ++at;
      }
    }
    return samples_.data();
  }

  CImageFormat format_;
  std::mt19937 random_;
  std::vector<std::uint16_t> samples_;
};

/// Even deviates that are the same with every standard library.
class CEven {
 public:
  explicit CEven(unsigned seed) : random_(seed) {}
  double operator()(double reach) {
    return (static_cast<double>(random_()) / 2147483648.0 - 1.0) * reach;
  }

 private:
  std::mt19937 random_;
};
