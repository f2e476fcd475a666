#include "ToolObj/ColorPickTool.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "ToolObj/ToolObject.h"
#include "doubles/RecordingHost.h"

namespace {

using Color = std::array<int, 3>;

// A host whose picture is 640 x 480 pixels and where a test sets the pixel below the pointer.
class CPixelHost : public CRecordingHost {
 public:
  bool readDisplayedPixel(int x, int y, int& maximum, float (&components)[3]) override {
    const bool inside = x >= 0 && y >= 0 && x < 640 && y < 480;
    return CRecordingHost::readDisplayedPixel(x, y, maximum, components) && inside;
  }
  void setPixel(float first, float second, float third) {
    pixel[0] = first;
    pixel[1] = second;
    pixel[2] = third;
  }
};

class ColorPickTool : public testing::Test {
 protected:
  ColorPickTool() {
    picker.setSystemAPI(&host);
    picker.colorChangedHook.subscribe(this, 0, [this] { ++changes; });
    picker.pickedHook.subscribe(this, 1, [this] { ++picks; });
  }
  Color color() const {
    Color c{-1, -1, -1};
    picker.getColor(c[0], c[1], c[2]);
    return c;
  }
  std::array<int, 2> position() const {
    std::array<int, 2> p{-1, -1};
    picker.getPosition(p[0], p[1]);
    return p;
  }
  static CUserInput at(int x, int y) {
    CUserInput input;
    input.x = 7777;  // on the screen; nobody's business here
    input.y = 8888;
    input.imageX = x;
    input.imageY = y;
    return input;
  }

  CPixelHost host;
  CColorPickTool picker;
  int changes = 0;
  int picks = 0;
};

TEST_F(ColorPickTool, ReadsTheMouseOnlyWhileItIsOn) {
  host.setPixel(1.0F, 1.0F, 1.0F);
  EXPECT_EQ(picker.buttonDown(at(3, 4)), CToolObject::NOT_HANDLED);
  EXPECT_EQ(picker.sample(at(3, 4)), CToolObject::NOT_HANDLED);
  EXPECT_EQ(picker.buttonUp(at(3, 4)), CToolObject::NOT_HANDLED);
  EXPECT_EQ(color(), (Color{0, 0, 0}));
  EXPECT_EQ(changes + picks, 0);
  EXPECT_TRUE(host.calls.texts().empty());

  picker.setMode(true);
  host.calls.clear();
  EXPECT_EQ(picker.sample(at(3, 4)), CToolObject::NOT_HANDLED) << "others see the movement too";
  EXPECT_EQ(host.calls.take(),
            (std::vector<std::string>{"prepareDisplayedPixels 1", "readDisplayedPixel 3 4"}));
  EXPECT_EQ(picker.buttonDown(at(5, 6)), CToolObject::CONSUMED);
  EXPECT_TRUE(host.calls.contains("readDisplayedPixel 5 6"));
  EXPECT_EQ(picks, 0) << "the release picks";
  EXPECT_EQ(picker.buttonUp(at(9, 9)), CToolObject::CONSUMED);
  EXPECT_EQ(picks, 1);
  EXPECT_EQ(position(), (std::array<int, 2>{5, 6})) << "a release reads nothing";
}

TEST_F(ColorPickTool, ThePointerShowsTheMode) {
  picker.setMode(true);
  EXPECT_TRUE(picker.isOn());
  EXPECT_EQ(host.cursor, LoadCursorImage("ColorPicker"));
  ASSERT_NE(host.cursor, nullptr);
  picker.setMode(false);
  EXPECT_FALSE(picker.isOn());
  EXPECT_EQ(host.cursor, nullptr);
  EXPECT_EQ(host.calls.texts(), (std::vector<std::string>{"showCursor 1", "showCursor 0"}));
}

TEST_F(ColorPickTool, StaysOffWithoutAHost) {
  CColorPickTool alone;
  alone.setMode(true);
  EXPECT_FALSE(alone.isOn());
  EXPECT_EQ(alone.buttonDown(at(1, 1)), CToolObject::NOT_HANDLED);
}

TEST_F(ColorPickTool, FractionsBecomeCodeValues) {
  constexpr float INF = std::numeric_limits<float>::infinity();
  struct {
    float fraction;
    int maximum, code;
  } const cases[] = {
      {0.5F, 1023, 512},
      {1.2F, 1023, 1023},
      {-0.3F, 1023, 0},
      {0.0F, 1023, 0},
      {1.0F, 255, 255},
      {25.0F / 255.0F, 255, 25},
      {6425.0F / 65535.0F, 65535, 6425},
      {65534.0F / 65535.0F, 65535, 65534},
      {INF, 1023, 1023},
      {-INF, 1023, 0},
      {INF, 0, 0},
      {NAN, 1023, 0},
      {3.0e38F, std::numeric_limits<int>::max(), std::numeric_limits<int>::max()},
      {0.5F, -7, 0},
  };
  picker.setMode(true);
  for (const auto& c : cases) {
    host.pixelMaximum = c.maximum;
    host.setPixel(c.fraction, c.fraction, c.fraction);
    picker.sample(at(1, 1));
    EXPECT_EQ(color(), (Color{c.code, c.code, c.code})) << c.fraction << " of " << c.maximum;
  }
}

TEST_F(ColorPickTool, ReadsEvery16BitCodeValueBack) {
  picker.setMode(true);
  host.pixelMaximum = 65535;
  for (int code = 0; code <= 65535; ++code) {
    host.setPixel(static_cast<float>(code) / 65535.0F, 0.0F, 0.0F);
    picker.sample(at(1, 1));
    ASSERT_EQ(color()[0], code);
  }
}

TEST_F(ColorPickTool, OneColourIsAnnouncedOnce) {
  picker.setMode(true);
  host.setPixel(0.25F, 0.5F, 0.75F);
  picker.sample(at(1, 1));
  picker.sample(at(2, 1));
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(position(), (std::array<int, 2>{2, 1}));
  host.setPixel(0.25F, 0.5F, 0.76F);
  picker.sample(at(2, 1));
  EXPECT_EQ(changes, 2) << "one component is another";
  EXPECT_EQ(color(), (Color{256, 512, 777}));
  EXPECT_EQ(picker.getMaximum(), 1023);
}

TEST_F(ColorPickTool, BesideThePictureTheColourStays) {
  picker.setMode(true);
  host.setPixel(1.0F, 1.0F, 1.0F);
  picker.sample(at(1, 1));
  host.setPixel(0.0F, 0.0F, 0.0F);
  picker.sample(at(-1, 500));
  EXPECT_EQ(color(), (Color{1023, 1023, 1023}));
  EXPECT_EQ(position(), (std::array<int, 2>{-1, 500}));
  EXPECT_EQ(changes, 1);
}

}  // namespace
