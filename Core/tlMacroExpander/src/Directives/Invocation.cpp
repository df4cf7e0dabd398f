// SPDX-License-Identifier: MIT
// What stands for the name of a variable: a value, or the expansion of a macro.
//
// An invocation has a frame of its own whose parent is the frame of the caller (or the frame that
// an argument came from). Arguments without a type are bound by name: as macros whose text is
// expanded in the caller's frame, each time it is used. These functions are on the stack once per
// nested call, so what only errors need is composed elsewhere.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/MacroExpander"

#include "tlMacroExpander/src/Directives/NestedText.h"
#include "tlMacroExpander/src/Frames/FrameTree.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/ObservedSpan.h"
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include "tlMacroExpander/src/Scan/OpenedAt.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include "tlMacroExpander/src/UsePythonInside.h"
#include "tlMacroExpander/src/Values/OwningVariables.h"
#include "tlMacroExpander/src/Values/Words.h"
#include <algorithm>
#include <optional>
#include <vector>

namespace telv
{

/// The arguments of an invocation as the caller wrote them; a few need no memory of their own.
class MacroExpander::ActualArgs
{
public:
    /// Makes room for arguments that are read.
    LevelText* MakeRoom(ssize_t count)
    {
        LevelText* room = m_few;
        if (count > s_few)
        {
            m_many.resize(static_cast<size_t>(count));
            room = m_many.data();
        }
        m_args = room;
        return room;
    }
    /// Takes those that have been read before.
    void Use(const LevelText* args) { m_args = args; }

    const LevelText& operator[](ssize_t index) const { return m_args[index]; }

private:
    static constexpr ssize_t s_few = 4;

    const LevelText* m_args = nullptr;
    LevelText m_few[s_few];
    HeldVector<LevelText> m_many;
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

/// `isLast` says which bracket or comma has to end the argument.
void CheckEndOfArg(const LSToken& token, const LSMacroVariable& macroVar, bool isLast)
{
    if (token.m_type != TOKEN_COMMA && token.m_type != TOKEN_RIGHT_PAREN)
        ThrowAtToken({"Comma or right parenthesis expected when read "}, token);
    if (!isLast && token.m_type == TOKEN_RIGHT_PAREN)
        ThrowAt(token.m_str.begin(),
                {"Insufficient arguments provided for macro ", Signature(macroVar)});
    if (isLast && token.m_type == TOKEN_COMMA)
        ThrowAt(token.m_str.begin(),
                {"Too many arguments provided for macro ", Signature(macroVar)});
}

} // namespace

/// Adds the line that names the macro and what its arguments were bound to. `lastArg`: the variable
/// of the last one; in the list of its frame those of the others follow it.
[[gnu::noinline]] void MacroExpander::AddInvocationContext(LexScannerException& e,
                                                           const LSMacroVariable& macroVar,
                                                           const LSVariable* lastArg) const
{
    if (!IsSwallowed(e))
        NoteCall(macroVar);
    if (!TakesContext(e))
    {
        AddErrorContext(e, {});
        return;
    }
    std::vector<const LSVariable*> args;
    for (ssize_t i = 0; i < macroVar.GetNumArgs() && lastArg != nullptr; ++i)
    {
        args.push_back(lastArg);
        lastArg = lastArg->m_next;
    }
    StringStream os(4096);
    os << "\n    invoking macro ";
    macroVar.WriteNameAndFormalParameterList(os);
    const char* separator = " with ";
    for (auto arg = args.rbegin(); arg != args.rend(); ++arg)
    {
        os << separator << (*arg)->m_name << '=';
        (*arg)->WriteValue(os);
        separator = ", ";
    }
    AddErrorContext(e, {os.GetString()});
}

/// An error passes the invocation.
void MacroExpander::NoteCall(const LSMacroVariable& macroVar) const
{
    if (RunState* const state = RunState::Current())
        state->NoteCall(CallPlace::CALL_MACRO, macroVar.m_name, m_startDirectivePos, 0);
}

void MacroExpander::InvokeVariable(LSVariable* var)
{
    TELV_ASSERT(var);
    CountStep();
    if (var->GetType() != LSV_MACRO)
    {
        AdvanceWritePos(m_str.begin(), /*write=*/false);
        WriteValueOf(*var);
        return;
    }
    LSMacroVariable* const macroVar = static_cast<LSMacroVariable*>(var);
    if (macroVar->m_isFnArg)
        InvokeMacroFunction(macroVar);
    else
        InvokeMacro</*isObserved=*/false>(*macroVar);
}

void MacroExpander::WriteValueOf(const LSVariable& var)
{
    if (const LSValueVariable* const value = AsValue(var))
    {
        WriteCalculatedSubString(value->m_value);
        return;
    }
    StringStream os(4096);
    var.WriteValue(os);
    WriteCalculatedSubString(os.GetString());
}

/// While nobody observes, an invocation is not told.
template <>
class MacroExpander::InvocationSpan</*isObserved=*/false>
{
public:
    InvocationSpan(const MacroExpander&, const LSMacroVariable&, const LSVariable*) {}
};

/// An invocation whose arguments have been bound; see AddInvocationContext.
template <>
class MacroExpander::InvocationSpan</*isObserved=*/true>
{
public:
    InvocationSpan(const MacroExpander& expander, const LSMacroVariable& macroVar,
                   const LSVariable* lastArg)
        : m_span(Begin(expander, macroVar, lastArg), &ExpansionObserver::InvocationEnds)
    {
    }

private:
    static ExpansionObserver& Begin(const MacroExpander& expander, const LSMacroVariable& macroVar,
                                    const LSVariable* lastArg);

    ObservedSpan m_span;
};

ExpansionObserver& MacroExpander::InvocationSpan<true>::Begin(const MacroExpander& expander,
                                                              const LSMacroVariable& macroVar,
                                                              const LSVariable* lastArg)
{
    const SubString name = expander.DirectiveRange();
    ObservedInvocation invocation{
        macroVar, name, SubString(name.begin(), expander.m_str.begin()), {}};
    for (ssize_t i = macroVar.GetNumArgs(); i-- > 0 && lastArg != nullptr;
         lastArg = lastArg->m_next)
    {
        const auto* const value = dynamic_cast<const LSValueVariable*>(lastArg);
        const auto* const text = dynamic_cast<const LSMacroVariable*>(lastArg);
        invocation.m_args.push_back({lastArg->m_name, lastArg->GetType(),
                                     value != nullptr  ? SubString(value->m_value)
                                     : text != nullptr ? text->GetSubstitutionString()
                                                       : SubString()});
    }
    std::reverse(invocation.m_args.begin(), invocation.m_args.end());
    ExpansionObserver& observer = *RunState::CurrentObserver();
    observer.InvocationBegins(invocation);
    return observer;
}

/// On the stack once per nested call: what is not needed while the body is expanded is done in
/// functions of its own.
template <bool isObserved>
void MacroExpander::InvokeMacro(LSMacroVariable& macroVar)
{
    VarFrame* const context = macroVar.m_context != nullptr ? macroVar.m_context : m_vf;
    const bool hasArgs = macroVar.GetNumArgs() > 0;
    const bool isPlainText = !hasArgs && !macroVar.m_isPython && macroVar.m_returnType == LSV_MACRO;
    if (!hasArgs)
    {
        if (macroVar.m_isPython)
            CheckPythonAllowed(m_startDirectivePos);
        AdvanceWritePos(m_str.begin(), /*write=*/false);
    }
    const LevelText body = BodyOf(macroVar);
    if (isPlainText && WriteInertText(body, *context, macroVar.m_indentation))
        return;
    if (!isObserved && isPlainText && macroVar.m_context != nullptr && MayBeWord(body.m_text) &&
        InvokeAlias(macroVar))
        return;
    std::optional<VarFrame> frame;
    const LSVariable* const lastArg =
        hasArgs ? PassArgs(macroVar, *context, frame) : (frame.emplace(context), nullptr);
    VarFrame& workingFrame = macroVar.m_naked ? *m_vf : *frame;
    [[maybe_unused]] const InvocationSpan<isObserved> span(*this, macroVar, lastArg);
    if (macroVar.m_isPython)
        return WritePythonMacroResult(macroVar, body, workingFrame);
    try
    {
        ExpandBody(macroVar, body, workingFrame);
    }
    catch (LexScannerException& e)
    {
        AddInvocationContext(e, macroVar, lastArg);
        throw;
    }
    catch (...)
    {
        NoteCall(macroVar);
        throw;
    }
}

/// The same when the run is observed; values are told here, macros when their arguments are known.
void MacroExpander::InvokeObserved(ExpansionObserver& observer, LSVariable& var)
{
    if (var.GetType() != LSV_MACRO)
    {
        observer.InvocationBegins({var, DirectiveRange(), DirectiveRange(), {}});
        const ObservedSpan span(observer, &ExpansionObserver::InvocationEnds);
        InvokeVariable(&var);
        return;
    }
    auto& macroVar = static_cast<LSMacroVariable&>(var);
    if (macroVar.m_isFnArg)
        return InvokeVariable(&var);
    CountStep();
    InvokeMacro</*isObserved=*/true>(macroVar);
}

/// Reads the arguments, makes the frame of the invocation and binds them in it, or where the macro
/// wants them. Returns the variable of the last one.
[[gnu::noinline]] const LSVariable* MacroExpander::PassArgs(LSMacroVariable& macroVar,
                                                            VarFrame& context,
                                                            std::optional<VarFrame>& frame)
{
    ActualArgs args;
    ReadActualArgs(macroVar, args);
    if (macroVar.m_isPython)
        CheckPythonAllowed(m_startDirectivePos);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    frame.emplace(&context);
    return BindArgs(macroVar, args, macroVar.m_naked ? *m_vf : *frame);
}

void MacroExpander::ReadActualArgs(const LSMacroVariable& macroVar, ActualArgs& args)
{
    if (const Plan* const plan = PlanOfCall(macroVar))
    {
        m_str.m_p1 = plan->m_behind;
        return args.Use(plan->m_args.data());
    }
    const LSToken open = NextToken();
    if (open.m_type != TOKEN_LEFT_PAREN)
        ThrowNoArgumentList(macroVar, open);
    const ssize_t n = macroVar.GetNumArgs();
    LevelText* const room = args.MakeRoom(n);
    const char* const list = m_str.begin();
    try
    {
        for (ssize_t i = 0; i < n; ++i)
        {
            LSToken end;
            room[i] = CutArgument(end, TOKEN_RIGHT_PAREN);
            if (i == n - 1 && end.m_type == TOKEN_COMMA)
                HintAtArguments(*m_vf, macroVar, list, m_str);
            CheckEndOfArg(end, macroVar, /*isLast=*/i == n - 1);
        }
    }
    catch (const LexScannerException& e)
    {
        NoteOpenedAround(open.m_str.begin(), e.m_pos, m_str.end());
        throw;
    }
}

const LSVariable* MacroExpander::BindArgs(LSMacroVariable& macroVar, ActualArgs& args,
                                          VarFrame& frame)
{
    NameTable& names = FrameTree::Names(frame);
    const ssize_t n = macroVar.GetNumArgs();
    for (ssize_t i = 0; i < n; ++i)
    {
        const LSFormalArg& formal = macroVar.m_argNames[i];
        NameEntry& name = FormalName(macroVar, i, names); // before there is something to lose
        LSVariable* const bound = formal.m_type == LSV_MACRO
                                      ? MakeNamedArg(macroVar, formal, args[i])
                                      : MakeValueArg(macroVar, formal, args[i]);
        FrameTree::AddBound(frame, bound, name);
        if (macroVar.m_naked)
            names.NoteDefinition(nullptr); // the caller's frame is not new
    }
    return frame.m_localVariables.m_first;
}

/// An argument that is bound by name: expanded in the caller's frame wherever it is used.
LSVariable* MacroExpander::MakeNamedArg(const LSMacroVariable& macroVar, const LSFormalArg& formal,
                                        const LevelText& arg)
{
    auto bound = MakeMacroVariable(LSV_MACRO, formal.m_name, m_vf, BodyOwner(macroVar),
                                   ExpansionLevel::CurrentOwner(), m_vf);
    bound->m_isFnArg = formal.m_isFnArg;
    bound->SetSubstitutionString(arg.m_text, /*copy=*/false, 0);
    KeepScanned(*bound, arg);
    return bound.release();
}

/// An argument that has a type: it is evaluated now, in the caller's frame.
LSVariable* MacroExpander::MakeValueArg(const LSMacroVariable& macroVar, const LSFormalArg& formal,
                                        const LevelText& arg)
{
    auto bound = MakeValueVariable(formal.m_type, formal.m_name, BodyOwner(macroVar), m_vf);
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
void MacroExpander::ExpandBody(const LSMacroVariable& macroVar, const LevelText& body,
                               VarFrame& frame)
{
    if (macroVar.m_returnType == LSV_MACRO)
        ExpandHere(frame, body, macroVar.m_indentation, GetOutputPos());
    else
        WriteTypedValue(&frame, body, macroVar.m_returnType);
}

/// Writes the value of an expression.
[[gnu::noinline]] void MacroExpander::WriteTypedValue(VarFrame* frame, const LevelText& text,
                                                      ELSVariable type)
{
    xstring value;
    ReadVariableValueFor(frame, text, type, value, m_startDirectivePos);
    WriteCalculatedSubString(value);
}

[[gnu::noinline]] void MacroExpander::WritePythonMacroResult(LSMacroVariable& macroVar,
                                                             const LevelText& body, VarFrame& frame)
{
    bool isRun = false;
    try
    {
        xstring code;
        ExpandIntoString(frame, body, macroVar.m_indentation, code);
        LoadPython(m_startDirectivePos);
        isRun = true;
        xstring result;
        EvalPythonExpression(code, result, m_str.begin());
        WriteCalculatedSubString(result);
    }
    catch (LexScannerException& e)
    {
        if (!IsSwallowed(e))
            NoteCall(macroVar);
        if (isRun)
            NoteDefinition(macroVar.m_name.begin());
        HintAtPythonMacro(macroVar, e);
        AddErrorContext(e, {"\n    invoking python macro ", macroVar.m_name});
        throw;
    }
    catch (...)
    {
        NoteCall(macroVar);
        throw;
    }
}

void MacroExpander::InvokeMacroFunction(LSMacroVariable* macroVar)
{
    TELV_ASSERT(macroVar);
    TELV_ASSERT(!macroVar->IsPython());
    TELV_ASSERT(!macroVar->IsNaked());
    TELV_ASSERT(macroVar->GetNumArgs() == 0);
    const LSToken open = NextToken();
    if (open.m_type != TOKEN_LEFT_PAREN)
        ThrowNoArgumentList(*macroVar, open);
    const LevelText section = CutSection(/*readOpen=*/false, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    std::optional<InvocationSpan<true>> span;
    if (RunState::CurrentObserver() != nullptr) [[unlikely]]
        span.emplace(*this, *macroVar, nullptr);
    try
    {
        const std::shared_ptr<TemporaryText> text = ComposeCall(*macroVar, section);
        const LevelText whole{text->Text(), text.get()};
        VarFrame* const context = macroVar->m_context != nullptr ? macroVar->m_context : m_vf;
        ExpandBody(*macroVar, whole, *context);
    }
    catch (LexScannerException& e)
    {
        AddInvocationContext(e, *macroVar, nullptr);
        throw;
    }
    catch (...)
    {
        NoteCall(*macroVar);
        throw;
    }
}

/// The call that a function argument stands for: its text with the arguments, expanded here.
std::shared_ptr<TemporaryText> MacroExpander::ComposeCall(const LSMacroVariable& macroVar,
                                                          const LevelText& section)
{
    const SubString name = macroVar.GetSubstitutionString();
    const bool notesCopies = NotesCopies();
    OutputPieces pieces;
    if (notesCopies && !name.empty())
        pieces.m_pieces.push_back({name, 0});
    xstring args;
    OutputPieces argPieces;
    ExpandIntoString(*m_vf, section, 0, args, notesCopies ? &argPieces : nullptr);
    xstring call(name);
    call += '(';
    call += args;
    call += ')';
    if (!notesCopies)
        return MakeHeldShared<TemporaryText>(call, DirectiveRange());
    pieces.m_pieces.push_back({DirectiveRange(), 1}); // the bracket
    for (const OutputPiece& piece : argPieces)
        pieces.m_pieces.push_back(piece);
    return MakeHeldShared<TemporaryText>(call, DirectiveRange(), &pieces);
}

} // namespace telv
