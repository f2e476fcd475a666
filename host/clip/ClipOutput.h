#pragma once

#include <string>

#include "SequencePattern.h"
#include "clip/ClipInfo.h"

/// Where output goes that `path` names.
struct SClipOutput {
  enum class EKind { Null, Sequence, Video };
  EKind kind = EKind::Null;
  SSequencePattern pattern;  ///< of a sequence
};

/// Throws CClipError when the path names no output that can be made of this source.
SClipOutput ResolveOutput(const std::string& path, const SClipInfo& source, int first, int end);

/// Canonical form of a path whose last parts need not exist: links resolved, absolute.
std::string CanonicalPath(const std::string& path);
