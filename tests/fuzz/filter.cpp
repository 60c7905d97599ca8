// SPDX-License-Identifier: Apache-2.0
// Padding, filtering and taking out, of bytes and of floats, against loops over single pixels.
#include "imaging/filter.h"

#include <iterator>
#include <type_traits>

#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/target.h"
#include "tests/imaging/reference.h"

namespace {

using framequilt::fuzz::InputBytes;
using framequilt::fuzz::same;
using Bytes = std::vector<unsigned char>;
using Floats = std::vector<float>;

template <class T>
constexpr T kUntouched = T{171};

/// An element more than there are, so that no pointer is null.
template <class T>
std::vector<T> takePlane(InputBytes& in, int rows, int cols) {
  const std::size_t count = area(std::max(rows, 0), std::max(cols, 0)) + 1;
  const Bytes bytes = in.image(count);
  std::vector<T> plane(bytes.begin(), bytes.end());
  if constexpr (std::is_same_v<T, float>) {
    // Some odd ones among them.
    for (int odd = in.between(0, 8); odd > 0; --odd) plane[in.word() % count] = in.number();
    if (in.flag()) {
      for (float& value : plane) value = value * 0.37F - 20.0F;
    }
  }
  return plane;
}

bool equal(const Bytes& a, const Bytes& b) { return a == b; }
bool equal(const Floats& a, const Floats& b) { return same(a, b); }

/// What a sum becomes: bytes wrap, and numbers beyond 32 bits give 0.
void store(float sum, float& element) { element = sum; }
void store(float sum, unsigned char& element) {
  const bool fits = sum >= -2147483648.0F && sum < 2147483648.0F;
  element = fits ? wrappedByte(sum) : static_cast<unsigned char>(0);
}

template <class T>
void checkPadding(InputBytes& in) {
  const int rows = in.between(-1, 12);
  const int cols = in.between(-1, 70);
  const int border = in.between(-1, 6);
  std::vector<T> src = takePlane<T>(in, rows, cols);
  std::vector<T> expected;
  if (rows >= 1 && cols >= 1 && border >= 0) {
    for (int r = -border; r < rows + border; ++r) {
      for (int c = -border; c < cols + border; ++c) {
        expected.push_back(src[at(mirrored(r, rows), mirrored(c, cols), cols)]);
      }
    }
  }
  expected.push_back(kUntouched<T>);
  std::vector<T> a(expected.size(), kUntouched<T>);
  std::vector<T> b = a;
  const bool one = in.flag();
  FRAMEQUILT_HOLDS(opencvcopyFilter2DBorderCh1(src.data(), rows, cols, border,
                                               one ? nullptr : a.data(), b.data()));
  FRAMEQUILT_HOLDS(equal(b, expected));
  FRAMEQUILT_HOLDS(one || equal(a, expected));
}

template <class T>
void checkPass(InputBytes& in, bool down) {
  const int rows = in.between(0, 12);
  const int cols = in.between(0, 140);
  const int taps = in.between(0, 7);
  const int half = taps / 2;
  std::vector<T> src = takePlane<T>(in, rows, cols);
  Floats kernel = in.numbers(static_cast<std::size_t>(taps) + 1);
  std::vector<T> expected(src.size(), kUntouched<T>);
  std::vector<T> out = expected;
  for (int r = down ? half : 0; r < rows - (down ? half : 0); ++r) {
    for (int c = down ? 0 : half; c < cols - (down ? 0 : half); ++c) {
      float sum = 0.0F;
      for (int j = 0; j < taps; ++j) {
        const std::size_t tap = down ? at(r - half + j, c, cols) : at(r, c - half + j, cols);
        sum = plusProduct(sum, kernel[static_cast<std::size_t>(j)], static_cast<float>(src[tap]));
      }
      store(sum, expected[at(r, c, cols)]);
    }
  }
  const auto pass = down ? opencvFilter2DRowCalcCh1<T> : opencvFilter2DColCalcCh1<T>;
  FRAMEQUILT_HOLDS(pass(src.data(), kernel.data(), rows, cols, taps, out.data()));
  FRAMEQUILT_HOLDS(equal(out, expected));
}

template <class T>
void checkTakingOut(InputBytes& in) {
  const int rows = in.between(0, 12);
  const int cols = in.between(0, 70);
  const int border = in.between(0, 6);
  std::vector<T> src = takePlane<T>(in, rows, cols);
  std::vector<T> expected;
  for (int r = border; r < rows - border; ++r) {
    for (int c = border; c < cols - border; ++c) expected.push_back(src[at(r, c, cols)]);
  }
  expected.push_back(kUntouched<T>);
  std::vector<T> out(expected.size(), kUntouched<T>);
  FRAMEQUILT_HOLDS(opencvcopyFilter2DTakeOutBoundCh1(src.data(), rows, cols, border, out.data()));
  FRAMEQUILT_HOLDS(equal(out, expected));
}

void checkBinomial(InputBytes& in) {
  const int rows = in.between(0, 12);
  const int cols = in.between(0, 140);
  Bytes src = takePlane<unsigned char>(in, rows, cols);
  Bytes expected(src.size(), kUntouched<unsigned char>);
  Bytes out = expected;
  for (int r = 1; r < rows - 1; ++r) {
    for (int c = 1; c < cols - 1; ++c) {
      int sum = 0;
      for (int k = 0; k < 9; ++k) {
        const int weight = (k / 3 == 1 ? 2 : 1) * (k % 3 == 1 ? 2 : 1);
        sum += weight * src[at(r - 1 + k / 3, c - 1 + k % 3, cols)];
      }
      expected[at(r, c, cols)] = static_cast<unsigned char>(sum / 16);
    }
  }
  FRAMEQUILT_HOLDS(opencvfilter2DCalcCh1<unsigned char>(src.data(), nullptr, rows, cols,
                                                        in.anyInt(), out.data()));
  FRAMEQUILT_HOLDS(out == expected);
}

void checkEdges(InputBytes& in) {
  static constexpr int kTaps[] = {-1, -2, -1, 2, 4, 2, -1, -2, -1};
  const int rows = in.between(0, 8);
  const int cols = in.between(0, 140);
  Bytes src = takePlane<unsigned char>(in, rows, cols);
  Bytes expected(src.size(), kUntouched<unsigned char>);
  Bytes out = expected;
  for (int r = 0; r < rows; ++r) {
    for (int c = 4; c < cols - 4; ++c) {
      int sum = 2560;
      for (int k = 0; k < 9; ++k) sum += kTaps[k] * src[at(r, c - 4 + k, cols)];
      expected[at(r, c, cols)] = static_cast<unsigned char>(sum % 256);
    }
  }
  FRAMEQUILT_HOLDS(opencvFilter2DColCalcChUchar(src.data(), rows, cols, in.anyInt(), out.data()));
  FRAMEQUILT_HOLDS(out == expected);
}

/// Left a mirror, right the columns before the last one in their own order.
void checkColumnPadding(InputBytes& in) {
  const int rows = in.between(0, 8);
  const int cols = in.between(0, 70);
  const int border = in.between(-1, 6);
  Bytes src = takePlane<unsigned char>(in, rows, cols);
  Bytes expected;
  for (int r = 0; r < rows && cols > 0 && border >= 0; ++r) {
    for (int c = -border; c < 0; ++c) expected.push_back(src[at(r, mirrored(c, cols), cols)]);
    for (int c = 0; c < cols; ++c) expected.push_back(src[at(r, c, cols)]);
    for (int c = cols - border - 1; c < cols - 1; ++c) {
      expected.push_back(src[at(r, std::max(c, 0), cols)]);
    }
  }
  expected.push_back(kUntouched<unsigned char>);
  Bytes out(expected.size(), kUntouched<unsigned char>);
  FRAMEQUILT_HOLDS(opencvcopyFilter2DBorderColCh1(src.data(), rows, cols, border, out.data()));
  FRAMEQUILT_HOLDS(out == expected);
}

void checkTakingOutColumns(InputBytes& in) {
  const int rows = in.between(0, 8);
  const int cols = in.between(0, 70);
  const int border = in.between(0, 6);
  Bytes src = takePlane<unsigned char>(in, rows, cols);
  Bytes expected;
  for (int r = 0; r < rows; ++r) {
    for (int c = border; c < cols - border; ++c) expected.push_back(src[at(r, c, cols)]);
  }
  expected.push_back(kUntouched<unsigned char>);
  Bytes out(expected.size(), kUntouched<unsigned char>);
  FRAMEQUILT_HOLDS(
      opencvcopyFilter2DTakeOutBoundColCh1(src.data(), rows, cols, border, out.data()));
  FRAMEQUILT_HOLDS(out == expected);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  framequilt::fuzz::silenceReports();
  InputBytes in(data, size);
  using Check = void (*)(InputBytes&);
  static constexpr Check kChecks[] = {
      &checkPadding<unsigned char>,
      &checkPadding<float>,
      [](InputBytes& bytes) { checkPass<unsigned char>(bytes, true); },
      [](InputBytes& bytes) { checkPass<unsigned char>(bytes, false); },
      [](InputBytes& bytes) { checkPass<float>(bytes, true); },
      [](InputBytes& bytes) { checkPass<float>(bytes, false); },
      &checkTakingOut<unsigned char>,
      &checkTakingOut<float>,
      &checkBinomial,
      &checkEdges,
      &checkColumnPadding,
      &checkTakingOutColumns,
  };
  kChecks[in.byte() % std::size(kChecks)](in);
  return 0;
}
