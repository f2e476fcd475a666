#pragma once

#include "ToolObj/UserInput.h"
#include "support/Hook.h"

class CNavSystemInterface;

/// Takes a colour from the displayed frame with the mouse: while it is on, every movement of the
/// pointer and every button press reads the pixel below it, and the button's release announces the
/// pick. A tool owns one and passes it the host's mouse events. Components are the host's code
/// values, 0 to `getMaximum()`; positions are image pixels. THREAD: the user-interface thread.
class CColorPickTool {
 public:
  CColorPickTool() = default;
  CColorPickTool(const CColorPickTool&) = delete;
  CColorPickTool& operator=(const CColorPickTool&) = delete;

  /// Not owned.
  void setSystemAPI(CNavSystemInterface* systemInterface) { systemInterface_ = systemInterface; }

  /// Switches it on or off, and the pointer over the display with it. Without a system interface it
  /// stays off.
  void setMode(bool on);
  bool isOn() const { return on_; }

  /// The colour last read; black before the first.
  void getColor(int& first, int& second, int& third) const;
  /// The largest value that a component of that colour could have; 0 before the first.
  int getMaximum() const { return maximum_; }
  /// Where it was last asked to read, which may lie outside the picture: the colour is then still
  /// the one before.
  void getPosition(int& x, int& y) const;

  /// Results as of tool input: 16 (consumed) while it is on, else 1.
  int buttonDown(const CUserInput& input);
  int buttonUp(const CUserInput& input);
  /// Reads the pixel at the input's image position while it is on. Always 1: others may want the
  /// movement too.
  int sample(const CUserInput& input);

  CBHook colorChangedHook;  ///< a pixel of another colour than the last was read
  CBHook pickedHook;        ///< the button was released while it was on

 private:
  static constexpr int COMPONENTS = 3;

  bool on_ = false;
  int color_[COMPONENTS] = {0, 0, 0};
  int maximum_ = 0;
  int x_ = 0;
  int y_ = 0;
  CNavSystemInterface* systemInterface_ = nullptr;
};
