#pragma once

#include <CLI/CLI.hpp>

#include "session/StabilizeOptions.h"

/// Options that several commands share; each sets a part of `options`, which outlives the parser.

/// The clip itself, as first argument.
CLI::Option* AddInput(CLI::App& command, std::string& input);
CLI::Option* AddOutput(CLI::App& command, SStabilizeOptions& options);
/// Marks, points, and how they are tracked.
void AddPointOptions(CLI::App& command, SStabilizeOptions& options);
/// What is stabilised, and how.
void AddMotionOptions(CLI::App& command, SStabilizeOptions& options);
/// The region inside a matted border.
void AddMattingOption(CLI::App& command, SStabilizeOptions& options);
/// What is written beside the shot, and checked of it.
void AddResultOptions(CLI::App& command, SStabilizeOptions& options);
void AddThreadsOption(CLI::App& command, int& threads);
/// Memory for frames between tracking and rendering.
void AddCacheOption(CLI::App& command, std::optional<std::size_t>& bytes);
