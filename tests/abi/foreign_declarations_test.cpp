// SPDX-License-Identifier: Apache-2.0
#include "foreign_declarations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <string>

namespace {

using Bytes = std::vector<Byte>;

std::string printedBy(bool (*action)()) {
  testing::internal::CaptureStdout();
  EXPECT_FALSE(action());
  return testing::internal::GetCapturedStdout();
}

// --- Entry points and host run ---

TEST(ForeignDeclarations, RunOpensAndCloses) {
  ASSERT_TRUE(initJoint(48, 64, 1, 1, 9000, 8000, 3, 4));
  EXPECT_EQ(startOneThFlag, 1);
  EXPECT_EQ(startTwoThFlag, 1);
  EXPECT_NE(one_pid, two_pid);
  EXPECT_EQ(theSorImageInfoCpu.rows, 48);
  EXPECT_EQ(thedestImageInfoCpu.cols, 64);
  EXPECT_EQ(GStitchMode, 3);
  EXPECT_EQ(GstaticDynamicFlag, 4);
  EXPECT_EQ(MAXROW, 9000);
  EXPECT_EQ(MAXCOL, 8000);
  EXPECT_EQ(R1[255] + G1[255] + B1[255], 254U);
  EXPECT_NE(theSorImageTemp, nullptr);
  EXPECT_EQ(flagsCpu.stitch_flags, 0);
  EXPECT_EQ(outbordLeftCpu.x + outbordRightCpu.y, 0);

  SPoint left, right;
  cv::Mat mosaic;
  stitchflags flags;
  EXPECT_EQ(stichingImagedJoint(nullptr, nullptr, 0, 1, 0, 0, false, left, right, mosaic, flags),
            -1);
  EXPECT_TRUE(uinitJoint());
  EXPECT_EQ(startOneThFlag, 0);
  EXPECT_EQ(threadTwoCalcFlag, 0);
  EXPECT_EQ(openclDeviceFlag, 0);
  EXPECT_EQ(cudaDeviceFlag, 0);
  EXPECT_EQ(thedestImage_pre, nullptr);
}

TEST(ForeignDeclarations, TuningWrittenHereHasItsEffectThere) {
  scale = 2;
  ASSERT_TRUE(initJointCpu(101, 63, 1, 1, 10, 10));
  EXPECT_EQ(RealImgRow, 101);
  EXPECT_EQ(imgScaleRow, 50);
  EXPECT_EQ(imgScaleCol, 31);
  EXPECT_EQ(numpoint, 136);
  EXPECT_EQ(num5000, 952);
  EXPECT_TRUE(uninitJointCpu());
  scale = 1;
}

TEST(ForeignDeclarations, TuningStandsAtItsDefaults) {
  EXPECT_EQ(scale, 1);
  EXPECT_EQ(demesion, 200);
  EXPECT_EQ(countJ, 10000);
  EXPECT_EQ(motionValueThCpu0, 5);
  EXPECT_EQ(brightThCpu0, 40.0F);
  EXPECT_EQ(defintThCpu0, 30.0F);
  EXPECT_EQ(filter2DKerSize[0], 5);
  EXPECT_EQ(filter2DKer[0], filter2DKer1[4]);
  EXPECT_EQ(filter2DKerModel[2], 0.40262F);
  EXPECT_EQ(std::accumulate(filterH2Dker, filterH2Dker + 9, 0.0F), 1.0F);
  EXPECT_EQ(filterH2DefKer[4], 4.0F);
  EXPECT_EQ(ImageOverlap_minCpu + ImageOverlap_maxCpu, 1.0F);
}

TEST(ForeignDeclarations, BuffersSetHereAreReleasedThere) {
  Coonervalue = new float[3];
  grad_x2 = new float[3];
  mosaicImgCpu = cv::Mat::zeros(2, 2, CV_8UC1);
  HarrissCornerSPointOneArray.assign(5, SPoint{1, 2});
  EXPECT_TRUE(uninitJointCpu());
  EXPECT_EQ(Coonervalue, nullptr);
  EXPECT_EQ(grad_x2, nullptr);
  EXPECT_EQ(FeatureDescriber1, nullptr);
  EXPECT_TRUE(mosaicImgCpu.empty());
  EXPECT_TRUE(HarrissCornerSPointOneArray.empty());
  EXPECT_TRUE(HarrissCornerSPointTwoArrayCL.empty());
  EXPECT_TRUE(mosaicImgCL.empty());
}

TEST(ForeignDeclarations, NullFramesAreRefused) {
  SPoint a = {}, b = {}, c = {};
  cv::Mat mosaic;
  stitchflags flags = {};
  imgInfo info = {};
  int dx = 0, dy = 0, count = 0;
  EXPECT_FALSE(imageMosaicFun(nullptr, nullptr, info, dx, dy, count));
  EXPECT_EQ(stichingImagedJointCpu(nullptr, nullptr, 0, 1, 0, 0, false, a, b, mosaic, flags), -1);
  EXPECT_FALSE(stitchingImageOffsetCpu(nullptr, nullptr, 0, 1, 0, 0, false, info, info, a, b,
                                       mosaic, flags));
  EXPECT_FALSE(stitchingImageImageblendCpu(mosaic, nullptr, info, flags, a, b, c, a, b, c, info,
                                           mosaic, nullptr));
}

TEST(ForeignDeclarations, WorkersAndStripsAreThere) {
  EXPECT_NE(&findHarrisCornerCoordianteThreadOne, &findHarrisCornerCoordianteThreadTwo);
  Points corners;
  EXPECT_TRUE(getRangeCpuOne(0, 0, nullptr, 8, 8, corners));
  EXPECT_TRUE(getRangeCpuTwo(0, 0, nullptr, 8, 8, corners));
  EXPECT_TRUE(corners.empty());
}

TEST(ForeignDeclarations, MosaicGrowsAndBoxFollows) {
  SPoint position = {1, 0}, topLeft = {1, 1}, bottomRight = {3, 3};
  cv::Mat mosaic = cv::Mat::ones(8, 9, CV_8UC1);
  BorderExpand(mosaic, 4, 5, 1, 0, 2, 2, 9, 8, position, mosaic, position, topLeft, bottomRight,
               topLeft, bottomRight);
  EXPECT_EQ(mosaic.size(), cv::Size(9, 12));
  EXPECT_EQ(position.y, 4);
  EXPECT_EQ(bottomRight.y, 7);

  EXPECT_EQ(outputImageCoordate({2, 2}, {6, 6}, 0, 0, 4, 4, {4, 1}, topLeft, bottomRight), 0);
  EXPECT_EQ(bottomRight.x, 8);
  EXPECT_EQ(topLeft.y, 1);
  cv::Point_<int> start, end;
  EXPECT_EQ(outputImageCoordate1({2, 2}, {6, 6}, 0, 0, 4, 4, {4, 1}, start, end), 0);
  EXPECT_EQ(start, cv::Point(2, 1));
  EXPECT_EQ(end, cv::Point(8, 6));
}

// --- Features ---

TEST(ForeignDeclarations, GradientsOfAStep) {
  Bytes step = {0, 0, 100, 0, 0, 100, 0, 0, 100};
  Values gx2(9), gy2(9), gxy(9), otherX(9), otherY(9), otherXy(9);
  EXPECT_TRUE(findGradSquareCrossTerms(step.data(), 3, 3, gx2.data(), gy2.data(), gxy.data()));
  EXPECT_EQ(gx2[4], 10000.0F);
  EXPECT_EQ(gy2[4], 0.0F);
  EXPECT_TRUE(findGradSquareCrossTermsTwo(step.data(), step.data(), 3, 3, gx2.data(), otherX.data(),
                                          gy2.data(), otherY.data(), gxy.data(), otherXy.data()));
  EXPECT_EQ(otherX[4], 10000.0F);
}

TEST(ForeignDeclarations, ResponseHasOneMaximum) {
  Values two(41 * 41, 2.0F), one(41 * 41, 1.0F), response(41 * 41);
  float mean = 0.0F, sum = 0.0F;
  EXPECT_TRUE(calcResponseValue(two.data(), two.data(), one.data(), 0.0F, 41, 41, response.data(),
                                mean, sum));
  EXPECT_EQ(sum, 3.0F);
  Values values;
  Points points;
  EXPECT_TRUE(responseValueMaxSuppression(response.data(), mean, 41, 41, values, points));
  ASSERT_EQ(points.size(), 1U);
  EXPECT_EQ(points[0].x, 20);
  EXPECT_EQ(values[0], 3.0F);
}

TEST(ForeignDeclarations, CandidatesAreCutAndSpread) {
  Values values = {1.0F, 3.0F, 2.0F};
  Points points = {{1, 1}, {3, 3}, {2, 2}}, spread;
  int count = 0;
  EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(values, points, 1, 2, 1, 1, count));
  EXPECT_EQ(values, (Values{3.0F, 2.0F}));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints(values, points, count, 2, 0.5F, spread));
  ASSERT_EQ(spread.size(), 1U);
  EXPECT_EQ(spread[0].x, 6);
  float largest = 0.0F;
  EXPECT_TRUE(fidMax(values, largest));
  EXPECT_EQ(largest, 3.0F);
}

TEST(ForeignDeclarations, SortMovesTheIndicesAlong) {
  Values keys = {3.0F, 1.0F, 3.0F, 2.0F};
  std::vector<int> index = {0, 1, 2, 3};
  qsort(keys, index, 0, 3);
  EXPECT_EQ(keys, (Values{3.0F, 3.0F, 2.0F, 1.0F}));
  EXPECT_EQ(index, (std::vector<int>{0, 2, 3, 1}));
}

TEST(ForeignDeclarations, CornersAreDescribedMatchedAndAgreed) {
  Points corners;
  EXPECT_EQ(
      printedBy([] {
        Points none;
        return findHarrisCornerCoordianteFun1(nullptr, {}, none) ||
               findHarrisCornerCoordianteFun2(nullptr, {}, none);
      }),
      "findHarrisCornerCoordianteFun ptr is null\nfindHarrisCornerCoordianteFun ptr is null\n");

  Bytes flat(900, 7);
  std::vector<unsigned short> scratch(200, 9), descriptor(200, 9);
  EXPECT_TRUE(noRotaFeatureDescriber(flat.data(), 30, 30, 200, 20, {{15, 15}}, scratch.data(),
                                     descriptor.data()));
  EXPECT_EQ(descriptor, std::vector<unsigned short>(200, 0));

  std::vector<unsigned short> two = {0, 0, 10, 10};
  Values distance(2);
  Points matches, a, b, agreeA, agreeB;
  EXPECT_TRUE(
      calacDistanceIndexFun(two.data(), two.data(), distance.data(), 0.98F, 2, 2, 2, 2, matches));
  EXPECT_TRUE(roughMatchSPoint({{5, 6}, {7, 8}}, {{1, 1}, {3, 3}}, matches, a, b));
  ASSERT_EQ(a.size(), 2U);
  float dx = 0.0F, dy = 0.0F;
  EXPECT_TRUE(ransacMatchSPointArrayFun(a, b, agreeA, agreeB, dx, dy));
  EXPECT_EQ(agreeB.size(), 2U);
  EXPECT_EQ(dx, 4.0F);
  EXPECT_EQ(dy, 5.0F);
}

TEST(ForeignDeclarations, MinimumIsFound) {
  Values values = {3.0F, 1.0F, 2.0F};
  float low = 0.0F, high = 0.0F;
  int index = -1;
  EXPECT_TRUE(findMinIndex<float>(values.data(), 3, low, high, index));
  EXPECT_EQ(index, 1);
  EXPECT_EQ(high, 3.0F);
}

// --- Imaging ---

TEST(ForeignDeclarations, WhiteIsGray) {
  ASSERT_TRUE(initJointCpu(4, 4, 1, 1, 1, 1));
  ASSERT_TRUE(uninitJointCpu());
  Bytes white(3, 255), gray(1), otherGray(1);
  Values value(1), other(1);
  EXPECT_TRUE(rgb2Gray(white.data(), 1, 1, gray.data()));
  EXPECT_EQ(gray[0], 255);
  EXPECT_TRUE(rgb2GrayTwo(white.data(), white.data(), 1, 1, gray.data(), otherGray.data()));
  EXPECT_EQ(otherGray[0], 255);
  EXPECT_TRUE(rgb2GrayFloat(white.data(), 1, 1, 3, value.data()));
  EXPECT_EQ(value[0], 254.0F);
  EXPECT_TRUE(rgb2GrayFloat1(white.data(), 1, 1, 3, value.data()));
  EXPECT_EQ(value[0], 255.0F);
  EXPECT_TRUE(rgb2GrayFloatTwo(white.data(), white.data(), 1, 1, 3, value.data(), other.data()));
  EXPECT_EQ(other[0], 254.0F);
}

template <class T>
void expectSeparableFilter() {
  std::vector<T> image = {1, 2, 3, 4, 5, 6, 7, 8, 9}, a(49), b(49), inner(9);
  float kernel[3] = {1.0F, 1.0F, 1.0F};
  EXPECT_TRUE((opencvcopyFilter2DBorderCh1<T>(image.data(), 3, 3, 2, a.data(), b.data())));
  EXPECT_EQ(a[2], T{7});
  EXPECT_TRUE((opencvcopyFilter2DTakeOutBoundCh1<T>(b.data(), 7, 7, 2, inner.data())));
  EXPECT_EQ(inner, image);
  EXPECT_TRUE((opencvFilter2DRowCalcCh1<T>(image.data(), kernel, 3, 3, 3, inner.data())));
  EXPECT_EQ(inner[4], T{15});
  EXPECT_TRUE((opencvFilter2DColCalcCh1<T>(image.data(), kernel, 3, 3, 3, inner.data())));
  EXPECT_EQ(inner[1], T{6});
}

TEST(ForeignDeclarations, SeparableFilterOfBytes) { expectSeparableFilter<Byte>(); }
TEST(ForeignDeclarations, SeparableFilterOfFloats) { expectSeparableFilter<float>(); }

TEST(ForeignDeclarations, FixedFilters) {
  Bytes dot = {0, 0, 0, 0, 15, 0, 0, 0, 0}, smooth(9);
  EXPECT_TRUE(opencvfilter2DCalcCh1<Byte>(dot.data(), nullptr, 3, 3, 3, smooth.data()));
  EXPECT_EQ(smooth[4], 3);

  Bytes row(10), padded(18), response(18), back(10);
  std::iota(row.begin(), row.end(), Byte{0});
  EXPECT_TRUE(opencvcopyFilter2DBorderColCh1(row.data(), 1, 10, 4, padded.data()));
  EXPECT_EQ(padded[0], 4);
  EXPECT_EQ(padded[17], 8);
  EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundColCh1(padded.data(), 1, 18, 4, back.data()));
  EXPECT_EQ(back, row);
  std::fill(padded.begin(), padded.end(), Byte{0});
  padded[8] = 1;
  EXPECT_TRUE(opencvFilter2DColCalcChUchar(padded.data(), 1, 18, 9, response.data()));
  EXPECT_EQ(response[8], 4);
  EXPECT_EQ(response[4], 255);
}

TEST(ForeignDeclarations, SizesAndRegions) {
  Bytes image(25), half(4), part(4), otherPart(4);
  std::iota(image.begin(), image.end(), Byte{0});
  EXPECT_TRUE(opencvInterLineARResize<Byte>(image.data(), 5, 5, 2, 1, half.data()));
  EXPECT_EQ(half[3], 12);
  imgInfo info = {}, otherInfo = {};
  EXPECT_TRUE(
      willBigImgAssignRowColToSmallImg(image.data(), 1, 3, 2, 4, 5, 5, 1, info, part.data()));
  EXPECT_EQ(part, (Bytes{7, 8, 12, 13}));
  EXPECT_TRUE(
      willSmallImgToBigImgAssignRowCol(half.data(), 2, 2, 0, 2, 0, 2, 5, 5, 1, image.data()));
  EXPECT_EQ(image[6], 12);
  takeOutOverLapImageFromMoasicImage(image.data(), half.data(), {0, 1, 5, 5}, {0, 1, 2, 2}, {2, 1},
                                     1, 1, info, otherInfo, part.data(), otherPart.data());
  EXPECT_EQ(info.rows * info.cols, 1);
  EXPECT_EQ(part[0], 13);
  EXPECT_EQ(otherPart[0], half[0]);
}

TEST(ForeignDeclarations, BlankingAndConditioning) {
  Bytes bytes(4, 5);
  Values floats(4, 5.0F);
  EXPECT_TRUE(corresRowAllColZero(bytes.data(), 2, 2, 0, 1));
  EXPECT_EQ(bytes, (Bytes{0, 0, 5, 5}));
  EXPECT_TRUE(corresColAllRowZero(bytes.data(), 2, 2, 1, 2));
  EXPECT_EQ(bytes, (Bytes{0, 0, 5, 0}));
  EXPECT_TRUE(corresRowAllColZeroFloat(floats.data(), 2, 2, 0, 1));
  EXPECT_TRUE(corresColAllRowZeroFloat(floats.data(), 2, 2, 1, 2));
  EXPECT_EQ(floats, (Values{0.0F, 0.0F, 5.0F, 0.0F}));
  EXPECT_TRUE(pretJudgeImageCh<Byte>(bytes.data(), 2, 2, 1));
  EXPECT_EQ(bytes, (Bytes{1, 1, 5, 1}));
}

TEST(ForeignDeclarations, MotionOfTwoFlatFrames) {
  for (Byte** plane : {&PreFrameImageGrayCpu, &CurFrameImageGrayCpu, &PreFrameImageGrayBoundCpu,
                       &PreFrameImageGrayBoundTempCpu, &CurFrameImageGrayBoundCpu,
                       &CurFrameImageGrayBoundTempCpu}) {
    *plane = new Byte[144];
  }
  Bytes before(64, 100), after(64, 110);
  EXPECT_EQ(imageMotionModel(before.data(), after.data(), 8, 8, 1, 1), 10);
  EXPECT_TRUE(uninitJointCpu());
  EXPECT_EQ(CurFrameImageGrayBoundTempCpu, nullptr);
}

TEST(ForeignDeclarations, OverlapMeasuresRefuseNull) {
  float one = 1.0F, two = 2.0F;
  EXPECT_FALSE(calcOverLapImageBright(nullptr, nullptr, 9, 9, 9, 9, 1, one, two));
  EXPECT_FALSE(calcOverLapImageDefinition(nullptr, nullptr, 9, 9, 9, 9, 1, one, two));
  EXPECT_EQ(one + two, 3.0F);
}

TEST(ForeignDeclarations, WeightAndFusion) {
  Bytes one(9, 255), two(9, 255), weight(9), black(9, 0);
  EXPECT_TRUE(weightofTwoAreaFun(one.data(), two.data(), 3, 3, 1, 0, weight.data()));
  EXPECT_EQ(weight[4], 254);
  EXPECT_EQ(weight[0], 255);
  EXPECT_TRUE(twoImageFusion(one.data(), black.data(), 1, 0, 3, 3));
  EXPECT_EQ(one, Bytes(9, 254));
}

// --- OpenCL backend, on a machine without a platform ---

TEST(ForeignDeclarations, OpenclStartNeedsADevice) {
  cl_device_id found = nullptr;
  EXPECT_EQ(CreateContext(&found), nullptr);
  EXPECT_FALSE(initJointCL(48, 64, 3, 1, 9000, 40000));
  EXPECT_EQ(startOneThFlagCL + startTwoThFlagCL, 2);
  EXPECT_EQ(one_pidCLFlag + two_pidCLFlag, 0);
  EXPECT_EQ(MAXROWCL, 30000);
  EXPECT_EQ(device, nullptr);
  EXPECT_EQ(context, nullptr);
  EXPECT_TRUE(uinitJointCL());
  EXPECT_EQ(startOneThFlagCL + threadOneCalcFlagCL + threadTwoCalcFlagCL, 0);
}

TEST(ForeignDeclarations, OpenclObjectsAreNull) {
  EXPECT_TRUE(releaseKernel());
  EXPECT_TRUE(clReleaseMemObjectsImg());
  Cleanup();
  EXPECT_EQ(commandQueue, nullptr);
  EXPECT_EQ(program, nullptr);
  EXPECT_EQ(rgb2GaryUcharKernel, nullptr);
  EXPECT_EQ(getWeightImageClKernel, nullptr);
  EXPECT_EQ(rgb2GaryFloatKernel, nullptr);
  EXPECT_EQ(PreFrameImageGrayCL, nullptr);
  EXPECT_EQ(grad_bound_tempOneCl, nullptr);
  EXPECT_EQ(ImageReCL, nullptr);
}

TEST(ForeignDeclarations, OpenclTuningStandsAtItsDefaults) {
  EXPECT_EQ(MAXCOLCL, 30000);
  EXPECT_EQ(scaleCL + pvalueCL, 2);
  EXPECT_EQ(demesionCL, 200);
  EXPECT_EQ(motionValueThCL0, 5);
  EXPECT_EQ(filter2DKerSizeCL, 5);
  EXPECT_EQ(brightThCL0, 40.0F);
  EXPECT_EQ(defintThCL0, 30.0F);
  EXPECT_EQ(ImageOverlap_minCL + ImageOverlap_maxCL, 1.0F);
  EXPECT_EQ(AMDidx + NVIDIAidx, -2);
}

TEST(ForeignDeclarations, OpenclStepsRefuseNull) {
  const imgInfo info = {0, 1, 4, 4};
  SPoint a{}, b{}, c{};
  cv::Mat mosaic;
  stitchflags flags{};
  imgInfo work{};
  int dx = 0, dy = 0, count = 0;
  float one = 0, two = 0;
  EXPECT_EQ(stichingImagedJointCL(nullptr, nullptr, 0, 1, 0, 0, false, a, b, mosaic, flags), -1);
  EXPECT_FALSE(
      stitchingImageOffsetCL(nullptr, nullptr, 0, 1, 0, 0, false, info, info, a, b, mosaic, flags));
  EXPECT_FALSE(stitchingImageImageblendCL(mosaic, nullptr, info, flags, a, b, c, a, b, c, work,
                                          mosaic, nullptr));
  EXPECT_FALSE(imageMosaicFunCL(nullptr, nullptr, info, dx, dy, count));
  EXPECT_NE(Filter2DModeKernel(nullptr, nullptr, nullptr, 4, 4), CL_SUCCESS);
  EXPECT_EQ(imageMotionModelCL(nullptr, nullptr, 4, 4, 1, 1), 0);
  EXPECT_FALSE(calcOverLapImageBrightCL(nullptr, nullptr, 4, 4, 4, 4, 1, one, two));
  EXPECT_FALSE(calcOverLapImageDefinitionCL(nullptr, nullptr, 4, 4, 4, 4, 1, one, two));
  EXPECT_FALSE(weightofTwoAreaFunCL(nullptr, nullptr, 4, 4, 1, 0));
  EXPECT_FALSE(twoImageFusionCL(nullptr, nullptr, 1, 0, 4, 4));
}

TEST(ForeignDeclarations, OpenclCornersNeedADevice) {
  Points corners;
  EXPECT_FALSE(findHarrisCornerCoordianteFunClOne(nullptr, {0, 1, 4, 4}, corners));
  EXPECT_FALSE(findHarrisCornerCoordianteFunClTwo(nullptr, {0, 1, 4, 4}, corners));
  EXPECT_FALSE(getRangeTh1(1, 1, nullptr, 4, 4, corners));
  EXPECT_FALSE(getRangeTh2(1, 1, nullptr, 4, 4, corners));
  EXPECT_TRUE(corners.empty());
}

TEST(ForeignDeclarations, KernelFilesAreRead) {
  std::size_t untouched = 7;
  EXPECT_EQ(ReadKernelSourceFileBin("/no/such/file", &untouched), nullptr);
  EXPECT_EQ(untouched, 7U);
}

// --- Texts ---

TEST(ForeignDeclarations, LinesCanBeSentElsewhere) {
  std::string lines;
  framequilt::setReportSink(
      [](const char* line, std::size_t length, void* context) {
        static_cast<std::string*>(context)->append(line, length).append("|");
      },
      &lines);
  Values none;
  float largest = 0.0F;
  EXPECT_FALSE(fidMax(none, largest));
  framequilt::setReportSink(nullptr, nullptr);
  EXPECT_EQ(lines, "CornervalueIn size is 0|");
  char text[] = "unread";
  CrossPlatformOutputDebugString(text);
  EXPECT_STREQ(text, "unread");
}

}  // namespace
