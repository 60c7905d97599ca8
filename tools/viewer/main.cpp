// SPDX-License-Identifier: Apache-2.0
#include <QApplication>

#include "tools/framequilt/simulated_source.h"
#include "tools/viewer/window/main_window.h"

int main(int argc, char** argv) {
  using namespace framequilt;
  QApplication application(argc, argv);
  viewer::MainWindow window;
  window.show();
  tool::SimulationOptions simulation;
  simulation.path.shape = tool::PathShape::kDrift;
  viewer::CaptureRequest request;
  request.name = "simulated";
  request.open = [simulation](const tool::InputSettings& settings) {
    return tool::openSimulation(simulation, settings);
  };
  window.run().open(request);
  if (argc > 1) {
    QObject::connect(&window.run(), &viewer::RunController::ended, &window, [&] {
      window.grab().save(argv[1]);
      application.quit();
    });
  }
  return QApplication::exec();
}
