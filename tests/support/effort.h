// What tests may expect of this build: how often they try what depends on chance (made-up cases, kills and
// races), and how long its work may take.
#pragma once

// GCC names a sanitizer by a macro, clang by a feature.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define PERMORA_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define PERMORA_TEST_SANITIZED 1
#endif
#endif

namespace permora::test {

// Under a sanitizer each try takes several times as long, and one in four shows it the same code. The other
// builds make them all. What users wait for shows in builds without one.
#ifdef PERMORA_TEST_SANITIZED
inline constexpr int kOneIn = 4;
inline constexpr int kSlowness = 5;
#else
inline constexpr int kOneIn = 1;
inline constexpr int kSlowness = 1;
#endif

constexpr int Tries(int number) {
    return (number + kOneIn - 1) / kOneIn;
}

// For tries of which at least one must strike: whether those before `round` have been enough.
constexpr bool HasTriedEnough(int round, int number, int struck) {
    return struck > 0 ? round > Tries(number) : round > 10 * number;
}

}  // namespace permora::test
