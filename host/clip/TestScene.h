#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "clip/TestShot.h"

/// Where one frame looks at the scene: scene = linear * (pixel - shift - centre) + centre.
struct SSceneView {
  double cosine = 1.0;  ///< of the frame's angle
  double sine = 0.0;
  double shiftX = 0.0;
  double shiftY = 0.0;
  double time = 0.0;  ///< 0 to 1 over the shot: where the subject is
};

/// The plane that a test shot looks at, a function of position without grain or dust. A band of
/// rows at a time, three floats a pixel, full scale 1. THREAD: const, any.
class CTestScene {
 public:
  explicit CTestScene(const STestShotSettings& settings);

  /// The waves' cosines and sines along the columns, once per frame.
  struct SColumnTables {
    std::vector<float> cosine;  ///< [wave][column]
    std::vector<float> sine;
  };
  SColumnTables columnTables(const SSceneView& view) const;
  /// Renders rows [firstRow, firstRow + rows) into `band`, rows * width * 3 floats.
  void renderBand(const SSceneView& view, const SColumnTables& tables, int firstRow, int rows,
                  float* band) const;

 private:
  struct SWave {
    double turnsX, turnsY, phase, amplitude;
  };
  struct SShape {
    enum class EKind { Disc, Bar, Spot };
    EKind kind;
    double x, y;                  ///< centre, scene pixels
    double sizeX, sizeY;          ///< radius, half sides, or sigma
    double cosine, sine;          ///< direction of a bar
    std::array<float, 3> colour;  ///< added where the shape is
    double reach;                 ///< no effect farther than this from the centre
  };

  void makeWaves();
  void makeShapes();
  void renderWaves(const SSceneView& view, const SColumnTables& tables, int row, float* line) const;
  void renderShape(const SShape& shape, const SSceneView& view, int firstRow, int rows,
                   float* band) const;
  void renderSubject(const SSceneView& view, int firstRow, int rows, float* band) const;

  STestShotSettings settings_;
  double centreX_ = 0.0;
  double centreY_ = 0.0;
  std::vector<SWave> waves_;
  std::size_t greyWaves_ = 0;  ///< the first ones are grey, the others coloured
  std::vector<SShape> shapes_;
};
