// What stands for the name of a variable: a value, or the expansion of a macro.
//
// An invocation has a frame of its own whose parent is the frame of the caller (or the frame that
// an argument came from). Arguments without a type are bound by name: as macros whose text is
// expanded in the caller's frame, each time it is used. These functions are on the stack once per
// nested call, so what only errors need is composed elsewhere.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Values/OwningVariables.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include "tlMacroExpander/src/UsePython.h"

namespace telv
{

/// An argument of an invocation.
struct MacroExpander::ActualArg
{
    SubString m_text;                    ///< As the caller wrote it.
    const LSVariable* m_bound = nullptr; ///< The variable that it was bound to.
};

namespace
{

xstring Signature(const LSMacroVariable& macroVar)
{
    if (SwallowedErrors::AreExpected())
        return xstring();
    StringStream os(4096);
    macroVar.WriteNameAndFormalParameterList(os);
    return os.GetString();
}

[[noreturn, gnu::noinline]] void ThrowNoArgumentList(const LSMacroVariable& macroVar,
                                                     const LSToken& token)
{
    ThrowAtToken(
        {"( expected to begin argument list for macro ", Signature(macroVar), " when read "},
        token);
}

/// Reads one actual argument; `isLast` says which bracket or comma has to end it.
SubString ReadActualArg(SubString& str, const LSMacroVariable& macroVar, bool isLast)
{
    SubString arg;
    const LSToken token = ScanArgument(str, arg, TOKEN_RIGHT_PAREN);
    if (token.m_type != TOKEN_COMMA && token.m_type != TOKEN_RIGHT_PAREN)
        ThrowAtToken({"Comma or right parenthesis expected when read "}, token);
    if (!isLast && token.m_type == TOKEN_RIGHT_PAREN)
        ThrowAt(token.m_str.begin(),
                {"Insufficient arguments provided for macro ", Signature(macroVar)});
    if (isLast && token.m_type == TOKEN_COMMA)
        ThrowAt(token.m_str.begin(),
                {"Too many arguments provided for macro ", Signature(macroVar)});
    return arg;
}

} // namespace

/// Adds the line that names the macro and what its arguments were bound to.
[[gnu::noinline]] void MacroExpander::AddInvocationContext(LexScannerException& e,
                                                           const LSMacroVariable& macroVar,
                                                           const xvector<ActualArg>& args)
{
    if (!TakesContext(e))
    {
        AddErrorContext(e, {});
        return;
    }
    StringStream os(4096);
    os << "\n    invoking macro ";
    macroVar.WriteNameAndFormalParameterList(os);
    const char* separator = " with ";
    for (const ActualArg& arg : args)
    {
        os << separator << arg.m_bound->m_name << '=';
        arg.m_bound->WriteValue(os);
        separator = ", ";
    }
    AddErrorContext(e, {os.GetString()});
}

[[gnu::noinline]] void MacroExpander::AddContextToHeldError(const LSMacroVariable& macroVar,
                                                            const xvector<ActualArg>& args)
{
    ExpansionRun& run = CurrentRun();
    try
    {
        AddInvocationContext(*HeldError::Get(run), macroVar, args);
    }
    catch (...)
    {
        HeldError::Drop(run);
        throw;
    }
}

void MacroExpander::InvokeVariable(LSVariable* var)
{
    if (!TryInvokeVariable(var))
        HeldError::Throw(CurrentRun());
}

bool MacroExpander::TryInvokeVariable(LSVariable* var)
{
    TELV_ASSERT(var);
    ExpansionLevel::CountStep(CurrentRun(), m_startDirectivePos);
    if (var->GetType() != LSV_MACRO)
    {
        AdvanceWritePos(m_str.begin(), false);
        WriteValueOf(*var);
        return true;
    }
    LSMacroVariable* const macroVar = static_cast<LSMacroVariable*>(var);
    if (!macroVar->m_isFnArg)
        return TryInvokeMacro(*macroVar);
    InvokeMacroFunction(macroVar);
    return true;
}

void MacroExpander::WriteValueOf(const LSVariable& var)
{
    if (const auto* value = dynamic_cast<const LSValueVariable*>(&var))
    {
        WriteCalculatedSubString(value->m_value);
        return;
    }
    StringStream os(4096);
    var.WriteValue(os);
    WriteCalculatedSubString(os.GetString());
}

bool MacroExpander::TryInvokeMacro(LSMacroVariable& macroVar)
{
    xvector<ActualArg> args;
    if (macroVar.GetNumArgs() > 0)
        ReadActualArgs(macroVar, args);
    if (macroVar.m_isPython)
        CheckPythonAllowed(m_startDirectivePos);
    AdvanceWritePos(m_str.begin(), false);

    VarFrame frame(macroVar.m_context != nullptr ? macroVar.m_context : m_vf);
    VarFrame& workingFrame = macroVar.m_naked ? *m_vf : frame;
    BindArgs(macroVar, args, workingFrame);
    if (macroVar.m_isPython)
        WritePythonMacroResult(macroVar, workingFrame);
    else if (!TryExpandBody(macroVar, workingFrame)) [[unlikely]]
    {
        AddContextToHeldError(macroVar, args);
        return false;
    }
    return true;
}

void MacroExpander::ReadActualArgs(const LSMacroVariable& macroVar, xvector<ActualArg>& args)
{
    const LSToken open = LsScanToken(m_str, false);
    if (open.m_type != TOKEN_LEFT_PAREN)
        ThrowNoArgumentList(macroVar, open);
    const ssize_t n = macroVar.GetNumArgs();
    args.reserve(n);
    for (ssize_t i = 0; i < n; ++i)
        args.push_back(ActualArg{ReadActualArg(m_str, macroVar, /*isLast=*/i == n - 1), nullptr});
}

void MacroExpander::BindArgs(const LSMacroVariable& macroVar, xvector<ActualArg>& args,
                             VarFrame& frame)
{
    for (ssize_t i = 0; i < args.size(); ++i)
    {
        const LSFormalArg& formal = macroVar.m_argNames[i];
        LSVariable* const bound = formal.m_type == LSV_MACRO
                                      ? MakeNamedArg(macroVar, formal, args[i].m_text)
                                      : MakeValueArg(macroVar, formal, args[i].m_text);
        frame.m_localVariables.Add(bound);
        args[i].m_bound = bound;
    }
}

/// An argument that is bound by name: expanded in the caller's frame wherever it is used.
LSVariable* MacroExpander::MakeNamedArg(const LSMacroVariable& macroVar, const LSFormalArg& formal,
                                        SubString arg)
{
    auto bound = MakeMacroVariable(LSV_MACRO, formal.m_name, m_vf, BodyOwner(macroVar),
                                   ExpansionLevel::CurrentOwner());
    bound->m_isFnArg = formal.m_isFnArg;
    bound->SetSubstitutionString(arg, false, 0);
    return bound.release();
}

/// An argument that has a type: it is evaluated now, in the caller's frame.
LSVariable* MacroExpander::MakeValueArg(const LSMacroVariable& macroVar, const LSFormalArg& formal,
                                        SubString arg)
{
    auto bound = MakeValueVariable(formal.m_type, formal.m_name, BodyOwner(macroVar));
    try
    {
        ReadVariableValueFor(m_vf, arg, formal.m_type, bound->m_value, m_startDirectivePos);
    }
    catch (LexScannerException& e)
    {
        AddErrorContext(
            e, {"\n    passing formal argument ", formal.m_name, " to macro ", macroVar.m_name});
        throw;
    }
    return bound.release();
}

/// Writes what the body of a macro comes to.
bool MacroExpander::TryExpandBody(const LSMacroVariable& macroVar, VarFrame& frame)
{
    const TextOwnerScope owner(BodyOwner(macroVar));
    const SubString body = macroVar.GetSubstitutionString();
    try
    {
        if (macroVar.m_returnType == LSV_MACRO)
            return MacroExpander(nullptr, &frame, body, macroVar.m_indentation, GetOutputPos(),
                                 m_output)
                .TryExpand();
        WriteTypedValue(&frame, body, macroVar.m_returnType);
        return true;
    }
    catch (LexScannerException& e)
    {
        HeldError::Hold(CurrentRun(), e);
        return false;
    }
}

/// Writes the value of an expression.
[[gnu::noinline]] void MacroExpander::WriteTypedValue(VarFrame* frame, SubString text,
                                                      ELSVariable type)
{
    xstring value;
    ReadVariableValueFor(frame, text, type, value, m_startDirectivePos);
    WriteCalculatedSubString(value);
}

[[gnu::noinline]] void MacroExpander::WritePythonMacroResult(LSMacroVariable& macroVar,
                                                             VarFrame& frame)
{
    const TextOwnerScope owner(BodyOwner(macroVar));
    try
    {
        xstring code;
        MacroExpand(nullptr, &frame, macroVar.GetSubstitutionString(), macroVar.m_indentation, 0,
                    code);
        LoadPython(m_startDirectivePos);
        xstring result;
        EvalPythonExpression(code, result, m_str.begin());
        WriteCalculatedSubString(result);
    }
    catch (LexScannerException& e)
    {
        AddErrorContext(e, {"\n    invoking python macro ", macroVar.m_name});
        throw;
    }
}

void MacroExpander::InvokeMacroFunction(LSMacroVariable* macroVar)
{
    TELV_ASSERT(macroVar);
    TELV_ASSERT(!macroVar->IsPython());
    TELV_ASSERT(!macroVar->IsNaked());
    TELV_ASSERT(macroVar->GetNumArgs() == 0);
    const LSToken open = LsScanToken(m_str, false);
    if (open.m_type != TOKEN_LEFT_PAREN)
        ThrowNoArgumentList(*macroVar, open);
    const SubString section =
        ScanBrackettedSection(m_str, false, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    AdvanceWritePos(m_str.begin(), false);
    try
    {
        xstring call = ComposeCall(*macroVar, section);
        const TextScope text(call, DirectiveRange());
        const TextOwnerScope owner(text.Owner());
        VarFrame* const context = macroVar->m_context != nullptr ? macroVar->m_context : m_vf;
        if (macroVar->m_returnType == LSV_MACRO)
            MacroExpand(nullptr, context, text.Text(), macroVar->m_indentation, GetOutputPos(),
                        m_output);
        else
            WriteTypedValue(context, text.Text(), macroVar->m_returnType);
    }
    catch (LexScannerException& e)
    {
        AddInvocationContext(e, *macroVar, xvector<ActualArg>());
        throw;
    }
}

/// The call that a function argument stands for: its text with the arguments, expanded here.
xstring MacroExpander::ComposeCall(const LSMacroVariable& macroVar, SubString section)
{
    xstring args;
    MacroExpand(nullptr, m_vf, section, 0, 0, args);
    xstring call(macroVar.GetSubstitutionString());
    call += '(';
    call += args;
    call += ')';
    return call;
}

} // namespace telv
