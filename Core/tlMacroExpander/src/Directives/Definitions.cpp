// SPDX-License-Identifier: MIT
// @def, @exportdef, @nakeddef, @defpython: macros are stored as text, unexpanded.
//
// A definition in text that exists only while expanding shares that text, because it may be placed
// in a frame that lives longer.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/ExpansionObserver.h"
#include "tlMacroExpander/src/Directives/Watching.h"
#include "tlMacroExpander/src/Frames/FrameTree.h"
#include "tlMacroExpander/src/Frames/HashName.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/OpenedAt.h"
#include "tlMacroExpander/src/Values/OwningVariables.h"

namespace telv
{

ELSVariable CheckVariableType(SubString word)
{
    static constexpr struct
    {
        const char* m_word;
        ELSVariable m_type;
    } types[] = {{"bool", LSV_BOOL},
                 {"int", LSV_INT},
                 {"double", LSV_DOUBLE},
                 {"char", LSV_CHAR},
                 {"string", LSV_STRING}};
    for (const auto& type : types)
    {
        if (word == type.m_word)
            return type.m_type;
    }
    return LSV_MACRO;
}

void MacroExpander::ProcessDefDirective(bool exportdef, bool nakeddef, bool defpython)
{
    LSToken token = NextToken();
    const bool fileScope = token.m_type == TOKEN_PLUS;
    if (fileScope)
        token = NextToken();
    const ELSVariable returnType = CheckVariableType(token.m_str);
    if (returnType != LSV_MACRO)
        token = NextToken();
    if (token.m_type != TOKEN_IDENTIFIER)
        ThrowAtToken({"Identifier expected for macro name when read "}, token);

    FrameTree::Names(*m_vf).FetchSlot(HashName(token.m_str));
    TemporaryText* const owner = ExpansionLevel::CurrentOwner();
    const bool isOfTree = !fileScope || IsFileScopeOfTree();
    auto macroVar = MakeMacroVariable(returnType, token.m_str, nullptr, owner, owner,
                                      isOfTree ? m_vf : nullptr);
    macroVar->m_isPython = defpython;
    macroVar->m_naked = nakeddef;
    ReadMacroVariableDefn(token.m_str, macroVar.get());

    if (Warns(WARN_UNUSED))
        WatchDefinition(token.m_str, macroVar->GetSubstitutionString(), /*isMacro=*/true);
    VarFrame* const target = FindTargetFrame(fileScope, exportdef, token);
    const LSMacroVariable& added = *macroVar;
    target->m_localVariables.Add(macroVar.release());
    if (RunState::CurrentObserver() != nullptr) [[unlikely]]
        TellDefined(ObservedDefinition::DEFINED_MACRO, token.m_str, added.GetSubstitutionString(),
                    &added);
    ScanOverWhiteSpaceAfterDirective();
}

/// Whether the file scope shares the names of this frame, and with them the memory of variables.
bool MacroExpander::IsFileScopeOfTree() const
{
    const VarFrame* const file = m_vf->m_fileScopeFrame;
    return file != nullptr && &FrameTree::Names(*file) == &FrameTree::Names(*m_vf);
}

/// The frame that a definition goes to; `+` takes precedence over exporting.
VarFrame* MacroExpander::FindTargetFrame(bool fileScope, bool exportdef, const LSToken& name)
{
    if (fileScope)
    {
        if (m_vf->m_fileScopeFrame == nullptr)
            ThrowAt(name.m_str.begin(), {"No filescope frame"});
        return m_vf->m_fileScopeFrame;
    }
    if (exportdef)
    {
        if (m_vf->m_parent == nullptr)
            ThrowAt(name.m_str.begin(), {"No parent frame"});
        return m_vf->m_parent;
    }
    return m_vf;
}

void MacroExpander::ReadMacroVariableDefn(SubString name, LSMacroVariable* macroVar)
{
    TELV_ASSERT(macroVar);
    const LSToken token = NextToken();
    if (token.m_type == TOKEN_LEFT_PAREN)
    {
        try
        {
            ReadFormalArgs(name, *macroVar);
        }
        catch (const LexScannerException& e)
        {
            NoteOpenedAround(token.m_str.begin(), e.m_pos, m_str.end());
            throw;
        }
        ReadEqualsForVariableDefn(name);
    }
    else if (token.m_type != TOKEN_EQUAL)
        ThrowAtToken({"= or ( expected for definition of macro ", name, " when read "}, token);
    const TextBlock body = CutBlock();
    macroVar->SetSubstitutionString(body.m_text.m_text, /*copy=*/false, body.m_indent);
    KeepScanned(*macroVar, body.m_text);
}

/// Names of formal arguments already read. Few are compared one by one, many are hashed.
class MacroExpander::FormalNames
{
public:
    explicit FormalNames(const LSMacroVariable& macroVar) : m_macroVar(macroVar) {}

    bool Contains(SubString name)
    {
        const xvector<LSFormalArg>& args = m_macroVar.m_argNames;
        if (args.size() <= s_few)
            return m_macroVar.FindArgName(name) != -1;
        for (ssize_t i = m_names.empty() ? 0 : args.size() - 1; i < args.size(); ++i)
            m_names.insert(args[i].m_name);
        return m_names.count(name) > 0;
    }

private:
    static constexpr ssize_t s_few = 16;

    struct Hash
    {
        size_t operator()(SubString name) const { return HashName(name); }
    };

    const LSMacroVariable& m_macroVar;
    HeldHashSet<SubString, Hash> m_names;
};

void MacroExpander::ReadFormalArgs(SubString name, LSMacroVariable& macroVar)
{
    FormalNames known(macroVar);
    LSToken token = NextToken();
    if (token.m_type == TOKEN_RIGHT_PAREN)
        return;
    for (;;)
    {
        token = ReadFormalArg(name, macroVar, token, known);
        if (token.m_type == TOKEN_RIGHT_PAREN)
            return;
        if (token.m_type != TOKEN_COMMA)
            ThrowAtToken({"Comma or right parenthesis expected when read "}, token,
                         xstring("\nwhile reading argument list for definition of macro ") + name);
        token = NextToken();
    }
}

/// Reads one formal argument, whose first token is `token`, and returns the token behind it.
LSToken MacroExpander::ReadFormalArg(SubString name, LSMacroVariable& macroVar, LSToken token,
                                     FormalNames& known)
{
    LSFormalArg arg;
    arg.m_type = CheckVariableType(token.m_str);
    if (arg.m_type != LSV_MACRO)
        token = NextToken();
    arg.m_name = token.m_str;
    if (token.m_type != TOKEN_IDENTIFIER)
        ThrowAtToken({"Read "}, token,
                     xstring(" while trying to read argument for definition of macro ") + name);
    if (known.Contains(arg.m_name))
        ThrowAt(arg.m_name.begin(),
                {"Repeated argument ", arg.m_name, " in definition of macro ", name});
    if (arg.m_name == "false" || arg.m_name == "true")
        ThrowAt(arg.m_name.begin(),
                {"Invalid formal argument '", arg.m_name, "' in definition of macro ", name});
    token = NextToken();
    if (token.m_type == TOKEN_LEFT_PAREN)
    {
        token = NextToken();
        if (token.m_type != TOKEN_RIGHT_PAREN)
            ThrowAtToken({"Expected ) when read "}, token);
        arg.m_isFnArg = true;
        token = NextToken();
    }
    macroVar.m_argNames.push_back(arg);
    return token;
}

void MacroExpander::ReadEqualsForVariableDefn(SubString name)
{
    const LSToken token = NextToken();
    if (token.m_type != TOKEN_EQUAL)
        ThrowAtToken({"= expected in definition of macro ", name, " when read "}, token);
}

bool MacroExpander::ReadEqualsForVariableDefn2(SubString name)
{
    LSToken token = NextToken();
    const bool colon = token.m_type == TOKEN_COLON;
    if (colon)
        token = NextToken();
    if (token.m_type != TOKEN_EQUAL)
        ThrowAtToken({"= expected in definition of macro ", name, " when read "}, token);
    return colon;
}

} // namespace telv
