// SPDX-License-Identifier: MIT
// The pieces of an output against what they say about each of its characters, one by one.
#include "Expansion.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include <gtest/gtest.h>

namespace telv::test
{
namespace
{

/// Where a character of the output comes from, written down for each by walking over the pieces.
std::vector<const char*> Origins(const OutputPieces& pieces)
{
    std::vector<const char*> origins;
    for (const OutputPiece& piece : pieces.m_pieces)
    {
        const bool isCopy = piece.out == 0;
        const ssize_t size = isCopy ? piece.in.size() : piece.out;
        for (ssize_t i = 0; i < size; ++i)
            origins.push_back(isCopy ? piece.in.begin() + i : piece.in.begin());
    }
    return origins;
}

bool IsIn(const std::vector<SubString>& files, const char* pos)
{
    for (const SubString& file : files)
        if (file.begin() <= pos && pos < file.end())
            return true;
    return false;
}

class MapObserver final : public Observer
{
public:
    void SeePieces(const OutputPieces& pieces, SubString output,
                   const std::vector<SubString>& files) override
    {
        const std::vector<const char*> origins = Origins(pieces);
        ASSERT_EQ(static_cast<ssize_t>(origins.size()), output.size());
        OutputPiecesMonotonePosMapper mapper(pieces);
        size_t offset = 0;
        for (const OutputPiece& piece : pieces.m_pieces)
            for (ssize_t left = piece.size(); left != 0; --left, ++offset)
            {
                const auto pos = static_cast<ssize_t>(offset);
                EXPECT_EQ(mapper.MapOutputPositionToAddress(pos), origins[offset]);
                if (origins.size() < s_few)
                {
                    EXPECT_EQ(pieces.MapOutputPositionToAddress(pos), origins[offset]);
                }
                const bool isIndentation = piece.in.begin() == nullptr;
                const bool isCopy = piece.out == 0 && IsIn(files, origins[offset]);
                const char expected = isIndentation ? ' ' : isCopy ? *origins[offset] : output[pos];
                EXPECT_EQ(output[pos], expected);
                ++m_count;
            }
    }

    size_t m_count = 0;

private:
    static constexpr size_t s_few = 300;
};

TEST(MapTest, PiecesOfAllCasesAndOfRandomPrograms)
{
    MapObserver observer;
    const Way way = {"recorded", FastPaths::s_all, true};
    for (const Program& program : CasePrograms())
        Expand(program, way, &observer);
    for (uint32_t seed = 1; seed <= s_randomPrograms && !testing::Test::HasFailure(); ++seed)
    {
        const Program program = RandomProgram(seed);
        SCOPED_TRACE(program.name);
        Expand(program, way, &observer);
    }
    EXPECT_GT(observer.m_count, s_randomPrograms);
}

} // namespace
} // namespace telv::test
