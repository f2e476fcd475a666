#include "TestScene.h"

#include <algorithm>
#include <cmath>

#include "ExactMath.h"

namespace {

constexpr double kEdge = 1.9;  ///< half width of an edge, pixels: a sigma of about 0.7

/// Quintic step from 0 at -kEdge to 1 at +kEdge; two continuous derivatives.
double SoftStep(double distance) {
  const double t = std::clamp(distance / (2.0 * kEdge) + 0.5, 0.0, 1.0);
  return t * t * t * (t * (t * 6.0 - 15.0) + 10.0);
}

/// A spot with bounded reach, close to a normal curve: (1 - r^2)^4 with r = 1 at three sigma.
double SpotProfile(double distanceSquared, double reach) {
  const double t = std::max(0.0, 1.0 - distanceSquared / (reach * reach));
  return (t * t) * (t * t);
}

std::array<float, 3> RandomColour(CRandomStream& random, double strength) {
  const double grey = random.uniform(-strength, strength);
  std::array<float, 3> colour{};
  for (float& part : colour) part = static_cast<float>(grey + random.uniform(-0.4, 0.4) * strength);
  return colour;
}

}  // namespace

CTestScene::CTestScene(const STestShotSettings& settings)
    : settings_(settings),
      centreX_((settings.width - 1) / 2.0),
      centreY_((settings.height - 1) / 2.0) {
  makeWaves();
  makeShapes();
}

/// Periods from 7 to 400 pixels, evenly in octaves; the amplitude falls slowly towards the short
/// ones, as the spectra of pictures do.
void CTestScene::makeWaves() {
  CRandomStream random(HashOf(settings_.seed, 101));
  greyWaves_ = 22;
  const std::size_t count = greyWaves_ + 6;
  for (std::size_t i = 0; i < count; ++i) {
    const bool grey = i < greyWaves_;
    const double place = grey ? static_cast<double>(i) / (greyWaves_ - 1.0)
                              : static_cast<double>(i - greyWaves_) / 5.0;
    double period = grey ? 7.0 : 60.0;
    for (int step = 0; step < 64; ++step) period *= 1.0 + place * (grey ? 0.0652 : 0.035);
    period *= random.uniform(0.95, 1.05);
    const SCosSin direction = CosSinOfTurns(random.uniform(0.0, 1.0));
    waves_.push_back({direction.cosine / period, direction.sine / period, random.uniform(0.0, 1.0),
                      grey ? 0.014 + 0.016 * place : 0.03});
  }
}

void CTestScene::makeShapes() {
  CRandomStream random(HashOf(settings_.seed, 102));
  const double w = settings_.width, h = settings_.height, unit = std::max(h / 1556.0, 0.1);
  const int count = static_cast<int>(std::clamp(w * h / 12000.0, 12.0, 320.0));
  for (int i = 0; i < count; ++i) {
    SShape shape{};
    shape.kind = static_cast<SShape::EKind>(i % 3);
    shape.x = random.uniform(-0.03, 1.03) * w;
    shape.y = random.uniform(-0.03, 1.03) * h;
    const double size = random.uniform(0.0, 1.0);
    shape.sizeX = std::max(3.0, (5.0 + 70.0 * size * size * size) * unit);
    shape.sizeY = std::max(3.0, shape.sizeX * random.uniform(0.3, 1.0));
    const SCosSin direction = CosSinOfTurns(random.uniform(0.0, 1.0));
    shape.cosine = direction.cosine;
    shape.sine = direction.sine;
    shape.colour = RandomColour(random, 0.13);
    shape.reach = shape.kind == SShape::EKind::Disc   ? shape.sizeX + kEdge
                  : shape.kind == SShape::EKind::Spot ? 3.0 * shape.sizeX
                                                      : shape.sizeX + shape.sizeY + 2.0 * kEdge;
    shapes_.push_back(shape);
  }
}

/// A wave's phase is linear in the pixel's column and row, so its cosine at every pixel follows
/// from those of its column and of its row: cos(a + b) = cos a cos b - sin a sin b.
CTestScene::SColumnTables CTestScene::columnTables(const SSceneView& view) const {
  const std::size_t width = static_cast<std::size_t>(settings_.width);
  SColumnTables tables;
  tables.cosine.resize(waves_.size() * width);
  tables.sine.resize(waves_.size() * width);
  for (std::size_t k = 0; k < waves_.size(); ++k) {
    const SWave& wave = waves_[k];
    const double step = wave.turnsX * view.cosine - wave.turnsY * view.sine;
    for (std::size_t column = 0; column < width; ++column) {
      const SCosSin value = CosSinOfTurns(step * (static_cast<double>(column) - centreX_));
      tables.cosine[k * width + column] = static_cast<float>(wave.amplitude * value.cosine);
      tables.sine[k * width + column] = static_cast<float>(wave.amplitude * value.sine);
    }
  }
  return tables;
}

void CTestScene::renderWaves(const SSceneView& view, const SColumnTables& tables, int row,
                             float* line) const {
  const std::size_t width = static_cast<std::size_t>(settings_.width);
  thread_local std::vector<float> sums;
  sums.assign(2 * width, 0.0f);
  const double y = row - centreY_ - view.shiftY;
  for (std::size_t k = 0; k < waves_.size(); ++k) {
    const SWave& wave = waves_[k];
    const double along = wave.turnsX * view.cosine - wave.turnsY * view.sine;
    const double across = wave.turnsX * view.sine + wave.turnsY * view.cosine;
    const SCosSin start = CosSinOfTurns(wave.phase - along * view.shiftX + across * y);
    const float c = static_cast<float>(start.cosine), s = static_cast<float>(start.sine);
    const float* cosine = tables.cosine.data() + k * width;
    const float* sine = tables.sine.data() + k * width;
    float* sum = sums.data() + (k < greyWaves_ ? 0 : width);
    for (std::size_t i = 0; i < width; ++i) sum[i] += cosine[i] * c - sine[i] * s;
  }
  const float* grey = sums.data();
  const float* tint = grey + width;
  for (std::size_t i = 0; i < width; ++i) {
    line[3 * i] = 0.44f + grey[i] + 0.7f * tint[i];
    line[3 * i + 1] = 0.42f + grey[i] + 0.1f * tint[i];
    line[3 * i + 2] = 0.38f + grey[i] - 0.6f * tint[i];
  }
}

void CTestScene::renderShape(const SShape& shape, const SSceneView& view, int firstRow, int rows,
                             float* band) const {
  // The shape's centre in the frame; distances are the same in scene and frame.
  const double dx = shape.x - centreX_, dy = shape.y - centreY_;
  const double x = view.cosine * dx - view.sine * dy + centreX_ + view.shiftX;
  const double y = view.sine * dx + view.cosine * dy + centreY_ + view.shiftY;
  const double barC = shape.cosine * view.cosine - shape.sine * view.sine;
  const double barS = shape.sine * view.cosine + shape.cosine * view.sine;
  const int top = std::max(firstRow, static_cast<int>(std::floor(y - shape.reach)));
  const int bottom = std::min(firstRow + rows - 1, static_cast<int>(std::ceil(y + shape.reach)));
  const int left = std::max(0, static_cast<int>(std::floor(x - shape.reach)));
  const int right = std::min(settings_.width - 1, static_cast<int>(std::ceil(x + shape.reach)));
  for (int row = top; row <= bottom; ++row) {
    float* line = band + static_cast<std::size_t>(row - firstRow) * settings_.width * 3;
    for (int column = left; column <= right; ++column) {
      const double u = column - x, v = row - y, squared = u * u + v * v;
      double cover = 0.0;
      if (shape.kind == SShape::EKind::Disc)
        cover = SoftStep(shape.sizeX - std::sqrt(squared));
      else if (shape.kind == SShape::EKind::Spot)
        cover = SpotProfile(squared, shape.reach);
      else
        cover = SoftStep(shape.sizeX - std::fabs(u * barC + v * barS)) *
                SoftStep(shape.sizeY - std::fabs(v * barC - u * barS));
      if (cover == 0.0) continue;
      for (int c = 0; c < 3; ++c)
        line[3 * column + c] +=
            static_cast<float>(cover) * shape.colour[static_cast<std::size_t>(c)];
    }
  }
}

/// A disc with its own chequered texture that crosses the picture and covers what is behind it.
void CTestScene::renderSubject(const SSceneView& view, int firstRow, int rows, float* band) const {
  const double radius = settings_.height / 9.0;
  const double w = settings_.width, h = settings_.height;
  const double x = (-0.05 + 1.1 * view.time) * w + view.shiftX;
  const double y = h * (0.55 + 0.12 * CosSinOfTurns(0.8 * view.time).sine) + view.shiftY;
  const int top = std::max(firstRow, static_cast<int>(std::floor(y - radius - kEdge)));
  const int bottom = std::min(firstRow + rows - 1, static_cast<int>(std::ceil(y + radius + kEdge)));
  const int left = std::max(0, static_cast<int>(std::floor(x - radius - kEdge)));
  const int right = std::min(settings_.width - 1, static_cast<int>(std::ceil(x + radius + kEdge)));
  for (int row = top; row <= bottom; ++row) {
    float* line = band + static_cast<std::size_t>(row - firstRow) * settings_.width * 3;
    for (int column = left; column <= right; ++column) {
      const double u = column - x, v = row - y;
      const float cover = static_cast<float>(SoftStep(radius - std::sqrt(u * u + v * v)));
      if (cover == 0.0f) continue;
      const double texture =
          CosSinOfTurns((u + 0.3 * v) / 23.0).cosine * CosSinOfTurns((v - 0.2 * u) / 17.0).cosine;
      const float value = static_cast<float>(0.5 + 0.15 * texture);
      for (int c = 0; c < 3; ++c) {
        float& sample = line[3 * column + c];
        sample += cover * (value * (1.0f - 0.2f * static_cast<float>(c)) - sample);
      }
    }
  }
}

void CTestScene::renderBand(const SSceneView& view, const SColumnTables& tables, int firstRow,
                            int rows, float* band) const {
  for (int row = 0; row < rows; ++row)
    renderWaves(view, tables, firstRow + row,
                band + static_cast<std::size_t>(row) * settings_.width * 3);
  for (const SShape& shape : shapes_) renderShape(shape, view, firstRow, rows, band);
  if (settings_.subject) renderSubject(view, firstRow, rows, band);
}
