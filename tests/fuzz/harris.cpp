// SPDX-License-Identifier: Apache-2.0
// The corner response in one pass over the rows against its four steps.
#include "features/harris.h"

#include "features/harris_rows.h"
#include "imaging/filter.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/levels.h"
#include "tests/fuzz/target.h"
#include "tests/imaging/reference.h"

namespace {

using framequilt::fuzz::InputBytes;
using framequilt::fuzz::same;
using Bytes = std::vector<unsigned char>;
using Floats = std::vector<float>;

constexpr int kBorder = framequilt::kHarrisTaps / 2;

struct Response {
  Floats plane;
  float sum;
};

void smooth(Floats& plane, int rows, int cols, Floats& weights) {
  const int paddedRows = rows + 2 * kBorder;
  const int paddedCols = cols + 2 * kBorder;
  Floats one(area(paddedRows, paddedCols));
  Floats two(one.size());
  opencvcopyFilter2DBorderCh1(plane.data(), rows, cols, kBorder, one.data(), two.data());
  opencvFilter2DRowCalcCh1(two.data(), weights.data(), paddedRows, paddedCols,
                           framequilt::kHarrisTaps, one.data());
  opencvFilter2DColCalcCh1(one.data(), weights.data(), paddedRows, paddedCols,
                           framequilt::kHarrisTaps, two.data());
  opencvcopyFilter2DTakeOutBoundCh1(two.data(), paddedRows, paddedCols, kBorder, plane.data());
}

Response stepByStep(Bytes gray, int rows, int cols, Floats weights, float k) {
  Floats xx(area(rows, cols));
  Floats yy(xx.size());
  Floats xy(xx.size());
  findGradSquareCrossTerms(gray.data(), rows, cols, xx.data(), yy.data(), xy.data());
  for (Floats* plane : {&xx, &yy, &xy}) smooth(*plane, rows, cols, weights);
  Response response = {Floats(xx.size()), 0.0F};
  float mean = 0.0F;
  calcResponseValue(xx.data(), yy.data(), xy.data(), k, rows, cols, response.plane.data(), mean,
                    response.sum);
  return response;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputBytes in(data, size);
  const int rows = in.between(40, 42);
  const int cols = in.between(39, 64);
  const bool usual = in.byte() < 160;
  const Floats weights =
      usual ? Floats{0.187627F, 0.206068F, 0.212609F, 0.206068F, 0.187627F} : in.numbers(5);
  const float k = usual ? 0.007F : in.number();
  const Bytes gray = in.image(area(rows, cols));
  const Response expected = stepByStep(gray, rows, cols, weights, k);
  framequilt::fuzz::atEachLevel([&] {
    Floats plane(expected.plane.size(), 171.0F);
    const float sum =
        framequilt::harrisResponse(gray.data(), rows, cols, {weights.data(), k}, plane.data());
    FRAMEQUILT_HOLDS(same(sum, expected.sum));
    FRAMEQUILT_HOLDS(same(plane, expected.plane));
  });
  return 0;
}
