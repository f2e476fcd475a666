#pragma once

#include <utility>
#include <vector>

#include "toolkit/Controls.h"

/// Disables a whole group of controls and later gives every one its own state back.
class CSavedEnables {
 public:
  /// Every control below `group`, a slider with its edit field as one. A control whose state is
  /// kept already is left alone: its state of now is not its own.
  void disable(const TControl& group);
  void restore();

 private:
  bool isKept(const TControl* control) const;

  std::vector<std::pair<TControl*, bool>> kept_;
};
