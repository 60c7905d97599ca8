// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_optics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

namespace framequilt::tool {
namespace {

/// The four pixels in a row that a place between the middle two is interpolated from.
struct CubicTaps {
  std::array<int, 4> at;
  std::array<float, 4> weight;
};

/// Weights of the cubic convolution with a = -1/2 (Keys 1981), which reproduces parabolas.
CubicTaps cubicTaps(double place, int extent) {
  int base = static_cast<int>(place);
  if (place < base) --base;
  const auto t = static_cast<float>(place - base);
  CubicTaps taps{{base - 1, base, base + 1, base + 2},
                 {((-0.5F * t + 1.0F) * t - 0.5F) * t, (1.5F * t - 2.5F) * t * t + 1.0F,
                  ((-1.5F * t + 2.0F) * t + 0.5F) * t, (0.5F * t - 0.5F) * t * t}};
  for (int& at : taps.at) at = std::clamp(at, 0, extent - 1);
  return taps;
}

template <int kChannels>
void interpolate(const cv::Mat& scene, cv::Point2d place, float* light) {
  const CubicTaps cols = cubicTaps(place.x, scene.cols);
  const CubicTaps rows = cubicTaps(place.y, scene.rows);
  std::array<float, kChannels> sum{};
  for (std::size_t r = 0; r < 4; ++r) {
    const unsigned char* row = scene.ptr(rows.at[r]);
    for (std::size_t c = 0; c < 4; ++c) {
      const unsigned char* pixel = row + std::ptrdiff_t{kChannels} * cols.at[c];
      const float weight = rows.weight[r] * cols.weight[c];
      for (std::size_t i = 0; i < kChannels; ++i) sum[i] += weight * static_cast<float>(pixel[i]);
    }
  }
  std::copy(sum.begin(), sum.end(), light);
}

bool isWhole(double value) { return value == std::floor(value); }

/// Sine or cosine without the last bits, in which libraries differ.
double portable(double value) { return static_cast<float>(value); }

/// The light on `size` pixels around the frame's middle.
template <int kChannels>
cv::Mat resampled(const cv::Mat& scene, const CameraView& view, cv::Size size) {
  const double radians = view.degrees * CV_PI / 180;
  const double cosine = portable(std::cos(radians));
  const double sine = portable(std::sin(radians));
  const cv::Point2d centre =
      view.topLeft + 0.5 * cv::Point2d(view.frame.width - 1, view.frame.height - 1);
  cv::Mat light(size, CV_32FC(kChannels));
  for (int r = 0; r < size.height; ++r) {
    auto* pixel = light.ptr<float>(r);
    const double down = r - 0.5 * (size.height - 1);
    for (int c = 0; c < size.width; ++c) {
      const double right = c - 0.5 * (size.width - 1);
      const cv::Point2d place(centre.x + (cosine * right - sine * down),
                              centre.y + (sine * right + cosine * down));
      interpolate<kChannels>(scene, place, pixel);
      pixel += kChannels;
    }
  }
  return light;
}

std::vector<float> gaussianWeights(double sigma) {
  const int radius = blurRadius(sigma);
  std::vector<double> weights;
  double sum = 0;
  for (int i = -radius; i <= radius; ++i) {
    weights.push_back(portable(std::exp(-0.5 * i * i / (sigma * sigma))));
    sum += weights.back();
  }
  std::vector<float> normalised(weights.size());
  std::transform(weights.begin(), weights.end(), normalised.begin(),
                 [sum](double weight) { return static_cast<float>(weight / sum); });
  return normalised;
}

/// Adds `weight` times the `count` values at `from` to those at `to`.
void addWeighted(const float* from, float weight, int count, float* to) {
  for (int i = 0; i < count; ++i) to[i] += weight * from[i];
}

}  // namespace

cv::Mat lightOf(const cv::Mat& scene, const CameraView& view, int border) {
  const cv::Size size = view.frame + cv::Size(2 * border, 2 * border);
  const cv::Rect box(cv::Point(view.topLeft) - cv::Point(border, border), size);
  const bool atPixels = isWhole(view.topLeft.x) && isWhole(view.topLeft.y);
  if (view.degrees == 0 && atPixels && (box & cv::Rect({}, scene.size())) == box) {
    cv::Mat light;
    scene(box).convertTo(light, CV_32F);
    return light;
  }
  return scene.channels() == 1 ? resampled<1>(scene, view, size) : resampled<3>(scene, view, size);
}

int blurRadius(double sigma) { return static_cast<int>(std::ceil(3 * sigma)); }

cv::Mat blurred(const cv::Mat& light, double sigma) {
  if (sigma <= 0) return light;
  const std::vector<float> weights = gaussianWeights(sigma);
  const int radius = blurRadius(sigma);
  const int channels = light.channels();
  cv::Mat narrow = cv::Mat::zeros(light.rows, light.cols - 2 * radius, light.type());
  const int count = narrow.cols * channels;
  for (int r = 0; r < narrow.rows; ++r) {
    const auto* from = light.ptr<float>(r);
    for (const float weight : weights) {
      addWeighted(from, weight, count, narrow.ptr<float>(r));
      from += channels;
    }
  }
  cv::Mat result = cv::Mat::zeros(light.rows - 2 * radius, narrow.cols, light.type());
  for (int r = 0; r < result.rows; ++r) {
    int from = r;
    for (const float weight : weights) {
      addWeighted(narrow.ptr<float>(from++), weight, count, result.ptr<float>(r));
    }
  }
  return result;
}

cv::Mat exposed(const cv::Mat& light, const Exposure& exposure, SeededRandom& noise) {
  cv::Mat picture(light.size(), CV_8UC(light.channels()));
  const cv::Point2d middle(0.5 * (light.cols - 1), 0.5 * (light.rows - 1));
  const double atCorner = std::max(1e-9, middle.x * middle.x + middle.y * middle.y);
  const auto sigma = static_cast<float>(exposure.noise);
  for (int r = 0; r < light.rows; ++r) {
    const auto* in = light.ptr<float>(r);
    auto* out = picture.ptr(r);
    const double down = r - middle.y;
    for (int c = 0; c < light.cols; ++c) {
      const double right = c - middle.x;
      const double fromMiddle = (right * right + down * down) / atCorner;
      const auto factor = static_cast<float>(exposure.gain * (1 - exposure.vignette * fromMiddle));
      for (int channel = 0; channel < light.channels(); ++channel) {
        const float grain = sigma > 0 ? sigma * noise.gauss() : 0.0F;
        *out++ = cv::saturate_cast<unsigned char>(*in++ * factor + grain);
      }
    }
  }
  return picture;
}

}  // namespace framequilt::tool
