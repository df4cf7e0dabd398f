// SPDX-License-Identifier: MIT
// Output without pieces: the same characters, columns and sizes as with them.
#include "tlMacroExpander/src/Output/UnrecordedOutput.h"
#include "ExpanderSupport.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Output/StringSink.h"
#include <gtest/gtest.h>
#include <random>

namespace telv::expander
{

namespace
{

/// An output on a stream of its own.
struct Output
{
    StringStream m_os{4096};
    ExpandedOutput m_output{&m_os};

    /// "TEXT @COLUMN #SIZE"
    std::string State() const
    {
        return Str(m_os.GetString()) + " @" + std::to_string(m_output.m_columnPos) + " #" +
               std::to_string(m_output.m_size);
    }
};

std::string RandomText(std::mt19937& random)
{
    const std::string characters = "aab \t\n\r";
    const size_t length = random() % (random() % 4 == 0 ? 200 : 8);
    std::string text;
    for (size_t i = 0; i < length; ++i)
        text += characters[random() % characters.size()];
    return text;
}

} // namespace

TEST(UnrecordedOutput, WritesWhatRecordingWrites)
{
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round)
    {
        Output recorded;
        Output source;
        Output calculated;
        for (int write = 0; write < 6; ++write)
        {
            const std::string text = RandomText(random);
            const auto indent = static_cast<ssize_t>(random() % 3 == 0 ? random() % 70 : 0);
            WriteUnrecorded(recorded.m_output, View(text), indent);
            source.m_output.WriteSubStringFromSourceFile(View(text), indent);
            calculated.m_output.WriteCalculatedSubString(View(text), "@", indent);
            ASSERT_EQ(recorded.State(), source.State());
            ASSERT_EQ(recorded.State(), calculated.State());
        }
        EXPECT_EQ(recorded.m_output.size(), 0);
    }
}

TEST(UnrecordedOutput, ARunWritesNoPieces)
{
    const std::string source = "@def m(a) = {<a>}\nm(1) @(1+2)\n";
    for (const bool records : {true, false})
    {
        ExpansionRun run;
        run.m_recordPieces = records;
        const ExpansionRunScope scope(run);
        FileScopeVarFrame frame;
        Output out;
        MacroExpand(nullptr, &frame, View(source), 0, 2, out.m_output);
        EXPECT_EQ(Str(out.m_os.GetString()), "  <1> 3\n");
        EXPECT_EQ(out.m_output.m_size, 8);
        EXPECT_EQ(out.m_output.size(), records ? 8 : 0);
    }
}

TEST(UnrecordedOutput, PiecesThatTheCallerAsksForAreRecorded)
{
    const std::string source = "x @(1+2)";
    ExpansionRun run;
    run.m_recordPieces = false;
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    xstring text;
    OutputPieces pieces;
    MacroExpand(nullptr, &frame, View(source), 0, 0, text, pieces);
    EXPECT_EQ(Str(text), "x 3");
    EXPECT_EQ(pieces.size(), 3);
    EXPECT_FALSE(run.m_recordPieces);
    MacroExpand(nullptr, &frame, View(source), 0, 0, text);
    EXPECT_EQ(Str(text), "x 3");
}

TEST(StringSink, CollectsTextOfAnyLength)
{
    for (const int puts : {0, 1, 10, 25, 26, 100, 5000})
    {
        StringSink sink;
        xostream os(&sink);
        std::string expected;
        for (int i = 0; i < puts; ++i)
        {
            os << "0123456789";
            expected += "0123456789";
        }
        EXPECT_EQ(sink.size(), static_cast<ssize_t>(expected.size()));
        EXPECT_EQ(Str(sink.Text()), expected);
        xstring text("earlier");
        sink.Take(text);
        EXPECT_EQ(Str(text), expected);
        EXPECT_EQ(sink.size(), 0);
        os << "again";
        sink.Take(text);
        EXPECT_EQ(Str(text), "again");
    }
}

TEST(StringSink, TakesOneLongText)
{
    const std::string text(100'000, 'x');
    StringSink sink;
    xostream os(&sink);
    os << "a" << View(text) << "" << SubString();
    xstring taken;
    sink.Take(taken);
    EXPECT_EQ(Str(taken), "a" + text);
}

TEST(StringSink, IndentsLinesAsEveryStreamDoes)
{
    StringSink sink;
    xostream os(&sink);
    {
        const Indenter indenter(os, 4);
        os << "a\n\nb";
        os << "c\n";
    }
    os << "d";
    EXPECT_EQ(Str(sink.Text()), "    a\n\n    bc\nd");
}

} // namespace telv::expander
