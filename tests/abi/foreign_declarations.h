// SPDX-License-Identifier: Apache-2.0
/// \file
/// The library as a program without its headers sees it: every name declared anew, with plain
/// types. Linking proves that the names, the parameter lists and the storage are what they were.
#pragma once

#include <CL/cl.h>
#include <pthread.h>

#include <cstddef>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

struct imgInfo {
  int reserved, channels, rows, cols;
};
struct SPoint {
  int x, y;
};
struct stitchflags {
  float brightOne, brightTwo, definitionOne, definitionTwo;
  int matchNum, offsetX, offsetY;
  SPoint position;
  int stitch_flags;
};

using Byte = unsigned char;
using Points = std::vector<SPoint>;
using Values = std::vector<float>;

// --- Entry points and host run ---

extern "C" bool initJoint(int, int, int, int, int, int, int, int);
extern "C" int stichingImagedJoint(Byte *, Byte *, int, int, int, int, bool, SPoint &, SPoint &,
                                   cv::Mat &, stitchflags &);
extern "C" bool uinitJoint();
void CrossPlatformOutputDebugString(char *);
namespace framequilt {
void setReportSink(void (*)(const char *, std::size_t, void *), void *);
}

bool initJointCpu(int, int, int, int, int, int);
bool uninitJointCpu();
int stichingImagedJointCpu(Byte *, Byte *, int, int, int, int, bool, SPoint &, SPoint &, cv::Mat &,
                           stitchflags &);
bool stitchingImageOffsetCpu(Byte *, Byte *, int, int, int, int, bool, imgInfo, imgInfo, SPoint &,
                             SPoint &, cv::Mat &, stitchflags &);
bool imageMosaicFun(Byte *, Byte *, imgInfo, int &, int &, int &);
void *findHarrisCornerCoordianteThreadOne(void *);
void *findHarrisCornerCoordianteThreadTwo(void *);
bool getRangeCpuOne(int, int, Byte *, int, int, Points &);
bool getRangeCpuTwo(int, int, Byte *, int, int, Points &);
bool stitchingImageImageblendCpu(cv::Mat, Byte *, imgInfo, stitchflags, SPoint, SPoint, SPoint,
                                 SPoint &, SPoint &, SPoint &, imgInfo &, cv::Mat &, Byte *);
void BorderExpand(cv::Mat, int, int, int, int, int, int, int, int, SPoint, cv::Mat &, SPoint &,
                  SPoint, SPoint, SPoint &, SPoint &);
int outputImageCoordate(SPoint, SPoint, int, int, int, int, SPoint, SPoint &, SPoint &);
int outputImageCoordate1(cv::Point_<int>, cv::Point_<int>, int, int, int, int, cv::Point_<int>,
                         cv::Point_<int> &, cv::Point_<int> &);

// --- Features ---

bool findHarrisCornerCoordianteFun1(Byte *, imgInfo, Points &);
bool findHarrisCornerCoordianteFun2(Byte *, imgInfo, Points &);
bool findGradSquareCrossTerms(Byte *, int, int, float *, float *, float *);
bool findGradSquareCrossTermsTwo(Byte *, Byte *, int, int, float *, float *, float *, float *,
                                 float *, float *);
bool calcResponseValue(float *, float *, float *, float, int, int, float *, float &, float &);
bool responseValueMaxSuppression(float *, float, int, int, Values &, Points &);
bool goToFirstGetRidOfSomeSPoints(Values &, Points &, int, int, int, int, int &);
bool goToSecondGetRidOfSomeSPoints(Values, Points, int, int, float, Points &);
bool fidMax(Values, float &);
void qsort(Values &, std::vector<int> &, int, int);
bool noRotaFeatureDescriber(Byte *, int, int, int, int, Points, unsigned short *, unsigned short *);
bool calacDistanceIndexFun(unsigned short *, unsigned short *, float *, float, int, int, int, int,
                           Points &);
bool roughMatchSPoint(Points, Points, Points, Points &, Points &);
bool ransacMatchSPointArrayFun(Points, Points, Points &, Points &, float &, float &);
template <class T>
bool findMinIndex(T *, int, T &, T &, int &);
extern template bool findMinIndex<float>(float *, int, float &, float &, int &);

// --- Imaging ---

bool rgb2Gray(Byte *, int, int, Byte *);
bool rgb2GrayTwo(Byte *, Byte *, int, int, Byte *, Byte *);
bool rgb2GrayFloat(Byte *, int, int, int, float *);
bool rgb2GrayFloat1(Byte *, int, int, int, float *);
bool rgb2GrayFloatTwo(Byte *, Byte *, int, int, int, float *, float *);
bool willBigImgAssignRowColToSmallImg(Byte *, int, int, int, int, int, int, int, imgInfo &, Byte *);
bool willSmallImgToBigImgAssignRowCol(Byte *, int, int, int, int, int, int, int, int, int, Byte *);
void takeOutOverLapImageFromMoasicImage(Byte *, Byte *, imgInfo, imgInfo, SPoint, int, int,
                                        imgInfo &, imgInfo &, Byte *, Byte *);
int imageMotionModel(Byte *, Byte *, int, int, int, int);
bool calcOverLapImageBright(Byte *, Byte *, int, int, int, int, int, float &, float &);
bool calcOverLapImageDefinition(Byte *, Byte *, int, int, int, int, int, float &, float &);
bool corresRowAllColZero(Byte *, int, int, int, int);
bool corresRowAllColZeroFloat(float *, int, int, int, int);
bool corresColAllRowZero(Byte *, int, int, int, int);
bool corresColAllRowZeroFloat(float *, int, int, int, int);
bool weightofTwoAreaFun(Byte *, Byte *, int, int, int, int, Byte *);
bool twoImageFusion(Byte *, Byte *, int, int, int, int);
bool opencvcopyFilter2DBorderColCh1(Byte *, int, int, int, Byte *);
bool opencvFilter2DColCalcChUchar(Byte *, int, int, int, Byte *);
bool opencvcopyFilter2DTakeOutBoundColCh1(Byte *, int, int, int, Byte *);

template <class T>
bool opencvcopyFilter2DBorderCh1(T *, int, int, int, T *, T *);
template <class T>
bool opencvFilter2DRowCalcCh1(T *, float *, int, int, int, T *);
template <class T>
bool opencvFilter2DColCalcCh1(T *, float *, int, int, int, T *);
template <class T>
bool opencvfilter2DCalcCh1(T *, float *, int, int, int, T *);
template <class T>
bool opencvcopyFilter2DTakeOutBoundCh1(T *, int, int, int, T *);
template <class T>
bool opencvInterLineARResize(T *, int, int, int, int, T *);
template <class T>
bool pretJudgeImageCh(T *, int, int, int);
extern template bool opencvcopyFilter2DBorderCh1<Byte>(Byte *, int, int, int, Byte *, Byte *);
extern template bool opencvcopyFilter2DBorderCh1<float>(float *, int, int, int, float *, float *);
extern template bool opencvFilter2DRowCalcCh1<Byte>(Byte *, float *, int, int, int, Byte *);
extern template bool opencvFilter2DRowCalcCh1<float>(float *, float *, int, int, int, float *);
extern template bool opencvFilter2DColCalcCh1<Byte>(Byte *, float *, int, int, int, Byte *);
extern template bool opencvFilter2DColCalcCh1<float>(float *, float *, int, int, int, float *);
extern template bool opencvfilter2DCalcCh1<Byte>(Byte *, float *, int, int, int, Byte *);
extern template bool opencvcopyFilter2DTakeOutBoundCh1<Byte>(Byte *, int, int, int, Byte *);
extern template bool opencvcopyFilter2DTakeOutBoundCh1<float>(float *, int, int, int, float *);
extern template bool opencvInterLineARResize<Byte>(Byte *, int, int, int, int, Byte *);
extern template bool pretJudgeImageCh<Byte>(Byte *, int, int, int);

// --- Globals ---

extern int MAXROW, MAXCOL, scale, pvalue, demesion, motionValueThCpu0, countJ;
extern float brightThCpu0, defintThCpu0, ImageOverlap_minCpu, ImageOverlap_maxCpu;
extern float filter2DKer[5], filter2DKer1[5], filter2DKerModel[5];
extern float filterH2Dker[9], filterH2DefKer[9];
extern int filter2DKerSize[4];
extern int RealImgRow, RealImgCol, imgScaleRow, imgScaleCol, numpoint, num5000;
extern int GStitchMode, GstaticDynamicFlag;
/// One byte each, whatever the library calls their type.
extern volatile Byte startOneThFlag, startTwoThFlag, threadOneCalcFlag, threadTwoCalcFlag;
extern volatile Byte openclDeviceFlag, cudaDeviceFlag, cpuMotorflage;
extern pthread_t one_pid, two_pid;
extern unsigned int R1[256], G1[256], B1[256];
extern Byte *theSorImageTemp, *thedestImageScale, *theSorImageScale, *thedestImage_pre;
extern Byte *SorTempGrayImage, *DestTempGrayImage;
extern Byte *PreFrameImageGrayCpu, *CurFrameImageGrayCpu;
extern Byte *PreFrameImageGrayBoundCpu, *PreFrameImageGrayBoundTempCpu;
extern Byte *CurFrameImageGrayBoundCpu, *CurFrameImageGrayBoundTempCpu;
extern float *grad_x2, *Coonervalue;
extern unsigned short *FeatureDescriber1;
extern cv::Mat mosaicImgCpu, mosaicImgCL;
extern Points HarrissCornerSPointOneArray, HarrissCornerSPointTwoArrayCL;
extern stitchflags flagsCpu;
extern imgInfo theSorImageInfoCpu, thedestImageInfoCpu;
extern SPoint outbordLeftCpu, outbordRightCpu;

// --- OpenCL backend ---

std::string getPlatformName(cl_platform_id);
char *ReadKernelSourceFileBin(const char *, std::size_t *);
cl_context CreateContext(cl_device_id *);
cl_command_queue CreateCommandQueue(cl_context, cl_device_id);
cl_program CreateProgram(cl_context, cl_device_id, const char *);
bool createKernel(cl_program);
bool releaseKernel();
bool CreateMemObjectsImg(cl_context, int, int, int);
bool clReleaseMemObjectsImg();
void Cleanup();
bool initJointCL(int, int, int, int, int, int);
bool uinitJointCL();
int stichingImagedJointCL(Byte *, Byte *, int, int, int, int, bool, SPoint &, SPoint &, cv::Mat &,
                          stitchflags &);
bool stitchingImageOffsetCL(Byte *, Byte *, int, int, int, int, bool, imgInfo, imgInfo, SPoint &,
                            SPoint &, cv::Mat &, stitchflags &);
bool stitchingImageImageblendCL(cv::Mat, Byte *, imgInfo, stitchflags, SPoint, SPoint, SPoint,
                                SPoint &, SPoint &, SPoint &, imgInfo &, cv::Mat &, Byte *);
void *findHarrisCornerCoordianteThreadClOne(void *);
void *findHarrisCornerCoordianteThreadClTwo(void *);
bool findHarrisCornerCoordianteFunClOne(cl_mem, imgInfo, Points &);
bool findHarrisCornerCoordianteFunClTwo(cl_mem, imgInfo, Points &);
bool getRangeTh1(int, int, cl_mem, int, int, Points &);
bool getRangeTh2(int, int, cl_mem, int, int, Points &);
bool imageMosaicFunCL(Byte *, Byte *, imgInfo, int &, int &, int &);
cl_int Filter2DModeKernel(cl_mem, cl_mem, cl_mem, int, int);
int imageMotionModelCL(Byte *, Byte *, int, int, int, int);
bool calcOverLapImageBrightCL(Byte *, Byte *, int, int, int, int, int, float &, float &);
bool calcOverLapImageDefinitionCL(Byte *, Byte *, int, int, int, int, int, float &, float &);
bool weightofTwoAreaFunCL(Byte *, Byte *, int, int, int, int);
bool twoImageFusionCL(Byte *, Byte *, int, int, int, int);

extern cl_device_id device;
extern cl_context context;
extern cl_command_queue commandQueue;
extern cl_program program;
extern cl_kernel rgb2GaryUcharKernel, getWeightImageClKernel, rgb2GaryFloatKernel;
extern cl_mem PreFrameImageGrayCL, grad_bound_tempOneCl, ImageReCL;
extern int errNum, AMDidx, NVIDIAidx;
extern int MAXROWCL, MAXCOLCL, scaleCL, pvalueCL, demesionCL, motionValueThCL0, filter2DKerSizeCL;
extern float brightThCL0, defintThCL0, ImageOverlap_minCL, ImageOverlap_maxCL;
extern int imgScaleRowCL, imgScaleColCL, numpointCL, num5000CL;
extern volatile Byte startOneThFlagCL, startTwoThFlagCL, threadOneCalcFlagCL, threadTwoCalcFlagCL;
extern volatile Byte one_pidCLFlag, two_pidCLFlag, clMotorflage;
extern pthread_t one_pidCL, two_pidCL;
extern Byte *theSorImageTempCL, *thedestImage_preCL, *theSorImageHostMap, *thedestImageHostMap;
extern Byte *OverLapImageOneGrayCL, *OverlapImageOneCL;
extern float *CoonervalueOneCL, *dist_valueCL;
extern unsigned short *DescribleSymbolOneCL, *FeatureDescriberTwoCL;
extern stitchflags flagsCL;
extern imgInfo theSorImageInfoCL, thedestImageInfoCL, InfoThCL;
extern SPoint outbordLeftCL, outbordRightCL;
