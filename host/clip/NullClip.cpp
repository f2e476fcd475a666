#include "NullClip.h"

namespace {

class CNullWriter : public IClipWriter {
 public:
  void writeFrame(int, const std::uint16_t*) override {}
  void finish() override {}
  bool isParallel() const override { return true; }
};

}  // namespace

std::unique_ptr<IClipWriter> MakeNullWriter() {
  return std::make_unique<CNullWriter>();
}
