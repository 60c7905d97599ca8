// SPDX-License-Identifier: Apache-2.0
#include "imaging/filter.h"

#include <framequilt/tuning.h>
#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <vector>

#include "tests/imaging/reference.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

const char kRefusal[] = "ptr is NULL\n";

void storeSum(float sum, float& element) { element = sum; }
void storeSum(float sum, unsigned char& element) { element = wrappedByte(sum); }

/// Weighted sum of the elements from (row, col) on, going down or along the row.
template <class T>
T kernelSum(const std::vector<T>& src, int cols, int row, int col, bool down,
            const Floats& kernel) {
  float sum = 0.0F;
  for (float weight : kernel) {
    sum = plusProduct(sum, weight, static_cast<float>(src[at(row, col, cols)]));
    (down ? row : col) += 1;
  }
  T stored;
  storeSum(sum, stored);
  return stored;
}

/// Both passes on a guarded copy of `src`, each compared with the slow sums.
template <class T>
void comparePasses(std::vector<T> src, int rows, int cols, Floats kernel) {
  const int taps = static_cast<int>(kernel.size());
  const int half = taps / 2;
  std::vector<T> down(src.size(), Guarded<T>::kUntouched);
  std::vector<T> along = down;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      if (r >= half && r < rows - half) {
        down[at(r, c, cols)] = kernelSum(src, cols, r - half, c, true, kernel);
      }
      if (c >= half && c < cols - half) {
        along[at(r, c, cols)] = kernelSum(src, cols, r, c - half, false, kernel);
      }
    }
  }
  Guarded<T> downOut(src.size()), alongOut(src.size());
  src.push_back(T{});  // so that an empty source is a pointer too
  EXPECT_TRUE(
      opencvFilter2DRowCalcCh1(src.data(), kernel.data(), rows, cols, taps, downOut.data()));
  EXPECT_TRUE(
      opencvFilter2DColCalcCh1(src.data(), kernel.data(), rows, cols, taps, alongOut.data()));
  EXPECT_EQ(downOut.values(), down);
  EXPECT_EQ(alongOut.values(), along);
  EXPECT_TRUE(downOut.intact() && alongOut.intact());
}

unsigned char onePass(unsigned char value, float weight) {
  unsigned char out = 171;
  EXPECT_TRUE(opencvFilter2DRowCalcCh1(&value, &weight, 1, 1, 1, &out));
  unsigned char along = 171;
  EXPECT_TRUE(opencvFilter2DColCalcCh1(&value, &weight, 1, 1, 1, &along));
  EXPECT_EQ(out, along);
  return out;
}

/// Vertical, then horizontal pass over a flat padded image; the value in its middle.
unsigned char smoothedFlat(unsigned char value, float* kernel) {
  Bytes a(25, value), b = a;
  EXPECT_TRUE(opencvFilter2DRowCalcCh1(a.data(), kernel, 5, 5, 5, b.data()));
  EXPECT_TRUE(opencvFilter2DColCalcCh1(b.data(), kernel, 5, 5, 5, a.data()));
  return a[at(2, 2, 5)];
}

TEST(Kernels, HaveTheirValues) {
  EXPECT_EQ(Floats(filter2DKer, filter2DKer + 5),
            (Floats{0.187627F, 0.206068F, 0.212609F, 0.206068F, 0.187627F}));
  EXPECT_EQ(Floats(filter2DKer1, filter2DKer1 + 5), Floats(filter2DKer, filter2DKer + 5));
  EXPECT_EQ(Floats(filter2DKerModel, filter2DKerModel + 5),
            (Floats{0.0554487F, 0.244201F, 0.40262F, 0.244201F, 0.0554487F}));
  EXPECT_EQ(Floats(filterH2Dker, filterH2Dker + 9),
            (Floats{0.0625F, 0.125F, 0.0625F, 0.125F, 0.25F, 0.125F, 0.0625F, 0.125F, 0.0625F}));
  EXPECT_EQ(Floats(filterH2DefKer, filterH2DefKer + 9),
            (Floats{-1.0F, -2.0F, -1.0F, 2.0F, 4.0F, 2.0F, -1.0F, -2.0F, -1.0F}));
  EXPECT_EQ(filter2DKerSize[0], 5);
}

TEST(RowFilter, AddsTheWeightedRowsAboveAndBelow) {
  Bytes src = {1, 10, 2, 20, 3, 30};  // 3 x 2
  Floats kernel = {1.0F, 2.0F, 3.0F};
  GuardedBytes out(6);
  EXPECT_TRUE(opencvFilter2DRowCalcCh1(src.data(), kernel.data(), 3, 2, 3, out.data()));
  EXPECT_EQ(out.values(), (Bytes{171, 171, 14, 140, 171, 171}));
  EXPECT_TRUE(out.intact());
}

TEST(ColFilter, AddsTheWeightedColumnsLeftAndRight) {
  Bytes src = {1, 2, 3, 10, 20, 30};  // 2 x 3
  Floats kernel = {1.0F, 2.0F, 3.0F};
  GuardedBytes out(6);
  EXPECT_TRUE(opencvFilter2DColCalcCh1(src.data(), kernel.data(), 2, 3, 3, out.data()));
  EXPECT_EQ(out.values(), (Bytes{171, 14, 171, 171, 140, 171}));
  EXPECT_TRUE(out.intact());
}

TEST(RowFilter, FourRowImageIsLeftAlone) {
  Bytes src(28, 9);
  GuardedBytes out(28);
  EXPECT_TRUE(opencvFilter2DRowCalcCh1(src.data(), filter2DKerModel, 4, 7, 5, out.data()));
  EXPECT_EQ(out.values(), Bytes(28, GuardedBytes::kUntouched));
}

TEST(ColFilter, FourColumnImageIsLeftAlone) {
  Floats src(28, 9.0F);
  GuardedFloats out(28);
  EXPECT_TRUE(opencvFilter2DColCalcCh1(src.data(), filter2DKer, 7, 4, 5, out.data()));
  EXPECT_EQ(out.values(), Floats(28, GuardedFloats::kUntouched));
}

TEST(ByteFilter, TruncatesTowardZero) {
  EXPECT_EQ(onePass(255, 0.5F), 127);
  EXPECT_EQ(onePass(1, 0.99F), 0);
  EXPECT_EQ(onePass(1, -0.99F), 0);
}

TEST(ByteFilter, KeepsTheLowByteInsteadOfSaturating) {
  EXPECT_EQ(onePass(200, 2.0F), 144);
  EXPECT_EQ(onePass(1, -1.0F), 255);
  EXPECT_EQ(onePass(100, -3.0F), 212);
  EXPECT_EQ(onePass(255, 1000.0F), 24);
}

TEST(ByteFilter, TwoPassesTruncateTwice) {
  // 21 * 0.9 * 0.9 is 17.01, but 18.9 has become 18 in between.
  EXPECT_EQ(onePass(onePass(21, 0.9F), 0.9F), 16);
}

TEST(ByteFilter, MotionKernelKeepsEveryFlatImage) {
  for (int value = 0; value < 256; ++value) {
    const auto byte = static_cast<unsigned char>(value);
    EXPECT_EQ(smoothedFlat(byte, filter2DKerModel), byte);
  }
}

TEST(ByteFilter, CornerKernelIsNotRenormalised) { EXPECT_EQ(smoothedFlat(100, filter2DKer), 98); }

TEST(FloatFilter, AddsInAscendingOrder) {
  // 1 is lost beside 1e8; any other order would keep it.
  Floats kernel = {1e8F, 1.0F, -1e8F};
  Floats src(9, 1.0F);
  GuardedFloats down(9), along(9);
  EXPECT_TRUE(opencvFilter2DRowCalcCh1(src.data(), kernel.data(), 3, 3, 3, down.data()));
  EXPECT_TRUE(opencvFilter2DColCalcCh1(src.data(), kernel.data(), 3, 3, 3, along.data()));
  EXPECT_EQ(down.values()[at(1, 1, 3)], 0.0F);
  EXPECT_EQ(along.values()[at(1, 1, 3)], 0.0F);
}

/// Every small width, and some around multiples of what a vector loop may take at a time.
std::vector<int> widths() {
  std::vector<int> all(71);
  std::iota(all.begin(), all.end(), 0);
  all.insert(all.end(), {127, 128, 129, 131, 132, 133, 256, 257, 260, 261, 521});
  return all;
}

TEST(ByteFilter, AgreesWithTheSlowSumsAtEveryWidth) {
  Random random(61);
  for (int cols : widths()) {
    const int rows = random.between(0, 9);
    Floats kernel(static_cast<std::size_t>(random.between(1, 6)));
    for (float& weight : kernel) {
      weight = static_cast<float>(random.between(-1000, 1000)) * 0.0013F;
    }
    SCOPED_TRACE(testing::Message()
                 << "seed 61: " << rows << " x " << cols << ", " << kernel.size() << " taps");
    const Bytes src = random.bytes(area(rows, cols));
    comparePasses(src, rows, cols, kernel);
    if (kernel.size() == 5) {
      comparePasses(src, rows, cols, Floats(filter2DKerModel, filter2DKerModel + 5));
    }
  }
}

TEST(FloatFilter, AgreesWithTheSlowSumsAtEveryWidth) {
  Random random(62);
  for (int cols : widths()) {
    const int rows = random.between(0, 9);
    SCOPED_TRACE(testing::Message() << "seed 62: " << rows << " x " << cols);
    Floats src(area(rows, cols));
    for (float& value : src) value = static_cast<float>(random.between(-65025, 65025)) * 0.37F;
    comparePasses(src, rows, cols, Floats(filter2DKer, filter2DKer + 5));
    comparePasses(src, rows, cols, {0.3F, -1.7F, 0.45F});
  }
}

TEST(KernelFilters, NullPointersAreRefusedWithOneLine) {
  Bytes in(9, 1), out(9, 171);
  Floats fin(9, 1.0F), fout(9, 171.0F);
  float weight = 1.0F;
  const std::vector<std::function<bool()>> calls = {
      [&] {
        return opencvFilter2DRowCalcCh1<unsigned char>(nullptr, &weight, 3, 3, 1, out.data());
      },
      [&] { return opencvFilter2DRowCalcCh1<unsigned char>(in.data(), &weight, 3, 3, 1, nullptr); },
      [&] { return opencvFilter2DRowCalcCh1<float>(nullptr, &weight, 3, 3, 1, fout.data()); },
      [&] { return opencvFilter2DRowCalcCh1<float>(fin.data(), &weight, 3, 3, 1, nullptr); },
      [&] {
        return opencvFilter2DColCalcCh1<unsigned char>(nullptr, &weight, 3, 3, 1, out.data());
      },
      [&] { return opencvFilter2DColCalcCh1<unsigned char>(in.data(), &weight, 3, 3, 1, nullptr); },
      [&] { return opencvFilter2DColCalcCh1<float>(nullptr, &weight, 3, 3, 1, fout.data()); },
      [&] { return opencvFilter2DColCalcCh1<float>(fin.data(), &weight, 3, 3, 1, nullptr); },
  };
  for (std::size_t i = 0; i < calls.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(standardOutputOf([&] { EXPECT_FALSE(calls[i]()); }), kRefusal);
  }
  EXPECT_EQ(out, Bytes(9, 171));
  EXPECT_EQ(fout, Floats(9, 171.0F));
}

}  // namespace
