#pragma once

#include <memory>

#include "clip/ClipWriter.h"

/// A writer to nowhere: to rehearse a render, and to time everything but the writing.
std::unique_ptr<IClipWriter> MakeNullWriter();
