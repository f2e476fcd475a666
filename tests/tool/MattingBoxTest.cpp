#include "ToolFixture.h"
#include "support/BinManager.h"

namespace {

class MattingBox : public ToolTest {
 protected:
  void store(int left, int top, int right, int bottom) {
    CBinManager bin;
    CIniFile* desktop = bin.openDesktop(host.clip.clipPath);
    ASSERT_NE(desktop, nullptr);
    desktop->WriteInteger("BlueBoundingBox", "Left", left);
    desktop->WriteInteger("BlueBoundingBox", "Top", top);
    desktop->WriteInteger("BlueBoundingBox", "Right", right);
    desktop->WriteInteger("BlueBoundingBox", "Bottom", bottom);
    ASSERT_TRUE(bin.closeDesktop(desktop, true));
  }

  /// A matted frame whose border has an 8-bit code value.
  void paintBorder(int code) {
    const int width = host.imageFormat.getPixelsPerLine();
    const int height = host.imageFormat.getLinesPerFrame();
    host.displayedSamples.assign(static_cast<std::size_t>(width) * height * 3,
                                 static_cast<std::uint16_t>(code * 257));
    for (int y = 6; y < 42; ++y) {
      for (int i = 8 * 3; i < 56 * 3; ++i) host.displayedSamples[y * width * 3 + i] = 50000;
    }
  }

  void click(int x, int y) {
    CUserInput input;
    input.key = 1;
    input.imageX = x;
    input.imageY = y;
    input.action = CUserInput::ACTION_BUTTON_DOWN;
    EXPECT_EQ(tool.onUserInput(input), CToolObject::CONSUMED);
    input.action = CUserInput::ACTION_BUTTON_UP;
    EXPECT_EQ(tool.onUserInput(input), CToolObject::CONSUMED);
  }

  void reactivate() {
    tool.toolDeactivate();
    tool.toolActivate();
  }
};

TEST_F(MattingBox, IsKeptPerClip) {
  const std::string shot = host.clip.clipPath;
  tool.setMattingBox({4, 5, 60, 40});
  tool.onClipChange();
  host.clip.clipPath = folder + "other.mov";
  tool.onNewClip();
  EXPECT_FALSE(tool.isMattingBoxValid());
  tool.onClipChange();
  host.clip.clipPath = shot;
  tool.onNewClip();
  EXPECT_TRUE(tool.isMattingBoxValid());
  EXPECT_EQ(tool.getMattingBox(), (SRect{4, 5, 60, 40}));
  EXPECT_EQ(tool.livePoints().MattingBox(), (SRect{4, 5, 60, 40}));
}

TEST_F(MattingBox, StoredBoxesMustHoldAPicture) {
  struct {
    SRect box;
    bool valid;
  } const cases[] = {
      {{1, 2, 30, 20}, true},   {{0, 0, 1, 1}, true},     {{10, 2, 10, 20}, false},
      {{1, 20, 30, 20}, false}, {{-1, 2, 30, 20}, false}, {{1, -1, 30, 20}, false},
  };
  for (const auto& c : cases) {
    tool.toolDeactivate();
    store(c.box.left, c.box.top, c.box.right, c.box.bottom);
    tool.toolActivate();
    EXPECT_EQ(tool.isMattingBoxValid(), c.valid) << c.box.left << ' ' << c.box.top;
  }
  reactivate();
  CBinManager bin;
  CIniFile* desktop = bin.openDesktop(host.clip.clipPath);
  EXPECT_EQ(desktop->ReadInteger("BlueBoundingBox", "Right", -7), -7)
      << "an invalid box is not kept";
  bin.closeDesktop(desktop, false);
}

TEST_F(MattingBox, SettingsThatCannotTakeItAreReportedAndLeftAlone) {
  const std::string desktop = CBinManager().desktopFileName(host.clip.clipPath);
  std::filesystem::create_directories(desktop);  // something that is no settings file
  tool.setMattingBox({4, 5, 60, 40});
  forgetCalls();
  EXPECT_EQ(tool.toolDeactivate(), 0);
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0].rfind("CStabilizerTool::saveMattingBox ", 0), 0u) << errors[0];
  EXPECT_NE(errors[0].find(desktop), std::string::npos) << errors[0];
  EXPECT_TRUE(std::filesystem::is_directory(desktop));
}

TEST_F(MattingBox, WithoutAClipIsInvalid) {
  tool.setMattingBox({4, 5, 60, 40});
  host.clipOpen = false;
  tool.onNewClip();
  EXPECT_FALSE(tool.isMattingBoxValid());
}

TEST_F(MattingBox, ShowingRepairsIt) {
  struct {
    const char* name;
    bool set;
    SRect box, expected;
  } const cases[] = {
      {"none", false, {}, {0, 0, 63, 47}},
      {"empty", true, {9, 9, 9, 20}, {0, 0, 63, 47}},
      {"upside down", true, {9, 20, 19, 9}, {0, 0, 63, 47}},
      {"beyond the frame", true, {-3, -1, 80, 90}, {0, 0, 63, 47}},
      {"inside", true, {3, 4, 50, 40}, {3, 4, 50, 40}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    tool.showMattingBox(false);
    if (c.set) tool.setMattingBox(c.box);
    tool.showMattingBox(true);
    EXPECT_EQ(tool.getMattingBox(), c.expected);
    EXPECT_TRUE(tool.isMattingBoxValid());
  }
}

TEST_F(MattingBox, IsDrawnWhileShownAndValid) {
  EXPECT_EQ(tool.drawOverlay(), CToolObject::CONSUMED);
  EXPECT_EQ(host.calls.count("drawRectangle"), 0);
  tool.setMattingBox({4, 5, 60, 40});
  EXPECT_EQ(tool.drawOverlay(), CToolObject::CONSUMED);
  EXPECT_TRUE(host.calls.contains("drawRectangle 4 4 5 60 40"));
  tool.showMattingBox(false);
  forgetCalls();
  EXPECT_EQ(tool.drawOverlay(), CToolObject::CONSUMED);
  EXPECT_EQ(host.calls.count("drawRectangle"), 0);
}

TEST_F(MattingBox, OfANewClipIsFoundOnItsFrame) {
  paintBorder(25);
  tool.onNewClip();
  EXPECT_TRUE(tool.isMattingBoxValid());
  EXPECT_EQ(tool.getMattingBox(), (SRect{8, 6, 55, 41}));
}

// The picker counts in the host's code values, borders are told in 8-bit ones. At 0, 0 and outside
// the frame the box hangs on the colour alone, elsewhere the border is measured at the click.
TEST_F(MattingBox, APickedBorderIsFoundAtEveryDepth) {
  const SRect whole{0, 0, 63, 47};
  const struct {
    const char* name;
    int border, picked, maximum, x, y;
    bool found;
  } cases[] = {
      {"16 bits, colour alone", 25, 25, 65535, 0, 0, true},
      {"16 bits, beside the frame", 25, 25, 65535, 70, -4, true},
      {"16 bits, measured", 25, 25, 65535, 3, 30, true},
      {"10 bits, colour alone", 25, 25, 1023, 0, 0, true},
      {"8 bits, colour alone", 25, 25, 255, 0, 0, true},
      {"a light border", 180, 180, 65535, 0, 0, true},
      {"a light border, measured", 180, 180, 65535, 3, 30, true},
      {"within the tolerance", 25, 74, 65535, 0, 0, true},
      {"beyond the tolerance", 25, 76, 65535, 0, 0, false},
      {"not the colour that is looked for", 180, 25, 65535, 0, 0, false},
  };
  tool.setColorPickerOn(true);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    paintBorder(c.border);
    tool.setMattingBox(whole);
    host.pixelMaximum = c.maximum;
    for (float& component : host.pixel) component = static_cast<float>(c.picked) / 255.0F;
    click(c.x, c.y);
    EXPECT_EQ(tool.getMattingBox(), c.found ? (SRect{8, 6, 55, 41}) : whole);
  }
  EXPECT_TRUE(tool.isColorPickerOn()) << "the next click may do better";
}

}  // namespace
