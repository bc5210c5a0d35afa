// How often tests try what depends on chance: made-up cases, kills and races.
#pragma once

namespace permora::test {

// Under a sanitizer each try takes several times as long, and one in four shows it the same code. The other
// builds make them all.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr int kOneIn = 4;
#else
inline constexpr int kOneIn = 1;
#endif

constexpr int Tries(int number) {
    return (number + kOneIn - 1) / kOneIn;
}

// For tries of which at least one must strike: whether those before `round` have been enough.
constexpr bool HasTriedEnough(int round, int number, int struck) {
    return struck > 0 ? round > Tries(number) : round > 10 * number;
}

}  // namespace permora::test
