// SPDX-License-Identifier: MIT
// What the tests of expressions share: text in, "kind value" or "error@offset" out.
#pragma once

#include "support/LiteralText.h"
#include "tlMacroExpander/src/ExpressionParser.h"
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace telv::expression
{

inline std::string TokenText(const LSToken& token)
{
    StringStream os(4096);
    os << token;
    return StdString(os.GetString());
}

/// "text@offset" of an error in `source`.
inline std::string PlacedError(const LexScannerException& e, SubString source)
{
    return StdString(e.m_description) + "@" + std::to_string(e.m_pos - source.begin());
}

/// Runs `parse` on a parser of `text`: its answer, or the error with its place, or the error of a
/// value that came out without one.
template <class Parse>
std::string Parsed(const xstring& text, const Parse& parse)
{
    ExpressionParser parser;
    try
    {
        parser.Init(text);
        return parse(parser);
    }
    catch (const LexScannerException& e)
    {
        return PlacedError(e, text);
    }
    catch (const LiteralException& e)
    {
        return "unplaced: " + ErrorText(e);
    }
}

/// Kind and value of an expression, then the token that the parser stopped at when it is not the
/// end of the text.
inline std::string Evaluate(const xstring& text)
{
    return Parsed(text,
                  [](ExpressionParser& parser)
                  {
                      LSLiteral literal;
                      parser.ParseExpression(literal);
                      const std::string value = LiteralText(literal);
                      if (parser.m_token.m_type == TOKEN_END)
                          return value;
                      return value + " then " + TokenText(parser.m_token);
                  });
}

struct Row
{
    const char* m_text;
    const char* m_expected;
};

inline void Check(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(Evaluate(xstring(row.m_text)), row.m_expected) << row.m_text;
}

} // namespace telv::expression
