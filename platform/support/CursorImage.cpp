#include "support/CursorImage.h"

#include <iterator>
#include <string_view>

namespace {

// An eyedropper whose tip is the pointing pixel: '#' outline, 'o' body, '.' glass, blank clear.
constexpr std::string_view kColorPicker[] = {
    "            ###  ",  //
    "           #ooo# ",  //
    "          #ooooo#",  //
    "      ## #oooooo#",  //
    "     #oo#oooooo# ",  //
    "      #ooooooo#  ",  //
    "       #ooooo#   ",  //
    "      #.#ooooo#  ",  //
    "     #...#oo#o#  ",  //
    "    #...# ## #   ",  //
    "   #...#         ",  //
    "  #...#          ",  //
    " #...#           ",  //
    " #..#            ",  //
    "#.##             ",  //
    "##               ",  //
};

std::uint32_t colorOf(char mark) {
  switch (mark) {
    case '#': return 0xFF000000;
    case 'o': return 0xFF404040;
    case '.': return 0xFFFFFFFF;
    default: return 0;
  }
}

SCursorImage drawn() {
  SCursorImage image;
  image.width = static_cast<int>(kColorPicker[0].size());
  image.height = static_cast<int>(std::size(kColorPicker));
  image.hotX = 0;
  image.hotY = image.height - 1;
  for (const std::string_view row : kColorPicker) {
    for (const char mark : row) image.pixels.push_back(colorOf(mark));
  }
  return image;
}

}  // namespace

const SCursorImage* LoadCursorImage(const std::string& name) {
  static const SCursorImage colorPicker = drawn();
  return name == "ColorPicker" ? &colorPicker : nullptr;
}
