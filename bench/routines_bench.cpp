// SPDX-License-Identifier: Apache-2.0
/// \file
/// Times single routines at every level of the processor, on frames of two sizes. Names are
/// ROUTINE/SIZE/LEVEL/real_time; bytes per second count what a routine is given and what it makes,
/// once.
///
///     routines_bench [--benchmark_filter=REGEX] ...
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

#include "bench/guarded_main.h"
#include "bench/routine_pictures.h"
#include "cpu/mosaic_growth.h"
#include "cpu/working_buffers.h"
#include "features/consensus.h"
#include "features/corner_budget.h"
#include "features/descriptor.h"
#include "features/harris.h"
#include "features/matching.h"
#include "features/selection.h"
#include "framequilt/tuning.h"
#include "imaging/cpu_level.h"
#include "imaging/filter.h"
#include "imaging/fusion.h"
#include "imaging/gray.h"
#include "imaging/motion.h"
#include "imaging/overlap.h"
#include "imaging/region.h"
#include "imaging/resize.h"

namespace {

using framequilt::CpuLevel;
using framequilt::bench::CornerPair;
using framequilt::bench::RoutinePictures;
using Bytes = unsigned char;

constexpr std::array<int, 2> kCornerCounts = {181, 400};  // Of budgets 1 and about 8.
constexpr int kMosaicSide = 6000;

/// One routine with what it is given, ready to be called again and again.
struct Job {
  double bytes = 0;  ///< Read and written by a call.
  std::function<void()> call;
  std::function<void()> restore;  ///< Makes the input good again, untimed; may be empty.
};

using MakeJob = std::function<Job()>;

/// The pictures of a size, made when they are first asked for.
RoutinePictures& picturesOf(cv::Size size) {
  static std::map<std::pair<int, int>, std::unique_ptr<RoutinePictures>> made;
  std::unique_ptr<RoutinePictures>& pictures = made[{size.width, size.height}];
  if (!pictures) pictures = std::make_unique<RoutinePictures>(size);
  return *pictures;
}

/// The frame size of a run, on which its buffers rest.
void setFrameSize(cv::Size size) {
  RealImgRow = imgScaleRow = size.height;
  RealImgCol = imgScaleCol = size.width;
}

void runJob(benchmark::State& state, const MakeJob& make, CpuLevel level) {
  const CpuLevel before = framequilt::cpuLevel();
  framequilt::setCpuLevel(level);
  const Job job = make();
  for ([[maybe_unused]] auto turn : state) {
    if (job.restore) {
      state.PauseTiming();
      job.restore();
      state.ResumeTiming();
    }
    job.call();
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(
      static_cast<std::int64_t>(job.bytes * static_cast<double>(state.iterations())));
  framequilt::releaseAllBuffers();
  framequilt::setCpuLevel(before);
}

class JobBenchmark : public benchmark::internal::Benchmark {
 public:
  JobBenchmark(const std::string& name, MakeJob make, CpuLevel level)
      : Benchmark(name.c_str()), make_(std::move(make)), level_(level) {
    Unit(benchmark::kMicrosecond);
    UseRealTime();
  }

  void Run(benchmark::State& state) override { runJob(state, make_, level_); }

 private:
  MakeJob make_;
  CpuLevel level_;
};

void add(const std::string& routine, const std::string& size, const MakeJob& make) {
  for (const CpuLevel level : framequilt::cpuLevels()) {
    std::string name = routine;
    name.append("/").append(size).append("/").append(framequilt::nameOf(level));
    auto* const job = new JobBenchmark(name, make, level);
    benchmark::internal::RegisterBenchmarkInternal(job);  // NOLINT: it becomes the owner
  }
}

using SizedJob = Job (*)(RoutinePictures& pictures);

void add(const std::string& routine, SizedJob make) {
  for (const cv::Size size : {cv::Size(640, 480), cv::Size(1920, 1080)}) {
    const std::string text = std::to_string(size.width) + "x" + std::to_string(size.height);
    add(routine, text, [=] {
      setFrameSize(size);
      return make(picturesOf(size));
    });
  }
}

double bytesOf(const cv::Mat& image) {
  return static_cast<double>(image.total() * image.elemSize());
}

template <class T>
T* pixels(const cv::Mat& image) {
  return reinterpret_cast<T*>(image.data);
}

// --- Gray and conditioning -----------------------------------------------------------------

Job gray(RoutinePictures& p) {
  const cv::Mat out(p.size, CV_8U);
  return {bytesOf(p.colourA) + bytesOf(out),
          [=] { rgb2Gray(p.colourA.data, out.rows, out.cols, out.data); },
          {}};
}

Job grayFloat(RoutinePictures& p) {
  const cv::Mat out(p.size, CV_32F);
  return {bytesOf(p.colourA) + bytesOf(out),
          [=] { rgb2GrayFloat(p.colourA.data, out.rows, out.cols, 3, pixels<float>(out)); },
          {}};
}

Job mask(RoutinePictures& p) {
  const cv::Mat out(p.size, CV_32F);
  return {bytesOf(p.mosaicPart) + bytesOf(out),
          [=] { rgb2GrayFloat1(p.mosaicPart.data, out.rows, out.cols, 3, pixels<float>(out)); },
          {}};
}

Job conditioning(RoutinePictures& p) {
  const cv::Mat image = p.mosaicPart.clone();
  return {2 * bytesOf(image), [=] { pretJudgeImageCh(image.data, image.rows, image.cols, 3); },
          [=] { p.mosaicPart.copyTo(image); }};
}

Job halving(RoutinePictures& p) {
  const cv::Mat out(p.size / 2, CV_8U);
  return {
      bytesOf(p.grayA) + bytesOf(out),
      [=] { opencvInterLineARResize(p.grayA.data, p.size.height, p.size.width, 2, 1, out.data); },
      {}};
}

// --- Filter passes, on planes of the size named, for elements of type T -----------------------

template <class T>
cv::Mat planeOf(const RoutinePictures& pictures) {
  cv::Mat plane;
  pictures.grayA.convertTo(plane, cv::traits::Type<T>::value);
  return plane;
}

template <class T>
Job padding(RoutinePictures& p) {
  const cv::Mat in = planeOf<T>(p);
  const cv::Mat one(p.size + cv::Size(4, 4), in.type());
  const cv::Mat two = one.clone();
  return {bytesOf(in) + bytesOf(one) + bytesOf(two),
          [=] {
            opencvcopyFilter2DBorderCh1(pixels<T>(in), in.rows, in.cols, 2, pixels<T>(one),
                                        pixels<T>(two));
          },
          {}};
}

template <class T>
using Pass = bool (*)(T* src, float* kernel, int rows, int cols, int taps, T* dst);

template <class T, Pass<T> kPass>
Job pass(RoutinePictures& p) {
  const cv::Mat in = planeOf<T>(p);
  const cv::Mat out = in.clone();
  return {2 * bytesOf(in),
          [=] {
            kPass(pixels<T>(in), filter2DKer, in.rows, in.cols, filter2DKerSize[0], pixels<T>(out));
          },
          {}};
}

template <class T>
Job unpadding(RoutinePictures& p) {
  const cv::Mat in = planeOf<T>(p);
  const cv::Mat out(p.size - cv::Size(4, 4), in.type());
  return {bytesOf(in) + bytesOf(out),
          [=] {
            opencvcopyFilter2DTakeOutBoundCh1(pixels<T>(in), in.rows, in.cols, 2, pixels<T>(out));
          },
          {}};
}

Job edgeResponse(RoutinePictures& p) {
  const cv::Mat out = p.grayA.clone();
  return {2 * bytesOf(out),
          [=] { opencvFilter2DColCalcChUchar(p.grayA.data, out.rows, out.cols, 9, out.data); },
          {}};
}

void addFilters() {
  add("pad_bytes", padding<Bytes>);
  add("pad_floats", padding<float>);
  add("vertical_pass_bytes", pass<Bytes, opencvFilter2DRowCalcCh1<Bytes>>);
  add("vertical_pass_floats", pass<float, opencvFilter2DRowCalcCh1<float>>);
  add("horizontal_pass_bytes", pass<Bytes, opencvFilter2DColCalcCh1<Bytes>>);
  add("horizontal_pass_floats", pass<float, opencvFilter2DColCalcCh1<float>>);
  add("binomial_pass", pass<Bytes, opencvfilter2DCalcCh1<Bytes>>);
  add("unpad_bytes", unpadding<Bytes>);
  add("unpad_floats", unpadding<float>);
  add("edge_response", edgeResponse);
}

// --- Corners -------------------------------------------------------------------------------

Job gradients(RoutinePictures& p) {
  const cv::Mat gx2(p.size, CV_32F);
  const cv::Mat gy2 = gx2.clone();
  const cv::Mat gxy = gx2.clone();
  return {bytesOf(p.grayA) + 3 * bytesOf(gx2),
          [=] {
            findGradSquareCrossTerms(p.grayA.data, gx2.rows, gx2.cols, pixels<float>(gx2),
                                     pixels<float>(gy2), pixels<float>(gxy));
          },
          {}};
}

Job response(RoutinePictures& p) {
  const cv::Mat out(p.size, CV_32F);
  return {4 * bytesOf(out),
          [=] {
            float mean = 0;
            float sum = 0;
            calcResponseValue(pixels<float>(p.gx2), pixels<float>(p.gy2), pixels<float>(p.gxy),
                              0.007F, out.rows, out.cols, pixels<float>(out), mean, sum);
            benchmark::DoNotOptimize(mean);
          },
          {}};
}

Job suppression(RoutinePictures& p) {
  return {bytesOf(p.response),
          [&p] {
            std::vector<float> values;
            std::vector<SPoint> points;
            responseValueMaxSuppression(pixels<float>(p.response), p.responseMean, p.size.height,
                                        p.size.width, values, points);
            benchmark::DoNotOptimize(points.data());
          },
          {}};
}

/// A list of candidates, as bytes.
double bytesOf(const std::vector<SPoint>& points) {
  return static_cast<double>(points.size() * (sizeof(SPoint) + sizeof(float)));
}

constexpr int kWanted = framequilt::wantedCorners(1, 1);

/// The candidates of a frame; the copies are part of the time.
Job strongest(RoutinePictures& p) {
  return {bytesOf(p.candidates),
          [&p] {
            std::vector<float> values = p.candidateValues;
            std::vector<SPoint> points = p.candidates;
            int count = 0;
            goToFirstGetRidOfSomeSPoints(values, points, kWanted, framequilt::candidateCap(kWanted),
                                         1, 1, count);
            benchmark::DoNotOptimize(count);
          },
          {}};
}

Job spread(RoutinePictures& p) {
  std::vector<float> values = p.candidateValues;
  std::vector<SPoint> points = p.candidates;
  int count = 0;
  goToFirstGetRidOfSomeSPoints(values, points, kWanted, framequilt::candidateCap(kWanted), 1, 1,
                               count);
  return {bytesOf(points),
          [=] {
            std::vector<SPoint> out;
            goToSecondGetRidOfSomeSPoints(values, points, count, 2, 0.5F, out);
            benchmark::DoNotOptimize(out.data());
          },
          {}};
}

void addCorners() {
  add("gradients", gradients);
  add("response", response);
  add("suppression", suppression);
  add("selection_strongest", strongest);
  add("selection_spread", spread);
}

// --- Descriptors, by the number of corners -----------------------------------------------------

/// Made when it is first asked for.
std::shared_ptr<CornerPair> pairOf(int count) {
  static std::map<int, std::shared_ptr<CornerPair>> made;
  std::shared_ptr<CornerPair>& pair = made[count];
  if (!pair) pair = std::make_shared<CornerPair>(picturesOf({640, 480}), count);
  return pair;
}

Job descriptors(int count) {
  const std::shared_ptr<CornerPair> pair = pairOf(count);
  const cv::Mat image = picturesOf({640, 480}).grayA;
  auto out = std::make_shared<std::vector<unsigned short>>(pair->descriptorsA.size());
  return {static_cast<double>(out->size() * sizeof(out->front())),
          [=] {
            std::array<unsigned short, CornerPair::kLength> scratch;
            noRotaFeatureDescriber(image.data, image.rows, image.cols, CornerPair::kLength,
                                   CornerPair::kPatch, pair->cornersA, scratch.data(), out->data());
          },
          {}};
}

Job matching(int count) {
  const std::shared_ptr<CornerPair> pair = pairOf(count);
  auto distances = std::make_shared<std::vector<float>>(pair->cornersA.size());
  const auto ofA = static_cast<int>(pair->cornersA.size());
  const auto ofB = static_cast<int>(pair->cornersB.size());
  const double elements = static_cast<double>(pair->descriptorsA.size()) +
                          static_cast<double>(pair->descriptorsB.size());
  return {elements * sizeof(unsigned short),
          [=] {
            std::vector<SPoint> matches;
            calacDistanceIndexFun(pair->descriptorsA.data(), pair->descriptorsB.data(),
                                  distances->data(), 0.98F, ofA, CornerPair::kLength, ofB,
                                  CornerPair::kLength, matches);
            benchmark::DoNotOptimize(matches.data());
          },
          {}};
}

Job consensus(int count) {
  const std::shared_ptr<CornerPair> pair = pairOf(count);
  return {static_cast<double>(2 * pair->matchedA.size() * sizeof(SPoint)),
          [=] {
            std::vector<SPoint> inliersA;
            std::vector<SPoint> inliersB;
            float dx = 0;
            float dy = 0;
            ransacMatchSPointArrayFun(pair->matchedA, pair->matchedB, inliersA, inliersB, dx, dy);
            benchmark::DoNotOptimize(dx);
          },
          {}};
}

void addDescriptors() {
  for (const int count : kCornerCounts) {
    const std::string corners = std::to_string(count);
    add("descriptors", corners, [=] { return descriptors(count); });
    std::string product = corners;
    product.append("x").append(corners).append("x").append(std::to_string(CornerPair::kLength));
    add("matching", product, [=] { return matching(count); });
    add("consensus", corners, [=] { return consensus(count); });
  }
}

// --- Measures ------------------------------------------------------------------------------

Job motion(RoutinePictures& p) {
  framequilt::allocateMotionPlanes();
  return {2 * bytesOf(p.colourA),
          [&p] {
            benchmark::DoNotOptimize(imageMotionModel(p.colourA.data, p.colourB.data, p.size.height,
                                                      p.size.width, 3, 3));
          },
          {}};
}

Job brightness(RoutinePictures& p) {
  framequilt::allocatePairPlanes();
  framequilt::allocateOverlapPlanes();
  return {2 * bytesOf(p.colourA),
          [&p] {
            float one = 0;
            float two = 0;
            calcOverLapImageBright(p.colourA.data, p.colourB.data, p.size.height, p.size.width,
                                   p.size.height, p.size.width, 3, one, two);
            benchmark::DoNotOptimize(one);
          },
          {}};
}

/// Together with the brightness, whose planes it takes.
Job brightnessAndSharpness(RoutinePictures& p) {
  const Job first = brightness(p);
  return {first.bytes,
          [&p, first] {
            first.call();
            float one = 0;
            float two = 0;
            calcOverLapImageDefinition(p.colourA.data, p.colourB.data, p.size.height, p.size.width,
                                       p.size.height, p.size.width, 3, one, two);
            benchmark::DoNotOptimize(one);
          },
          {}};
}

// --- Fusion and mosaic -----------------------------------------------------------------------

Job weights(RoutinePictures& p) {
  const cv::Mat out(p.size, CV_8U);
  return {2 * bytesOf(p.colourA) + bytesOf(out),
          [=] {
            weightofTwoAreaFun(p.mosaicPart.data, p.colourB.data, out.rows, out.cols, 3, 3,
                               out.data);
          },
          {}};
}

Job fusion(RoutinePictures& p) {
  const cv::Mat region = p.mosaicPart.clone();
  const cv::Mat frame = p.colourB.clone();
  return {4 * bytesOf(frame),
          [=] { twoImageFusion(region.data, frame.data, 3, 3, frame.rows, frame.cols); },
          [=, &p] {
            p.mosaicPart.copyTo(region);
            p.colourB.copyTo(frame);
          }};
}

/// One for all: nothing that is written there changes how long anything takes.
const cv::Mat& sharedMosaic() {
  static const cv::Mat mosaic(kMosaicSide, kMosaicSide, CV_8UC3, cv::Scalar(1, 1, 1));
  return mosaic;
}

Job regionCut(RoutinePictures& p) {
  const cv::Mat& mosaic = sharedMosaic();
  const cv::Mat region = p.mosaicPart.clone();
  return {2 * bytesOf(region),
          [=] {
            imgInfo info{};
            willBigImgAssignRowColToSmallImg(mosaic.data, 1000, 1000 + region.rows, 1000,
                                             1000 + region.cols, mosaic.rows, mosaic.cols, 3, info,
                                             region.data);
          },
          {}};
}

Job regionPaste(RoutinePictures& p) {
  const cv::Mat& mosaic = sharedMosaic();
  const cv::Mat region = p.mosaicPart.clone();
  return {2 * bytesOf(region),
          [=] {
            willSmallImgToBigImgAssignRowCol(region.data, region.rows, region.cols, 1000,
                                             1000 + region.rows, 1000, 1000 + region.cols,
                                             mosaic.rows, mosaic.cols, 3, mosaic.data);
          },
          {}};
}

/// The first mosaic, at whose right edge a frame arrives.
Job growth(RoutinePictures& p) {
  const cv::Mat& mosaic = sharedMosaic();
  const int added = kMosaicSide * p.size.width * 3;
  return {2 * bytesOf(mosaic) + added,
          [=, &p] {
            const SPoint position{kMosaicSide - p.size.width, 2000};
            cv::Mat grown;
            SPoint moved{};
            SPoint topLeft{};
            SPoint bottomRight{};
            BorderExpand(mosaic, p.size.height, p.size.width, 1, 0, p.size.height, p.size.width,
                         mosaic.cols, mosaic.rows, position, grown, moved, {0, 0},
                         {kMosaicSide, kMosaicSide}, topLeft, bottomRight);
            benchmark::DoNotOptimize(grown.data);
          },
          {}};
}

void addAll() {
  add("gray", gray);
  add("gray_float", grayFloat);
  add("mask", mask);
  add("conditioning", conditioning);
  add("halving", halving);
  addFilters();
  addCorners();
  addDescriptors();
  add("motion", motion);
  add("brightness", brightness);
  add("brightness_and_sharpness", brightnessAndSharpness);
  add("weights", weights);
  add("fusion", fusion);
  add("region_cut", regionCut);
  add("region_paste", regionPaste);
  add("growth", growth);
}

int runProgram(int argc, char** argv) {
  framequilt::fillGrayTables();
  addAll();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return guardedMain("routines_bench", &runProgram, argc, argv); }
