// SPDX-License-Identifier: MIT
// Expressions between brackets: the parser starts as if it had just read the opening one.
#include "tlMacroExpander/src/Expressions/ParseExpanded.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"

namespace telv
{

namespace
{

void InitInBracket(ExpressionParser& parser, SubString text)
{
    parser.m_token = LSToken(TOKEN_LEFT_PAREN, "(");
    parser.Init(text);
}

void ExpectEnd(const ExpressionParser& parser, const char* whenRead)
{
    if (parser.m_token.m_type != TOKEN_END)
        ThrowAtToken({"Expected ) after ", TokenText(parser.m_prevToken), whenRead}, parser.m_token,
                     " in expression");
}

} // namespace

bool ParseBoolInBracket(SubString text)
{
    ExpressionParser parser;
    InitInBracket(parser, text);
    const bool value = parser.ParseBool(/*allowDataLoss=*/false);
    ExpectEnd(parser, " when read ");
    return value;
}

xstring ParseStringInBracket(SubString text, bool allowDataLoss, const char* whenRead)
{
    ExpressionParser parser;
    InitInBracket(parser, text);
    xstring value = parser.ParseString(allowDataLoss);
    ExpectEnd(parser, whenRead);
    return value;
}

} // namespace telv
