// SPDX-License-Identifier: MIT
// The output: columns, indentation, pieces, and the way back from output positions to the source.
#include "ExpanderSupport.h"
#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace telv::expander
{

namespace
{

const std::string s_area = "ExpandedOutput";

/// An output on a stream of its own.
struct Output
{
    StringStream m_os{4096};
    ExpandedOutput m_output{&m_os};

    std::string Text() const { return Str(m_os.GetString()); }
};

/// Something written: source text, or text calculated from a source.
struct Write
{
    std::string m_text;
    ssize_t m_indent;
    bool m_isCalculated;
};

Write Source(std::string text, ssize_t indent)
{
    return Write{std::move(text), indent, false};
}

Write Calculated(std::string text, ssize_t indent)
{
    return Write{std::move(text), indent, true};
}

const std::string s_origin = "@directive";

void Apply(ExpandedOutput& output, const Write& write)
{
    if (write.m_isCalculated)
        output.WriteCalculatedSubString(View(write.m_text), View(s_origin), write.m_indent);
    else
        output.WriteSubStringFromSourceFile(View(write.m_text), write.m_indent);
}

/// Pieces of several writes: "s N", "i N" and "c N".
std::string Kinds(const OutputPieces& pieces)
{
    std::string text;
    for (const OutputPiece& piece : pieces.m_pieces)
    {
        const char* const kind = piece.out == 0 ? "s " : piece.in.begin() == nullptr ? "i " : "c ";
        text += (text.empty() ? "" : ", ") + (kind + std::to_string(piece.size()));
    }
    return text;
}

} // namespace

TEST(ExpandedOutput, NewOutput)
{
    StringStream os(4096);
    const ExpandedOutput output(&os);
    EXPECT_EQ(output.m_os, &os);
    EXPECT_EQ(output.m_columnPos, -1);
    EXPECT_TRUE(output.m_pieces.m_pieces.empty());
    EXPECT_EQ(output.m_size, 0);
    EXPECT_EQ(output.size(), 0);
}

TEST(ExpandedOutput, Writing)
{
    const struct
    {
        std::vector<Write> m_writes;
        std::string m_text;
        ssize_t m_column;
        std::string m_pieces;
    } rows[] = {
        {{}, "", -1, ""},
        {{Source("", 2)}, "", -1, ""},
        {{Calculated("", 2)}, "", -1, ""},
        {{Source("ab", 0)}, "ab", 2, "s 2"},
        {{Source("ab\ncd", 2)}, "  ab\n  cd", 4, "i 2, s 3, i 2, s 2"},
        {{Source("ab\ncd", 0)}, "ab\ncd", 2, "s 5"},
        {{Source("ab\n", 2)}, "  ab\n", -1, "i 2, s 3"},
        {{Source("\n\n", 2)}, "  \n  \n", -1, "i 2, s 1, i 2, s 1"},
        {{Source("a\nb\nc\n", 0)}, "a\nb\nc\n", -1, "s 6"},
        {{Calculated("x\n", 3)}, "   x\n", -1, "c 5"},
        {{Calculated("x\ny", 3)}, "   x\n   y", 4, "c 9"},
        {{Calculated("x", 0)}, "x", 1, "c 1"},
        {{Calculated("\n", 1)}, " \n", -1, "c 2"},
        {{Source("a", 0), Source("\t", 0)}, "a\t", 5, "s 1, s 1"},
        {{Source("\t", 0)}, "\t", 4, "s 1"},
        {{Source("\ta\t", 1)}, " \ta\t", 10, "i 1, s 3"},
        {{Calculated("a\tb", 0)}, "a\tb", 6, "c 3"},
        {{Source("a", 2), Source("b", 2)}, "  ab", 4, "i 2, s 1, s 1"},
        {{Source("a", 2), Calculated("b", 7)}, "  ab", 4, "i 2, s 1, c 1"},
        {{Source("a\n", 2), Calculated("b", 3)}, "  a\n   b", 4, "i 2, s 2, c 4"},
        {{Calculated("a\n", 1), Source("b", 4)}, " a\n    b", 5, "c 3, i 4, s 1"},
        {{Source("a", 0), Source("", 9), Calculated("", 9)}, "a", 1, "s 1"},
        {{Source("a\r\n", 1)}, " a\r\n", -1, "i 1, s 3"},
        {{Source(std::string("\0\xff", 2), 0)}, std::string("\0\xff", 2), 2, "s 2"},
        {{Source("x", 200)}, std::string(200, ' ') + "x", 201, "i 200, s 1"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(&row - rows);
        Output out;
        for (const Write& write : row.m_writes)
            Apply(out.m_output, write);
        EXPECT_EQ(out.Text(), row.m_text);
        EXPECT_EQ(out.m_output.m_columnPos, row.m_column);
        EXPECT_EQ(Kinds(out.m_output.m_pieces), row.m_pieces);
        EXPECT_EQ(out.m_output.m_size, static_cast<ssize_t>(row.m_text.size()));
        EXPECT_EQ(out.m_output.size(), out.m_output.m_size);
        EXPECT_EQ(out.m_output.m_pieces.size(), out.m_output.m_size);
    }
}

TEST(ExpandedOutput, PiecesViewTheSource)
{
    const std::string source = "ab\ncd";
    Output out;
    out.m_output.WriteSubStringFromSourceFile(View(source), 2);
    const auto& pieces = out.m_output.m_pieces.m_pieces;
    ASSERT_EQ(pieces.size(), 4);
    EXPECT_EQ(pieces[0].in.begin(), nullptr);
    EXPECT_EQ(pieces[0].in.end(), nullptr);
    EXPECT_EQ(pieces[0].out, 2);
    EXPECT_EQ(pieces[1].in.begin(), source.data());
    EXPECT_EQ(pieces[1].in.end(), source.data() + 3);
    EXPECT_EQ(pieces[1].out, 0);
    EXPECT_EQ(pieces[3].in.begin(), source.data() + 3);
    EXPECT_EQ(pieces[3].in.end(), source.data() + 5);

    out.m_output.WriteCalculatedSubString("calculated", View(source), 0);
    ASSERT_EQ(pieces.size(), 5);
    EXPECT_EQ(pieces[4].in.begin(), source.data());
    EXPECT_EQ(pieces[4].in.end(), source.data() + 5);
    EXPECT_EQ(pieces[4].out, 10);
}

TEST(ExpandedOutput, Assertions)
{
    EXPECT_EQ(FailedAssertion([] { ExpandedOutput output(nullptr); }), AssertionIn(s_area, "m_os"));
    Output out;
    EXPECT_EQ(FailedAssertion([&] { out.m_output.WriteCalculatedSubString("x", SubString(), 0); }),
              AssertionIn(s_area, "sSrcFile"));
    EXPECT_EQ(FailedAssertion([&] { out.m_output.WriteCalculatedSubString("", SubString(), 0); }),
              "no assertion failed");
    EXPECT_EQ(out.Text(), "");
    out.m_output.m_os = nullptr;
    EXPECT_EQ(FailedAssertion([&] { out.m_output.WriteSubStringFromSourceFile("", 0); }),
              AssertionIn(s_area, "m_os"));
    EXPECT_EQ(FailedAssertion([&] { out.m_output.WriteCalculatedSubString("", "x", 0); }),
              AssertionIn(s_area, "m_os"));
}

TEST(ExpandedOutput, PieceWithoutSizeIsAnAssertion)
{
    OutputPieces pieces;
    pieces.m_pieces.push_back(OutputPiece{SubString(), 0});
    EXPECT_EQ(FailedAssertion([&] { pieces.size(); }), AssertionIn(s_area, "s > 0"));
    EXPECT_EQ(FailedAssertion([&] { pieces.MapOutputPositionToAddress(0); }),
              AssertionIn(s_area, "s > 0"));
    OutputPiecesMonotonePosMapper mapper(pieces);
    EXPECT_EQ(FailedAssertion([&] { mapper.MapOutputPositionToAddress(0); }),
              AssertionIn(s_area, "s > 0"));
    pieces.m_pieces[0].out = -1;
    EXPECT_EQ(FailedAssertion([&] { pieces.size(); }), AssertionIn(s_area, "s > 0"));
}

// The way back

namespace
{

/// "  ab\n  " and then calculated text of 4 characters, and "cd".
struct MappedOutput : Output
{
    MappedOutput()
    {
        m_output.WriteSubStringFromSourceFile(SubString(m_source.data(), m_source.data() + 3), 2);
        m_output.WriteCalculatedSubString("xy", SubString(m_source.data() + 3, m_source.data() + 6),
                                          2);
        m_output.WriteSubStringFromSourceFile(SubString(m_source.data() + 6, m_source.data() + 8),
                                              2);
    }

    /// The offset in the source; "null" for none.
    std::string Offset(const char* address) const
    {
        return address == nullptr ? "null" : std::to_string(address - m_source.data());
    }

    const std::string m_source = "ab\n@xycd";
};

const char* const s_offsets[] = {"null", "null", "0", "1", "2", "3", "3", "3", "3", "6", "7"};

} // namespace

TEST(ExpandedOutput, MapsEachPosition)
{
    const MappedOutput out;
    ASSERT_EQ(out.Text(), "  ab\n  xycd");
    for (ssize_t pos = 0; pos < out.m_output.size(); ++pos)
        EXPECT_EQ(out.Offset(out.m_output.m_pieces.MapOutputPositionToAddress(pos)), s_offsets[pos])
            << pos;
}

TEST(ExpandedOutput, PositionsThatDoNotExist)
{
    const MappedOutput out;
    const OutputPieces& pieces = out.m_output.m_pieces;
    const struct
    {
        ssize_t m_pos;
        const char* m_condition;
    } rows[] = {
        {-1, "0 <= pos && pos <= size()"},
        {12, "0 <= pos && pos <= size()"},
        {11, "0"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FailedAssertion([&] { pieces.MapOutputPositionToAddress(row.m_pos); }),
                  AssertionIn(s_area, row.m_condition))
            << row.m_pos;
    const OutputPieces none;
    EXPECT_EQ(FailedAssertion([&] { none.MapOutputPositionToAddress(0); }),
              AssertionIn(s_area, "0"));
}

TEST(ExpandedOutput, MonotoneMapper)
{
    const MappedOutput out;
    OutputPiecesMonotonePosMapper mapper(out.m_output.m_pieces);
    EXPECT_EQ(&mapper.m_op, &out.m_output.m_pieces);
    EXPECT_EQ(mapper.m_index, 0);
    EXPECT_EQ(mapper.m_offset, 0);
    for (ssize_t pos = 0; pos < 11; ++pos)
    {
        for (int twice = 0; twice < 2; ++twice)
            EXPECT_EQ(out.Offset(mapper.MapOutputPositionToAddress(pos)), s_offsets[pos]) << pos;
    }
    EXPECT_EQ(mapper.m_index, 3);
    EXPECT_EQ(mapper.m_offset, 9);
    EXPECT_EQ(FailedAssertion([&] { mapper.MapOutputPositionToAddress(8); }),
              AssertionIn(s_area, "m_offset <= pos"));
    EXPECT_EQ(out.Offset(mapper.MapOutputPositionToAddress(9)), "6");
}

TEST(ExpandedOutput, MonotoneMapperPastTheEnd)
{
    const MappedOutput out;
    const struct
    {
        ssize_t m_pos;
        const char* m_condition;
    } rows[] = {{11, "0"}, {12, "pos == m_offset"}, {-1, "m_offset <= pos"}};
    for (const auto& row : rows)
    {
        OutputPiecesMonotonePosMapper mapper(out.m_output.m_pieces);
        EXPECT_EQ(FailedAssertion([&] { mapper.MapOutputPositionToAddress(row.m_pos); }),
                  AssertionIn(s_area, row.m_condition))
            << row.m_pos;
    }
    OutputPiecesMonotonePosMapper mapper(out.m_output.m_pieces);
    mapper.m_index = 5;
    EXPECT_EQ(FailedAssertion([&] { mapper.MapOutputPositionToAddress(0); }),
              AssertionIn(s_area, "0 <= m_index && m_index <= m_op.m_pieces.size()"));
    mapper.m_index = 0;
    mapper.m_offset = -1;
    EXPECT_EQ(FailedAssertion([&] { mapper.MapOutputPositionToAddress(0); }),
              AssertionIn(s_area, "0 <= m_offset"));
    mapper.m_index = 4;
    mapper.m_offset = 5;
    EXPECT_EQ(FailedAssertion([&] { mapper.MapOutputPositionToAddress(5); }),
              AssertionIn(s_area, "m_offset == m_op.size()"));
}

TEST(ExpandedOutput, AdjustErrorPosition)
{
    const MappedOutput out;
    const std::string expanded = out.Text();
    const std::string other = "another text";
    const struct
    {
        const char* m_pos;
        const char* m_adjusted;
    } rows[] = {
        {expanded.data(), nullptr},
        {expanded.data() + 3, out.m_source.data() + 1},
        {expanded.data() + 8, out.m_source.data() + 3},
        {expanded.data() + 10, out.m_source.data() + 7},
        {expanded.data() + 11, expanded.data() + 11},
        {other.data(), other.data()},
        {nullptr, nullptr},
    };
    for (const auto& row : rows)
    {
        LexScannerException e("message", row.m_pos);
        e.m_path = "path";
        e.m_lineNumber = 7;
        out.m_output.m_pieces.AdjustErrorPosition(e, View(expanded));
        EXPECT_EQ(e.m_pos, row.m_adjusted) << &row - rows;
        EXPECT_EQ(Str(e.m_path), "path");
        EXPECT_EQ(e.m_lineNumber, 7);
        EXPECT_EQ(Str(e.m_description), "message");
    }
}

TEST(ExpandedOutput, RandomWritesTileTheOutput)
{
    std::mt19937 random(7);
    for (int run = 0; run < 50; ++run)
    {
        std::deque<Write> writes;
        Output out;
        for (int i = 0; i < 40; ++i)
        {
            Write write{"", static_cast<ssize_t>(random() % 5), random() % 3 == 0};
            for (unsigned n = random() % 8; n > 0; --n)
                write.m_text += "ab\n\t "[random() % 5];
            writes.push_back(write);
            Apply(out.m_output, writes.back());
        }
        const std::string text = out.Text();
        ASSERT_EQ(out.m_output.size(), static_cast<ssize_t>(text.size()));
        OutputPiecesMonotonePosMapper mapper(out.m_output.m_pieces);
        size_t pos = 0;
        for (const OutputPiece& piece : out.m_output.m_pieces.m_pieces)
        {
            for (ssize_t i = 0; i < piece.size(); ++i, ++pos)
            {
                const char* const address =
                    out.m_output.m_pieces.MapOutputPositionToAddress(static_cast<ssize_t>(pos));
                EXPECT_EQ(mapper.MapOutputPositionToAddress(static_cast<ssize_t>(pos)), address);
                const bool isIndent = piece.in.begin() == nullptr;
                const char expected = isIndent ? ' ' : piece.out == 0 ? *address : text[pos];
                EXPECT_EQ(text[pos], expected);
            }
        }
    }
}

} // namespace telv::expander
