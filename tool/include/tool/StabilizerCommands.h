#pragma once

#include "ToolObj/UserInput.h"

/// Numbers of everything the operator can ask the stabiliser for: by key, by button, or from the
/// host. Hosts and stored key maps hold these numbers; do not change. Numbers 1 to 4, 8 to 10, 15,
/// 26 and 27 belong to no command.
enum EStabilizerCommand {
  STAB_CMD_TOGGLE_FIX = 5,
  STAB_CMD_TOGGLE_TRACK_POINT_VISIBILITY = 6,
  STAB_CMD_TOGGLE_PROC_REGION_VISIBILITY = 7,
  STAB_CMD_SAVE_TRACKPOINTS = 11,
  STAB_CMD_LOAD_TRACKPOINTS = 12,
  STAB_CMD_LOAD_TRACKPOINTS_NOT_MARKS = 13,
  STAB_CMD_CLEAR_TRACKPOINTS = 14,
  STAB_CMD_TRACK = 16,
  STAB_CMD_SHOW_OR_HIDE_HELP = 17,
  STAB_CMD_FOCUS_ON_TRACK_BOX_SIZE = 18,
  STAB_CMD_FOCUS_ON_MOTION_SEARCH_AREA = 19,
  STAB_CMD_FOCUS_ON_SMOOTHING = 20,
  STAB_CMD_FOCUS_ON_MISSING_DATA_FILL = 21,
  STAB_CMD_FOCUS_ON_ADD_JITTER = 22,
  STAB_CMD_FOCUS_ON_STABILIZE_GROUP = 23,
  STAB_CMD_FOCUS_ON_MOTION_GROUP = 24,
  STAB_CMD_FOCUS_ON_ANCHOR_GROUP = 25,
  STAB_CMD_TURN_COLOR_PICKER_ON = 28,
  STAB_CMD_TURN_COLOR_PICKER_OFF = 29,
  STAB_CMD_SET_MARKS_FROM_TRACK_ARRAY = 30,
  STAB_CMD_SHIFT_IS_ON = 31,
  STAB_CMD_SHIFT_IS_OFF = 32,
};

/// Commands that the execution buttons share with the keys. 20000 means no command.
enum EExecutionCommand {
  EXEC_BUTTON_NONE = 20000,
  EXEC_BUTTON_PREVIEW_FRAME = 20001,
  EXEC_BUTTON_PREVIEW_NEXT_FRAME = 20002,
  EXEC_BUTTON_PREVIEW_ALL = 20003,
  EXEC_BUTTON_RENDER_FRAME = 20004,
  EXEC_BUTTON_RENDER_NEXT_FRAME = 20005,
  EXEC_BUTTON_RENDER_ALL = 20006,
  EXEC_BUTTON_PAUSE = 20007,
  EXEC_BUTTON_RESUME = 20008,
  EXEC_BUTTON_PAUSE_OR_RESUME = 20009,
  EXEC_BUTTON_STOP = 20010,
  EXEC_BUTTON_CAPTURE_PDL = 20011,
  EXEC_BUTTON_CAPTURE_PDL_ALL_EVENTS = 20012,
  EXEC_BUTTON_GO_TO_RESUME_TC = 20013,
  EXEC_BUTTON_SET_RESUME_TC = 20014
};

/// Every command that keys produce, with its symbolic name. Lives as long as the library.
const CToolCommandTable& StabilizerCommandTable();
/// The default keys. Lives as long as the library.
const CUserInputConfiguration& StabilizerKeyBindings();
