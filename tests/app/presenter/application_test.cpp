#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include "PresenterFixture.h"
#include "toolkit/Form.h"

namespace {

/// Acts in the next modal dialog.
void inDialog(const std::function<void(QWidget&)>& act) {
  auto* const timer = new QTimer;
  QObject::connect(timer, &QTimer::timeout, timer, [timer, act] {
    QWidget* const dialog = QApplication::activeModalWidget();
    if (!dialog) return;
    timer->deleteLater();
    timer->stop();
    act(*dialog);
  });
  timer->start(5);
}

TEST_F(Presenter, QuestionsAreAnsweredByTheirButtons) {
  const struct {
    const char* button;
    EConfirmation answer;
  } cases[] = {{"Continue", EConfirmation::proceed}, {"Cancel", EConfirmation::cancel}};
  for (const auto& c : cases) {
    int depth = 0;
    inDialog([&](QWidget& dialog) {
      depth = application.modalDepth();
      for (QAbstractButton* button : static_cast<QMessageBox&>(dialog).buttons())
        if (button->text().remove('&') == c.button) QTest::mouseClick(button, Qt::LeftButton);
    });
    EXPECT_EQ(application.confirm("Go on?"), c.answer) << c.button;
    EXPECT_EQ(depth, 1);
    EXPECT_EQ(application.modalDepth(), 0);
  }
  inDialog([](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
  EXPECT_EQ(application.confirm("Go on?"), EConfirmation::cancel);
}

TEST_F(Presenter, AFormEndsWithTheResultOfItsButton) {
  TForm form("Form");
  form.setBounds({100, 100, 300, 120});
  form.setCaption("Choices");
  TButton ok("Ok", &form), cancel("Cancel", &form);
  ok.setBounds({10, 80, 80, 24});
  ok.setModalResult(MODAL_OK);
  ok.setDefault(true);
  cancel.setBounds({100, 80, 80, 24});
  cancel.setModalResult(MODAL_CANCEL);
  cancel.setCancel(true);
  bool mayClose = false;
  form.onCloseQuery = [&] { return mayClose; };
  const struct {
    const char* what;
    std::function<void(QWidget&)> act;
    int result;
  } cases[] = {
      {"a click",
       [](QWidget& dialog) {
         QTest::mouseClick(dialog.findChild<QPushButton*>("Ok"), Qt::LeftButton);
       },
       MODAL_OK},
      {"Return", [](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Return); }, MODAL_OK},
      {"Escape", [](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); }, MODAL_CANCEL},
      {"the title bar, asked twice",
       [&](QWidget& dialog) {
         dialog.close();
         EXPECT_TRUE(dialog.isVisible()) << "the form said no";
         mayClose = true;
         dialog.close();
       },
       MODAL_CANCEL}};
  for (const auto& c : cases) {
    inDialog(c.act);
    EXPECT_EQ(form.showModal(), c.result) << c.what;
    EXPECT_FALSE(form.isVisible());
  }
}

TEST_F(Presenter, TimersRunOnTheScreensTimeEvenWhileADialogIsOpen) {
  int ticks = 0;
  TTimer timer(10, [&] { ++ticks; });
  timer.setEnabled(true);
  EXPECT_TRUE(QTest::qWaitFor([&] { return ticks > 2; }));
  inDialog([&](QWidget& dialog) {
    const int before = ticks;
    EXPECT_TRUE(QTest::qWaitFor([&] { return ticks > before + 2; }));
    dialog.close();
  });
  application.showError("Something");
}

}  // namespace
