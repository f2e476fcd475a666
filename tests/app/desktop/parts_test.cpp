#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>
#include <cmath>
#include <string>
#include <vector>

#include "KeyInput.h"
#include "KeyRouter.h"
#include "PictureScaler.h"
#include "ViewTransform.h"

namespace {

TEST(ViewTransform, ZoomingKeepsWhatIsUnderThePointer) {
  CViewTransform view;
  view.setPicture({2000, 1000});
  view.setViewer({800.0, 600.0}, 2.0);
  EXPECT_DOUBLE_EQ(view.zoom(), 0.8) << "device pixels";
  for (const double zoom : {1.0, 3.7, 16.0, 40.0, 0.5}) {
    const QPointF at(300.0, 310.0);
    const QPointF before = view.toPicture(at);
    view.zoomTo(zoom, at);
    EXPECT_LE(view.zoom(), 16.0);
    const QPointF after = view.toPicture(at);
    // Pictures begin on whole device pixels.
    EXPECT_NEAR(before.x(), after.x(), 0.51 / view.zoom()) << zoom;
    EXPECT_NEAR(before.y(), after.y(), 0.51 / view.zoom()) << zoom;
    EXPECT_FALSE(view.isFitted());
  }
  view.pan({1e6, -1e6});
  const QPointF corner = view.toViewer({0.0, 1000.0});
  EXPECT_LT(corner.x(), 800.0) << "a strip stays in sight";
  EXPECT_GT(corner.y(), 0.0);
  view.fit();
  view.setViewer({400.0, 300.0}, 2.0);
  EXPECT_DOUBLE_EQ(view.zoom(), 0.4) << "fitted stays fitted";
}

class Scaler : public ::testing::Test {
 protected:
  static constexpr int WIDTH = 8;
  static constexpr int HEIGHT = 4;
  Scaler() : samples(WIDTH * HEIGHT * 3) {
    info.format = CImageFormat(WIDTH, HEIGHT);
    scaler.setClip(info);
    for (int y = 0; y < HEIGHT; ++y)
      for (int x = 0; x < WIDTH; ++x)
        for (int c = 0; c < 3; ++c)
          samples[static_cast<std::size_t>((y * WIDTH + x) * 3 + c)] =
              static_cast<std::uint16_t>(x * 8192 + (c == 2 ? 100 : 0));
  }
  SClipInfo info;
  CPictureScaler scaler;
  std::vector<std::uint16_t> samples;
};

TEST_F(Scaler, EverySourcePixelCountsOnTheWayDown) {
  const QImage half = scaler.scale(samples.data(), QRectF(0, 0, WIDTH, HEIGHT), {4, 2});
  for (int x = 0; x < 4; ++x) {
    const double mean = (2 * x + 0.5) * 8192.0;
    EXPECT_EQ(qRed(half.pixel(x, 1)), std::lround(mean / 65535.0 * 255.0)) << x;
  }
  const QImage one = scaler.scale(samples.data(), QRectF(0, 0, WIDTH, HEIGHT), {1, 1});
  EXPECT_EQ(qGreen(one.pixel(0, 0)), std::lround(3.5 * 8192.0 / 65535.0 * 255.0));
}

TEST_F(Scaler, PixelsAreRepeatedOnTheWayUpAndNothingLiesOutside) {
  const QImage large = scaler.scale(samples.data(), QRectF(-1, -1, 4, 2), {16, 8});
  for (int x = 0; x < 16; ++x) {
    const bool inside = x >= 4;
    EXPECT_EQ(qAlpha(large.pixel(x, 6)), inside ? 255 : 0) << x;
    const double code = inside ? (x / 4 - 1) * 8192.0 : 0.0;
    EXPECT_EQ(qRed(large.pixel(x, 6)), std::lround(code / 65535.0 * 255.0)) << x;
    EXPECT_EQ(qAlpha(large.pixel(x, 2)), 0) << "above the picture";
  }
}

TEST_F(Scaler, GradeAndEncodingDecideWhatIsShown) {
  const auto shown = [&](int code, const SViewGrade& grade) {
    std::fill(samples.begin(), samples.end(), static_cast<std::uint16_t>(code));
    scaler.setGrade(grade);
    return qRed(scaler.scale(samples.data(), QRectF(0, 0, 1, 1), {1, 1}).pixel(0, 0));
  };
  EXPECT_EQ(shown(16384, {1.0, 1.0}), 128) << "a stop is twice the value";
  EXPECT_EQ(shown(65535, {3.0, 1.0}), 255);
  EXPECT_EQ(shown(16384, {0.0, 2.0}), 128) << "a quarter's root";
  info.floatSamples = true;
  scaler.setClip(info);
  EXPECT_EQ(shown(30720, {0.0, 1.0}), 255) << "1.0 as a half";
  EXPECT_EQ(shown(2 * 0x3000, {0.0, 1.0}), 99) << "0.125 on the screen's curve";
  EXPECT_EQ(shown(2 * 0x3000, {3.0, 1.0}), 255);
}

TEST(KeyInput, KeysHaveTheToolsCodesAndModifiers) {
  const struct {
    const char* what;
    QEvent::Type type;
    int key;
    Qt::KeyboardModifiers modifiers;
    int code;
    int bits;
    quint32 place = 0;  ///< the key's number on the keyboard
  } cases[] = {
      {"a letter", QEvent::KeyPress, Qt::Key_D, Qt::ShiftModifier, 'D', 1},
      {"a digit", QEvent::KeyPress, Qt::Key_5, {}, '5', 0},
      {"the keypad's", QEvent::KeyPress, Qt::Key_5, Qt::KeypadModifier, 0x65, 0},
      {"Space", QEvent::KeyPress, Qt::Key_Space, Qt::ControlModifier, 0x20, 2},
      {"a comma", QEvent::KeyPress, Qt::Key_Comma, {}, 0xBC, 0},
      {"its key with Shift", QEvent::KeyPress, Qt::Key_Less, Qt::ShiftModifier, 0xBC, 1},
      {"its key elsewhere", QEvent::KeyPress, Qt::Key_Semicolon, Qt::ShiftModifier, 0xBC, 1},
      {"a semicolon", QEvent::KeyPress, Qt::Key_Semicolon, {}, 0xBA, 0},
      {"a sign that is its own key elsewhere", QEvent::KeyPress, Qt::Key_Less, {}, 0, 0},
      {"a bracket there", QEvent::KeyPress, Qt::Key_ParenLeft, {}, 0, 0},
      {"the digit's key there", QEvent::KeyPress, Qt::Key_ParenLeft, {}, '5', 0, 14},
      {"and with Shift", QEvent::KeyPress, Qt::Key_0, Qt::ShiftModifier, '0', 1, 19},
      {"the window manager's", QEvent::KeyPress, Qt::Key_G, Qt::MetaModifier, 0, 0},
      {"Return", QEvent::KeyPress, Qt::Key_Enter, Qt::KeypadModifier, 0x0D, 0},
      {"F1", QEvent::KeyPress, Qt::Key_F1, {}, 0x70, 0},
      {"Shift down is held", QEvent::KeyPress, Qt::Key_Shift, {}, 0x10, 1},
      {"Shift up is not", QEvent::KeyRelease, Qt::Key_Shift, Qt::ShiftModifier, 0x10, 0},
      {"Ctrl up while Shift is held", QEvent::KeyRelease, Qt::Key_Control,
       Qt::ShiftModifier | Qt::ControlModifier, 0x11, 1},
      {"nothing tools know", QEvent::KeyPress, Qt::Key_VolumeUp, {}, 0, 0}};
  for (const auto& c : cases) {
    const CUserInput input = ToUserInput(QKeyEvent(c.type, c.key, c.modifiers, c.place, 0, 0));
    EXPECT_EQ(input.action,
              c.type == QEvent::KeyPress ? CUserInput::ACTION_KEY_DOWN : CUserInput::ACTION_KEY_UP);
    EXPECT_EQ(input.key, c.code) << c.what;
    EXPECT_EQ(input.modifiers, c.bits) << c.what;
  }
}

TEST(KeyRouter, ShiftThatComesUpFirstIsToldOnceTheOthersAreUp) {
  QWidget window;
  CKeyRouter router(window);
  std::string told;
  router.toTool = [&](const CUserInput& input) {
    const bool up = input.action == CUserInput::ACTION_KEY_UP;
    told += (up ? "-" : "+") + std::to_string(input.key) + "/" + std::to_string(input.modifiers);
    return true;
  };
  const auto send = [&](QEvent::Type type, int key, Qt::KeyboardModifiers before) {
    QKeyEvent event(type, key, before);
    QCoreApplication::sendEvent(&window, &event);
  };
  send(QEvent::KeyPress, Qt::Key_Shift, {});
  send(QEvent::KeyPress, Qt::Key_Alt, Qt::ShiftModifier);
  send(QEvent::KeyRelease, Qt::Key_Shift, Qt::ShiftModifier | Qt::AltModifier);
  EXPECT_EQ(told, "+16/1+18/5-16/4");
  told.clear();
  send(QEvent::KeyRelease, Qt::Key_Alt, Qt::AltModifier);
  EXPECT_EQ(told, "-18/0-16/0");
  told.clear();
  send(QEvent::KeyPress, Qt::Key_Control, {});
  send(QEvent::KeyRelease, Qt::Key_Control, Qt::ControlModifier);
  EXPECT_EQ(told, "+17/2-17/0") << "only where it is due";
}

}  // namespace
