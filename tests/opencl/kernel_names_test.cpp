// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

std::string kernelSource() {
  std::ifstream file(FRAMEQUILT_KERNELS, std::ios::binary);
  EXPECT_TRUE(file) << FRAMEQUILT_KERNELS;
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Runs of letters, digits and underscores of the program, comments left out.
Names words() {
  std::istringstream source(kernelSource());
  Names found = {""};
  for (std::string line; std::getline(source, line);) {
    for (const char c : line.substr(0, line.find("//")) + '\n') {
      const bool inWord = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
      if (inWord) found.back() += c;
      if (!inWord && !found.back().empty()) found.emplace_back();
    }
  }
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

  const Names code = words();
  Names defined;
  for (std::size_t i = 0; i + 2 < code.size(); ++i) {
    if (code[i] == "__kernel" && code[i + 1] == "void") defined.push_back(code[i + 2]);
  }
  std::sort(defined.begin(), defined.end());
  EXPECT_EQ(defined, expected);
  const auto isQualifier = [](const std::string& word) {
    return word == "__kernel" || word == "kernel";
  };
  EXPECT_EQ(std::count_if(code.begin(), code.end(), isQualifier), 36);
}

/// The first line: what comes before it would be compiled with joined products and sums.
TEST(KernelSource, KeepsProductsAndSumsApart) {
  const std::string source = kernelSource();
  EXPECT_EQ(source.substr(0, source.find('\n')), "#pragma OPENCL FP_CONTRACT OFF");
  const Names code = words();
  EXPECT_EQ(std::count(code.begin(), code.end(), "FP_CONTRACT"), 1);
}

TEST(KernelSource, HasNothingThatDependsOnTheDevice) {
  for (const std::string& word : words()) {
    for (const char* part : {"native_", "half_", "_sat", "restrict"}) {
      EXPECT_EQ(word.find(part), std::string::npos) << word;
    }
  }
}

/// What a compiler of the device says names them.
TEST(KernelSource, NamesTheFileOfEachLine) {
  const std::string source = kernelSource();
  for (const char* file : {"border", "filter", "fusion", "gradient", "gray", "motion", "prelude",
                           "region", "resize"}) {
    EXPECT_NE(source.find("\n#line 1 \"" + std::string(file) + ".cl\"\n// SPDX"), std::string::npos)
        << file;
  }
}

}  // namespace
