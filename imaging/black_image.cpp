// SPDX-License-Identifier: Apache-2.0
#include "imaging/black_image.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <memory>
#include <opencv2/core.hpp>

#include "imaging/assistant.h"
#include "imaging/cpu_level.h"
#include "imaging/large_pages.h"
#include "interface/never_destroyed.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace framequilt {
namespace {

#if defined(__linux__)

/// Smaller images are not worth a mapping of their own.
constexpr std::size_t kFewestBytes = std::size_t{8} << 20U;

/// Memory that the system gives out black, straight from it and straight back.
class FreshPages final : public cv::MatAllocator {
 public:
  cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, std::size_t* step,
                         cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
    // Memory of somebody else's, which nothing here asks for.
    if (data != nullptr) {
      return cv::Mat::getStdAllocator()->allocate(dims, sizes, type, data, step, flags, usage);
    }
    std::size_t bytes = static_cast<std::size_t>(CV_ELEM_SIZE(type));
    for (int i = dims - 1; i >= 0; --i) {
      if (step != nullptr) step[i] = bytes;
      bytes *= static_cast<std::size_t>(sizes[i]);
    }
    auto image = std::make_unique<cv::UMatData>(this);
    void* const memory = mmap(nullptr, std::max<std::size_t>(bytes, 1), PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
      CV_Error_(cv::Error::StsNoMem, ("Failed to allocate %zu bytes", bytes));
    }
    adviseLargePages(memory, bytes);
    image->data = image->origdata = static_cast<unsigned char*>(memory);
    image->size = bytes;
    return image.release();
  }

  bool allocate(cv::UMatData* image, cv::AccessFlag /*flags*/,
                cv::UMatUsageFlags /*usage*/) const override {
    return image != nullptr;
  }

  void deallocate(cv::UMatData* image) const override {
    if (image == nullptr) return;
    munmap(image->origdata, std::max<std::size_t>(image->size, 1));
    delete image;
  }
};

/// Never destroyed: images may outlive everything else here.
cv::MatAllocator* freshPages() {
  static const NeverDestroyed<FreshPages> pages;
  return &*pages;
}

cv::MatAllocator* allocatorFor(std::size_t bytes) {
  return bytes >= kFewestBytes ? freshPages() : nullptr;
}

#else

cv::MatAllocator* allocatorFor(std::size_t /*bytes*/) { return nullptr; }

#endif

struct AnySet {
  FRAMEQUILT_ROUTINE bool run(const unsigned char* bytes, std::size_t count) {
    unsigned char any = 0;
    for (std::size_t i = 0; i < count; ++i) any |= bytes[i];
    return any != 0;
  }
};

/// Bytes that are looked at and copied together: a page.
constexpr std::size_t kStretch = 4096;

void copyWhereSet(const unsigned char* from, std::size_t bytes, unsigned char* to) {
  for (std::size_t i = 0; i < bytes; i += kStretch) {
    const std::size_t count = std::min(kStretch, bytes - i);
    if (Leveled<AnySet>::call(from + i, count)) std::memcpy(to + i, from + i, count);
  }
}

}  // namespace

cv::Mat blackImage(int rows, int cols, int type) {
  const std::size_t bytes = static_cast<std::size_t>(std::max(0, rows)) *
                            static_cast<std::size_t>(std::max(0, cols)) *
                            static_cast<std::size_t>(CV_ELEM_SIZE(type));
  cv::MatAllocator* const allocator = allocatorFor(bytes);
  if (allocator == nullptr) return cv::Mat::zeros(rows, cols, type);
  cv::Mat image;
  image.allocator = allocator;
  image.create(rows, cols, type);
  // OpenCV tries its own allocator where another one fails.
  if (image.u->currAllocator != allocator) image.setTo(cv::Scalar::all(0));
  // What a host makes of its header later is not ours.
  image.allocator = nullptr;
  return image;
}

void copyToBlack(const cv::Mat& from, cv::Mat to) {
  const std::size_t rowBytes = static_cast<std::size_t>(from.cols) * from.elemSize();
  constexpr int kRowsTogether = 64;
  std::atomic<int> next{0};
  const auto copyRows = [&] {
    for (int begin = next.fetch_add(kRowsTogether); begin < from.rows;
         begin = next.fetch_add(kRowsTogether)) {
      const int end = std::min(from.rows, begin + kRowsTogether);
      for (int r = begin; r < end; ++r) copyWhereSet(from.ptr(r), rowBytes, to.ptr(r));
    }
  };
  Assistant assistant(paysForTwo(from.total()), copyRows);
  copyRows();
}

}  // namespace framequilt
