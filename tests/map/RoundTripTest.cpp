// SPDX-License-Identifier: MIT
// Every language case: each byte of its output leads back to a byte that is equal, or to what made
// it.
#include "map/MappedFiles.h"
#include "support/Files.h"
#include "support/RunProgram.h"
#include "support/TempDir.h"
#include "support/TestCase.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace telv::test
{
namespace
{

using Arguments = std::vector<std::string>;

/// Runs the case with a map; false when it is one that fails.
bool ExpandWithMap(const TestCase& testCase, const TempDir& temp, const Arguments& kindOfMap)
{
    Arguments argv{TELV_TLEXPAND_PATH, "--verify-map", "--map", temp.Path("map")};
    argv.insert(argv.end(), kindOfMap.begin(), kindOfMap.end());
    Arguments arguments = ReadArguments(testCase);
    for (std::string& argument : arguments)
        if (argument == "{out}")
            argument = temp.Path("out");
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    if (std::find(argv.begin(), argv.end(), "-o") == argv.end())
        argv.insert(argv.end(), {"-o", temp.Path("out")});
    argv.push_back(testCase.name);
    ProgramOptions options;
    options.directory = testCase.directory;
    const ProgramResult result = RunProgram(argv, options);
    EXPECT_EQ(result.status, 0) << testCase.path << "\n" << result.err;
    return result.status == 0;
}

bool CanCalculate(char c)
{
    return c == '@' || c == '"' || c == '_' || std::isalpha(static_cast<unsigned char>(c)) != 0 ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// What is wrong with the origin of the byte at `out`, or an empty text.
std::string CheckByte(tool::MappedFiles& files, ssize_t out)
{
    const char byte = files.Output().m_text.begin()[out];
    const std::optional<tool::Origin> origin = files.Map().OriginOf(out);
    if (!origin)
        return byte == ' ' ? "" : "a byte without origin that is no indentation";
    const tool::MappedText* const source = files.SourceText(origin->m_source);
    if (source == nullptr)
        return ""; // Text of the command line: there is no file to look into.
    const char found = source->m_text.begin()[origin->m_offset];
    if (origin->IsCopied())
        return found == byte ? "" : "a copied byte that differs";
    return CanCalculate(found) ? "" : "an origin that is neither directive nor name";
}

/// What is wrong with the steps of the chains, or an empty text. Every one of them can be told.
std::string CheckChains(const tool::OutputMap& map)
{
    for (const tool::MapChain& chain : map.m_chains)
        if (!chain.m_place.IsKnown() || chain.m_name.empty())
            return "a step without a place or a name";
    std::vector<bool> isUsed(map.m_chains.size());
    for (const tool::MapPiece& piece : map.m_pieces)
        for (ssize_t i = piece.m_chain; i != tool::s_none && !isUsed[static_cast<size_t>(i)];
             i = map.m_chains[static_cast<size_t>(i)].m_parent)
            isUsed[static_cast<size_t>(i)] = true;
    return std::find(isUsed.begin(), isUsed.end(), false) == isUsed.end()
               ? ""
               : "a step through which no piece came";
}

void CheckCase(const TestCase& testCase, const Arguments& kindOfMap)
{
    const TempDir temp;
    if (!ExpandWithMap(testCase, temp, kindOfMap))
        return;
    tool::MappedFiles files(temp.Path("map"), "");
    const ssize_t size = files.Map().m_size;
    ASSERT_EQ(files.Output().m_text.size(), size) << testCase.path;
    EXPECT_EQ(CheckChains(files.Map()), "") << testCase.path;
    // All of what fits into a test; of the large ones, bytes a prime number apart.
    const ssize_t step = size > 20000 ? 97 : 1;
    for (ssize_t out = 0; out < size; out += step)
    {
        const std::string fault = CheckByte(files, out);
        ASSERT_EQ(fault, "") << testCase.path << " at byte " << out;
    }
}

void CheckAllCases(const Arguments& kindOfMap)
{
    size_t count = 0;
    for (const TestCase& testCase : FindCases(TELV_SOURCE_DIR "/tests/cases"))
    {
        if (IsProject(testCase) || !RunsInThisBuild(testCase))
            continue;
        if (!ReadExpectation(testCase).out)
            continue;
        CheckCase(testCase, kindOfMap);
        ++count;
    }
    EXPECT_GT(count, 100u);
}

TEST(RoundTripTest, EveryByteOfEveryCaseLeadsToItsOrigin)
{
    CheckAllCases({"--chains", "--trace", "/dev/null"});
}

TEST(RoundTripTest, SoItDoesInAMapWithoutChains)
{
    CheckAllCases({});
}

TEST(RoundTripTest, SoItDoesInOneOfJoinedPieces)
{
    CheckAllCases({"--chains", "--map-runs"});
}

} // namespace
} // namespace telv::test
