// What kind of program the tests run in, for those few that measure memory, time or stack: their bounds hold for what is
// shipped, while instrumented programs pay several times over.
#pragma once

namespace tessaret::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kInstrumented = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
inline constexpr bool kInstrumented = true;
#else
inline constexpr bool kInstrumented = false;
#endif
#else
inline constexpr bool kInstrumented = false;
#endif

#ifdef NDEBUG
inline constexpr bool kAsShipped = !kInstrumented;
#else
inline constexpr bool kAsShipped = false;
#endif

/// How often a test does what only sheer number shows, time or memory that grows without bound or a rare mix: as often as it
/// says, and a share of that under a sanitizer, which looks at each step and needs many times as long for it.
template <class Number>
constexpr Number Repetitions(Number whole, Number share = 10) {
  return kInstrumented ? whole / share : whole;
}

/// By how much a test goes on that looks at every place of something or at every value: one by one, and under a sanitizer `share` at
/// a time. Primes meet each kind of place, as no element has their length.
template <class Number>
constexpr Number StepBy(Number share) {
  return kInstrumented ? share : Number{1};
}

/// Why a fork amid the work of other threads is tried in what is shipped only.
inline constexpr const char* kForkUnderSanitizer =
    "the sanitizer's allocator may be locked by another thread at the fork, and stays so in the "
    "child";

}  // namespace tessaret::test
