// SPDX-License-Identifier: MIT
// The wide way looks each character up twice, by its upper and by its lower half: it is quiet when
// the two have no bit in common. A bit stands for one upper half.
#include "tlMacroExpander/src/Scan/QuietText.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include <array>
#include <bit>
#if defined(__x86_64__)
#include <immintrin.h>
// The header knows the type of a truth value in C only, which clang does not take in C++.
#if __has_include(<sys/platform/x86.h>) && !defined(__clang__)
#include <sys/platform/x86.h>
#endif
#endif

namespace telv
{

namespace
{

constexpr bool IsQuiet(unsigned char c)
{
    switch (s_charClasses.m_class[c])
    {
    case CHAR_NAME:
    case CHAR_RAW_PREFIX:
    case CHAR_BLANK:
    case CHAR_MINUS:
    case CHAR_OPERATOR:
        return true;
    case CHAR_DOUBLING:
        return c != '+';
    default:
        return false;
    }
}

constexpr std::array<bool, 256> s_quiet = []
{
    std::array<bool, 256> quiet{};
    for (unsigned c = 0; c < 256; ++c)
        quiet[c] = IsQuiet(static_cast<unsigned char>(c));
    return quiet;
}();

#if defined(__x86_64__)

using Halves = std::array<char, 32>;

// Twice: the instruction looks up in each half of a register for itself. Beyond ASCII all is quiet.
constexpr Halves s_upper = []
{
    Halves upper{};
    for (unsigned h = 0; h < 8; ++h)
        upper[h] = upper[h + 16] = static_cast<char>(1u << h);
    return upper;
}();

constexpr Halves s_lower = []
{
    Halves lower{};
    for (unsigned l = 0; l < 16; ++l)
    {
        unsigned loud = 0;
        for (unsigned h = 0; h < 8; ++h)
            loud |= s_quiet[h * 16 + l] ? 0 : 1u << h;
        lower[l] = lower[l + 16] = static_cast<char>(loud);
    }
    return lower;
}();

__attribute__((target("avx2"))) const char* SkipQuietTextWidely(const char* p, const char* end)
{
    const __m256i upper = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s_upper.data()));
    const __m256i lower = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s_lower.data()));
    const __m256i half = _mm256_set1_epi8(0x0f);
    for (; end - p >= 32; p += 32)
    {
        const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        const __m256i loud = _mm256_and_si256(
            _mm256_shuffle_epi8(lower, _mm256_and_si256(text, half)),
            _mm256_shuffle_epi8(upper, _mm256_and_si256(_mm256_srli_epi16(text, 4), half)));
        const auto quiet = static_cast<unsigned>(
            _mm256_movemask_epi8(_mm256_cmpeq_epi8(loud, _mm256_setzero_si256())));
        if (quiet != ~0u)
            return p + std::countr_one(quiet);
    }
    return SkipQuietTextPortably(p, end);
}

#endif

#if defined(__x86_64__)

/// What the C library found at the start of the process, where it tells: asking the processor takes
/// long in a virtual machine.
bool HasWideInstructions()
{
#if defined(CPU_FEATURE_ACTIVE)
    return CPU_FEATURE_ACTIVE(AVX2);
#else
    return __builtin_cpu_supports("avx2") != 0;
#endif
}

#endif

} // namespace

const char* SkipQuietTextPortably(const char* p, const char* end)
{
    while (p != end && s_quiet[static_cast<unsigned char>(*p)])
        ++p;
    return p;
}

const char* SkipQuietText(const char* p, const char* end)
{
#if defined(__x86_64__)
    static const bool s_hasWideInstructions = HasWideInstructions();
    if (s_hasWideInstructions && FastPaths::IsOn(FastPaths::WIDE_INSTRUCTIONS))
        return SkipQuietTextWidely(p, end);
#endif
    return SkipQuietTextPortably(p, end);
}

} // namespace telv
