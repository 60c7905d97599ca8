// SPDX-License-Identifier: Apache-2.0
// Takes pictures of the window: viewer_pictures FOLDER NAME WIDTHxHEIGHT light|dark [CAPTURE]
//
// Without a capture it is the start page. A capture is a folder or a video, "simulated" or
// "simulated:200".
#include <QApplication>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>

#include "tools/viewer/window/main_window.h"

int main(int argc, char** argv) {
  using namespace framequilt;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setStyle("Fusion");
  const QStringList words = QApplication::arguments();
  if (words.size() < 5) {
    std::fputs("viewer_pictures FOLDER NAME WIDTHxHEIGHT light|dark [CAPTURE]\n", stderr);
    return 2;
  }
  const QTemporaryDir settings;
  QSettings store(settings.filePath("viewer.ini"), QSettings::IniFormat);
  viewer::MainWindow window(store);
  window.setAsksBeforeDiscarding(false);
  const QStringList size = words[3].split('x');
  const double ratio = window.devicePixelRatioF();
  window.resize(qRound(size[0].toInt() / ratio), qRound(size[1].toInt() / ratio));
  window.setAppearance(words[4]);
  window.show();
  if (words.size() > 5) {
    QSignalSpy ended(&window.run(), &viewer::RunController::ended);
    if (words[5].startsWith("simulated")) {
      auto* frames = window.startPage().findChild<QSpinBox*>("simulatedFrames");
      if (words[5].contains(':')) frames->setValue(words[5].section(':', 1).toInt());
      window.openSimulation();
    } else {
      window.openInput(words[5]);
    }
    if (!ended.wait(60000)) return 1;
    if (words.size() > 6) {
      // A frame that was refused, as the run shows it.
      window.findChild<QAction*>("nextRefused")->trigger();
      window.findChild<QAction*>("actual")->trigger();
      // The status line waits for the end of a drag.
      QTest::qWait(200);
    }
    QSignalSpy sharp(&window.canvas(), &viewer::MosaicCanvas::sharp);
    window.canvas().update();
    sharp.wait(5000);
  }
  // Layouts and palettes are brought up to date by events.
  for (int i = 0; i < 5; ++i) QApplication::processEvents();
  const QString file = words[1] + "/" + words[2] + (words[2].contains('.') ? "" : ".png");
  return window.grab().save(file) ? 0 : 1;
}
