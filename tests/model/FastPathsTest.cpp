// SPDX-License-Identifier: MIT
// Every way that is only there for speed against the plain one: alone, and with all others.
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include "Expansion.h"
#include <gtest/gtest.h>

namespace telv::test
{
namespace
{

std::vector<Way> FastWays()
{
    std::vector<Way> ways = {{"all", FastPaths::s_all}, {"recorded", FastPaths::s_all, true}};
    for (unsigned bit = 1; bit < FastPaths::END; bit <<= 1)
    {
        ways.push_back({"only " + std::to_string(bit), bit});
        ways.push_back({"all but " + std::to_string(bit), FastPaths::s_all & ~bit});
    }
    return ways;
}

/// Look-ups walk, nothing is passed over, nothing is kept.
const Way s_plain = {"plain", 0, false, true};

void ExpectEqual(const Program& program)
{
    static const std::vector<Way> ways = FastWays();
    const Outcome expected = Expand(program, s_plain);
    for (const Way& way : ways)
    {
        const Outcome outcome = Expand(program, way);
        if (outcome == expected || outcome.kind == Outcome::OUT_OF_MEMORY ||
            expected.kind == Outcome::OUT_OF_MEMORY)
            continue;
        ADD_FAILURE() << program.name << ", " << way.name << "\nplain: " << Show(expected)
                      << "\nfast: " << Show(outcome) << "\nprogram:\n"
                      << program.files[0];
    }
}

TEST(FastPathsTest, AllCases)
{
    for (const Program& program : CasePrograms())
        ExpectEqual(program);
}

/// The same texts once more in a loop: the second time, what is known of them is used.
TEST(FastPathsTest, AllCasesInALoop)
{
    for (Program program : CasePrograms())
    {
        program.files[0] = "@for(round in [1,2,3])\n{\n" + program.files[0] + "\n}\n";
        ExpectEqual(program);
    }
}

TEST(FastPathsTest, RandomPrograms)
{
    for (uint32_t seed = 1; seed <= s_randomPrograms && !testing::Test::HasFailure(); ++seed)
        ExpectEqual(RandomProgram(seed));
}

} // namespace
} // namespace telv::test
