// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

std::string kernelSource() {
  std::ifstream file(FRAMEQUILT_KERNELS, std::ios::binary);
  EXPECT_TRUE(file) << FRAMEQUILT_KERNELS;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string withoutComments(const std::string& source) {
  return std::regex_replace(source, std::regex("//[^\n]*"), "");
}

Names sortedMatches(const std::string& text, const std::string& pattern, std::size_t group) {
  const std::regex expression(pattern);
  Names found;
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
       ++match) {
    found.push_back((*match)[group]);
  }
  std::sort(found.begin(), found.end());
  return found;
}

TEST(KernelNames, AreDefinedOnceEachAndNoOthers) {
  // Spelled as hosts know them.
  Names expected = {"opencvcopyFilter2DBorderRowUhcarMode",
                    "opencvcopyFilter2DBorderColUcharMode",
                    "opencvFilter2DRowCalcUcharWin5Mode",
                    "opencvFilter2DColCalcUcharWin5Mode",
                    "pretJudgeImageCh3Kernel",
                    "pretJudgeImageCh1Kernel",
                    "opencvInterLineARResizeDownCh3Kernel",
                    "opencvInterLineARResizeDownCh1Kernel",
                    "opencvInterLineARResizeDownCh1Kernel2",
                    "rgb2GaryKernel",
                    "rgb2GaryKernel2",
                    "rgb2GaryTwoKernel",
                    "rgb2GaryFloatTwoCh3Kernel",
                    "rgb2GaryFloatTwoCh1Kernel",
                    "findGradSquareCrossTermsKernel",
                    "findGradSquareCrossTermsKernel2",
                    "opencvcopyFilter2DBorderRowUchar",
                    "opencvcopyFilter2DBorderColUchar",
                    "absCalcKernel",
                    "opencvcopyFilter2DBorderRowFloat",
                    "opencvcopyFilter2DBorderRowFloat2",
                    "opencvcopyFilter2DBorderColFloat",
                    "opencvcopyFilter2DBorderColFloat2",
                    "opencvFilter2DRowCalcFloatWin5",
                    "opencvFilter2DRowCalcFloatWin52",
                    "opencvFilter2DColCalcFloatWin5",
                    "opencvFilter2DColCalcFloatWin52",
                    "opencvcopyFilter2DTakeOutBoundFloat",
                    "opencvcopyFilter2DTakeOutBoundFloat2",
                    "opencvfilter2DCalcCharWin3Kernel",
                    "opencvcopyFilter2DTakeOutBoundUchar",
                    "getFusionImageKernelCh3",
                    "getFusionImageKernelCh1",
                    "getRowRange",
                    "getRowRange2",
                    "getWeightImageKernel"};
  std::sort(expected.begin(), expected.end());
  const std::string code = withoutComments(kernelSource());
  EXPECT_EQ(sortedMatches(code, R"(\b__kernel\s+void\s+(\w+)\s*\()", 1), expected);
  EXPECT_EQ(sortedMatches(code, R"(\b(__)?kernel\b)", 0).size(), expected.size());
}

/// The first line: what comes before it would be compiled with joined products and sums.
TEST(KernelSource, KeepsProductsAndSumsApart) {
  const std::string source = kernelSource();
  EXPECT_EQ(source.substr(0, source.find('\n')), "#pragma OPENCL FP_CONTRACT OFF");
  EXPECT_EQ(sortedMatches(source, "FP_CONTRACT", 0).size(), 1U);
}

TEST(KernelSource, HasNothingThatDependsOnTheDevice) {
  const std::string code = withoutComments(kernelSource());
  EXPECT_EQ(sortedMatches(code, R"(\w*(native_|half_|_sat|restrict)\w*)", 0), Names());
}

TEST(KernelSource, NamesTheFileOfEachLine) {
  const std::string source = kernelSource();
  EXPECT_EQ(sortedMatches(source, "#line 1 \"(\\w+[.]cl)\"\n// SPDX", 1),
            (Names{"border.cl", "filter.cl", "fusion.cl", "gradient.cl", "gray.cl", "motion.cl",
                   "prelude.cl", "region.cl", "resize.cl"}));
}

}  // namespace
