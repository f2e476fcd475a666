#pragma once

#include <cstdint>
#include <string>

#include "ImageFile.h"

/// Image files by way of the image library; see IImageLibrary for the contracts.
void ReadStoredImage(const std::string& path, const SImageTraits& expected, int threads,
                     std::uint16_t* stored);
void WriteStoredImage(const std::string& path, const std::string& temporary,
                      const SImageTarget& target, int threads, const std::uint16_t* stored);
