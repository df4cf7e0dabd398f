// SPDX-License-Identifier: MIT
// Statements of project files. Reading and expanding the files is in MpfwFiles.cpp.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/Mpfw/MpfwParser"

#include "tlMacroExpander/src/Mpfw/MpfwParser.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include "tlUtils/HeldContainers.h"
#include <algorithm>
#include <utility>

namespace telv
{

namespace
{

bool IsQuotedString(const LSToken& token)
{
    return token.m_type == TOKEN_SINGLE_QUOTED_STRING || token.m_type == TOKEN_DOUBLE_QUOTED_STRING;
}

bool IsIdentifier(const LSToken& token, SubString name)
{
    return token.m_type == TOKEN_IDENTIFIER && token.m_str == name;
}

bool HoldsBackslash(SubString s)
{
    return std::find(s.begin(), s.end(), '\\') != s.end();
}

} // namespace

/// Puts the parser back to where it was when the scope ends.
class MpfwParser::ParserState
{
public:
    explicit ParserState(MpfwParser& parser)
        : m_parser(parser), m_token(parser.m_token), m_prevToken(parser.m_prevToken),
          m_str(parser.m_str)
    {
    }
    ~ParserState()
    {
        m_parser.m_token = m_token;
        m_parser.m_prevToken = m_prevToken;
        m_parser.m_str = m_str;
    }
    ParserState(const ParserState&) = delete;
    ParserState& operator=(const ParserState&) = delete;

private:
    MpfwParser& m_parser;
    LSToken m_token;
    LSToken m_prevToken;
    SubString m_str;
};

/// The files that have been parsed since the outermost call of ProcessImportedFile for one parser.
/// Without it, files that import the next one twice would take exponential time. Lives in that
/// call; parsers that call each other each have their own. It is found through the thread because
/// the way from one file to the next leads through virtual operations of applications, whose
/// signatures have no place for it, and because a parser has no room for a field.
class MpfwParser::ImportTree
{
public:
    explicit ImportTree(const MpfwParser& parser)
        : m_parser(parser), m_previous(std::exchange(s_current, this))
    {
    }
    ~ImportTree() { s_current = m_previous; }
    ImportTree(const ImportTree&) = delete;
    ImportTree& operator=(const ImportTree&) = delete;

    /// The tree of `parser`, or null when this call is its outermost.
    static ImportTree* Find(const MpfwParser& parser)
    {
        ImportTree* tree = s_current;
        while (tree != nullptr && &tree->m_parser != &parser)
            tree = tree->m_previous;
        return tree;
    }

    /// False when the file has been here.
    bool Enter(const MpfwSourceFile& srcFile) { return m_files.insert(&srcFile).second; }

private:
    static thread_local constinit ImportTree* s_current;

    const MpfwParser& m_parser;
    ImportTree* m_previous;
    HeldHashSet<const MpfwSourceFile*> m_files;
};

thread_local constinit MpfwParser::ImportTree* MpfwParser::ImportTree::s_current = nullptr;

MpfwFrame::MpfwFrame(MpfwSourceFileList& srcFileList) : m_srcFileList(srcFileList) {}

MpfwParser::MpfwParser(MpfwFrame& frame) : m_frame(frame) {}

void MpfwParser::ParseStringSettingHelper(const xstring& name, xstring& value)
{
    if (m_token.m_type != TOKEN_DOLLAR)
        ThrowAtToken({"Expected '$' when read "}, m_token);
    ReadNextToken();
    if (!IsIdentifier(m_token, name))
        ThrowAtToken({"Expected '", name, "' when read "}, m_token);
    ReadNextToken();
    ParseGivenToken(TOKEN_EQUAL, "=");
    if (m_token.m_type != TOKEN_DOUBLE_QUOTED_STRING)
        ThrowAtToken({"Expected quoted string when read "}, m_token);
    m_token.GetLiteralString(value);
}

void MpfwParser::ParseStringSetting(const xstring& name, xstring& value)
{
    ParseStringSettingHelper(name, value);
    ReadNextToken();
}

void MpfwParser::ParsePathSetting(const xstring& name, xstring& value)
{
    ParseStringSettingHelper(name, value);
    if (HoldsBackslash(value))
        ThrowAtToken({"Forward slashes must be used in "}, m_token);
    if (!value.empty() && value.back() == '/')
        ThrowAt(m_token.m_str.begin(), {"Path can't end with a trailing slash : ", value});
    ReadNextToken();
}

void MpfwParser::ParseOneMacroDef(xstring& name, xstring& value)
{
    ParseGivenToken(TOKEN_DOLLAR, "$");
    name = ParseIdentifier();
    ParseGivenToken(TOKEN_EQUAL, "=");
    const bool isPath = IsIdentifier(m_token, "path");
    if (isPath)
        ReadNextToken();
    ReadString(value);
    if (isPath)
        NormalisePath(value);
    m_frame.m_vf.InsertDollarMacro(name, value);
}

void MpfwParser::ParseMacroDef(xstring& name, xstring& value)
{
    while (m_token.m_type == TOKEN_DOLLAR)
        ParseOneMacroDef(name, value);
}

void MpfwParser::ParseMacroDef()
{
    xstring name;
    xstring value;
    ParseMacroDef(name, value);
}

void MpfwParser::ReadString(xstring& value)
{
    const char* const pos = m_token.m_str.begin();
    if (m_token.m_type == TOKEN_LEFT_PAREN)
    {
        ReadNextToken();
        value = ParseString(/*allowDataLoss=*/false);
        ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
        ApplyMacrosAt(value, pos);
        return;
    }
    value = ParseQuotedString();
    ReadNextToken();
}

xstring MpfwParser::ParseQuotedString()
{
    if (!IsQuotedString(m_token))
        ThrowAtToken({"Expected quoted string when read "}, m_token);
    xstring value;
    m_token.GetLiteralString(value);
    ApplyMacrosAt(value, m_token.m_str.begin());
    return value;
}

xstring MpfwParser::ParseFileOrDirName()
{
    xstring name = ParseQuotedString();
    if (HoldsBackslash(name))
        ThrowAtToken({"Forward slashes must be used in "}, m_token);
    return name;
}

void MpfwParser::ApplyMacros(xstring& s) const
{
    m_frame.m_vf.ApplyDollarMacros(s);
}

void MpfwParser::ApplyMacrosAt(xstring& s, const char* pos) const
{
    try
    {
        ApplyMacros(s);
    }
    catch (LexScannerException& e)
    {
        e.m_pos = pos;
        throw;
    }
}

bool MpfwParser::ParseImportDirective()
{
    if (m_token.m_type != TOKEN_AT)
        return false;
    ReadNextToken();
    if (!IsIdentifier(m_token, "import"))
        ThrowAtToken({"Syntax error: @"}, m_token);
    ReadNextToken();
    const xstring name = ParseQuotedString();
    xstring path;
    if (!ResolveImportPath(name, path))
        ThrowAt(m_token.m_str.begin(), {"Couldn't open file ", name});
    MpfwSourceFile* srcFile = FindExactly(path);
    if (srcFile == nullptr)
        srcFile = m_frame.m_srcFileList.FindSourceFile(path);
    TELV_ASSERT(srcFile);
    ProcessImportedFile(srcFile);
    ReadNextToken();
    return true;
}

void MpfwParser::ProcessImportedFile(MpfwSourceFile* srcFile)
{
    TELV_ASSERT(srcFile);
    ImportTree* const tree = ImportTree::Find(*this);
    if (tree == nullptr)
    {
        ImportTree outermost(*this);
        MpfwParser::ProcessImportedFile(srcFile);
        return;
    }
    if (!tree->Enter(*srcFile))
        return;
    CheckStack(m_token.m_str.begin());
    const ParserState state(*this);
    Init(srcFile->m_expanded);
    while (m_token.m_type != TOKEN_END)
    {
        if (ParseImportDirective())
            continue;
        if (m_token.m_type != TOKEN_DOLLAR)
            ThrowAtToken({"Syntax error: "}, m_token);
        ParseMacroDef();
    }
}

} // namespace telv
