// SPDX-License-Identifier: Apache-2.0
#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QSettings>

#include "tools/viewer/window/main_window.h"

int main(int argc, char** argv) {
  using framequilt::viewer::MainWindow;
  QApplication application(argc, argv);
  QApplication::setStyle("Fusion");
  QApplication::setApplicationName("framequilt-viewer");
  QApplication::setApplicationVersion(FRAMEQUILT_VERSION);
  QApplication::setOrganizationName("framequilt");
  QGuiApplication::setDesktopFileName("framequilt-viewer");
  QApplication::setWindowIcon(QIcon::fromTheme("framequilt-viewer"));

  QCommandLineParser parser;
  parser.setApplicationDescription("Shows a mosaic while the frames of a camera are stitched.");
  parser.addHelpOption();
  parser.addVersionOption();
  const QCommandLineOption simulate("simulate", "Begin with a simulated capture.");
  const QCommandLineOption theme("theme", "Appearance: system, light or dark.", "NAME");
  parser.addOptions({simulate, theme});
  parser.addPositionalArgument("INPUT", "Folder of pictures, video file or camera:0.", "[INPUT]");
  parser.process(application);
  const QStringList inputs = parser.positionalArguments();
  const QString name = parser.value(theme);
  if (inputs.size() > 1 || (parser.isSet(simulate) && !inputs.isEmpty())) {
    qCritical("framequilt-viewer: one capture at a time: give one INPUT or --simulate");
    return 2;
  }
  if (parser.isSet(theme) && name != "system" && name != "light" && name != "dark") {
    qCritical("framequilt-viewer: --theme has to be system, light or dark, not '%s'",
              qUtf8Printable(name));
    return 2;
  }

  QSettings store;
  MainWindow window(store);
  if (parser.isSet(theme)) window.setAppearance(name);
  window.show();
  if (parser.isSet(simulate)) window.openSimulation();
  if (!inputs.isEmpty()) window.openInput(inputs.front());
  return QApplication::exec();
}
