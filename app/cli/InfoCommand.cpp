#include <cstdio>

#include "Commands.h"
#include "ShotOptions.h"
#include "clip/ClipReader.h"

namespace {

int describe(const std::string& path) {
  const std::unique_ptr<IClipReader> reader = OpenClip(path, 1);
  const SClipInfo& info = reader->info();
  std::printf("path        %s\nkind        %s\npicture     %d x %d, %d bit%s\n", info.path.c_str(),
              info.kind.c_str(), info.format.getPixelsPerLine(), info.format.getLinesPerFrame(),
              info.bitDepth, info.floatSamples ? " float" : "");
  std::printf("frames      %d to %d (%d)\n", info.firstFrame, info.endFrame - 1, info.frameCount());
  if (info.frameRateKnown)
    std::printf("rate        %.6g frames/s (%d/%d)\n", info.frameRate.value(),
                info.frameRate.numerator, info.frameRate.denominator);
  if (info.timecodeKnown) std::printf("timecode    %s\n", info.startTimecode.toText().c_str());
  for (const auto& [key, value] : reader->metadata())
    std::printf("  %s: %s\n", Printable(key).c_str(), Printable(value).c_str());
  return EXIT_DONE;
}

}  // namespace

void AddInfoCommand(CLI::App& app, SProgram& program) {
  const auto input = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("info", "Describe a clip");
  AddInput(*command, *input)->required();
  command->callback([input, &program] { program.command = [input] { return describe(*input); }; });
}
