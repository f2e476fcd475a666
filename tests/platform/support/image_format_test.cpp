#include <gtest/gtest.h>

#include "support/ImageFormat.h"

namespace {

TEST(ImageFormat, WholeFrameIsActiveFullRange) {
  const CImageFormat format(2048, 1556);
  EXPECT_EQ(format.getActivePictureRect(), (SRect{0, 0, 2047, 1555}));
  EXPECT_EQ(format.getBytesPerField(), 2048U * 1556U * 6U);
  std::uint16_t black[3] = {1, 1, 1};
  std::uint16_t white[3] = {1, 1, 1};
  format.getComponentValueBlack(black);
  format.getComponentValueWhite(white);
  for (int c = 0; c < 3; ++c) {
    EXPECT_EQ(black[c], 0);
    EXPECT_EQ(white[c], 65535);
  }
}

TEST(ImageFormat, BytesOfALargeScanDoNotOverflow) {
  EXPECT_EQ(CImageFormat(32768, 32768).getBytesPerField(), 6442450944U);
}

TEST(ImageFormat, CodeValuesArePerComponentAndPartOfEquality) {
  CImageFormat format(4, 4);
  format.setBlackWhite({4096, 32768, 32769}, {60160, 61440, 61441});
  std::uint16_t black[3];
  std::uint16_t white[3];
  format.getComponentValueBlack(black);
  format.getComponentValueWhite(white);
  EXPECT_EQ(black[2], 32769);
  EXPECT_EQ(white[1], 61440);
  EXPECT_NE(format, CImageFormat(4, 4));
}

}  // namespace
