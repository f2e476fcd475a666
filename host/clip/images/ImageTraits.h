#pragma once

#include <OpenImageIO/imageio.h>

#include <map>
#include <memory>
#include <string>

#include "ImageFile.h"

/// Opens a file so that its samples come as stored: no colour conversion, alpha not multiplied in.
/// Throws CClipError.
std::unique_ptr<OIIO::ImageInput> OpenImage(const std::string& path);
/// What the open file is; throws CClipError when the system cannot give it back as it is.
SImageTraits TraitsOf(OIIO::ImageInput& input, const std::string& path);
/// What else it says of its picture.
std::map<std::string, std::string> MetadataOf(OIIO::ImageInput& input, const std::string& path);
/// Description of the file to write.
OIIO::ImageSpec TargetSpec(const SImageTarget& target);
/// "<path>: <what the library says, or `fallback`>", on one line.
std::string ImageErrorText(const std::string& path, std::string cause, const char* fallback);
