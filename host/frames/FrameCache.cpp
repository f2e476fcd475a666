#include "frames/FrameCache.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "WantOrder.h"

namespace {

// A frame on the screen and the one that follows it.
constexpr std::size_t FEWEST_FRAMES = 2;
// A player that goes backwards through one of four blocks has two complete ones ahead while the
// farthest is filled: a jump of the decoder is over long before they are used up.
constexpr std::size_t BLOCKS_IN_CACHE = 4;
// Two seconds of film. The frame before the one looked at is the last of its block to come: longer
// blocks would save few jumps more and keep a viewer that steps back waiting.
constexpr std::size_t LONGEST_BLOCK = 48;

std::size_t framesThatFit(std::size_t bytes, const SClipInfo& info) {
  const std::size_t frameBytes = std::max<std::size_t>(1, info.format.getBytesPerField());
  return std::max(FEWEST_FRAMES, bytes / frameBytes);
}

int blockLength(bool parallel, std::size_t capacity, int rangeLength) {
  if (parallel) return 1;
  const std::size_t inRange = std::min<std::size_t>(capacity, std::max(1, rangeLength));
  return static_cast<int>(std::clamp<std::size_t>(inRange / BLOCKS_IN_CACHE, 1, LONGEST_BLOCK));
}

}  // namespace

CFrameCache::CFrameCache(std::unique_ptr<IClipReader> reader, const SSettings& settings,
                         std::function<void(int frame)> onChange)
    : reader_(std::move(reader)),
      onChange_(std::move(onChange)),
      capacity_(framesThatFit(settings.bytes, reader_->info())),
      pool_(reader_->info().format.getBytesPerField(), 0) {
  const int threads = reader_->isParallel() ? std::max(1, settings.threads) : 1;
  for (int i = 0; i < threads; ++i) threads_.emplace_back([this] { decodingThread(); });
}

CFrameCache::~CFrameCache() {
  {
    const std::lock_guard lock(mutex_);
    quit_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

CFrameCache::Samples CFrameCache::find(int frame) const {
  const std::lock_guard lock(mutex_);
  const auto found = cached_.find(frame);
  return found == cached_.end() ? nullptr : found->second;
}

std::string CFrameCache::failure(int frame) const {
  const std::lock_guard lock(mutex_);
  const auto found = failures_.find(frame);
  return found == failures_.end() ? std::string() : found->second;
}

std::vector<SFrameSpan> CFrameCache::cached() const {
  const std::lock_guard lock(mutex_);
  std::vector<SFrameSpan> spans;
  for (const auto& [frame, samples] : cached_) {
    if (spans.empty() || spans.back().end != frame) spans.push_back({frame, frame});
    spans.back().end = frame + 1;
  }
  return spans;
}

void CFrameCache::lookAt(int frame, int direction, int first, int end) {
  if (info().frameCount() <= 0) return;
  const SLook look{std::clamp(frame, info().firstFrame, info().endFrame - 1), direction,
                   std::max(first, info().firstFrame), std::min(end, info().endFrame)};
  {
    const std::lock_guard lock(mutex_);
    if (looking_ && look == look_) return;
    if (looking_ && look.frame != look_.frame) failures_.erase(look.frame);
    look_ = look;
    looking_ = true;
    orderLocked();
  }
  changed_.notify_all();
}

void CFrameCache::retryFailed() {
  {
    const std::lock_guard lock(mutex_);
    failures_.clear();
    orderLocked();
  }
  changed_.notify_all();
}

void CFrameCache::orderLocked() {
  next_ = 0;
  if (!looking_) return;
  const int block = blockLength(reader_->isParallel(), capacity_, look_.end - look_.first);
  order_ = OrderOfWant({look_.frame, look_.direction, look_.first, look_.end, block}, capacity_,
                       [this](int frame) { return failures_.contains(frame); });
  wanted_ = {order_.begin(), order_.end()};
}

std::map<int, CFrameCache::Samples>::iterator CFrameCache::farthestUnwantedLocked() {
  auto farthest = cached_.end();
  for (auto it = cached_.begin(); it != cached_.end(); ++it) {
    if (wanted_.contains(it->first)) continue;
    if (farthest == cached_.end() ||
        std::abs(it->first - look_.frame) > std::abs(farthest->first - look_.frame))
      farthest = it;
  }
  return farthest;
}

bool CFrameCache::findWorkLocked() {
  while (next_ < order_.size() &&
         (cached_.contains(order_[next_]) || decoding_.contains(order_[next_])))
    ++next_;
  if (next_ == order_.size()) return false;
  // Full of wanted frames and of one that is on its way to a place left meanwhile: it comes first.
  return cached_.size() + decoding_.size() < capacity_ || farthestUnwantedLocked() != cached_.end();
}

// Returns what made room, to be let go of without the lock.
CFrameCache::Samples CFrameCache::beginLocked(int frame) {
  Samples dropped;
  if (cached_.size() + decoding_.size() >= capacity_) {
    const auto farthest = farthestUnwantedLocked();
    dropped = std::move(farthest->second);
    cached_.erase(farthest);
  }
  decoding_.insert(frame);
  return dropped;
}

void CFrameCache::finishLocked(int frame, SOutcome outcome) {
  decoding_.erase(frame);
  if (outcome.samples) {
    cached_[frame] = std::move(outcome.samples);
    return;
  }
  failures_[frame] = std::move(outcome.failure);
  orderLocked();
}

CFrameCache::SOutcome CFrameCache::decode(int frame) {
  const auto samples = std::static_pointer_cast<std::uint16_t>(pool_.allocateShared());
  if (!samples) throw std::runtime_error("no memory for the frame");
  reader_->readFrame(frame, samples.get());
  return {samples, {}};
}

CFrameCache::SOutcome CFrameCache::tryDecode(int frame) {
  const auto name = [&] { return info().path + ": frame " + std::to_string(frame) + ": "; };
  try {
    return decode(frame);
  } catch (const CClipError& error) {
    return {nullptr, error.what()};
  } catch (const std::exception& error) {
    return {nullptr, name() + error.what()};
  } catch (...) {
    return {nullptr, name() + "cannot be read"};
  }
}

void CFrameCache::decodingThread() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return quit_ || findWorkLocked(); });
    if (quit_) return;
    const int frame = order_[next_];
    Samples dropped = beginLocked(frame);
    lock.unlock();
    dropped.reset();
    SOutcome outcome = tryDecode(frame);
    lock.lock();
    finishLocked(frame, std::move(outcome));
    lock.unlock();
    changed_.notify_all();
    if (onChange_) onChange_(frame);
    lock.lock();
  }
}
