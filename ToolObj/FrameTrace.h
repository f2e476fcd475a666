#pragma once

/// How frame buffers and the frame cache appear in the trace.
constexpr int FRAME_TRACE_LEVEL = 3;
constexpr const char* FRAME_TRACE_FILE = "..\\ToolObj\\ToolFrameBuffer";
