// SPDX-License-Identifier: Apache-2.0
// The fast fusion against the plain one.
#include "imaging/feather.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "imaging/assistant.h"
#include "imaging/fusion.h"
#include "imaging/run_buffer.h"
#include "tests/imaging/slow_fusion.h"
#include "tests/support/each_level.h"

using framequilt::canFeather;
using framequilt::feather;
using framequilt::Feathering;

namespace {

/// Fusion by definition, of packed images.
Bytes fusedPlainly(Bytes ground, Bytes frame, int rows, int cols, int channels) {
  framequilt::fusePlainly(ground.data(), frame.data(), channels, 0, rows, cols);
  framequilt::drop(AreaImageOneGaryFloat);
  framequilt::drop(AreaImageTwoGaryFloat);
  framequilt::drop(AreaImageOneWeight);
  framequilt::drop(AreaImageOneGary);
  framequilt::drop(AreaImageTwoGary);
  EXPECT_EQ(ground, frame);
  return frame;
}

/// An image whose rows lie apart, and nothing between them may change.
class Ground {
 public:
  Ground(const Bytes& packed, int rows, int cols, int channels, std::size_t gap)
      : rowBytes_(static_cast<std::size_t>(cols) * static_cast<std::size_t>(channels)),
        stride_(rowBytes_ + gap),
        bytes_(stride_ * static_cast<std::size_t>(rows)) {
    for (std::size_t r = 0; r < static_cast<std::size_t>(rows); ++r) {
      std::copy_n(packed.data() + r * rowBytes_, rowBytes_, bytes_.data() + r * stride_);
    }
  }

  unsigned char* data() { return bytes_.data(); }
  std::ptrdiff_t stride() const { return static_cast<std::ptrdiff_t>(stride_); }

  Bytes packed() const {
    Bytes packed;
    const Bytes all = bytes_.values();
    for (std::size_t at = 0; at < all.size(); at += stride_) {
      packed.insert(packed.end(), all.begin() + static_cast<std::ptrdiff_t>(at),
                    all.begin() + static_cast<std::ptrdiff_t>(at + rowBytes_));
    }
    return packed;
  }
  bool intact() const {
    const Bytes all = bytes_.values();
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (i % stride_ >= rowBytes_ && all[i] != GuardedBytes::kUntouched) return false;
    }
    return bytes_.intact();
  }

 private:
  std::size_t rowBytes_, stride_;
  GuardedBytes bytes_;
};

void expectPlainResult(const Bytes& ground, const Bytes& frame, int rows, int cols, int channels) {
  const Bytes expected = fusedPlainly(ground, frame, rows, cols, channels);
  atEachLevel([&] {
    // One thread, then two.
    for (const std::size_t gap : {0U, 7U}) {
      framequilt::setThreads(gap == 0 ? 1 : 2);
      Ground under(ground, rows, cols, channels, gap);
      GuardedBytes over(frame), copy(frame.size());
      const Feathering job = {under.data(), under.stride(), over.data(), copy.data(),
                              rows,         cols,           channels};
      ASSERT_TRUE(canFeather(job));
      feather(job);
      EXPECT_EQ(over.values(), expected);
      EXPECT_EQ(copy.values(), expected);
      EXPECT_EQ(under.packed(), expected);
      EXPECT_TRUE(over.intact());
      EXPECT_TRUE(copy.intact());
      EXPECT_TRUE(under.intact());

      // From a frame that is to stay as it is.
      Ground again(ground, rows, cols, channels, gap);
      GuardedBytes result(frame.size()), original(frame);
      feather({again.data(), again.stride(), result.data(), gap == 0 ? nullptr : copy.data(), rows,
               cols, channels, original.data()});
      EXPECT_EQ(result.values(), expected);
      EXPECT_EQ(again.packed(), expected);
      EXPECT_EQ(original.values(), frame);
      EXPECT_TRUE(result.intact());
      EXPECT_TRUE(again.intact());
    }
  });
  framequilt::setThreads(0);
}

/// Empties a rectangle.
void empty(Bytes& image, int cols, int channels, int row, int col, int rows, int width) {
  for (int r = row; r < row + rows; ++r) {
    for (int i = col * channels; i < (col + width) * channels; ++i) {
      image[static_cast<std::size_t>(r * cols * channels + i)] = 0;
    }
  }
}

/// Images of several natures, by name.
struct Nature {
  std::string name;
  std::function<Bytes(Random&, int rows, int cols, int channels)> make;
};

const std::vector<Nature>& natures() {
  static const std::vector<Nature> all = {
      {"full",
       [](Random& random, int rows, int cols, int channels) {
         return random.bytes(static_cast<std::size_t>(rows * cols * channels), 1);
       }},
      {"zero bytes, content everywhere",
       [](Random& random, int rows, int cols, int channels) {
         Bytes image = random.bytes(static_cast<std::size_t>(rows * cols * channels), 1);
         if (channels == 3) {
           for (std::size_t i = 0; i < image.size(); i += 3) image[i] = 0;
         }
         return image;
       }},
      {"empty",
       [](Random&, int rows, int cols, int channels) {
         return Bytes(static_cast<std::size_t>(rows * cols * channels), 0);
       }},
      {"patchy", [](Random& random, int rows, int cols,
                    int channels) { return patchy(random, rows, cols, channels); }},
      {"single empty pixel",
       [](Random& random, int rows, int cols, int channels) {
         Bytes image = random.bytes(static_cast<std::size_t>(rows * cols * channels), 1);
         empty(image, cols, channels, random.between(0, rows - 1), random.between(0, cols - 1), 1,
               1);
         return image;
       }},
      {"nearly black",
       [](Random& random, int rows, int cols, int channels) {
         return random.bytes(static_cast<std::size_t>(rows * cols * channels), 0, 2);
       }},
      {"empty corner",
       [](Random& random, int rows, int cols, int channels) {
         Bytes image = random.bytes(static_cast<std::size_t>(rows * cols * channels), 1);
         const int height = random.between(1, rows);
         const int width = random.between(1, cols);
         empty(image, cols, channels, random.between(0, 1) * (rows - height),
               random.between(0, 1) * (cols - width), height, width);
         return image;
       }},
      {"empty up to a slanted edge",
       [](Random& random, int rows, int cols, int channels) {
         Bytes image = random.bytes(static_cast<std::size_t>(rows * cols * channels), 1);
         const int down = random.between(1, 2);
         const int across = random.between(1, 2);
         const bool fromLeft = random.between(0, 1) == 0;
         const int edge = random.between(0, down * rows + across * cols);
         for (int r = 0; r < rows; ++r) {
           const int width = std::clamp((edge - down * r) / across, 0, cols);
           empty(image, cols, channels, r, fromLeft ? 0 : cols - width, 1, width);
         }
         return image;
       }},
      {"empty rows",
       [](Random& random, int rows, int cols, int channels) {
         Bytes image = random.bytes(static_cast<std::size_t>(rows * cols * channels), 1);
         const int height = random.between(1, rows);
         empty(image, cols, channels, random.between(0, 1) * (rows - height), 0, height, cols);
         return image;
       }},
  };
  return all;
}

TEST(Feather, AgreesWithThePlainFusionAtEveryWidthAndOfEveryNature) {
  Random random(401);
  for (int cols = 3; cols <= 70; ++cols) {
    for (const Nature& ground : natures()) {
      const Nature& frame = natures()[static_cast<std::size_t>(
          random.between(0, static_cast<int>(natures().size()) - 1))];
      const int rows = random.between(2, 50);
      const int channels = random.between(0, 1) == 0 ? 1 : 3;
      SCOPED_TRACE(ground.name + " under " + frame.name + ": " + std::to_string(rows) + " x " +
                   std::to_string(cols) + " x " + std::to_string(channels));
      expectPlainResult(ground.make(random, rows, cols, channels),
                        frame.make(random, rows, cols, channels), rows, cols, channels);
      if (HasFailure()) return;
    }
  }
}

TEST(Feather, EachNatureMeetsEachAtOneSize) {
  Random random(402);
  for (const Nature& ground : natures()) {
    for (const Nature& frame : natures()) {
      for (const int channels : {1, 3}) {
        SCOPED_TRACE(ground.name + " under " + frame.name + " x " + std::to_string(channels));
        expectPlainResult(ground.make(random, 33, 37, channels),
                          frame.make(random, 33, 37, channels), 33, 37, channels);
      }
    }
  }
}

TEST(Feather, DistancesReachTheirCap) {
  // 1275 steps from an empty pixel, and from an edge, the distance is 255.
  Random random(403);
  constexpr int kRows = 35;
  constexpr int kCols = 2700;
  Bytes ground = random.bytes(static_cast<std::size_t>(kRows) * kCols, 1);
  ground[0] = 0;
  expectPlainResult(ground, random.bytes(ground.size(), 1), kRows, kCols, 1);
}

TEST(Feather, FrameOfAUsualSizeOnAMosaic) {
  Random random(404);
  constexpr int kRows = 480;
  constexpr int kCols = 640;
  for (const int channels : {1, 3}) {
    const auto bytes = static_cast<std::size_t>(kRows * kCols * channels);
    Bytes ground = random.bytes(bytes, 1);
    empty(ground, kCols, channels, 0, 500, kRows, 140);
    empty(ground, kCols, channels, 431, 0, 49, kCols);
    expectPlainResult(ground, random.bytes(bytes, 1), kRows, kCols, channels);
  }
}

TEST(Feather, SizesMayChangeFromCallToCall) {
  Random random(405);
  for (const auto& [rows, cols] : {std::pair(40, 60), {2, 3}, {60, 40}, {17, 16}, {16, 17}}) {
    SCOPED_TRACE(testing::Message() << rows << " x " << cols);
    expectPlainResult(patchy(random, rows, cols, 3), patchy(random, rows, cols, 3), rows, cols, 3);
    expectPlainResult(random.bytes(static_cast<std::size_t>(rows * cols), 1),
                      random.bytes(static_cast<std::size_t>(rows * cols), 1), rows, cols, 1);
  }
  framequilt::releaseFeather();
  expectPlainResult(patchy(random, 20, 20, 1), patchy(random, 20, 20, 1), 20, 20, 1);
}

TEST(Feather, CopyMayBeMissing) {
  Random random(406);
  const Bytes ground = patchy(random, 20, 30, 3);
  const Bytes frame = patchy(random, 20, 30, 3);
  const Bytes expected = fusedPlainly(ground, frame, 20, 30, 3);
  GuardedBytes under(ground), over(frame);
  feather({under.data(), 90, over.data(), nullptr, 20, 30, 3});
  EXPECT_EQ(under.values(), expected);
  EXPECT_EQ(over.values(), expected);
}

TEST(Feather, LeavesTheRestToThePlainFusion) {
  Bytes a(300, 1), b(300, 1), c(300, 1);
  const Feathering good = {a.data(), 30, b.data(), c.data(), 10, 10, 3};
  ASSERT_TRUE(canFeather(good));
  const auto refused = [&](auto change) {
    Feathering job = good;
    change(job);
    return !canFeather(job);
  };
  EXPECT_TRUE(refused([](Feathering& job) { job.channels = 2; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.channels = 0; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.rows = 1; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.cols = 2; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.rows = job.cols = 40000; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.frame = job.ground; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.frame = job.ground + 299; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.copy = job.frame + 1; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.copy = job.ground; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.original = job.frame + 1; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.original = job.ground; }));
  EXPECT_TRUE(refused([](Feathering& job) { job.original = job.copy; }));
}

TEST(Feather, OverlappingImagesAreFusedPlainly) {
  Random random(407);
  constexpr int kRows = 12;
  constexpr int kCols = 20;
  const Bytes start = patchy(random, kRows + 1, kCols, 3);
  for (const int distance : {0, 1, 60, -60}) {
    Bytes fused = start;
    Bytes plain = start;
    const auto first = [&](Bytes& image) { return image.data() + (distance < 0 ? -distance : 0); };
    twoImageFusion(first(fused), first(fused) + distance, 3, 0, kRows, kCols);
    framequilt::fusePlainly(first(plain), first(plain) + distance, 3, 0, kRows, kCols);
    EXPECT_EQ(fused, plain) << distance;
    framequilt::drop(AreaImageOneGaryFloat);
    framequilt::drop(AreaImageTwoGaryFloat);
    framequilt::drop(AreaImageOneWeight);
    framequilt::drop(AreaImageOneGary);
    framequilt::drop(AreaImageTwoGary);
  }
}

}  // namespace
