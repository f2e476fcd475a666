#pragma once

#include <cstddef>
#include <vector>

/// Records that cross between tool and host when a pass is set up.

/// Settings that reach a processor with command 4. A tool derives its own.
class CToolParameters {
 public:
  CToolParameters() = default;
  virtual ~CToolParameters() = default;
  CToolParameters(const CToolParameters&) = default;
  CToolParameters& operator=(const CToolParameters&) = default;
};

/// Frame ranges of a run, one entry per port.
class CToolFrameRange {
 public:
  struct SFrameRange {
    bool flag = false;    ///< set by one-frame passes
    int firstFrame = -1;  ///< -1: unset
    int endFrame = -1;    ///< one past the last; -1: unset
  };

  CToolFrameRange(int inputPorts, int outputPorts)
      : inputs(static_cast<std::size_t>(inputPorts)),
        outputs(static_cast<std::size_t>(outputPorts)) {}

  std::vector<SFrameRange> inputs;
  std::vector<SFrameRange> outputs;
};

/// Port layout and threads of a processor. The tool sets the ports and the thread count; the other
/// four are left at their defaults.
class CToolIOConfig {
 public:
  CToolIOConfig() = default;
  CToolIOConfig(int inputPorts, int outputPorts, int threads)
      : inputPortCount(inputPorts), outputPortCount(outputPorts), threadCount(threads) {}

  int inputPortCount = 1;
  int outputPortCount = 1;
  int threadCount = 1;
  int countA = 1;
  bool flagA = true;
  int countB = 1;
  bool flagB = false;
};
