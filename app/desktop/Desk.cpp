#include "Desk.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "clip/ClipReader.h"
#include "session/EntrySettings.h"
#include "session/JobObserver.h"
#include "session/PointFinder.h"
#include "support/ErrorReport.h"
#include "support/Files.h"
#include "support/Memory.h"
#include "support/Threads.h"

namespace fs = std::filesystem;

namespace {

constexpr int TICK_MILLISECONDS = 8;

bool isGenerated(const std::string& path) {
  return path == "test" || path.starts_with("test:");
}

std::string absolutePath(const std::string& path) {
  return isGenerated(path) ? path : fs::absolute(path).lexically_normal().string();
}

/// Where the tool saves the points; empty: a clip that lies nowhere.
std::string pointsFolder(const IClipReader& reader) {
  if (isGenerated(reader.info().path)) return {};
  const std::string file = reader.sourceFile(reader.info().firstFrame);
  std::error_code ignored;
  const fs::path folder = fs::path(file.empty() ? reader.info().path : file).parent_path();
  const fs::path canonical = fs::canonical(folder, ignored);
  return (canonical.empty() ? folder : canonical).string();
}

/// Frames may fill a quarter of the machine's memory: half before, half after the work.
std::size_t viewingBytes() {
  constexpr std::size_t LEAST = std::size_t{256} << 20;
  return std::max(LEAST, MachineMemory() / 8);
}

/// Beside the clip, under a name that is not the clip's.
std::string suggestedOutput(const SClipInfo& info) {
  if (isGenerated(info.path)) return {};
  const fs::path path = info.path;
  if (info.fileExtension.empty())
    return (path.parent_path() / (path.stem().string() + "_steady.mov")).string();
  const fs::path folder = fs::is_directory(path) ? path : path.parent_path();
  return (folder / "steady" / "").string();
}

}  // namespace

CDesk::CDesk(CQtApplication& application, IDeskWindow& window)
    : application_(application),
      window_(window),
      threads_(AvailableProcessorCoreCount()),
      list_(StateFolder() + "/stabilize/desktop.pdl") {
  application_.onModalBegin = [this] {
    if (shot_) shot_->hold();
  };
  application_.onModalEnd = [this] {
    if (shot_) shot_->release();
  };
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { tick(); });
  timer_.start(TICK_MILLISECONDS);
}

CDesk::~CDesk() {
  timer_.stop();
  points_.reset();
  shot_.reset();
  application_.onModalBegin = application_.onModalEnd = {};
}

std::unique_ptr<IClipReader> CDesk::openReader(const std::string& path) const {
  return OpenClip(path, threads_);
}

// Points are saved once for a folder: two windows on its clips would save theirs over each other's.
std::unique_ptr<CFileClaim> CDesk::claim(const std::string& folder) {
  const std::string claims = StateFolder() + "/stabilize/open";
  std::error_code ignored;
  fs::create_directories(claims, ignored);
  std::string name = folder;
  std::replace(name.begin(), name.end(), '/', '%');
  if (name.size() > 200)
    name = std::to_string(std::hash<std::string>{}(folder)) + name.substr(name.size() - 150);
  auto claim = std::make_unique<CFileClaim>(claims + "/" + name);
  if (!claim->isHeld() && theError.getError() == -EAGAIN &&
      !window_.confirm("A clip of " + folder +
                           " is open in another Stabilize window. Each saves its points there "
                           "when it closes: the last one stays.",
                       "Open Anyway"))
    return nullptr;
  return claim;
}

bool CDesk::open(const std::string& given) {
  const std::string path = absolutePath(given);
  if (!mayClose()) return false;
  try {
    std::unique_ptr<IClipReader> reader = openReader(path);
    const SClipInfo clip = reader->info();
    const std::string folder = pointsFolder(*reader);
    std::unique_ptr<CFileClaim> claim;
    if (folder != claimed_ && !folder.empty() && !(claim = this->claim(folder))) return false;
    // All that can fail comes first: what is open stays open until the other is there.
    auto cache = std::make_unique<CFrameCache>(
        openReader(path), CFrameCache::SSettings{viewingBytes(), std::max(1, threads_ - 1)},
        [this](int) { framesArrived_ = true; });
    auto results = std::make_unique<CResultFrames>(
        viewingBytes(), static_cast<std::size_t>(clip.format.getBytesPerField()));
    std::string output = suggestedOutput(clip);
    if (folder != claimed_) claim_ = std::move(claim);
    claimed_ = folder;
    cache_ = std::move(cache);
    results_ = std::move(results);  // a running pass writes there; there is none now
    direction_ = 0;
    if (shot_) {
      shot_->changeClip(std::move(reader));
    } else {
      shot_ = std::make_unique<COperatedShot>(std::move(reader), threads_, application_, *this);
    }
    points_ = std::make_unique<CPointEditing>(session());
    output_ = std::move(output);
    window_.showClip();
    goToFrame(clip.firstFrame);
    return true;
  } catch (const std::exception& error) {
    window_.showFailure(error.what());
    return false;
  }
}

bool CDesk::mayClose() {
  if (!isBusy()) return true;
  if (session().isBusy() &&
      !window_.confirm("The shot is being worked on. What is written stays; the rest is not made.",
                       "Stop It"))
    return false;
  while (isBusy()) {
    shot_->stop();  // each time: what waited for one pass may begin with its end
    shot_->pump();
    QTXmillisleep(2);
  }
  shot_->pump();
  return true;
}

void CDesk::goToFrame(int frame) {
  if (isOpen()) session().goToFrame(frame);
}

void CDesk::setDirection(int direction) {
  direction_ = direction;
  if (isOpen()) lookAhead(displayedFrame());
}

void CDesk::lookAhead(int frame) {
  const int in = session().getMarkIn();
  const int out = session().getMarkOut();
  const bool marked = in >= 0 && frame >= in && frame < out;
  const bool playing = direction_ != 0;
  cache_->lookAt(frame, direction_, playing && marked ? in : info().firstFrame,
                 playing && marked ? out : info().endFrame);
}

void CDesk::retryFrames() {
  cache_->retryFailed();
  window_.showFrame();
}

void CDesk::setOutput(const std::string& output) {
  output_ = output.empty() ? output : absolutePath(output) + (output.back() == '/' ? "/" : "");
  while (output_.ends_with("//")) output_.pop_back();
  window_.showOutput();
}

void CDesk::chooseOutput() {
  const std::string chosen = window_.chooseOutput(output_);
  if (chosen.empty()) return;
  const std::string before = output_;
  setOutput(chosen);
  try {
    CheckOutput(output_, info(), info().firstFrame, info().endFrame, true);
  } catch (const std::exception& error) {
    setOutput(before);
    window_.showFailure(error.what());
  }
}

void CDesk::tick() {
  if (!shot_) return;
  shot_->pump();
  tellFailures();
  const bool busy = isBusy();
  if (busy != wasBusy_) window_.showProgress(busy);
  wasBusy_ = busy;
  tellOutcome();
  if (framesArrived_.exchange(false)) window_.showCachedFrames();
  if (std::exchange(overlayDue_, false)) window_.showOverlay();
}

// One box: what comes after the first is mostly its consequence.
void CDesk::tellFailures() {
  std::string text;
  for (const std::string& failure : shot_->takeFailures())
    if (text.find(failure) == std::string::npos) text += (text.empty() ? "" : "\n\n") + failure;
  if (!text.empty()) window_.showFailure(text);
}

void CDesk::tellOutcome() {
  const std::optional<COperatedShot::SRender> render = shot_->takeRender();
  if (!render) return;
  window_.showMessage(std::to_string(render->written) + " of " + std::to_string(render->wanted) +
                      " frames written to " + renderOutput_);
}

void CDesk::onDisplayedFrame() {
  if (!shot_) return;
  lookAhead(displayedFrame());
  window_.showFrame();
}

void CDesk::onMarks() {
  if (shot_) window_.showMarks();
}

// Many changes come in one round of the tool's; one picture is enough.
void CDesk::onOverlay() {
  overlayDue_ = true;
}

bool CDesk::copyShownFrame(int frame, std::uint16_t* samples) {
  const CFrameCache::Samples shown = cache_->find(frame);
  if (!shown) return false;
  std::memcpy(samples, shown.get(),
              static_cast<std::size_t>(cache_->info().format.getBytesPerField()));
  return true;
}

void CDesk::showResult(int frame, const std::uint16_t* samples) {
  results_->put(frame, samples);
  framesArrived_ = true;
}

// What is there may hide other faults: a question about it is the last one.
bool CDesk::mayReplace(const std::string& output) {
  try {
    CheckOutput(output, info(), session().getMarkIn(), session().getMarkOut(), false);
    return false;
  } catch (const CClipExists& there) {
    CheckOutput(output, info(), session().getMarkIn(), session().getMarkOut(), true);
    if (!window_.confirm(there.what(), "Replace")) throw CInterrupted();
    return true;
  }
}

bool CDesk::prepareRender() {
  try {
    if (output_.empty()) setOutput(window_.chooseOutput(suggestedOutput(info())));
    if (output_.empty()) return false;
    const bool replace = mayReplace(output_);
    shot_->setWriter(CreateClip(output_, session().reader(), session().getMarkIn(),
                                session().getMarkOut(), {replace, threads_}));
    renderOutput_ = output_;
    return true;
  } catch (const CInterrupted&) {
  } catch (const std::exception& error) {
    window_.showFailure(error.what());
  }
  return false;
}

// A clip is one event: of this one and of all it is the same entry.
void CDesk::captureToList(bool) {
  try {
    if (output_.empty()) setOutput(window_.chooseOutput(suggestedOutput(info())));
    if (output_.empty()) return;
    SStabilizeOptions options;
    options.input = info().path;
    options.output = output_;
    options.overwrite = mayReplace(output_);
    options.in = session().getMarkIn();
    options.out = session().getMarkOut();
    options.entry = std::make_shared<const CPDLEntry>(shot_->capture());
    TakeEntrySettings(options, info());
    int number = 0;
    fs::create_directories(fs::path(list_.path()).parent_path());
    list_.change([&](CProcessList& list) { number = list.add(options); }, true);
    window_.showList();
    window_.showMessage("Entry " + std::to_string(number) + " added to the process list");
  } catch (const CInterrupted&) {
  } catch (const std::exception& error) {
    window_.showFailure(error.what());
  }
}

void CDesk::showControlPanel(const std::string& title, TControl& panel) {
  window_.showPanel(title, panel);
}

void CDesk::setHelpPages(const std::string& operation, const std::string& hotKeys) {
  window_.setHelpPages(operation, hotKeys);
}

bool CDesk::openEntry(const SQueuedShot& entry) {
  if (!open(entry.options.input)) return false;
  session().setMarks(*entry.options.in, *entry.options.out);
  setOutput(entry.options.output);
  try {
    CPDLEntry settings = CPDLEntry::CopyOf(entry.options.entry->FirstElement());
    shot_->apply(settings);
  } catch (const std::exception& error) {
    window_.showFailure(error.what());
  }
  window_.showClip();
  goToFrame(*entry.options.in);
  return true;
}

std::string CDesk::findingRefusal() {
  if (!isBusy()) shot_->showPoints();
  return points_->placingRefusal();
}

void CDesk::findPoints(int count) {
  CTrackingArray& array = *session().editor()->trackingArray();
  SStabilizeOptions options;
  options.in = session().getMarkIn();
  options.out = session().getMarkOut();
  options.autoPoints = count;
  options.threads = threads_;
  options.trackBox = array.TrackBoxExtentX;
  options.search = array.SearchBoxExtentLeft;
  if (const std::string refusal = findingRefusal(); !refusal.empty())
    return window_.showMessage(refusal);
  try {
    const CBusyCursor busy;
    const std::vector<SFeature> features =
        FindPoints(session().store(), options, session().trackSettings().region);
    if (features.empty())
      return window_.showMessage(
          "Nothing in the picture can be tracked: no texture above the noise");
    std::vector<SPoint2> places;
    for (const SFeature& feature : features) places.push_back({feature.x, feature.y});
    if (points_->replaceAll(places))
      window_.showMessage(std::to_string(places.size()) + " points found");
  } catch (const std::exception& error) {
    window_.showFailure(error.what());
  }
}
