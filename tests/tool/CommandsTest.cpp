#include <iterator>

#include "ControlsWindow.h"
#include "tool/StabilizerCommands.h"

namespace {

constexpr int CONSUMED = CToolObject::HANDLED;
constexpr int NOT_CONSUMED = CToolObject::NOT_HANDLED;
constexpr EButtonGroup FILL = EButtonGroup::fill;
enum EFill { BLACK, WHITE, PREVIOUS_FRAME, ZOOM, NONE };

// A tracked shot in a window with controls; effects are read back as one text.
class Commands : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    ZRNQTraceLevel = 3;
    restore();
  }

  std::unique_ptr<IStabilizerWindow> makeWindow(CStabilizerTool& owner) override {
    auto made = std::make_unique<CControlsWindow>(owner);
    controls = made.get();
    return made;
  }

  /// The state from which every row of the tables starts.
  void restore() {
    host.markIn = IN;
    host.markOut = OUT;
    tool.editor().updateMarks();
    makeTracked();
    host.focusedControl = nullptr;
    check(EButtonGroup::motion, 1);
    check(EButtonGroup::anchor, 3);
    check(EButtonGroup::stabilize, 2);
    check(FILL, BLACK);
    controls->setShowPointsChecked(true);
    controls->setShowMattingBoxChecked(true);
    tool.setTrackingPointsVisible(true);
    tool.setMattingBox({4, 5, 60, 40});
    tool.showMattingBox(true);
    tool.setColorPickerOn(false);
    application.beeps = 0;
    forgetCalls();
  }

  void check(EButtonGroup group, int index) {
    for (TRadioButton* button : controls->buttonsOf(group)) button->setChecked(false);
    if (index < static_cast<int>(controls->buttonsOf(group).size()))
      controls->button(group, index).setChecked(true);
  }

  int press(const std::string& keys) {
    CUserInput input;
    EXPECT_EQ(input.parse(keys), 0) << keys;
    return tool.onUserInput(input);
  }
  int command(int number) {
    CToolCommand made(&tool, number);
    return made.execute();
  }

  /// What the host and the window were told, then what differs from the restored state. Redrawing
  /// and refreshing are left out.
  std::string effects() {
    std::string text;
    const auto add = [&text](const std::string& effect) {
      text += (text.empty() ? "" : ", ") + effect;
    };
    for (const std::string& call : host.calls.take()) {
      if (call == "focusControl set")
        add("focus " + host.focusedControl->name());
      else if (call != "redrawDisplay 0")
        add(call);
    }
    for (const std::string& call : controls->calls.take())
      if (!call.starts_with("buttons ") && call != "statusLine" && call != "graphs") add(call);
    if (application.beeps > 0) add("beep");
    if (tool.livePoints().NumberOfPoints() != 2) add("no points");
    if (!controls->isShowPointsChecked()) add("points unticked");
    if (!tool.editor().showPoints) add("points hidden");
    if (!controls->isShowMattingBoxChecked()) add("box unticked");
    if (!tool.isMattingBoxShown()) add("box hidden");
    if (tool.isShiftHeld()) add("shift held");
    return text;
  }

  std::vector<int> checkedFills() {
    std::vector<int> checked;
    for (int i = BLACK; i <= ZOOM; ++i)
      if (controls->button(FILL, i).isChecked()) checked.push_back(i);
    return checked;
  }

  CControlsWindow* controls = nullptr;
};

struct SKeyRow {
  int number;
  const char* keys;
  int result;
  const char* effects;
};

// In the order of the bindings. The window accepts what a tracked, idle shot offers.
const SKeyRow keyRows[] = {
    {20001, " D                KeyDown", NOT_CONSUMED, "execute 20001"},
    {20002, " Ctrl+D           KeyDown", NOT_CONSUMED, "execute 20002"},
    {20003, " Shift+D          KeyDown", CONSUMED, "execute 20003"},
    {20004, " G                KeyDown", NOT_CONSUMED, "execute 20004"},
    {20005, " Ctrl+G           KeyDown", NOT_CONSUMED, "execute 20005"},
    {20006, " Shift+G          KeyDown", CONSUMED, "execute 20006"},
    {20010, " Ctrl+Space       KeyDown", NOT_CONSUMED, "execute 20010"},
    {20009, " Space            KeyDown", NOT_CONSUMED, "execute 20009"},
    {20014, " Return           KeyDown", CONSUMED, "execute 20014"},
    {20011, " ,                KeyDown", CONSUMED, "execute 20011"},
    {20012, " Shift+,          KeyDown", CONSUMED, "execute 20012"},
    {5, " T                KeyDown", CONSUMED, "toggleFix 0"},
    {6, " Shift+T          KeyDown", CONSUMED, "points unticked, points hidden"},
    {7, " Ctrl+T           KeyDown", NOT_CONSUMED, "box unticked, box hidden"},
    {17, " F1               KeyDown", NOT_CONSUMED, "beep"},
    {18, " 2                KeyDown", CONSUMED, "focus TrackBoxSize"},
    {19, " 3                KeyDown", CONSUMED, "focus MotionSearchArea"},
    {20, " 4                KeyDown", CONSUMED, "focus Smoothing"},
    {21, " 5                KeyDown", CONSUMED, "focus Black"},
    {22, " 6                KeyDown", CONSUMED, "focus AddJitter"},
    {24, " 7                KeyDown", CONSUMED, "focus RemoveAll"},
    {25, " 8                KeyDown", CONSUMED, "focus None"},
    {23, " 9                KeyDown", CONSUMED, "focus HorizVert"},
    {28, " Ctrl+Shift+Shift KeyDown", CONSUMED, "showCursor 1, toggleColorPicker"},
    {28, " Ctrl+Shift+Ctrl  KeyDown", CONSUMED, "showCursor 1, toggleColorPicker"},
    {29, " Ctrl+Shift       KeyUp", CONSUMED, ""},
    {29, " Shift+Ctrl       KeyUp", CONSUMED, ""},
    {12, " Ctrl+L           KeyDown", NOT_CONSUMED, ""},
    {13, " Shift+L          KeyDown", NOT_CONSUMED, ""},
    {11, " Ctrl+S           KeyDown", NOT_CONSUMED, ""},
    {14, " Shift+A          KeyDown", NOT_CONSUMED, "pointButtons, no points"},
    {31, " Shift+Shift      KeyDown", NOT_CONSUMED, "shift held"},
    {32, " Shift            KeyUp", NOT_CONSUMED, ""},
    {30, " Ctrl+Shift+E     KeyDown", NOT_CONSUMED, "setMarkOut 110, setMarkIn 100, goToFrame 100"},
    {30, " Ctrl+Shift+R     KeyDown", NOT_CONSUMED, "setMarkOut 110, setMarkIn 100, goToFrame 100"},
};

TEST_F(Commands, EveryKeyReachesItsAction) {
  controls->acceptedCommands = {20003, 20006, 20011, 20012, 20014};
  const CUserInputConfiguration& bindings = StabilizerKeyBindings();
  ASSERT_EQ(static_cast<int>(std::size(keyRows)), bindings.getCount());
  for (int i = 0; i < bindings.getCount(); ++i) {
    const SKeyRow& row = keyRows[i];
    SCOPED_TRACE(row.keys);
    restore();
    host.markIn = 103;
    host.markOut = 106;
    EXPECT_STREQ(bindings.getEntry(i)->bindingText, row.keys);
    EXPECT_EQ(press(row.keys), row.result);
    EXPECT_EQ(trace, std::vector<std::string>{"Stabilizer Tool command number " +
                                              std::to_string(row.number)});
    EXPECT_TRUE(controls->calls.contains("buttons 0 0")) << "every command refreshes the buttons";
    EXPECT_EQ(effects(), row.effects);
  }
  trace.clear();
  for (const char* keys : {"Alt+G KeyDown", "G KeyUp"}) {
    EXPECT_EQ(press(keys), NOT_CONSUMED) << keys;
    EXPECT_TRUE(trace.empty()) << keys << " is nobody's";
  }
}

// Hosts ask the table for numbers and names. It ends otherwise than the bindings do.
TEST(CommandTable, HoldsTheBindingsCommandsInTheirOrder) {
  const CToolCommandTable& table = StabilizerCommandTable();
  ASSERT_EQ(table.getCount(), 34);
  for (int i = 0; i < 34; ++i)
    EXPECT_EQ(table.getEntry(i)->commandNumber, i < 31 ? keyRows[i].number : i - 1) << i;
  EXPECT_EQ(table.getEntry(34), nullptr);
  for (const auto& [index, name] :
       std::map<int, const char*>{{0, "EXEC_BUTTON_PREVIEW_FRAME"},
                                  {7, "EXEC_BUTTON_PAUSE_OR_RESUME"},
                                  {23, "STAB_CMD_TURN_COLOR_PICKER_ON"},
                                  {24, "STAB_CMD_TURN_COLOR_PICKER_ON"},
                                  {31, "STAB_CMD_SET_MARKS_FROM_TRACK_ARRAY"},
                                  {33, "STAB_CMD_SHIFT_IS_OFF"}})
    EXPECT_STREQ(table.getEntry(index)->name, name);
}

TEST_F(Commands, FromTheHostComeMoreThanFromTheKeys) {
  EXPECT_EQ(command(STAB_CMD_TRACK), CONSUMED);
  EXPECT_EQ(tool.runState(), RUN_TRACKING_REQUESTED);
  EXPECT_TRUE(controls->calls.contains("buttons 3 0"));
  controls->acceptedCommands = {20013};
  for (const auto& [number, result] :
       {std::pair{20007, NOT_CONSUMED}, std::pair{20008, NOT_CONSUMED},
        std::pair{20013, CONSUMED}}) {
    restore();
    EXPECT_EQ(command(number), result);
    EXPECT_EQ(effects(), "execute " + std::to_string(number));
  }
  for (const int number : {-1, 0, 1, 2, 3, 4, 8, 9, 10, 15, 26, 27, 33, 20000, 20015}) {
    restore();
    EXPECT_EQ(command(number), NOT_CONSUMED) << number;
    EXPECT_EQ(effects(), "") << number;
  }
}

TEST_F(Commands, WhatIsDisabledStaysAsItIs) {
  controls->smoothingEnabled = false;
  controls->showPointsEnabled = false;
  EXPECT_EQ(command(STAB_CMD_FOCUS_ON_SMOOTHING), CONSUMED);
  EXPECT_EQ(command(STAB_CMD_TOGGLE_TRACK_POINT_VISIBILITY), CONSUMED);
  EXPECT_EQ(effects(), "");
}

TEST_F(Commands, VisibilityTogglesBackAndForth) {
  command(STAB_CMD_TOGGLE_TRACK_POINT_VISIBILITY);
  command(STAB_CMD_TOGGLE_PROC_REGION_VISIBILITY);
  EXPECT_EQ(effects(), "points unticked, points hidden, box unticked, box hidden");
  command(STAB_CMD_TOGGLE_TRACK_POINT_VISIBILITY);
  command(STAB_CMD_TOGGLE_PROC_REGION_VISIBILITY);
  EXPECT_EQ(effects(), "");
}

TEST_F(Commands, TheFillStepsWhileItHasTheFocus) {
  const struct {
    const char* name;
    int focused, checked, newFocus, newChecked;
  } cases[] = {
      {"from black", BLACK, BLACK, WHITE, WHITE},
      {"from white", WHITE, WHITE, PREVIOUS_FRAME, PREVIOUS_FRAME},
      {"from previous frame", PREVIOUS_FRAME, PREVIOUS_FRAME, BLACK, BLACK},
      {"the focus decides, not the choice", BLACK, ZOOM, WHITE, WHITE},
      {"zoom is kept", ZOOM, ZOOM, ZOOM, ZOOM},
      {"to the choice: black", NONE, BLACK, BLACK, BLACK},
      {"to the choice: white", NONE, WHITE, WHITE, WHITE},
      {"to the choice: previous frame", NONE, PREVIOUS_FRAME, PREVIOUS_FRAME, PREVIOUS_FRAME},
      {"to the choice: zoom", NONE, ZOOM, ZOOM, ZOOM},
      {"from zoom to the choice", ZOOM, WHITE, WHITE, WHITE},
      {"no choice", NONE, NONE, PREVIOUS_FRAME, NONE},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    check(FILL, c.checked);
    host.focusedControl =
        c.focused == NONE ? &controls->addJitter : &controls->button(FILL, c.focused);
    EXPECT_EQ(command(STAB_CMD_FOCUS_ON_MISSING_DATA_FILL), CONSUMED);
    EXPECT_EQ(host.focusedControl, &controls->button(FILL, c.newFocus));
    EXPECT_EQ(checkedFills(),
              c.newChecked == NONE ? std::vector<int>{} : std::vector{c.newChecked});
  }
}

TEST_F(Commands, AGroupKeyFocusesItsChoice) {
  const std::pair<int, EButtonGroup> groups[] = {
      {STAB_CMD_FOCUS_ON_MOTION_GROUP, EButtonGroup::motion},
      {STAB_CMD_FOCUS_ON_ANCHOR_GROUP, EButtonGroup::anchor},
      {STAB_CMD_FOCUS_ON_STABILIZE_GROUP, EButtonGroup::stabilize}};
  for (const auto& [number, group] : groups) {
    const int count = static_cast<int>(controls->buttonsOf(group).size());
    for (int i = 0; i < count; ++i) {
      check(group, i);
      EXPECT_EQ(command(number), CONSUMED);
      EXPECT_EQ(host.focusedControl, &controls->button(group, i));
    }
    check(group, count);  // none
    forgetCalls();
    EXPECT_EQ(command(number), CONSUMED);
    EXPECT_EQ(host.calls.count("focusControl"), 0);
  }
}

TEST_F(Commands, ThePickerIsOnWhileCtrlAndShiftAreHeld) {
  for (const char* released : {"Ctrl+Shift KeyUp", "Shift+Ctrl KeyUp"}) {
    EXPECT_EQ(press("Ctrl+Ctrl KeyDown"), NOT_CONSUMED) << "no command of ours";
    EXPECT_FALSE(tool.isColorPickerOn());
    EXPECT_EQ(press("Ctrl+Shift+Shift KeyDown"), CONSUMED);
    EXPECT_TRUE(tool.isColorPickerOn());
    EXPECT_EQ(press("Ctrl+Shift+Shift KeyDown"), CONSUMED);
    EXPECT_TRUE(tool.isColorPickerOn()) << "a held key repeats itself";
    EXPECT_EQ(press(released), CONSUMED);
    EXPECT_FALSE(tool.isColorPickerOn());
  }
  EXPECT_EQ(controls->calls.count("toggleColorPicker"), 4) << "the button follows the keys";
}

TEST_F(Commands, WhatConsumesItsInputEndsThePicker) {
  controls->acceptedCommands = {20006};
  const struct {
    int number;
    bool staysOn;
  } cases[] = {{STAB_CMD_TOGGLE_FIX, false},          {STAB_CMD_TRACK, false},
               {STAB_CMD_TURN_COLOR_PICKER_ON, true}, {STAB_CMD_TURN_COLOR_PICKER_OFF, false},
               {STAB_CMD_SHOW_OR_HIDE_HELP, true},    {STAB_CMD_SHIFT_IS_ON, true},
               {EXEC_BUTTON_RENDER_ALL, false},       {EXEC_BUTTON_RENDER_FRAME, true}};
  for (const auto& c : cases) {
    tool.setColorPickerOn(true);
    command(c.number);
    EXPECT_EQ(tool.isColorPickerOn(), c.staysOn) << c.number;
  }
}

TEST_F(Commands, MarksComeBackFromPointsThatFollowThem) {
  host.onCall = [this](const std::string& call) {
    if (call.starts_with("setMark")) tool.onMarksChange();
  };
  host.setMarkOut(104);
  host.setMarkIn(102);
  ASSERT_TRUE(tool.isTracked());
  EXPECT_EQ(command(STAB_CMD_SET_MARKS_FROM_TRACK_ARRAY), NOT_CONSUMED);
  EXPECT_EQ(host.markIn, IN);
  EXPECT_EQ(host.markOut, OUT);
  EXPECT_EQ(host.displayedFrame, IN);
  EXPECT_TRUE(tool.isTracked());

  placePoints();
  tool.editor().keepFirstFrame();
  forgetCalls();
  command(STAB_CMD_SET_MARKS_FROM_TRACK_ARRAY);
  EXPECT_EQ(effects(), "") << "untracked points know no range";
}

TEST_F(Commands, BehindAHiddenPanelNothingActs) {
  tool.toolHide();
  tool.setTrackingPointsVisible(true);
  tool.showMattingBox(true);
  shot.setRunState(RUN_TRACKING_REQUESTED);
  forgetCalls();
  for (const SKeyRow& row : keyRows) {
    EXPECT_EQ(press(row.keys), NOT_CONSUMED) << row.keys;
    EXPECT_EQ(command(row.number), NOT_CONSUMED) << row.keys;
  }
  CUserInput mouse;
  EXPECT_EQ(tool.onMouseMove(mouse), NOT_CONSUMED);
  EXPECT_EQ(tool.onClipChange(), NOT_CONSUMED);
  EXPECT_EQ(tool.onFramingChange(), NOT_CONSUMED);
  EXPECT_EQ(tool.drawOverlay(), NOT_CONSUMED);
  EXPECT_EQ(tool.onHeartbeat(), NOT_CONSUMED);
  EXPECT_TRUE(host.calls.texts().empty());
  EXPECT_TRUE(controls->calls.texts().empty());
  EXPECT_EQ(effects(), "");
  EXPECT_TRUE(tool.isTracked());
  EXPECT_EQ(tool.runState(), RUN_TRACKING_REQUESTED);
  EXPECT_TRUE(trace.empty());
  EXPECT_FALSE(tool.isColorPickerOn());
}

TEST_F(Commands, WithoutAClipKeysDoNothing) {
  host.clipOpen = false;
  EXPECT_EQ(press(" Shift+A KeyDown"), NOT_CONSUMED);
  EXPECT_TRUE(trace.empty());
}

TEST_F(Commands, AToolWithoutAWindowAnswersEverything) {
  tool.toolDeactivate();
  CStabilizerTool bare("Stabilize", [](CStabilizerTool&) { return nullptr; });
  ASSERT_EQ(bare.toolInitialize(&host), 0);
  bare.toolShow();
  bare.toolActivate();
  CUserInput input;
  for (const SKeyRow& row : keyRows) {
    ASSERT_EQ(input.parse(row.keys), 0);
    EXPECT_EQ(bare.onUserInput(input), NOT_CONSUMED) << row.keys;
    EXPECT_EQ(CToolCommand(&bare, row.number).execute(), NOT_CONSUMED) << row.keys;
  }
  EXPECT_EQ(bare.onMouseMove(input), NOT_CONSUMED);
  EXPECT_EQ(bare.onMarksChange(), NOT_CONSUMED);
  bare.refresh();
  bare.toolDeactivate();
  bare.toolHide();
  bare.toolShutdown();
}

}  // namespace
