#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "clip/ClipInfo.h"
#include "clip/ClipReader.h"

/// A generated film scan with known motion: demonstration material, and the measure of a
/// stabilisation. The picture is a function of the plane (waves, soft discs, bars and spots, a
/// texture of known spectrum) that is evaluated at the moved position of every pixel, so that
/// motion is exact to any fraction of a pixel; nothing is resampled. Edges are as soft as a film
/// scan's, about 0.7 pixels (sigma). Over the picture lie exposure flicker, dust that is on one
/// frame only, and grain of every pixel and component. The same settings give the same samples on
/// every machine, in any order of frames: random numbers are hashes of seed, frame and place, and
/// only correctly rounded operations (+ - * / and square root) are used.
struct STestShotSettings {
  int width = 2048;
  int height = 1556;
  int frames = 240;
  int firstFrame = 1001;
  std::uint64_t seed = 1;
  double driftX = 6.0;  ///< pixels over the whole shot
  double driftY = -4.0;
  double weaveX = 1.6;  ///< RMS of the frame-to-frame unsteadiness, pixels
  double weaveY = 1.2;
  double rotation = 0.03;  ///< RMS, degrees
  double grain = 0.01;     ///< RMS, of full range
  double flicker = 0.03;   ///< RMS, of the exposure
  double dust = 12.0;      ///< specks a frame
  bool subject = true;     ///< something that moves on its own crosses the picture
  int matte = 0;           ///< width of a matted border, pixels; 0: none
  int depth = 10;          ///< bits of a component that the scan has: 8, 10, 12, 16
};

/// Motion of frame i against the first: what is at p in the first frame lies in frame i at
/// R(angle) (p - centre) + centre + (x, y), with R(a) = [cos a, -sin a; sin a, cos a] on columns
/// (x to the right, y down) and centre = ((width - 1) / 2, (height - 1) / 2). Pixels and degrees.
/// A matted border does not move: the picture moves behind it. The subject moves on its own.
struct STestShotMotion {
  double x = 0.0;
  double y = 0.0;
  double angle = 0.0;
};

class CTestScene;

/// THREAD: const operations from any thread.
class CTestShot {
 public:
  /// Throws CClipError for settings out of range.
  explicit CTestShot(const STestShotSettings& settings);
  const STestShotSettings& settings() const { return settings_; }
  const SClipInfo& info() const { return info_; }
  /// One entry per frame, the first all zero.
  const std::vector<STestShotMotion>& motion() const { return motion_; }
  /// Renders frame `frame` (absolute) as 16-bit RGB.
  void renderFrame(int frame, std::uint16_t* samples) const;
  /// Exposure of frame i, a factor on the samples.
  const std::vector<double>& exposure() const { return exposure_; }
  /// Settings, motion and exposure as JSON.
  std::string truthAsJson() const;

 private:
  STestShotSettings settings_;
  SClipInfo info_;
  std::vector<STestShotMotion> motion_;
  std::vector<double> exposure_;
  std::shared_ptr<const CTestScene> scene_;
};

/// "test:key=value,..." with the settings' names as keys ("test:" alone: the defaults). Throws
/// CClipError for an unknown key or a value that is none.
STestShotSettings ParseTestShot(const std::string& text);
/// The shot as a clip.
std::unique_ptr<IClipReader> MakeTestShotReader(const STestShotSettings& settings);
