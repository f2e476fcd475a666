#include <QApplication>
#include <QIcon>
#include <QStyleFactory>
#include <csignal>
#include <cstdio>

#include "MainWindow.h"
#include "session/PluginLibrary.h"

namespace {

int run(QApplication& application) {
  const QStringList arguments = application.arguments();
  if (arguments.contains("--version")) {
    std::printf("stabilize-desktop %s\n", STAB_VERSION);
    return 0;
  }
  if (arguments.size() > 2 || (arguments.size() == 2 && arguments[1].startsWith('-'))) {
    const bool help = arguments.value(1) == "--help" || arguments.value(1) == "-h";
    std::fprintf(help ? stdout : stderr,
                 "Usage: stabilize-desktop [CLIP]\n\n"
                 "CLIP: a video, a folder of frames, any frame of a sequence, or a pattern\n"
                 "(name.####.dpx). Without one, the window asks for it.\n");
    return help ? 0 : 2;
  }
  CQtApplication toolkit;
  CMainWindow window(toolkit);
  window.show();
  if (arguments.size() == 2) window.open(arguments[1]);
  return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // a full quota is an error of the write that meets it
  QApplication::setApplicationName("stabilize-desktop");
  QApplication::setApplicationDisplayName("Stabilize");
  QApplication::setDesktopFileName("stabilize-desktop");
  // Half a device pixel is no place for a panel that is laid out in whole ones.
  QApplication::setHighDpiScaleFactorRoundingPolicy(
      Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
  QApplication application(argc, argv);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  QApplication::setWindowIcon(QIcon(":/icons/stabilize-desktop.png"));
  try {
    return run(application);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "stabilize-desktop: %s\n", error.what());
    return 1;
  }
}
