#include "tool/StabilizerCommands.h"

#include <iterator>

namespace {

// clang-format off
#define COMMAND(name) {name, #name}
constexpr SToolCommandTableEntry commandRows[] = {
    COMMAND(EXEC_BUTTON_PREVIEW_FRAME),
    COMMAND(EXEC_BUTTON_PREVIEW_NEXT_FRAME),
    COMMAND(EXEC_BUTTON_PREVIEW_ALL),
    COMMAND(EXEC_BUTTON_RENDER_FRAME),
    COMMAND(EXEC_BUTTON_RENDER_NEXT_FRAME),
    COMMAND(EXEC_BUTTON_RENDER_ALL),
    COMMAND(EXEC_BUTTON_STOP),
    COMMAND(EXEC_BUTTON_PAUSE_OR_RESUME),
    COMMAND(EXEC_BUTTON_SET_RESUME_TC),
    COMMAND(EXEC_BUTTON_CAPTURE_PDL),
    COMMAND(EXEC_BUTTON_CAPTURE_PDL_ALL_EVENTS),
    COMMAND(STAB_CMD_TOGGLE_FIX),
    COMMAND(STAB_CMD_TOGGLE_TRACK_POINT_VISIBILITY),
    COMMAND(STAB_CMD_TOGGLE_PROC_REGION_VISIBILITY),
    COMMAND(STAB_CMD_SHOW_OR_HIDE_HELP),
    COMMAND(STAB_CMD_FOCUS_ON_TRACK_BOX_SIZE),
    COMMAND(STAB_CMD_FOCUS_ON_MOTION_SEARCH_AREA),
    COMMAND(STAB_CMD_FOCUS_ON_SMOOTHING),
    COMMAND(STAB_CMD_FOCUS_ON_MISSING_DATA_FILL),
    COMMAND(STAB_CMD_FOCUS_ON_ADD_JITTER),
    COMMAND(STAB_CMD_FOCUS_ON_MOTION_GROUP),
    COMMAND(STAB_CMD_FOCUS_ON_ANCHOR_GROUP),
    COMMAND(STAB_CMD_FOCUS_ON_STABILIZE_GROUP),
    COMMAND(STAB_CMD_TURN_COLOR_PICKER_ON),
    COMMAND(STAB_CMD_TURN_COLOR_PICKER_ON),
    COMMAND(STAB_CMD_TURN_COLOR_PICKER_OFF),
    COMMAND(STAB_CMD_TURN_COLOR_PICKER_OFF),
    COMMAND(STAB_CMD_LOAD_TRACKPOINTS),
    COMMAND(STAB_CMD_LOAD_TRACKPOINTS_NOT_MARKS),
    COMMAND(STAB_CMD_SAVE_TRACKPOINTS),
    COMMAND(STAB_CMD_CLEAR_TRACKPOINTS),
    COMMAND(STAB_CMD_SET_MARKS_FROM_TRACK_ARRAY),
    COMMAND(STAB_CMD_SHIFT_IS_ON),
    COMMAND(STAB_CMD_SHIFT_IS_OFF),
};
#undef COMMAND

// The event words are aligned for the eye; the parser skips blanks.
constexpr SUserInputConfigEntry bindingRows[] = {
    {EXEC_BUTTON_PREVIEW_FRAME, " D                KeyDown"},
    {EXEC_BUTTON_PREVIEW_NEXT_FRAME, " Ctrl+D           KeyDown"},
    {EXEC_BUTTON_PREVIEW_ALL, " Shift+D          KeyDown"},
    {EXEC_BUTTON_RENDER_FRAME, " G                KeyDown"},
    {EXEC_BUTTON_RENDER_NEXT_FRAME, " Ctrl+G           KeyDown"},
    {EXEC_BUTTON_RENDER_ALL, " Shift+G          KeyDown"},
    {EXEC_BUTTON_STOP, " Ctrl+Space       KeyDown"},
    {EXEC_BUTTON_PAUSE_OR_RESUME, " Space            KeyDown"},
    {EXEC_BUTTON_SET_RESUME_TC, " Return           KeyDown"},
    {EXEC_BUTTON_CAPTURE_PDL, " ,                KeyDown"},
    {EXEC_BUTTON_CAPTURE_PDL_ALL_EVENTS, " Shift+,          KeyDown"},
    {STAB_CMD_TOGGLE_FIX, " T                KeyDown"},
    {STAB_CMD_TOGGLE_TRACK_POINT_VISIBILITY, " Shift+T          KeyDown"},
    {STAB_CMD_TOGGLE_PROC_REGION_VISIBILITY, " Ctrl+T           KeyDown"},
    {STAB_CMD_SHOW_OR_HIDE_HELP, " F1               KeyDown"},
    {STAB_CMD_FOCUS_ON_TRACK_BOX_SIZE, " 2                KeyDown"},
    {STAB_CMD_FOCUS_ON_MOTION_SEARCH_AREA, " 3                KeyDown"},
    {STAB_CMD_FOCUS_ON_SMOOTHING, " 4                KeyDown"},
    {STAB_CMD_FOCUS_ON_MISSING_DATA_FILL, " 5                KeyDown"},
    {STAB_CMD_FOCUS_ON_ADD_JITTER, " 6                KeyDown"},
    {STAB_CMD_FOCUS_ON_MOTION_GROUP, " 7                KeyDown"},
    {STAB_CMD_FOCUS_ON_ANCHOR_GROUP, " 8                KeyDown"},
    {STAB_CMD_FOCUS_ON_STABILIZE_GROUP, " 9                KeyDown"},
    {STAB_CMD_TURN_COLOR_PICKER_ON, " Ctrl+Shift+Shift KeyDown"},
    {STAB_CMD_TURN_COLOR_PICKER_ON, " Ctrl+Shift+Ctrl  KeyDown"},
    {STAB_CMD_TURN_COLOR_PICKER_OFF, " Ctrl+Shift       KeyUp"},
    {STAB_CMD_TURN_COLOR_PICKER_OFF, " Shift+Ctrl       KeyUp"},
    {STAB_CMD_LOAD_TRACKPOINTS, " Ctrl+L           KeyDown"},
    {STAB_CMD_LOAD_TRACKPOINTS_NOT_MARKS, " Shift+L          KeyDown"},
    {STAB_CMD_SAVE_TRACKPOINTS, " Ctrl+S           KeyDown"},
    {STAB_CMD_CLEAR_TRACKPOINTS, " Shift+A          KeyDown"},
    {STAB_CMD_SHIFT_IS_ON, " Shift+Shift      KeyDown"},
    {STAB_CMD_SHIFT_IS_OFF, " Shift            KeyUp"},
    {STAB_CMD_SET_MARKS_FROM_TRACK_ARRAY, " Ctrl+Shift+E     KeyDown"},
    {STAB_CMD_SET_MARKS_FROM_TRACK_ARRAY, " Ctrl+Shift+R     KeyDown"},
};
// clang-format on

const CToolCommandTable commandTable(static_cast<int>(std::size(commandRows)), commandRows);
const CUserInputConfiguration keyBindings(static_cast<int>(std::size(bindingRows)), bindingRows);

}  // namespace

const CToolCommandTable& StabilizerCommandTable() {
  return commandTable;
}
const CUserInputConfiguration& StabilizerKeyBindings() {
  return keyBindings;
}
