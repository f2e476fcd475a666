#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <numeric>
#include <set>
#include <thread>

#include "../../platform/support/temp_folder.h"
#include "session/OperatedShot.h"
#include "support/ErrorReport.h"
#include "toolkit/HeadlessApplication.h"

namespace {

/// Remembers what it was told; its render goes into a writer in memory.
class CTestDisplay : public IShotDisplay {
 public:
  void onDisplayedFrame() override { ++frames; }
  void onMarks() override { ++marks; }
  void onOverlay() override { ++overlays; }
  bool copyShownFrame(int, std::uint16_t*) override { return false; }
  void showResult(int frame, const std::uint16_t*) override {
    const std::lock_guard lock(mutex);
    results.insert(frame);
  }
  bool prepareRender() override { return onRender && onRender(); }
  void captureToList(bool all) override { captured += all ? 'a' : 'c'; }
  void toggleResult() override { ++toggles; }
  void showControlPanel(const std::string&, TControl& shown) override { panel = &shown; }
  void removeControlPanel() override { panel = nullptr; }
  void setHelpPages(const std::string& operation, const std::string&) override { help = operation; }
  void showPointer(const SCursorImage* image) override { pointer = image; }

  std::set<int> shown() {
    const std::lock_guard lock(mutex);
    return results;
  }

  std::function<bool()> onRender;
  int frames = 0, marks = 0, overlays = 0, toggles = 0;
  std::string captured, help;
  TControl* panel = nullptr;
  const SCursorImage* pointer = nullptr;
  std::mutex mutex;
  std::set<int> results;  // guarded by mutex
};

class CMemoryWriter : public IClipWriter {
 public:
  CMemoryWriter(std::set<int>& written, bool& finished, int failing)
      : written_(written), finished_(finished), failing_(failing) {}
  void writeFrame(int frame, const std::uint16_t*) override {
    if (frame == failing_) throw CClipError("frame " + std::to_string(frame) + ": disk full");
    written_.insert(frame);
  }
  void finish() override { finished_ = true; }

 private:
  std::set<int>& written_;
  bool& finished_;
  const int failing_;
};

/// Writes nothing until its gate is opened; notes what came, in order.
class CGatedWriter : public IClipWriter {
 public:
  struct SGate {
    std::mutex mutex;
    std::condition_variable opened;
    bool open = false;         // guarded by mutex
    std::vector<int> written;  // guarded by mutex
    std::vector<int> frames() {
      const std::lock_guard lock(mutex);
      return written;
    }
  };
  CGatedWriter(SGate& gate, bool& finished) : gate_(gate), finished_(finished) {}
  void writeFrame(int frame, const std::uint16_t*) override {
    std::unique_lock lock(gate_.mutex);
    gate_.opened.wait(lock, [this] { return gate_.open; });
    gate_.written.push_back(frame);
  }
  void finish() override { finished_ = true; }

 private:
  SGate& gate_;
  bool& finished_;
};

/// A generated shot that lies, for all who ask, in a folder.
class CShotInFolder : public IClipReader {
 public:
  CShotInFolder(const std::string& path, const char* shot) : reader_(OpenClip(shot, 1)) {
    info_ = reader_->info();
    info_.path = path;
  }
  const SClipInfo& info() const override { return info_; }
  void readFrame(int frame, std::uint16_t* samples) override { reader_->readFrame(frame, samples); }

 private:
  std::unique_ptr<IClipReader> reader_;
  SClipInfo info_;
};

std::unique_ptr<IClipReader> firstShot(const std::string& folder) {
  return std::make_unique<CShotInFolder>(
      folder + "first.mov", "test:width=320,height=240,frames=10,firstFrame=100,subject=0,dust=0");
}

class OperatedShot : public TempFolder {
 protected:
  OperatedShot() : shot(firstShot(folder), 2, application, display) {}

  void pumpUntil(const std::function<bool()>& done) {
    while (!done()) {
      shot.pump();
      application.advanceClock(2);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  bool isIdle() {
    shot.pump();
    return !shot.isBusy();
  }
  void track(int lowest = 180) {
    CTrackingArray& array = *shot.session().editor()->trackingArray();
    for (const auto& [x, y] : {std::pair(80, 60), std::pair(230, 90), std::pair(150, lowest)})
      array.PointsAt(100).Point(array.FindPoints(100).Count()) = CTrackPoint(x, y);
    shot.session().editor()->pointsChangedHook.notify();
    shot.command(16);
    pumpUntil([this] { return shot.session().editor()->smoothedMotion() != nullptr; });
    pumpUntil([this] { return isIdle(); });
  }
  void press(int key, int modifiers) {
    CUserInput input;
    input.action = CUserInput::ACTION_KEY_DOWN;
    input.key = key;
    input.modifiers = modifiers;
    shot.input(input);
  }
  /// From now on renders go into `written`, as far as the frame that fails.
  void renderIntoMemory(int failing = -1) {
    display.onRender = [this, failing] {
      shot.setWriter(std::make_unique<CMemoryWriter>(written, finished, failing));
      return true;
    };
  }
  void render() { press('G', CUserInput::MODIFIER_SHIFT); }

  THeadlessApplication application;
  CTestDisplay display;
  std::set<int> written;
  bool finished = false;
  COperatedShot shot;
};

TEST_F(OperatedShot, TheWholeClipIsMarkedAndTheToolIsShown) {
  EXPECT_EQ(shot.session().getMarkIn(), 100);
  EXPECT_EQ(shot.session().getMarkOut(), 110);
  ASSERT_NE(display.panel, nullptr);
  EXPECT_EQ(display.help, "StabilizeOperation.htm");
  EXPECT_FALSE(shot.session().isFirstShow());
  press('T', 0);
  EXPECT_EQ(display.toggles, 1);
}

TCheckBox* checkBoxOf(TControl& control, const std::string& name) {
  if (control.name() == name) return dynamic_cast<TCheckBox*>(&control);
  for (TControl* const child : control.children())
    if (TCheckBox* const found = checkBoxOf(*child, name)) return found;
  return nullptr;
}

TEST_F(OperatedShot, PointsKeepToTheRegionThatThePanelChooses) {
  const SRect picture = {0, 0, 319, 239};
  const SRect box = {20, 30, 300, 220};
  const auto region = [this] { return shot.session().trackSettings().region; };
  CPDLEntry inBox = shot.capture();
  CPDLElement points = inBox.FirstElement().GetChild(1);
  ASSERT_EQ(points.GetName(), "TrackingArray");
  points.MakeNewChild("BoundingBox").SetAttribRectangle("BoundingBox", box);  // the last one holds
  ASSERT_NO_THROW(shot.apply(inBox));
  EXPECT_EQ(region(), box);
  TCheckBox* const use = checkBoxOf(*display.panel, "UseMattingCBox");
  ASSERT_NE(use, nullptr);
  use->click();
  EXPECT_EQ(region(), picture);
  ASSERT_NO_THROW(shot.apply(inBox));  // its settings tick the box again
  EXPECT_EQ(region(), box);
  use->click();
  CPDLEntry withoutBox = shot.capture();
  use->click();
  ASSERT_NO_THROW(shot.apply(withoutBox));
  EXPECT_EQ(region(), picture);
}

TEST_F(OperatedShot, TheOverlayShowsTheSelectedPointAndLeavesNoTraceOfIt) {
  track();
  shot.session().editor()->selectedPoint = 1;
  const SOverlay overlay = shot.session().overlay();
  ASSERT_EQ(overlay.trackBoxes.size(), 3u);
  EXPECT_GT(overlay.trackBoxes[1].searchHalfWidth, 0);
  EXPECT_EQ(overlay.trackBoxes[0].searchHalfWidth, 0);
  EXPECT_EQ(overlay.trackBoxes[0].color, 2);
  for (const auto& [index, point] :
       shot.session().editor()->trackingArray()->PointsAt(100).Entries())
    EXPECT_FALSE(point.highlight) << index;
}

TEST_F(OperatedShot, APointThatWasLeftOutIsTold) {
  shot.changeClip(
      std::make_unique<CShotInFolder>(folder + "drift.mov",
                                      "test:width=320,height=240,frames=10,firstFrame=100,subject="
                                      "0,dust=0,driftX=0,driftY=4,weaveX=0,weaveY=0"));
  track(228);  // at the lower edge, in a picture that moves down
  const std::vector<std::string> told = shot.takeFailures();
  ASSERT_EQ(told.size(), 1u);
  EXPECT_NE(told[0].find("point 2 was lost at frame 10"), std::string::npos) << told[0];
  EXPECT_EQ(shot.session().editor()->trackingArray()->NumberOfPoints(), 2);
}

TEST_F(OperatedShot, APreviewIsShownAndWritesNothing) {
  track();
  press('D', CUserInput::MODIFIER_SHIFT);
  pumpUntil([this] { return isIdle() && display.shown().size() == 10; });
  EXPECT_TRUE(written.empty());
  EXPECT_FALSE(shot.takeRender());
  EXPECT_TRUE(shot.takeFailures().empty());
}

TEST_F(OperatedShot, ARenderEndsWithAWriterThatIsFinishedOrGivenUp) {
  track();
  const struct {
    const char* what;
    int failing;
    bool finished;
  } cases[] = {{"a frame that cannot be written", 105, false}, {"all well", -1, true}};
  for (const auto& c : cases) {
    written.clear();
    finished = false;
    renderIntoMemory(c.failing);
    render();
    pumpUntil([this] { return isIdle() && !shot.hasWriter(); });
    const std::vector<std::string> failures = shot.takeFailures();
    EXPECT_EQ(finished, c.finished) << c.what;
    const std::string said = failures.empty() ? "" : failures[0];
    EXPECT_EQ(said.find("105") != std::string::npos, !c.finished) << said;
    const std::optional<COperatedShot::SRender> ended = shot.takeRender();
    ASSERT_TRUE(ended) << c.what;
    EXPECT_EQ(ended->written, static_cast<int>(written.size())) << c.what;
    EXPECT_EQ(ended->wanted, 10) << c.what;
  }
  EXPECT_EQ(written.size(), 10u);
  display.onRender = [] { return false; };
  written.clear();
  render();
  EXPECT_TRUE(isIdle()) << "refused";
  EXPECT_TRUE(written.empty());
}

TEST_F(OperatedShot, AMarkThatMovesDuringARenderCostsNoFrame) {
  track();
  renderIntoMemory();
  render();
  pumpUntil([this] { return !display.shown().empty(); });
  shot.session().setMarkOut(106);
  pumpUntil([this] { return isIdle() && !shot.hasWriter(); });
  EXPECT_TRUE(finished);
  EXPECT_EQ(shot.takeRender()->written, 10);
}

TEST_F(OperatedShot, ARenderThatPausesGoesOnWithoutAGap) {
  track();
  CGatedWriter::SGate gate;
  display.onRender = [&] {
    shot.setWriter(std::make_unique<CGatedWriter>(gate, finished));
    return true;
  };
  render();
  pumpUntil([this] { return display.shown().size() >= 2; });  // finished, and none written yet
  press(' ', 0);
  {
    const std::lock_guard lock(gate.mutex);
    gate.open = true;
  }
  gate.opened.notify_all();
  pumpUntil([this] { return shot.session().isPaused(); });
  std::vector<int> expected(gate.frames().size());
  std::iota(expected.begin(), expected.end(), 100);
  EXPECT_EQ(gate.frames(), expected);
  EXPECT_GE(expected.size(), 2u) << "what was finished is written";
  EXPECT_EQ(shot.session().getDisplayedFrame(), 100 + static_cast<int>(expected.size()));
  EXPECT_LT(expected.size(), 10u);
  shot.session().goToFrame(100);
  press(0x0D, 0);  // go on from the start: a video keeps what it has
  press(' ', 0);
  pumpUntil([this] { return isIdle(); });
  expected.resize(10);
  std::iota(expected.begin(), expected.end(), 100);
  EXPECT_EQ(gate.frames(), expected);
  EXPECT_TRUE(finished);
  EXPECT_EQ(shot.takeRender()->written, 10);
}

TEST_F(OperatedShot, AnotherClipTakesNoPointsAlong) {
  track();
  shot.changeClip(std::make_unique<CShotInFolder>(
      folder + "second.mov", "test:width=256,height=192,frames=6,subject=0,dust=0,firstFrame=7"));
  EXPECT_EQ(shot.session().editor()->trackingArray()->NumberOfPoints(), 0);
  EXPECT_EQ(shot.session().getMarkIn(), 7);
  EXPECT_EQ(shot.session().getMarkOut(), 13);
  EXPECT_EQ(shot.session().getDisplayedFrame(), 7);
  EXPECT_TRUE(application.questions.empty()) << "it is another picture";
}

TEST_F(OperatedShot, NothingHappensWhileADialogOfTheToolIsOpen) {
  track();
  shot.hold();
  render();
  shot.command(16);
  shot.pump();
  EXPECT_FALSE(shot.session().isBusy());
  shot.release();
}

}  // namespace
