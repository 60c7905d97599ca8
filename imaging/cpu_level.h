// SPDX-License-Identifier: Apache-2.0
/// \file
/// Instruction sets that fast routines are compiled for, and the choice among them.
///
/// A routine is written once, as a plain loop that compilers turn into vectors. `Leveled` holds it
/// once per instruction set and calls the variant of the level in use. All variants give the same
/// bytes: nothing is contracted or reassociated at any level. Machines without the sets named here
/// have the baseline alone, which on ARM has vectors already.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace framequilt {

enum class CpuLevel {
  kBaseline,  ///< What the library is compiled for.
  kAvx2,
  kAvx512,  ///< With the byte, word, doubleword, short-vector and byte-permutation parts.
};

/// "baseline", "avx2", "avx512".
const char* nameOf(CpuLevel level) noexcept;

/// What a processor has of the sets that a level takes.
struct CpuFeatures {
  bool avx2, avx512f, avx512bw, avx512dq, avx512vl, avx512vbmi;
};

/// Each level takes what the one below does.
CpuLevel highestLevel(const CpuFeatures& has) noexcept;

/// Those that this machine can run, ascending; never empty.
std::vector<CpuLevel> cpuLevels();

/// The one in use: the highest of the machine, unless the environment variable
/// `FRAMEQUILT_CPU_LEVEL` names a lower one when it is first asked for. From any thread.
CpuLevel cpuLevel() noexcept;

/// Chooses one of `cpuLevels()`, for tests and benchmarks; others become the highest below. Not
/// while routines run.
void setCpuLevel(CpuLevel level) noexcept;

#define FRAMEQUILT_ROUTINE [[gnu::always_inline]] static inline

#if defined(__x86_64__) && defined(__GNUC__)
#define FRAMEQUILT_HAS_X86_LEVELS 1
#define FRAMEQUILT_AVX512 "avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi"
#ifdef __clang__  // Has no name for the width; it takes what it likes.
#define FRAMEQUILT_AVX512_TARGET FRAMEQUILT_AVX512
#else
#define FRAMEQUILT_AVX512_TARGET FRAMEQUILT_AVX512 ",prefer-vector-width=512"
#endif
#endif

/// A routine with a variant per level, which differ in the width of their vectors:
/// `Routine<N>::run` for vectors of N bytes. It is a static function that is always inlined
/// (FRAMEQUILT_ROUTINE), so that its loops are compiled for the level of the function around them.
template <template <int> class Routine, class Signature = decltype(&Routine<16>::run)>
class LeveledByWidth;

template <template <int> class Routine, class Result, class... Arguments>
class LeveledByWidth<Routine, Result (*)(Arguments...)> {
 public:
  static Result call(Arguments... arguments) {
    return kVariants[static_cast<std::size_t>(cpuLevel())](arguments...);
  }

 private:
  using Variant = Result (*)(Arguments...);

  static Result baseline(Arguments... arguments) { return Routine<16>::run(arguments...); }

#ifdef FRAMEQUILT_HAS_X86_LEVELS
  [[gnu::target("avx2")]] static Result avx2(Arguments... arguments) {
    return Routine<32>::run(arguments...);
  }
  [[gnu::target(FRAMEQUILT_AVX512_TARGET)]] static Result avx512(Arguments... arguments) {
    return Routine<64>::run(arguments...);
  }
  static constexpr std::array<Variant, 3> kVariants = {&baseline, &avx2, &avx512};
#else
  static constexpr std::array<Variant, 1> kVariants = {&baseline};
#endif
};

/// A routine that does not name a width, as the same one for each.
template <class Routine>
struct AtAnyWidth {
  template <int Bytes>
  struct Of : Routine {};
};

/// The same for a plain loop, `Routine::run`.
template <class Routine>
class Leveled : public LeveledByWidth<AtAnyWidth<Routine>::template Of, decltype(&Routine::run)> {};

}  // namespace framequilt
