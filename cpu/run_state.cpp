// SPDX-License-Identifier: Apache-2.0
#include "cpu/run_state.h"

pthread_t one_pid = 0, two_pid = 0;
std::atomic<bool> startOneThFlag{false}, startTwoThFlag{false};
std::atomic<bool> threadOneCalcFlag{false}, threadTwoCalcFlag{false};

unsigned char *theSorImageScale = nullptr, *thedestImageScale = nullptr;
unsigned char *theSorImageTemp = nullptr;
unsigned char *thedestImage_pre = nullptr;

cv::Mat mosaicImgCpu;
SPoint outbordLeftCpu = {}, outbordRightCpu = {};
stitchflags flagsCpu = {};
imgInfo theSorImageInfoCpu = {}, thedestImageInfoCpu = {};

int cpuMotordx = 0, cpuMotordy = 0;
bool cpuMotorflage = false;

unsigned char *SorImageOneIn = nullptr, *DestImageTwoIn = nullptr;
imgInfo InfoTh = {};
unsigned char *SorTempGrayImage = nullptr, *DestTempGrayImage = nullptr;

unsigned char *SorImageOnergb_gray = nullptr, *DestImageTworgb_gray = nullptr;
unsigned char *gray_pointdownscal = nullptr, *gray_pointdownscal1 = nullptr;
unsigned char *OverlapImageOne = nullptr, *OverlapImageTwo = nullptr;
float *Coonervalue = nullptr, *Coonervalue1 = nullptr;
unsigned char *OverLapImageOneGray = nullptr, *OverLapImageTwoGray = nullptr;
unsigned char *OverLapImageOneGrayTemp = nullptr, *OverLapImageTwoGrayTemp = nullptr;
float *dst_row_bound_out1 = nullptr, *dst_out1 = nullptr;
float *dst_row_bound_out2 = nullptr, *dst_out2 = nullptr;
