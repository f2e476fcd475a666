#pragma once

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QMessageBox>
#include <QTimer>
#include <filesystem>
#include <memory>
#include <string>

#include "MainWindow.h"
#include "Operator.h"

/// The program's window on a screen, with a generated shot of 12 frames from 1001 in a folder of
/// the test's own.
class Desktop : public ::testing::Test {
 protected:
  Desktop();
  ~Desktop() override;

  std::string at(const std::string& name) const { return (folder_ / name).string(); }
  std::string clip() const { return at("shot/scan.####.dpx"); }
  /// Writes the shot again.
  void makeShot(const std::string& name, int frames = 12);
  void open() { open(clip()); }
  void open(const std::string& path);

  template <typename T = QWidget>
  T& find(const char* name) {
    T* const widget = window_->findChild<T*>(name);
    if (!widget) throw std::runtime_error(std::string("no widget ") + name);
    return *widget;
  }
  QAbstractButton& button(const char* name) { return find<QAbstractButton>(name); }
  CViewer& viewer() { return static_cast<CViewer&>(find("Viewer")); }
  CDesk& desk() { return window_->desk(); }
  CTrackingArray& points() { return *desk().session().editor()->trackingArray(); }
  /// Where a picture place is in the viewer.
  QPointF inViewer(double x, double y);
  /// Places points with the mouse.
  void place(std::initializer_list<QPointF> places);
  void track();
  bool isIdle() { return !desk().isBusy(); }
  /// The message box that is open; null: none.
  static QMessageBox* box();
  /// From now on message boxes are answered by a click on the button of that text. (A box keeps its
  /// caller, and with it the test, until it is closed.)
  void answerWith(const char* button);
  /// What boxes said since the last call, one after another.
  std::string said() { return std::exchange(said_, {}); }
  /// Keeps the window's picture with the test's artefacts.
  void keepPicture(const char* name);

  std::filesystem::path folder_;
  CQtApplication application_;
  std::unique_ptr<CMainWindow> window_;
  COperator operator_;
  std::string said_;

 private:
  void answerBox(const QString& button);

  QTimer answers_;
  const QMessageBox* answered_ = nullptr;
};
