#pragma once

#include <QActionGroup>
#include <QLabel>
#include <QMainWindow>
#include <QScrollArea>
#include <QSettings>
#include <QStackedWidget>
#include <memory>

#include "Desk.h"
#include "HelpWindow.h"
#include "KeyRouter.h"
#include "ListDock.h"
#include "Player.h"
#include "PointMouse.h"
#include "Timeline.h"
#include "TransportBar.h"
#include "ViewBar.h"
#include "Viewer.h"
#include "presenter/Presentation.h"

/// The program's window: viewer, timeline and bars at the left, the tool's panel at the right, the
/// process list as a dock; menus and keys. What it shows comes from the desk. THREAD: the
/// user-interface thread.
class CMainWindow : public QMainWindow, private IDeskWindow {
 public:
  explicit CMainWindow(CQtApplication& application);
  ~CMainWindow() override;

  /// Opens a clip; the operator is told when it cannot be.
  void open(const QString& path);
  CDesk& desk() { return *desk_; }

 protected:
  void closeEvent(QCloseEvent* event) override;
  /// Keys that nobody below has used: Escape gives the keyboard back to the picture.
  void keyPressEvent(QKeyEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  // MainWindow.cpp
  void buildCentre();
  QWidget* buildOutputRow();
  QWidget* buildWelcome();
  void connectParts();
  void goToTyped(const QString& text);
  void step(int frames);
  void goToEnd();
  void setMark(bool in, bool set);
  /// A mark while nothing runs; below 0: unset.
  void moveMark(bool in, int frame);
  void refreshTimeline();
  QString timecodeText(int frame);
  void showPointer(double x, double y);
  void rememberClip(const QString& path);
  bool hasClip() { return desk_ && desk_->isOpen(); }

  // MainWindowMenus.cpp
  void buildMenus();
  void buildFileMenu();
  void buildPointsMenu();
  void buildViewMenu();
  void buildPlayMenu();
  void buildHelpMenu();
  QAction* addAction(QMenu* menu, const QString& text, const QKeySequence& shortcut,
                     std::function<void()> act);
  void fillRecent();
  void enableActions();
  void setCompare(ECompare compare);
  bool onKey(const QKeyEvent& event);
  bool onPlainKey(int key);
  bool onArrow(const QKeyEvent& event);
  void chooseClip();
  void editOutput();
  void setAppearance(const QString& name);

  // MainWindowDisplay.cpp: IDeskWindow
  void showClip() override;
  void showFrame() override;
  void showMarks() override;
  void showOverlay() override;
  void showCachedFrames() override;
  void showProgress(bool busy) override;
  void showPanel(const std::string& title, TControl& panel) override;
  void removePanel() override;
  void showPointer(const SCursorImage* pointer) override;
  void showResult(bool result) override;
  void showList() override { list_->reload(); }
  void showOutput() override;
  void setHelpPages(const std::string& operation, const std::string& hotKeys) override;
  void showMessage(const std::string& text) override;
  void showFailure(const std::string& text) override;
  bool confirm(const std::string& question, const std::string& yes) override;
  std::string chooseOutput(const std::string& suggestion) override;
  QString frameNotice(int frame);

  CQtApplication& application_;
  QSettings settings_;
  QStackedWidget* centre_ = nullptr;
  CViewer* viewer_ = nullptr;
  CViewBar* viewBar_ = nullptr;
  CTimeline* timeline_ = nullptr;
  CTransportBar* transport_ = nullptr;
  QLabel* output_ = nullptr;
  QLabel* pixel_ = nullptr;
  QWidget* working_ = nullptr;  ///< everything that needs a clip
  QScrollArea* panelArea_ = nullptr;
  CListDock* list_ = nullptr;
  CHelpWindow* help_ = nullptr;
  QMenu* recent_ = nullptr;
  QActionGroup* appearances_ = nullptr;
  bool resultSeen_ = false;             ///< the pass's first result was shown
  std::vector<QAction*> clipActions_;   ///< of use while a clip is open
  std::vector<QAction*> quietActions_;  ///< and no pass runs
  QAction* undo_ = nullptr;
  QAction* redo_ = nullptr;
  QString operationPage_ = "StabilizeOperation.htm";
  QString hotKeysPage_ = "StabilizeHotKeys.htm";
  std::unique_ptr<CPresentation> panel_;
  std::unique_ptr<CDesk> desk_;
  std::unique_ptr<CPlayer> player_;
  std::unique_ptr<CPointMouse> mouse_;
  std::unique_ptr<CKeyRouter> keys_;
};
