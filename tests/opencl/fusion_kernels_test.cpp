// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "imaging/fusion.h"
#include "imaging/imaging_state.h"
#include "tests/imaging/host_state.h"
#include "tests/imaging/slow_fusion.h"
#include "tests/opencl/kernel_planes.h"

namespace {

Bytes deviceMix(const Bytes& a, const Bytes& b, const Bytes& weight, int rows, int cols,
                int channels) {
  const DeviceBytes out(a.size());
  runKernel(channels == 3 ? "getFusionImageKernelCh3" : "getFusionImageKernelCh1",
            gridOver(rows, cols), DeviceBytes(a), DeviceBytes(b), DeviceBytes(weight), rows, cols,
            out);
  return out.values();
}

TEST(FusionKernels, MixWithEveryWeight) {
  // A row for each weight, a column for each byte of the first image.
  Bytes a(area(256, 256)), weight = a;
  for (std::size_t i = 0; i < a.size(); ++i) {
    weight[i] = static_cast<unsigned char>(i / 256);
    a[i] = static_cast<unsigned char>(i % 256);
  }
  for (int other = 0; other < 256; other += isEmulated() ? 255 : 15) {
    const int rows = isEmulated() ? 3 : 256;
    const Bytes used(weight.begin(), weight.begin() + rows * 256);
    const Bytes first(a.begin(), a.begin() + rows * 256);
    const Bytes second(first.size(), static_cast<unsigned char>(other));
    EXPECT_TRUE(
        sameBits(slowMix(first, second, used, 1), deviceMix(first, second, used, rows, 256, 1)))
        << other;
  }
}

TEST(FusionKernels, MixAsTheHostDoes) {
  for (const int channels : {3, 1}) {
    Random random(static_cast<std::uint64_t>(channels));
    for (const auto& [rows, cols] : planeSizes()) {
      SCOPED_TRACE(std::to_string(rows) + " x " + std::to_string(cols));
      const Bytes a = patchy(random, rows, cols, channels);
      const Bytes b = patchy(random, rows, cols, channels);
      Bytes weight(area(rows, cols)), mixed = a, second = b;
      weightofTwoAreaFun(mixed.data(), second.data(), rows, cols, channels, 0, weight.data());
      twoImageFusion(mixed.data(), second.data(), channels, 0, rows, cols);
      EXPECT_TRUE(sameBits(mixed, deviceMix(a, b, weight, rows, cols, channels)));
    }
  }
}

TEST(FusionKernels, WeighTheMapsOfTheHostAsItDoes) {
  Random random(19);
  for (const auto& [rows, cols] : planeSizes()) {
    SCOPED_TRACE(std::to_string(rows) + " x " + std::to_string(cols));
    Bytes one = patchy(random, rows, cols, 1);
    Bytes two = patchy(random, rows, cols, 1);
    const HostPlane<float> a(AreaImageOneGaryFloat, Floats(one.size()));
    const HostPlane<float> b(AreaImageTwoGaryFloat, Floats(one.size()));
    Bytes expected(one.size());
    weightofTwoAreaFun(one.data(), two.data(), rows, cols, 1, 0, expected.data());
    const DeviceBytes weight(expected.size());
    runKernel("getWeightImageKernel", gridOver(rows, cols), DeviceFloats(a.values()),
              DeviceFloats(b.values()), rows, cols, weight);
    EXPECT_TRUE(sameBits(expected, weight.values()));
  }
}

struct Distances {
  Floats a, b;

  void add(float one, float two) {
    a.push_back(one);
    b.push_back(two);
  }
};

void sortUnique(Floats& values) {
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
}

/// Every sum of up to `steps` steps of a distance map, in every order, up to its start value.
Floats reachableDistances(int steps) {
  Floats all = {0.0F, 255.0F};
  Floats last = {0.0F};
  for (int i = 0; i < steps; ++i) {
    Floats next;
    for (const float distance : last) {
      for (const float sum : {distance + 0.2F, distance + 0.3F}) {
        if (sum <= 255.0F) next.push_back(sum);
      }
    }
    sortUnique(next);
    all.insert(all.end(), next.begin(), next.end());
    last = std::move(next);
  }
  sortUnique(all);
  return all;
}

/// All pairs of near distances, random pairs of all, and pairs whose quotient is next to a whole
/// number or next to a half.
const Distances& adversarialDistances() {
  static const Distances distances = [] {
    Distances pairs;
    const Floats near = reachableDistances(isEmulated() ? 3 : 25);
    for (const float a : near) {
      for (const float b : near) pairs.add(a, b);
    }
    if (isEmulated()) return pairs;

    const Floats far = reachableDistances(200);
    Random random(3);
    const auto any = [&] { return far[random.next() % far.size()]; };
    for (int i = 0; i < 1000000; ++i) pairs.add(any(), any());
    for (int halves = 1; halves < 510; ++halves) {
      for (int i = 0; i < 400; ++i) {
        const float a = any();
        const auto b = static_cast<float>(a * (510.0 - halves) / halves);
        auto closest = std::lower_bound(far.begin(), far.end(), b);
        if (closest != far.begin()) pairs.add(a, *std::prev(closest));
        if (closest != far.end()) pairs.add(a, *closest);
        // Not a distance that a map holds, but one that hits the whole number or just misses it.
        pairs.add(a, b);
        pairs.add(a, std::nextafter(b, 0.0F));
        pairs.add(a, std::nextafter(b, 1000.0F));
      }
    }
    return pairs;
  }();
  return distances;
}

Bytes hostWeights(const Distances& distances) {
  Bytes weights(distances.a.size());
  for (std::size_t i = 0; i < weights.size(); ++i) {
    const float sum = distances.a[i] + distances.b[i];
    const float scaled = distances.a[i] * 255.0F;
    weights[i] = sum == 0.0F ? 0 : wrappedByte(scaled / sum);
  }
  return weights;
}

Bytes deviceWeights(const KernelProgram& program, const Distances& distances) {
  const int count = static_cast<int>(distances.a.size());
  constexpr int kCols = 1000;
  const int rows = (count + kCols - 1) / kCols;
  Distances padded = distances;
  padded.a.resize(area(rows, kCols));
  padded.b.resize(area(rows, kCols));
  const DeviceBytes weight(area(rows, kCols));
  program.run("getWeightImageKernel", gridOver(rows, kCols), DeviceFloats(padded.a),
              DeviceFloats(padded.b), rows, kCols, weight);
  Bytes weights = weight.values();
  weights.resize(distances.a.size());
  return weights;
}

const std::string kWithoutDouble = "#define FRAMEQUILT_WITHOUT_FP64\n";

/// The kernels as a device computes them whose quotients lie three floats away, towards `bound`.
std::string withQuotientsTowards(const std::string& bound) {
  std::string source = kernelSource();
  const std::string exact = "estimate = n / d;";
  const std::size_t place = source.find(exact);
  if (place == std::string::npos) throw std::runtime_error("no division to falsify");
  const std::string off =
      "nextafter(nextafter(nextafter(n / d, " + bound + "), " + bound + "), " + bound + ")";
  return kWithoutDouble + source.replace(place, exact.size(), "estimate = " + off + ";");
}

TEST(WeightKernel, RoundsItsQuotientAsTheHostDoes) {
  const Distances& distances = adversarialDistances();
  EXPECT_TRUE(sameBits(hostWeights(distances), deviceWeights(KernelProgram::get(), distances)));
}

TEST(WeightKernel, NeedsNoDoublePrecision) {
  const Distances& distances = adversarialDistances();
  const KernelProgram program(kWithoutDouble + kernelSource());
  EXPECT_TRUE(sameBits(hostWeights(distances), deviceWeights(program, distances)));
}

TEST(WeightKernel, NeedsNoExactDivision) {
  const Distances& distances = adversarialDistances();
  for (const char* bound : {"0.0f", "INFINITY"}) {
    const KernelProgram program(withQuotientsTowards(bound));
    EXPECT_TRUE(sameBits(hostWeights(distances), deviceWeights(program, distances))) << bound;
  }
}

/// What the tests above rest on: the inputs tell an inexact quotient from an exact one.
TEST(WeightKernel, InputsDependOnTheLastBitOfTheQuotient) {
  if (isEmulated()) return;
  const Distances& distances = adversarialDistances();
  const Bytes exact = hostWeights(distances);
  int tooLow = 0;
  int tooHigh = 0;
  for (std::size_t i = 0; i < exact.size(); ++i) {
    const float quotient = distances.a[i] * 255.0F / (distances.a[i] + distances.b[i]);
    if (!(quotient >= 1.0F)) continue;
    if (wrappedByte(std::nextafter(quotient, 0.0F)) != exact[i]) ++tooLow;
    if (wrappedByte(std::nextafter(quotient, 1000.0F)) != exact[i]) ++tooHigh;
  }
  EXPECT_GT(tooLow, 1000);
  EXPECT_GT(tooHigh, 1000);
}

}  // namespace
