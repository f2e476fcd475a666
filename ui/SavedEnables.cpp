#include "SavedEnables.h"

#include <algorithm>

#include "ui/TrackEditFrame.h"

namespace {

bool stateOf(TControl& control) {
  const auto* frame = dynamic_cast<TTrackEditFrame*>(&control);
  return frame != nullptr ? frame->isFrameEnabled() : control.isEnabled();
}

void setState(TControl& control, bool enabled) {
  if (auto* const frame = dynamic_cast<TTrackEditFrame*>(&control)) {
    frame->enable(enabled);
  } else {
    control.setEnabled(enabled);
  }
}

}  // namespace

void CSavedEnables::disable(const TControl& group) {
  for (TControl* control : group.children()) {
    const bool isFrame = dynamic_cast<TTrackEditFrame*>(control) != nullptr;
    if (!isFrame && !control->children().empty()) {
      disable(*control);
    } else if (!isKept(control)) {
      kept_.emplace_back(control, stateOf(*control));
      setState(*control, false);
    }
  }
}

void CSavedEnables::restore() {
  for (const auto& [control, enabled] : kept_) setState(*control, enabled);
  kept_.clear();
}

bool CSavedEnables::isKept(const TControl* control) const {
  return std::any_of(kept_.begin(), kept_.end(),
                     [control](const auto& entry) { return entry.first == control; });
}
