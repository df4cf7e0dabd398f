// SPDX-License-Identifier: MIT
// @import, @importpath and @relativepath. Files are the import handler's business.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/ObservedSpan.h"
#include "tlMacroExpander/src/Scan/OpenedAt.h"
#include <optional>

namespace telv
{

/// The path that a string literal, or a string expression in brackets, gives.
xstring MacroExpander::ReadPathOperand(const LSToken& token, SubString word)
{
    xstring path;
    if (token.m_type == TOKEN_LEFT_PAREN)
        path = ParseStringExpressionInBrackets(xstring("@") + word, /*readOpenBracket=*/false);
    else if (token.m_type == TOKEN_DOUBLE_QUOTED_STRING)
        token.GetLiteralString(path);
    else
        ThrowAtToken({"Quoted string expected after '", word, "' when read "}, token);
    return path;
}

void MacroExpander::ProcessImportDirective()
{
    const LSToken token = NextToken();
    const xstring path = ReadPathOperand(token, "import");
    if (token.m_type == TOKEN_LEFT_PAREN)
    {
        // What reads the output sees the path that was imported. A literal stays as it stands.
        AdvanceWritePos(m_str.begin(), /*write=*/false);
        WriteCalculatedSubString(xstring("@import \"") + path + "\"");
    }
    TELV_ASSERT(m_importHandler);
    const char* const pos = token.m_str.begin();
    std::optional<ObservedSpan> span;
    if (ExpansionObserver* const observer = RunState::CurrentObserver())
    {
        observer->ImportBegins({SubString(pos, m_str.begin()), path});
        span.emplace(*observer, &ExpansionObserver::ImportEnds);
    }
    const bool isImported = Import(path, pos);
    ExpansionLevel::ForgetErrors(); // the handler may have swallowed some
    if (!isImported)
        ThrowAt(pos, {"Can't import file: ", path});
}

bool MacroExpander::Import(const xstring& path, const char* pos)
{
    try
    {
        return m_importHandler->HandleImport(m_vf, path, pos);
    }
    catch (const LexScannerException& e)
    {
        RunState* const state = RunState::Current();
        if (state != nullptr && e.m_pos != pos) // not refused, but read
            state->NoteImport(pos);
        throw;
    }
    catch (...)
    {
        if (RunState* const state = RunState::Current())
            state->NoteImport(pos);
        throw;
    }
}

void MacroExpander::ProcessImportPathDirective()
{
    const LSToken token = NextToken();
    const xstring path = ReadPathOperand(token, "importpath");
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    TELV_ASSERT(m_importHandler);
    const char* const pos = token.m_str.begin();
    if (!m_importHandler->HandleImportPath(path, pos))
        ThrowAt(pos, {"@importpath directive not supported"});
}

void MacroExpander::ProcessRelativePathDirective()
{
    const LSToken open = NextToken();
    if (open.m_type != TOKEN_LEFT_PAREN)
        ThrowAtToken({"( expected after @relativepath when read "}, open);
    const auto cut = [&](LSToken& end)
    {
        try
        {
            return CutArgument(end, TOKEN_RIGHT_PAREN);
        }
        catch (const LexScannerException& e)
        {
            NoteOpenedAround(open.m_str.begin(), e.m_pos, m_str.end());
            throw;
        }
    };
    LSToken comma;
    const LevelText first = cut(comma);
    if (comma.m_type != TOKEN_COMMA)
        ThrowAtToken({"Comma expected in @relativepath directive when read "}, comma);
    xstring from = EvaluateText(first, "@relativepath");
    LSToken close;
    const LevelText second = cut(close);
    if (close.m_type != TOKEN_RIGHT_PAREN)
        ThrowAtToken({") expected  in @relativepath directive when read "}, close);
    xstring to = EvaluateText(second, "@relativepath");
    AdvanceWritePos(m_str.begin(), /*write=*/false);

    NormalisePath(from);
    NormalisePath(to);
    xstring path;
    CalcRelativePath(from, to, path);
    xstring literal;
    MakeDoubleQuotedString(path, literal);
    WriteCalculatedSubString(literal);
}

} // namespace telv
