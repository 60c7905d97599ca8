// SPDX-License-Identifier: Apache-2.0
#include "imaging/large_pages.h"

#include <gtest/gtest.h>

#if defined(__linux__)

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20U;

std::uintptr_t placeOf(const void* memory) { return reinterpret_cast<std::uintptr_t>(memory); }

class LargePages : public testing::Test {
 protected:
  static constexpr std::size_t kBytes = 16 * kMebibyte;

  void SetUp() override {
    if (!std::filesystem::exists("/sys/kernel/mm/transparent_hugepage")) {
      GTEST_SKIP() << "the system has no large pages";
    }
    ASSERT_NE(memory_, MAP_FAILED);
  }
  ~LargePages() override { munmap(memory_, kBytes); }

  /// Bytes of the memory that the system was advised of, and where they begin.
  struct Advised {
    std::size_t begin = 0, bytes = 0;
    bool operator==(const Advised&) const = default;
  };
  Advised advised() const {
    Advised result;
    std::ifstream maps("/proc/self/smaps");
    unsigned long begin = 0, end = 0;
    for (std::string line; std::getline(maps, line);) {
      unsigned long first = 0, last = 0;
      if (std::sscanf(line.c_str(), "%lx-%lx ", &first, &last) == 2) {
        begin = first;
        end = last;
      }
      if (line.rfind("VmFlags:", 0) != 0 || (line + " ").find(" hg ") == std::string::npos)
        continue;
      if (end <= placeOf(memory_) || begin >= placeOf(memory_) + kBytes) continue;
      if (result.bytes == 0) result.begin = begin - placeOf(memory_);
      result.bytes += end - begin;
    }
    return result;
  }

  unsigned char* at(std::size_t offset) { return static_cast<unsigned char*>(memory_) + offset; }

  const std::size_t page_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

 private:
  void* const memory_ =
      mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
};

TEST_F(LargePages, AreAdvisedForTheWholePagesOfTheMemory) {
  framequilt::adviseLargePages(at(4 * page_ - 100), 6 * kMebibyte);
  EXPECT_EQ(advised(), (Advised{4 * page_, 6 * kMebibyte - page_}));
}

TEST_F(LargePages, AreAdvisedFromItsFirstByteWhereAPageBeginsThere) {
  framequilt::adviseLargePages(at(2 * page_), 4 * kMebibyte);
  EXPECT_EQ(advised(), (Advised{2 * page_, 4 * kMebibyte}));
}

TEST_F(LargePages, AreNotAdvisedForLittleMemory) {
  framequilt::adviseLargePages(at(0), 4 * kMebibyte - 1);
  EXPECT_EQ(advised(), Advised{});
}

}  // namespace

#endif
