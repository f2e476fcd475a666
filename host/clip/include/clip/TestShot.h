#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "clip/ClipInfo.h"
#include "clip/ClipReader.h"

/// A generated film scan with known motion. The same settings give the same samples on every
/// machine.
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
};

/// Motion of frame i against the first: a scene point p of the first frame lies at
/// R(angle) (p - centre) + centre + (x, y). Pixels and degrees.
struct STestShotMotion {
  double x = 0.0;
  double y = 0.0;
  double angle = 0.0;
};

/// THREAD: const operations from any thread.
class CTestShot {
 public:
  explicit CTestShot(const STestShotSettings& settings);
  const STestShotSettings& settings() const { return settings_; }
  const SClipInfo& info() const { return info_; }
  /// One entry per frame, the first all zero.
  const std::vector<STestShotMotion>& motion() const { return motion_; }
  /// Renders frame `frame` (absolute) as 16-bit RGB.
  void renderFrame(int frame, std::uint16_t* samples) const;
  /// Settings and motion as JSON.
  std::string truthAsJson() const;

 private:
  STestShotSettings settings_;
  SClipInfo info_;
  std::vector<STestShotMotion> motion_;
};

/// "test:key=value,..." with the settings' names as keys. Throws CClipError for an unknown key.
STestShotSettings ParseTestShot(const std::string& text);
/// The shot as a clip.
std::unique_ptr<IClipReader> MakeTestShotReader(const STestShotSettings& settings);
