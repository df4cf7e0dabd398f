// SPDX-License-Identifier: MIT
// A map that breaks a law is found out, whichever it is.
#include "output/MapCheck.h"
#include "Files.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlUtils/StringStream.h"

#include <gtest/gtest.h>
#include <string>

namespace telv::test
{
namespace
{

using namespace tool;

/// An expansion with its map, which the tests then spoil.
class MapCheckTest : public testing::Test
{
protected:
    void Expand(const std::string& source, ssize_t indent = 0)
    {
        m_source = source;
        m_sources.Add("main.tl", ViewOf(m_source), nullptr);
        StringStream stream(256);
        ExpandedOutput output(&stream);
        m_run.m_mappedOutput = &output;
        MacroExpand(nullptr, &m_frame, ViewOf(m_source), 0, indent, output);
        m_text = ToStdString(stream.GetString());
        m_pieces.m_pieces.swap(output.m_pieces.m_pieces);
        m_run.m_mappedOutput = nullptr;
        ASSERT_EQ(Check(), "");
    }

    std::string Check() const
    {
        return FindMapError({m_sources, m_run, ViewOf(m_text), m_pieces, m_edits, m_chains});
    }

    std::string m_source;
    std::string m_foreign = "not in a source";
    Sources m_sources;
    ExpansionRun m_run;
    ExpansionRunScope m_scope{m_run};
    FileScopeVarFrame m_frame;
    std::string m_text;
    OutputPieces m_pieces;
    std::vector<TextEdit> m_edits;
    OutputChains m_chains;
};

TEST_F(MapCheckTest, PiecesThatDoNotTile)
{
    Expand("abc");
    m_text += "d";
    EXPECT_EQ(Check(), "the pieces hold 3 bytes, the text 4");
    m_text = "ab";
    EXPECT_EQ(Check(), "the pieces hold 3 bytes, the text 2");
    m_text = "abc";
    m_pieces.m_pieces.clear();
    EXPECT_EQ(Check(), "the pieces hold 0 bytes, the text 3");
}

TEST_F(MapCheckTest, AnEditThatNoPieceHolds)
{
    Expand("abc");
    m_edits = {{1, 1, "x", {0, 0, 1}}};
    EXPECT_EQ(Check(), "");
    m_edits = {{3, 3, "xy", {0, 0, 1}}};
    EXPECT_EQ(Check(), "the pieces end at 3, the text at 5");
}

TEST_F(MapCheckTest, ACopyThatDiffers)
{
    Expand("ab cd"); // The blank belongs to the second piece.
    m_text = "ab ce";
    EXPECT_EQ(Check(), "the piece at 2 differs from its source");
    m_text = "ab cd";
    m_source[1] = 'x';
    EXPECT_EQ(Check(), "the piece at 0 differs from its source");
}

TEST_F(MapCheckTest, PiecesWithoutOrigin)
{
    Expand("@(1 + 1)");
    ASSERT_EQ(m_pieces.m_pieces.size(), 1);
    m_pieces.m_pieces[0].in = SubString(m_foreign.data(), m_foreign.data() + 1);
    EXPECT_EQ(Check(), "the piece at 0 has no origin");
    m_pieces.m_pieces[0].out = 0;
    EXPECT_EQ(Check(), "the piece at 0 was copied from an unknown text");
}

TEST_F(MapCheckTest, AnInsertionWithoutOrigin)
{
    Expand("abc");
    m_edits = {{0, 0, "x", SourceRange()}};
    EXPECT_EQ(Check(), "the piece at 0 has no origin");
}

TEST_F(MapCheckTest, IndentationThatIsNotBlank)
{
    Expand("abc", 2);
    ASSERT_EQ(m_text, "  abc");
    m_text = " xabc";
    EXPECT_EQ(Check(), "the piece at 0 is indentation that is not blank");
}

TEST_F(MapCheckTest, AnElementThatDoesNotStandWhereItWasCopiedFrom)
{
    Expand("@def c = {[red, green]}@for(x in c){x }");
    ASSERT_EQ(m_text, "red green ");
    m_source[m_source.find("green")] = 'x';
    EXPECT_EQ(Check(), "the piece at 4 differs from its source");
}

TEST_F(MapCheckTest, ChainsThatLeadNowhere)
{
    Expand("abc");
    const MapChain outer{"macro", "a", {0, 0, 1}, s_none, s_none};
    const MapChain inner{"macro", "b", {0, 1, 1}, s_none, 0};
    m_chains = {{outer, inner}, {1}};
    EXPECT_EQ(Check(), "");
    m_chains.m_chainOfPiece = {2};
    EXPECT_EQ(Check(), "the piece at 0 has a chain that does not exist");
    m_chains.m_chainOfPiece = {0, 1};
    EXPECT_EQ(Check(), "there are the chains of 2 pieces, and 1 pieces");
    m_chains.m_chainOfPiece = {1};
    m_chains.m_chains[1].m_parent = 1;
    EXPECT_EQ(Check(), "the step 1 has a parent that does not come before it");
    m_chains.m_chains[1] = inner;
    m_chains.m_chains[1].m_place.m_inSize = 3;
    EXPECT_EQ(Check(), "the step 1 stands outside its source");
    m_chains.m_chains[1].m_place = {1, 0, 1};
    EXPECT_EQ(Check(), "the step 1 stands outside its source");
}

} // namespace
} // namespace telv::test
