// SPDX-License-Identifier: Apache-2.0
// How long the viewer takes to redraw a large mosaic that is dragged: viewer_pan [SIDE] [STEPS]
//
// A step moves the view by a few pixels, redraws it and takes over the tiles that were loaded
// meanwhile: all that the interface thread does between two pictures. Without a screen: what a
// display server does with the picture afterwards is not in it.
#include <QApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <opencv2/core.hpp>
#include <vector>

#include "tools/framequilt/nearest_rank.h"
#include "tools/viewer/window/mosaic_canvas.h"

namespace {

using namespace framequilt;

constexpr int kFrameSide = 2000;
constexpr double kStep = 23;  // Pixels of the screen.

cv::Mat largeMosaic(int side) {
  cv::Mat mosaic(side, side, CV_8UC3);
  cv::Mat cell(500, 500, CV_8UC3);
  cv::RNG random(7);
  random.fill(cell, cv::RNG::UNIFORM, 1, 255);
  for (int y = 0; y < side; y += cell.rows) {
    for (int x = 0; x < side; x += cell.cols) {
      const cv::Rect part = cv::Rect(x, y, cell.cols, cell.rows) & cv::Rect(0, 0, side, side);
      cell({{}, part.size()}).copyTo(mosaic(part));
    }
  }
  return mosaic;
}

void fill(viewer::MosaicCanvas& canvas, const viewer::MosaicReader& read, int side) {
  canvas.open(read, {kFrameSide, kFrameSide}, 1);
  for (int y = 0; y < side; y += kFrameSide) {
    for (int x = 0; x < side; x += kFrameSide) {
      FrameResult result;
      result.verdict = Verdict::kJoined;
      result.placement = {x, y};
      const cv::Rect place = cv::Rect(x, y, kFrameSide, kFrameSide) & cv::Rect(0, 0, side, side);
      canvas.add(result, viewer::readPatch(read, place));
    }
  }
}

/// Milliseconds of each step of a drag forth and back along a diagonal.
std::vector<double> drag(viewer::MosaicCanvas& canvas, int side, double scale, int steps) {
  canvas.centerOn({side / 2.0, side / 2.0});
  canvas.showActualSize();
  canvas.zoomBy(scale);
  canvas.repaint();
  for (int i = 0; i < 50; ++i) QApplication::processEvents(QEventLoop::AllEvents, 20);
  std::vector<double> times;
  QPointF at(side / 2.0, side / 2.0);
  QElapsedTimer clock;
  for (int i = 0; i < steps; ++i) {
    const double way = (i < steps / 2 ? kStep : -kStep) / scale;
    at += QPointF(way, way * 0.6);
    clock.start();
    canvas.centerOn(at);
    canvas.repaint();
    QApplication::processEvents();
    times.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e6);
  }
  return times;
}

void tell(const QSize& window, double scale, std::vector<double> times) {
  const double mean =
      std::accumulate(times.begin(), times.end(), 0.0) / static_cast<double>(times.size());
  std::sort(times.begin(), times.end());
  std::printf("| %d x %d | %.3g %% | %.1f | %.1f | %.1f | %.0f |\n", window.width(),
              window.height(), scale * 100, tool::nearestRank(times, 50),
              tool::nearestRank(times, 95), times.back(), 1000 / mean);
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  const int side = argc > 1 ? std::max(1000, std::atoi(argv[1])) : 20000;
  const int steps = argc > 2 ? std::max(2, std::atoi(argv[2])) : 300;
  const cv::Mat mosaic = largeMosaic(side);
  const viewer::MosaicReader read = [&mosaic](const cv::Rect& part) {
    cv::Mat copy = cv::Mat::zeros(part.size(), mosaic.type());
    const cv::Rect common = part & cv::Rect({}, mosaic.size());
    if (!common.empty()) mosaic(common).copyTo(copy(common - part.tl()));
    return copy;
  };
  viewer::MosaicCanvas canvas;
  canvas.resize(1280, 720);
  canvas.show();
  fill(canvas, read, side);
  std::printf("mosaic of %d x %d pixels, %d steps\n", side, side, steps);
  std::printf("| window | zoom | median ms | p95 ms | most ms | redraws a second |\n");
  std::printf("|---|---|---|---|---|---|\n");
  for (const QSize window : {QSize(1280, 720), QSize(3840, 2160)}) {
    canvas.resize(window);
    QApplication::processEvents();
    for (const double scale : {1.0, 0.37, 0.06}) {
      tell(window, scale, drag(canvas, side, scale, steps));
    }
  }
  return 0;
}
