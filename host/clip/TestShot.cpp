#include "clip/TestShot.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "CodeValues.h"
#include "ExactMath.h"
#include "TestScene.h"

namespace {

/// Random numbers of the shot are told apart by their purpose.
enum EPurpose : std::uint64_t { kWeaveX = 1, kWeaveY, kTurn, kExposure, kGrain, kDust };

constexpr int kBandRows = 16;

/// Unsteadiness of a transport: each frame lands on its own, around a slow wandering. Mean 0 and
/// the given RMS over the shot.
std::vector<double> UnsteadySeries(std::uint64_t seed, EPurpose purpose, int count, double rms) {
  CRandomStream random(HashOf(seed, purpose));
  std::vector<double> series(static_cast<std::size_t>(count));
  double slow = 0.0, sum = 0.0, squares = 0.0;
  for (double& value : series) {
    slow = 0.94 * slow + 0.34 * random.normal();
    value = 0.8 * slow + 0.6 * random.normal();
    sum += value;
  }
  const double mean = sum / count;
  for (double& value : series) squares += (value - mean) * (value - mean);
  const double scale = squares > 0.0 ? rms / std::sqrt(squares / count) : 0.0;
  for (double& value : series) value = (value - mean) * scale;
  return series;
}

std::vector<STestShotMotion> MakeMotion(const STestShotSettings& s) {
  const std::vector<double> x = UnsteadySeries(s.seed, kWeaveX, s.frames, s.weaveX);
  const std::vector<double> y = UnsteadySeries(s.seed, kWeaveY, s.frames, s.weaveY);
  const std::vector<double> turn = UnsteadySeries(s.seed, kTurn, s.frames, s.rotation);
  std::vector<STestShotMotion> motion(x.size());
  for (std::size_t i = 0; i < motion.size(); ++i) {
    const double t = s.frames > 1 ? static_cast<double>(i) / (s.frames - 1) : 0.0;
    const double drift = t * t * (3.0 - 2.0 * t);  // starts and ends at rest
    motion[i] = {s.driftX * drift + x[i] - x[0], s.driftY * drift + y[i] - y[0], turn[i] - turn[0]};
  }
  return motion;
}

void RequireRange(const char* name, double value, double low, double high) {
  if (!(value >= low && value <= high))
    throw CClipError(std::string("test: ") + name + " must lie between " +
                     nlohmann::json(low).dump() + " and " + nlohmann::json(high).dump());
}

void RequireSensible(const STestShotSettings& s) {
  RequireRange("width", s.width, 16, 16384);
  RequireRange("height", s.height, 16, 16384);
  RequireRange("frames", s.frames, 1, 1000000);
  RequireRange("firstFrame", s.firstFrame, 0, 900000000);
  RequireRange("driftX", s.driftX, -10000, 10000);
  RequireRange("driftY", s.driftY, -10000, 10000);
  RequireRange("weaveX", s.weaveX, 0, 1000);
  RequireRange("weaveY", s.weaveY, 0, 1000);
  RequireRange("rotation", s.rotation, 0, 45);
  RequireRange("grain", s.grain, 0, 1);
  RequireRange("flicker", s.flicker, 0, 1);
  RequireRange("dust", s.dust, 0, 100000);
  RequireRange("matte", s.matte, 0, std::min(s.width, s.height) / 2 - 1);
  if (s.depth != 8 && s.depth != 10 && s.depth != 12 && s.depth != 16)
    throw CClipError("test: depth must be 8, 10, 12 or 16");
}

SClipInfo MakeInfo(const STestShotSettings& s) {
  SClipInfo info;
  info.path = "test:";
  info.kind = "generated shot";
  info.format = CImageFormat(s.width, s.height);
  info.format.setPixelPacking(s.depth == 8    ? CImageFormat::PACKING_8_BITS
                              : s.depth == 10 ? CImageFormat::PACKING_10_BITS
                                              : CImageFormat::PACKING_16_BITS);
  info.bitDepth = s.depth;
  info.firstFrame = s.firstFrame;
  info.endFrame = s.firstFrame + s.frames;
  info.frameRateKnown = info.timecodeKnown = true;
  info.startTimecode = CTimecode(3600 * 24, 24, false);
  return info;
}

/// A speck of dust: shades the picture towards `value` over a soft disc.
struct SSpeck {
  double x, y, radius;
  float value;
};

std::vector<SSpeck> SpecksOf(const STestShotSettings& s, int index) {
  CRandomStream random(HashOf(s.seed, kDust, static_cast<std::uint64_t>(index)));
  std::vector<SSpeck> specks(static_cast<std::size_t>(s.dust + random.uniform(0.0, 1.0)));
  for (SSpeck& speck : specks) {
    speck.x = random.uniform(0.0, s.width);
    speck.y = random.uniform(0.0, s.height);
    speck.radius = random.uniform(1.0, 5.0);
    speck.value = random.uniform(0.0, 1.0) < 0.7 ? 0.95f : 0.05f;
  }
  return specks;
}

void DrawSpeck(const SSpeck& speck, int width, int firstRow, int rows, float* band) {
  const double reach = speck.radius + 1.0;
  const int top = std::max(firstRow, static_cast<int>(speck.y - reach));
  const int bottom = std::min(firstRow + rows - 1, static_cast<int>(speck.y + reach));
  const int left = std::max(0, static_cast<int>(speck.x - reach));
  const int right = std::min(width - 1, static_cast<int>(speck.x + reach));
  for (int row = top; row <= bottom; ++row)
    for (int column = left; column <= right; ++column) {
      const double u = column - speck.x, v = row - speck.y;
      const float cover =
          static_cast<float>(std::clamp(reach - std::sqrt(u * u + v * v), 0.0, 1.0));
      float* pixel = band + (static_cast<std::size_t>(row - firstRow) * width + column) * 3;
      for (int c = 0; c < 3; ++c) pixel[c] += cover * (speck.value - pixel[c]);
    }
}

/// Covers the border: the aperture of the scanner, almost black and at rest.
void CoverWithMatte(const STestShotSettings& s, int row, float* line) {
  constexpr float kMatteValue = 0.02f;
  const bool whole = row < s.matte || row >= s.height - s.matte;
  for (int column = 0; column < s.width; ++column)
    if (whole || column < s.matte || column >= s.width - s.matte)
      std::fill_n(line + 3 * column, 3, kMatteValue);
}

/// Grain, exposure of the sensor and rounding to the scan's codes. Dark parts have less grain.
template <int Depth>
void ScanRow(const STestShotSettings& s, int index, int row, const float* line,
             std::uint16_t* samples) {
  const std::uint64_t place =
      HashOf(s.seed, kGrain, static_cast<std::uint64_t>(index), static_cast<std::uint64_t>(row));
  const float grain = static_cast<float>(s.grain);
  for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(s.width) * 3; ++i) {
    float value = line[i];
    const float strength = value < 0.1f ? grain * (0.25f + 7.5f * std::max(value, 0.0f)) : grain;
    value += strength * NormalOf(MixBits(place + i * 0x9E3779B97F4A7C15u));
    const float scaled = std::clamp(value, 0.0f, 1.0f) * 65535.0f + 0.5f;
    const auto sample = static_cast<std::uint16_t>(static_cast<int>(scaled));
    samples[i] = WidenCode(NarrowSample(sample, Depth), Depth);
  }
}

using RowScanner = void (*)(const STestShotSettings&, int, int, const float*, std::uint16_t*);

RowScanner ScannerFor(int depth) {
  return depth == 8    ? ScanRow<8>
         : depth == 10 ? ScanRow<10>
         : depth == 12 ? ScanRow<12>
                       : ScanRow<16>;
}

}  // namespace

CTestShot::CTestShot(const STestShotSettings& settings) : settings_(settings) {
  RequireSensible(settings);
  info_ = MakeInfo(settings);
  motion_ = MakeMotion(settings);
  exposure_ = UnsteadySeries(settings.seed, kExposure, settings.frames, settings.flicker);
  for (double& value : exposure_) value = std::max(0.05, 1.0 + value);
  scene_ = std::make_shared<const CTestScene>(settings);
}

void CTestShot::renderFrame(int frame, std::uint16_t* samples) const {
  if (frame < info_.firstFrame || frame >= info_.endFrame)
    throw CClipError("frame " + std::to_string(frame) + ": outside the generated shot");
  const int index = frame - info_.firstFrame, width = settings_.width;
  const STestShotMotion& motion = motion_[static_cast<std::size_t>(index)];
  const SCosSin turn = CosSinOfTurns(motion.angle / 360.0);
  const SSceneView view{turn.cosine, turn.sine, motion.x, motion.y,
                        static_cast<double>(index) / std::max(1, settings_.frames - 1)};
  const CTestScene::SColumnTables tables = scene_->columnTables(view);
  const std::vector<SSpeck> specks = SpecksOf(settings_, index);
  const float exposure = static_cast<float>(exposure_[static_cast<std::size_t>(index)]);
  const RowScanner scan = ScannerFor(settings_.depth);
  const std::size_t rowSamples = static_cast<std::size_t>(width) * 3;
  std::vector<float> band(rowSamples * kBandRows);
  for (int first = 0; first < settings_.height; first += kBandRows) {
    const int rows = std::min(kBandRows, settings_.height - first);
    scene_->renderBand(view, tables, first, rows, band.data());
    for (float& value : band) value *= exposure;
    for (const SSpeck& speck : specks) DrawSpeck(speck, width, first, rows, band.data());
    for (int row = 0; row < rows; ++row) {
      float* line = band.data() + static_cast<std::size_t>(row) * rowSamples;
      if (settings_.matte > 0) CoverWithMatte(settings_, first + row, line);
      scan(settings_, index, first + row, line,
           samples + static_cast<std::size_t>(first + row) * rowSamples);
    }
  }
}
