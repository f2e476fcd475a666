#include "ClipOutput.h"

#include <filesystem>
#include <optional>

#include "MediaModules.h"
#include "NullClip.h"
#include "SequenceWriter.h"
#include "clip/ClipWriter.h"

namespace fs = std::filesystem;

namespace {

bool Exists(const std::string& path) {
  std::error_code ignored;
  return fs::symlink_status(path, ignored).type() != fs::file_type::not_found;
}

bool IsSequenceSource(const SClipInfo& source) {
  return !source.fileExtension.empty();
}

/// A folder as output: the source's own names and type go there.
SSequencePattern PatternInto(const std::string& folder, const SClipInfo& source) {
  if (!IsSequenceSource(source))
    throw CClipError(folder + ": a folder takes a sequence; name the frames, as in " + folder +
                     (folder.back() == '/' ? "" : "/") + "name.%04d.dpx");
  SSequencePattern pattern = FindSequence(source.path).pattern;
  pattern.folder = folder.back() == '/' ? folder : folder + "/";
  return pattern;
}

void RequireVideoExtension(const std::string& path) {
  const std::string extension = ExtensionOf(path);
  for (const char* known : {"mov", "mkv", "mp4"})
    if (extension == known) return;
  throw CClipError(path +
                   ": unknown type of output; known are .dpx, .tif, .png and .exr for sequences, "
                   ".mov, .mkv and .mp4 for video, and null:");
}

bool IsFolder(const std::string& path) {
  std::error_code ignored;
  return path.back() == '/' || fs::is_directory(path, ignored);
}

/// The parent of the output must be there; the folder of a sequence may be the one that is missing.
void RefuseMissingParent(const std::string& path, bool isSequence) {
  fs::path folder = fs::path(path).parent_path();
  std::error_code ignored;
  if (folder.empty() || fs::is_directory(folder, ignored)) return;
  if (Exists(folder.string())) throw CClipError(folder.string() + ": is not a folder");
  const fs::path above = folder.parent_path();
  if (!isSequence || !(above.empty() || fs::is_directory(above, ignored)))
    throw CClipError((isSequence ? above : folder).string() + ": no such folder");
}

bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code ignored;
  return fs::equivalent(a, b, ignored);
}

void RefuseSequenceOutput(const SSequencePattern& output, const SClipInfo& source, int first,
                          int end, bool overwrite) {
  std::optional<SSequencePattern> from;
  if (IsSequenceSource(source)) {
    from = FindSequence(source.path).pattern;
    from->folder = CanonicalPath(from->folder.empty() ? "." : from->folder) + "/";
    SSequencePattern to = output;
    to.folder = CanonicalPath(to.folder.empty() ? "." : to.folder) + "/";
    if (*from == to) throw CClipError(output.text() + ": the output is the input");
  }
  for (int frame = first; frame < end; ++frame) {
    const std::string file = output.filePath(frame);
    if (!Exists(file)) continue;
    // A link in the output folder may lead back to the source.
    if (IsSameFile(file, from ? from->filePath(frame) : source.path))
      throw CClipError(file + ": the output is the input");
    std::error_code ignored;
    if (fs::is_directory(file, ignored)) throw CClipError(file + ": is a folder");
    if (!overwrite) throw CClipExists(file + ": exists already");
  }
}

void RefuseVideoOutput(const std::string& path, const SClipInfo& source, bool overwrite) {
  if (!Exists(path)) return;
  if (IsSameFile(path, source.path) || CanonicalPath(path) == CanonicalPath(source.path))
    throw CClipError(path + ": the output is the input");
  if (!overwrite) throw CClipExists(path + ": exists already");
}

}  // namespace

std::string CanonicalPath(const std::string& path) {
  std::error_code error;
  const fs::path canonical = fs::weakly_canonical(fs::absolute(path), error);
  std::string text = (error ? fs::absolute(path) : canonical).string();
  if (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

SClipOutput ResolveOutput(const std::string& path, const SClipInfo& source, int first, int end) {
  if (path.empty()) throw CClipError("no output named");
  if (path == "null:") return {};
  SClipOutput output;
  output.kind = SClipOutput::EKind::Sequence;
  if (IsFolder(path)) {
    output.pattern = PatternInto(path, source);
    return output;
  }
  if (!IsImageExtension(ExtensionOf(path))) {
    RequireVideoExtension(path);
    output.kind = SClipOutput::EKind::Video;
    return output;
  }
  output.pattern = ParseSequencePattern(path);
  if (output.pattern.isSingleFile() && end - first > 1)
    throw CClipError(path + ": one file for " + std::to_string(end - first) +
                     " frames; put a frame number into the name, as in name.%04d." +
                     ExtensionOf(path));
  return output;
}

void CheckOutput(const std::string& path, const SClipInfo& source, int first, int end,
                 bool overwrite) {
  const SClipOutput output = ResolveOutput(path, source, first, end);
  if (output.kind == SClipOutput::EKind::Null) return;
  const bool isSequence = output.kind == SClipOutput::EKind::Sequence;
  RefuseMissingParent(isSequence ? output.pattern.filePath(first) : path, isSequence);
  if (isSequence)
    RefuseSequenceOutput(output.pattern, source, first, end, overwrite);
  else
    RefuseVideoOutput(path, source, overwrite);
}

std::unique_ptr<IClipWriter> CreateClip(const std::string& path, IClipReader& source, int first,
                                        int end, const SWriteOptions& options) {
  CheckOutput(path, source.info(), first, end, options.overwrite);
  switch (ResolveOutput(path, source.info(), first, end).kind) {
    case SClipOutput::EKind::Null: return MakeNullWriter();
    case SClipOutput::EKind::Video:
      return VideoLibrary().createVideo(path, source, first, end, options);
    case SClipOutput::EKind::Sequence: break;
  }
  return CreateSequence(path, source, first, end, options);
}
