// SPDX-License-Identifier: MIT
// Prints how time and memory grow: each family of programs at n, 2n and 4n, with the exponents
// between the first and the last. 1 is growth in proportion, 2 is quadratic. The report never
// fails; what lies above 1.15 is marked.
//
//     bench_law [PART OF A NAME]...
#include "Families.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

namespace
{

using namespace telv::bench;

constexpr double s_largestExponent = 1.15;
/// Growth below these is noise.
constexpr double s_leastSeconds = 0.002;
constexpr double s_leastMegabytes = 1.0;
constexpr int s_times = 5;

struct Row
{
    Cost m_costs[3];
    bool m_complete = true;
};

Row MeasureFamily(const Family& family, double emptyMegabytes)
{
    Row row;
    size_t n = family.m_size;
    for (Cost& cost : row.m_costs)
    {
        const auto measured = Measure([&] { return family.m_make(n); }, s_times);
        row.m_complete = row.m_complete && measured.has_value();
        cost = measured.value_or(Cost{});
        cost.m_megabytes = std::max(0.0, cost.m_megabytes - emptyMegabytes);
        n *= 2;
    }
    return row;
}

/// As text, marked when it is too large; "flat" for growth below `least`.
std::string Exponent(double first, double last, double least, bool& tooLarge)
{
    if (last - first < least)
        return "flat ";
    const double exponent = std::log2(last / std::max(first, least / 10)) / 2;
    tooLarge = tooLarge || exponent > s_largestExponent;
    char text[32];
    std::snprintf(text, sizeof text, "%.2f%c", exponent, exponent > s_largestExponent ? '!' : ' ');
    return text;
}

/// True when an exponent is too large.
bool PrintRow(const Family& family, const Row& row)
{
    const Cost* const c = row.m_costs;
    std::printf("%-36s %8zu", family.m_name, family.m_size);
    if (!row.m_complete)
    {
        std::printf("  did not end well\n");
        return true;
    }
    bool tooLarge = false;
    const std::string time = Exponent(c[0].m_seconds, c[2].m_seconds, s_leastSeconds, tooLarge);
    const std::string memory =
        Exponent(c[0].m_megabytes, c[2].m_megabytes, s_leastMegabytes, tooLarge);
    std::printf(" %8.1f %8.1f %8.1f  %6s %8.1f %8.1f %8.1f  %6s  %s\n", c[0].m_seconds * 1e3,
                c[1].m_seconds * 1e3, c[2].m_seconds * 1e3, time.c_str(), c[0].m_megabytes,
                c[1].m_megabytes, c[2].m_megabytes, memory.c_str(),
                family.m_note == nullptr ? "" : family.m_note);
    std::fflush(stdout);
    return tooLarge && family.m_note == nullptr;
}

bool IsWanted(const Family& family, int argc, char** argv)
{
    bool wanted = argc < 2;
    for (int i = 1; i < argc; ++i)
        wanted = wanted || std::strstr(family.m_name, argv[i]) != nullptr;
    return wanted;
}

} // namespace

int main(int argc, char** argv)
{
    const Cost empty = Measure([] { return Work([] {}); }, s_times).value_or(Cost{});
    std::vector<Family> families = TextFamilies();
    for (const Family& family : FrameFamilies())
        families.push_back(family);
    for (const Family& family : ImportFamilies())
        families.push_back(family);
    std::printf("%-36s %8s %8s %8s %8s  %6s %8s %8s %8s  %6s\n", "family", "n", "ms n", "2n", "4n",
                "exp. ", "MB n", "2n", "4n", "exp. ");
    int tooLarge = 0;
    for (const Family& family : families)
        if (IsWanted(family, argc, argv))
            tooLarge += PrintRow(family, MeasureFamily(family, empty.m_megabytes)) ? 1 : 0;
    std::printf("\nabove %.2f without a reason given: %d\n", s_largestExponent, tooLarge);
    return 0;
}
