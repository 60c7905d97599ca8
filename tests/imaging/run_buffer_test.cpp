// SPDX-License-Identifier: Apache-2.0
#include "imaging/run_buffer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <limits>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using framequilt::AtScopeEnd;
using framequilt::drop;
using framequilt::ensure;
using framequilt::ensureRoom;
using framequilt::keepDropped;

template <class T>
class RunBuffer : public testing::Test {
 protected:
  ~RunBuffer() override { drop(buffer_); }

  void fill(std::size_t count, T value) { std::fill_n(buffer_, count, value); }
  bool holds(std::size_t count, T value) const {
    return std::all_of(buffer_, buffer_ + count, [=](T element) { return element == value; });
  }

  T* buffer_ = nullptr;
};

using Elements = testing::Types<unsigned char, unsigned short, float>;
TYPED_TEST_SUITE(RunBuffer, Elements);

TYPED_TEST(RunBuffer, NullIsFilledWithZeros) {
  ensure(this->buffer_, 1000);
  ASSERT_NE(this->buffer_, nullptr);
  EXPECT_TRUE(this->holds(1000, TypeParam{0}));
}

TYPED_TEST(RunBuffer, LargeEnoughOneKeepsItsPlaceAndContents) {
  ensure(this->buffer_, 100);
  this->fill(100, TypeParam{7});
  TypeParam* const before = this->buffer_;
  for (std::size_t elements : {100U, 99U, 1U, 0U}) ensure(this->buffer_, elements);
  EXPECT_EQ(this->buffer_, before);
  EXPECT_TRUE(this->holds(100, TypeParam{7}));
}

TYPED_TEST(RunBuffer, SmallerOneOfTheLibraryIsReplacedByZeros) {
  ensure(this->buffer_, 100);
  this->fill(100, TypeParam{7});
  ensure(this->buffer_, 101);
  EXPECT_TRUE(this->holds(101, TypeParam{0}));
}

TYPED_TEST(RunBuffer, GrownOneRemembersItsNewSize) {
  ensure(this->buffer_, 10);
  ensure(this->buffer_, 500);
  this->fill(500, TypeParam{7});
  ensure(this->buffer_, 400);
  EXPECT_TRUE(this->holds(500, TypeParam{7}));
}

TYPED_TEST(RunBuffer, MemoryOfTheHostIsKeptWhateverItsSize) {
  this->buffer_ = new TypeParam[3];
  this->fill(3, TypeParam{9});
  TypeParam* const before = this->buffer_;
  ensure(this->buffer_, 1000000);
  EXPECT_EQ(this->buffer_, before);
  EXPECT_TRUE(this->holds(3, TypeParam{9}));
}

TYPED_TEST(RunBuffer, HostMayReplaceTheMemoryOfTheLibrary) {
  ensure(this->buffer_, 4);
  auto* const own = new TypeParam[64];
  std::fill_n(own, 64, TypeParam{9});
  delete[] this->buffer_;
  this->buffer_ = own;
  ensure(this->buffer_, 64);
  EXPECT_EQ(this->buffer_, own);
  EXPECT_TRUE(this->holds(64, TypeParam{9}));
}

TYPED_TEST(RunBuffer, HostMayReleaseTheMemoryOfTheLibrary) {
  ensure(this->buffer_, 1000);
  delete[] this->buffer_;
  this->buffer_ = nullptr;
  ensure(this->buffer_, 10);
  ASSERT_NE(this->buffer_, nullptr);
  EXPECT_TRUE(this->holds(10, TypeParam{0}));
  // What is remembered is the size of the second buffer.
  ensure(this->buffer_, 1000);
  EXPECT_TRUE(this->holds(1000, TypeParam{0}));
}

TYPED_TEST(RunBuffer, DropReleasesAndForgets) {
  ensure(this->buffer_, 10);
  drop(this->buffer_);
  EXPECT_EQ(this->buffer_, nullptr);
  drop(this->buffer_);
  EXPECT_EQ(this->buffer_, nullptr);

  this->buffer_ = new TypeParam[3];
  drop(this->buffer_);  // the leak check sees one that is not released
  EXPECT_EQ(this->buffer_, nullptr);
}

TYPED_TEST(RunBuffer, MemoryOfTheHostIsItsOwnAlsoWhereADroppedOneLay) {
  ensure(this->buffer_, 10);
  drop(this->buffer_);
  this->buffer_ = new TypeParam[10];  // the allocator likes to hand out the same place
  this->fill(10, TypeParam{9});
  TypeParam* const before = this->buffer_;
  ensure(this->buffer_, 1000);
  EXPECT_EQ(this->buffer_, before);
  EXPECT_TRUE(this->holds(10, TypeParam{9}));
}

TYPED_TEST(RunBuffer, EmptyOneIsNotNull) {
  ensure(this->buffer_, 0);
  EXPECT_NE(this->buffer_, nullptr);
  ensure(this->buffer_, 5);
  EXPECT_TRUE(this->holds(5, TypeParam{0}));
}

/// While buffers are kept.
template <class T>
class KeptBuffer : public RunBuffer<T> {
 protected:
  KeptBuffer() { keepDropped(true); }
  ~KeptBuffer() override {
    drop(this->buffer_);
    keepDropped(false);
  }
};
TYPED_TEST_SUITE(KeptBuffer, Elements);

TYPED_TEST(KeptBuffer, DroppedMemoryComesBackToItsBuffer) {
  ensure(this->buffer_, 100);
  TypeParam* const before = this->buffer_;
  this->fill(100, TypeParam{7});
  drop(this->buffer_);
  EXPECT_EQ(this->buffer_, nullptr);
  ensureRoom(this->buffer_, 100);
  EXPECT_EQ(this->buffer_, before);
  EXPECT_TRUE(this->holds(100, TypeParam{7})) << "room holds anything";
}

TYPED_TEST(KeptBuffer, ComesBackAsZerosWhereZerosAreWanted) {
  ensure(this->buffer_, 100);
  this->fill(100, TypeParam{7});
  drop(this->buffer_);
  ensure(this->buffer_, 60);
  EXPECT_TRUE(this->holds(60, TypeParam{0}));
}

TYPED_TEST(KeptBuffer, LargerOneIsFresh) {
  ensure(this->buffer_, 100);
  drop(this->buffer_);
  ensure(this->buffer_, 5000);
  EXPECT_TRUE(this->holds(5000, TypeParam{0}));
  drop(this->buffer_);
  TypeParam* other = nullptr;
  ensure(other, 10);  // the address sanitizer sees one that two buffers share
  ensure(this->buffer_, 5000);
  EXPECT_NE(this->buffer_, other);
  drop(other);
}

TYPED_TEST(KeptBuffer, MemoryOfTheHostIsReleased) {
  this->buffer_ = new TypeParam[3];
  TypeParam* const ofHost = this->buffer_;
  drop(this->buffer_);  // the leak check sees one that is not released
  ensure(this->buffer_, 100000);
  EXPECT_NE(this->buffer_, ofHost);
}

TYPED_TEST(KeptBuffer, HostMayReleaseTheMemoryOfTheLibrary) {
  ensure(this->buffer_, 1000);
  delete[] this->buffer_;
  this->buffer_ = nullptr;
  ensure(this->buffer_, 1000);
  ASSERT_NE(this->buffer_, nullptr);
  EXPECT_TRUE(this->holds(1000, TypeParam{0}));
}

TYPED_TEST(KeptBuffer, EndOfKeepingReleases) {
  ensure(this->buffer_, 1000);
  drop(this->buffer_);
  keepDropped(false);
  ensure(this->buffer_, 1000);
  EXPECT_TRUE(this->holds(1000, TypeParam{0}));
  drop(this->buffer_);  // the leak check sees one that is kept
}

TEST(RunBufferExchange, SizesGoWithTheMemory) {
  unsigned char* small = nullptr;
  unsigned char* large = nullptr;
  ensure(small, 10);
  ensure(large, 1000);
  std::fill_n(large, 1000, static_cast<unsigned char>(7));
  framequilt::exchange(small, large);
  EXPECT_EQ(small[999], 7);
  ensure(small, 1000);
  EXPECT_EQ(small[999], 7);
  ensure(large, 1000);  // the address sanitizer sees one that is still small
  EXPECT_EQ(std::count(large, large + 1000, 0), 1000);
  drop(small);
  drop(large);
}

TEST(RunBufferExchange, MemoryOfTheHostIsTakenAtItsWord) {
  unsigned char* own = nullptr;
  ensure(own, 10);
  auto* ofHost = new unsigned char[20];
  unsigned char* const before = ofHost;
  framequilt::exchange(own, ofHost);
  EXPECT_EQ(own, before);
  ensure(own, 1000000);
  EXPECT_EQ(own, before);
  drop(own);
  drop(ofHost);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // Those keep what was freed.
std::size_t addressSpace() {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST(RunBufferMemory, GoesBackToTheSystemWhenItIsDropped) {
  constexpr std::size_t kBytes = std::size_t{1} << 28U;
  const std::size_t before = addressSpace();
  unsigned char* buffer = nullptr;
  ensureRoom(buffer, kBytes);
  EXPECT_GE(addressSpace(), before + kBytes);
  drop(buffer);
  EXPECT_LT(addressSpace(), before + kBytes / 2);

  keepDropped(true);
  ensureRoom(buffer, kBytes);
  drop(buffer);
  EXPECT_GE(addressSpace(), before + kBytes) << "kept";
  keepDropped(false);
  EXPECT_LT(addressSpace(), before + kBytes / 2);
}
#endif

TEST(RunBufferFailure, NullStaysNull) {
  float* buffer = nullptr;
  EXPECT_THROW(ensure(buffer, std::numeric_limits<std::size_t>::max()), std::bad_alloc);
  EXPECT_EQ(buffer, nullptr);
}

TEST(RunBufferFailure, LeavesABufferThatCanBeDroppedAndEnsuredAgain) {
  float* buffer = nullptr;
  ensure(buffer, 10);
  EXPECT_THROW(ensure(buffer, std::numeric_limits<std::size_t>::max()), std::bad_alloc);
  ensure(buffer, 20);
  ASSERT_NE(buffer, nullptr);
  std::fill_n(buffer, 20, 1.0F);
  drop(buffer);
  EXPECT_EQ(buffer, nullptr);
}

TEST(RunBufferThreads, DifferentBuffersMayBeHandledAtTheSameTime) {
  std::vector<float*> buffers(4, nullptr);
  std::vector<std::thread> threads;
  for (float*& buffer : buffers) {
    threads.emplace_back([&buffer] {
      for (std::size_t elements = 1; elements <= 200; ++elements) {
        ensure(buffer, elements);
        buffer[elements - 1] = 1.0F;
        if (elements % 50 == 0) drop(buffer);
      }
      ensure(buffer, 30);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (float*& buffer : buffers) {
    EXPECT_EQ(std::count(buffer, buffer + 30, 0.0F), 30);
    drop(buffer);
  }
}

TEST(AtScopeEnd, RunsOnceAtTheEnd) {
  int calls = 0;
  {
    const AtScopeEnd count([&] { ++calls; });
    EXPECT_EQ(calls, 0);
  }
  EXPECT_EQ(calls, 1);
}

TEST(AtScopeEnd, RunsOnAnException) {
  int calls = 0;
  const auto fail = [&] {
    const AtScopeEnd count([&] { ++calls; });
    throw std::runtime_error("on purpose");
  };
  EXPECT_THROW(fail(), std::runtime_error);
  EXPECT_EQ(calls, 1);
}

}  // namespace
