#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "clip/ClipReader.h"

/// Video files made and looked at through the library alone, past the writer under test.

struct SVideoMaking {
  int keyInterval = 12;
  int betweenFrames = 0;
  std::vector<int> times;  ///< of the frames, milliseconds; empty: 24 a second
  bool hasSound = false;   ///< a second of rising numbers at 48 kHz, one channel, 16 bits
};

/// H.264 of every frame of the clip.
void MakeVideo(const std::string& path, IClipReader& clip, const SVideoMaking& making);
/// Times of the pictures' packets in rising order, milliseconds.
std::vector<int> TimesOf(const std::string& path);
/// All samples of the sound, which is 16-bit linear.
std::vector<std::int16_t> SoundOf(const std::string& path);
