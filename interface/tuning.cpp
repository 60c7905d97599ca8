// SPDX-License-Identifier: Apache-2.0
#include "framequilt/tuning.h"

int MAXROW = 20000, MAXCOL = 20000;
int scale = 1;
int pvalue = 1;
int demesion = 200;
float brightThCpu0 = 40.0F;
float defintThCpu0 = 30.0F;
int motionValueThCpu0 = 5;
float ImageOverlap_minCpu = 0.1F, ImageOverlap_maxCpu = 0.9F;
int countJ = 10000;

float filter2DKer[5] = {0.187627F, 0.206068F, 0.212609F, 0.206068F, 0.187627F};
float filter2DKer1[5] = {0.187627F, 0.206068F, 0.212609F, 0.206068F, 0.187627F};
float filter2DKerModel[5] = {0.0554487F, 0.244201F, 0.40262F, 0.244201F, 0.0554487F};
float filterH2Dker[9] = {0.0625F, 0.125F, 0.0625F, 0.125F, 0.25F, 0.125F, 0.0625F, 0.125F, 0.0625F};
float filterH2DefKer[9] = {-1.0F, -2.0F, -1.0F, 2.0F, 4.0F, 2.0F, -1.0F, -2.0F, -1.0F};
int filter2DKerSize[4] = {5, 0, 0, 0};

int MAXROWCL = 30000, MAXCOLCL = 30000;
int scaleCL = 1, pvalueCL = 1;
int demesionCL = 200;
float brightThCL0 = 40.0F, defintThCL0 = 30.0F;
int motionValueThCL0 = 5;
float ImageOverlap_minCL = 0.1F, ImageOverlap_maxCL = 0.9F;
int filter2DKerSizeCL = 5;
int AMDidx = -1, NVIDIAidx = -1;

float brightThCpu = 0.0F, defintThCpu = 0.0F;
int motionValueThCpu = 0;
float brightThCL = 0.0F, defintThCL = 0.0F;
int motionValueThCL = 0;

int RealImgRow = 0, RealImgCol = 0;
int imgScaleRow = 0, imgScaleCol = 0;
int numpoint = 0, num5000 = 0;
int pointdownscal = 0, gray_pointdownscal_row = 0, gray_pointdownscal_col = 0;
