#include <QIcon>
#include <QStyleFactory>
#include <csignal>
#include <cstdio>
#include <string>

#include "DesktopApplication.h"
#include "MainWindow.h"
#include "session/PluginLibrary.h"

namespace {

/// What needs no window: the exit status, or -1 to go on.
int answerWithoutWindow(int argc, char** argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  if (first == "--version") {
    std::printf("stabilize-desktop %s\n", STAB_VERSION);
    return 0;
  }
  const bool help = first == "--help" || first == "-h";
  if (!help && argc <= 2 && !first.starts_with('-')) return -1;
  std::fprintf(help ? stdout : stderr,
               "Usage: stabilize-desktop [CLIP]\n\n"
               "CLIP: a video, a folder of frames, any frame of a sequence, or a pattern\n"
               "(name.####.dpx). Without one, the window asks for it.\n");
  return help ? 0 : 2;
}

int run(CDesktopApplication& application, const char* clip) {
  CQtApplication toolkit;
  application.onException = [&](const QString& text) {
    toolkit.showError("Something went wrong that should not. Save the points before going on.\n\n" +
                      text.toStdString());
  };
  CMainWindow window(toolkit);
  window.show();
  if (clip) window.open(QString::fromLocal8Bit(clip));
  const int status = QApplication::exec();
  application.onException = {};
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  if (const int status = answerWithoutWindow(argc, argv); status >= 0) return status;
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a full quota is an error of the write that meets it
  QApplication::setApplicationName("stabilize-desktop");
  QApplication::setApplicationDisplayName("Stabilize");
  QApplication::setDesktopFileName("stabilize-desktop");
  // Half a device pixel is no place for a panel that is laid out in whole ones.
  QApplication::setHighDpiScaleFactorRoundingPolicy(
      Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
  CDesktopApplication application(argc, argv);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  QApplication::setWindowIcon(QIcon(":/icons/stabilize-desktop.png"));
  try {
    return run(application, argc > 1 ? argv[1] : nullptr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "stabilize-desktop: %s\n", error.what());
    return 1;
  }
}
