#include <limits>

#include "Commands.h"
#include "clip/ClipWriter.h"
#include "clip/TestShot.h"
#include "session/ClipCopy.h"
#include "session/PointsOutput.h"
#include "session/ResultFiles.h"
#include "support/ErrorReport.h"
#include "support/Files.h"
#include "support/Threads.h"

namespace {

struct SRequest {
  STestShotSettings shot;
  std::string output;
  std::string truth;
  bool overwrite = false;
};

int makeTestShot(const SRequest& request, const SProgram& program) {
  CheckTextName("--truth", request.truth);
  CheckWritable(request.truth);
  const int threads = AvailableProcessorCoreCount();
  const std::unique_ptr<IClipReader> shot = MakeTestShotReader(request.shot);
  const SClipInfo& info = shot->info();
  const std::unique_ptr<IClipWriter> writer = CreateClip(
      request.output, *shot, info.firstFrame, info.endFrame, {request.overwrite, threads});
  const CConsoleObserver console(program);
  CopyClip(*shot, *writer, info.firstFrame, info.endFrame, threads, "Making the test shot",
           console.observer());
  if (!request.truth.empty() &&
      !WriteFileWhole(request.truth, CTestShot(request.shot).truthAsJson()))
    throw CJobError(-1, theError.getMessage());
  return EXIT_DONE;
}

void addSceneOptions(CLI::App* command, STestShotSettings& shot) {
  constexpr int any = std::numeric_limits<int>::max();
  command->option_defaults()->always_capture_default();
  command->add_option("--frames", shot.frames, "Frames")->check(CLI::Range(1, any).description(""));
  command->add_option("--first", shot.firstFrame, "Number of the first frame")
      ->check(CLI::Range(0, any).description(""));
  command->add_option("--width", shot.width, "Pixels")
      ->check(CLI::Range(64, 16384).description(""));
  command->add_option("--height", shot.height, "Pixels")
      ->check(CLI::Range(64, 16384).description(""));
  command->add_option("--seed", shot.seed, "Another seed, another shot");
  command->add_option("--drift-x", shot.driftX, "Pixels over the shot");
  command->add_option("--drift-y", shot.driftY, "Pixels over the shot");
  command->add_option("--weave-x", shot.weaveX, "RMS pixels");
  command->add_option("--weave-y", shot.weaveY, "RMS pixels");
  command->add_option("--rotation", shot.rotation, "RMS degrees");
  command->add_option("--grain", shot.grain, "RMS, of full range");
  command->add_option("--flicker", shot.flicker, "RMS, of the exposure");
  command->add_option("--dust", shot.dust, "Specks a frame");
  command->add_option("--matte", shot.matte, "Width of a matted border, pixels");
  command->add_flag_callback(
      "--no-subject", [&shot] { shot.subject = false; }, "Nothing moves on its own");
}

}  // namespace

void AddTestShotCommand(CLI::App& app, SProgram& program) {
  const auto request = std::make_shared<SRequest>();
  CLI::App* command =
      app.add_subcommand("test-shot", "Make a film scan with known motion, and its truth");
  command->add_option("-o,--output", request->output, "Sequence pattern or video")
      ->type_name("OUTPUT")
      ->required();
  command->add_option("--truth", request->truth, "Write the true motion as JSON")
      ->type_name("FILE");
  addSceneOptions(command, request->shot);
  command->add_flag("--overwrite", request->overwrite, "Replace output that exists");
  AddQuietFlag(*command, program);
  command->callback([request, &program] {
    program.command = [request, &program] { return makeTestShot(*request, program); };
  });
}
