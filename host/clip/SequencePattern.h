#pragma once

#include <string>
#include <vector>

/// Where the files of an image sequence lie and how their names are made:
/// folder + prefix + number, padded with zeros to `digits` + suffix. A plain value.
/// A sequence without a number (`digits` 0) is a single file; its frame has the number 0.
struct SSequencePattern {
  std::string folder;  ///< with its trailing separator; empty: the current folder
  std::string prefix;
  std::string suffix;  ///< with the dot of the extension
  int digits = 0;      ///< at least so many; a longer number has no leading zero

  bool isSingleFile() const { return digits == 0; }
  std::string fileName(int frame) const;  ///< without folder
  std::string filePath(int frame) const { return folder + fileName(frame); }
  std::string extension() const;  ///< lower case, no dot
  /// "name.%04d.dpx", with the folder; a percent sign of the name itself is doubled.
  std::string text() const;
  /// The number in a file's name (no folder), or -1 when the name is not of this sequence.
  int frameOf(const std::string& name) const;

  friend bool operator==(const SSequencePattern&, const SSequencePattern&) = default;
};

/// The files of a sequence that exist, in rising order.
struct SSequence {
  SSequencePattern pattern;
  std::vector<int> frames;
};

/// True for "dpx", "tif", "tiff", "png", "exr".
bool IsImageExtension(const std::string& extension);
/// Lower case, no dot; empty when the name has none.
std::string ExtensionOf(const std::string& path);

/// Reads "name.%04d.dpx", "name.####.dpx", "name.@@@@.dpx", "name.0017.dpx" or "name.dpx" without
/// looking at the disk. The number of a plain name is the run of digits that ends its stem: none in
/// "scan2k_v1a.dpx", 17 in "shot2.0017.dpx". Throws CClipError when there are two numbers to fill
/// in.
SSequencePattern ParseSequencePattern(const std::string& path);
/// True when the text has a number to fill in ("%04d", "####", "@@@@").
bool HasFramePlaceholder(const std::string& path);

/// Finds the sequence that `path` means, as OpenClip takes it. A name that exists literally is that
/// file, whatever signs it holds; one file stands for its whole sequence. Throws CClipError:
/// nothing there, an empty folder, several sequences in a folder (lists them), holes (lists them as
/// ranges).
SSequence FindSequence(const std::string& path);

/// "1003, 1007-1012" of rising numbers.
std::string RangesAsText(const std::vector<int>& numbers);
