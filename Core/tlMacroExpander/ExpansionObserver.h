// SPDX-License-Identifier: MIT
// Watching an expansion: what an application is told while its texts are expanded.
//
// A trace, a profile, a debugger or a map from the output to the calls behind it derive from
// ExpansionObserver and override what they care about. A run borrows one observer
// (ExpansionRun::SetObserver); an ExpansionObserverGroup is one that stands for several. While
// nobody observes nothing of this costs anything; with an observer texts are read token by token,
// with the same result.
//
// What begins also ends, when an error passes too, and ends in reverse order. Everything that an
// event refers to is valid until the operation returns, except where it says more. Positions lie in
// a text that the application gave, or in one that was made while expanding:
// `ExpansionRun::FindOrigin` leads from there to what made it.
#pragma once

#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/Export.h"
#include "tlMacroExpander/LSVariable.h"
#include <vector>

namespace telv
{

/// A text is expanded.
struct ObservedExpansion
{
    SubString m_text; ///< Not empty.
    /// Where names are found. What is defined at the outer level goes there. Lives as long as the
    /// expansion.
    VarFrame& m_frame;
    /// Receives the text. For what the language needs as a string (a condition, a typed argument,
    /// the text of `@str`) it is one that no application knows.
    const ExpandedOutput& m_output;
};

/// What an argument was bound to.
struct ObservedArgument
{
    SubString m_name;   ///< Of the formal argument.
    ELSVariable m_type; ///< LSV_MACRO: by name.
    SubString m_value;  ///< By name: the text, without back quotes around it. Else the value.
};

/// A name is replaced by what it stands for: a macro, an argument, a value. Arguments with a type
/// have been evaluated before.
struct ObservedInvocation
{
    const LSVariable& m_variable;
    SubString m_place; ///< The name.
    SubString m_call;  ///< The name and, for a macro with arguments, all up to the `)`.
    std::vector<ObservedArgument> m_args; ///< In order; of an argument that is itself called, none.
};

/// A loop begins a round.
struct ObservedRound
{
    SubString m_place;   ///< The `@` of the loop.
    SubString m_loop;    ///< `for` or `while`.
    ssize_t m_round;     ///< Counted from 1.
    SubString m_element; ///< Of the list of `@for`; else empty.
};

/// A directive is read and obeyed. `@elseif` and `@else` are parts of their `@if`.
struct ObservedDirective
{
    SubString m_place; ///< The `@` and the word or character behind it.
    SubString m_name;  ///< What stands behind the `@`: `for`, `(`, `[`, `$`.
};

/// A name has been given a meaning by a directive. The bindings of arguments and of the names of
/// loops are no definitions.
struct ObservedDefinition
{
    enum EKind
    {
        DEFINED_MACRO,  ///< `@def` and its kin.
        DEFINED_VALUE,  ///< `@let` with a type.
        ASSIGNED_VALUE, ///< `@let` without one.
        DEFINED_DOLLAR  ///< `@$`: a dollar macro.
    };

    EKind m_kind;
    SubString m_place;            ///< The name where it is defined.
    SubString m_value;            ///< The body of a macro, else the value.
    const LSVariable* m_variable; ///< Null for a dollar macro. Lives as long as its frame.
};

/// `@import` asks the import handler. What the handler expands is observed in between.
struct ObservedImport
{
    SubString m_place; ///< The operand, up to and including its first token.
    SubString m_path;
};

/// A piece has been written.
struct ObservedPiece
{
    const ExpandedOutput& m_output; ///< That of the innermost expansion.
    ssize_t m_offset;               ///< Where the piece begins in it.
    OutputPiece m_piece;            ///< As the map of that output has it, or would have it.
};

/// Is told what happens. What an application does not override does nothing.
///
/// An operation that begins something, `Defined` and `PieceWritten` may throw: the exception leaves
/// the expansion like any other. What had begun ends; the operation that threw does not count as
/// begun. A LexScannerException is an error of the text: it collects lines of context, and
/// `@assertfails` swallows it. All other exceptions reach the caller of `MacroExpand` as they are.
///
/// An observer must not expand text, define or assign in the run that it observes; it may do so in
/// a run of its own, in frames of its own. It is called on the expanding thread.
class TLEXPANDER_API ExpansionObserver
{
public:
    virtual void ExpansionBegins(const ObservedExpansion& expansion);
    virtual void ExpansionEnds() noexcept;

    virtual void InvocationBegins(const ObservedInvocation& invocation);
    virtual void InvocationEnds() noexcept;

    virtual void RoundBegins(const ObservedRound& round);
    virtual void RoundEnds() noexcept;

    virtual void DirectiveBegins(const ObservedDirective& directive);
    virtual void DirectiveEnds() noexcept;

    virtual void ImportBegins(const ObservedImport& import);
    virtual void ImportEnds() noexcept;

    virtual void Defined(const ObservedDefinition& definition);
    virtual void PieceWritten(const ObservedPiece& piece);

protected:
    ~ExpansionObserver() = default;
};

/// Tells several observers, in the order in which they were added; ends in reverse.
class TLEXPANDER_API ExpansionObserverGroup final : public ExpansionObserver
{
public:
    ExpansionObserverGroup() = default;
    ExpansionObserverGroup(const ExpansionObserverGroup&) = delete;
    ExpansionObserverGroup& operator=(const ExpansionObserverGroup&) = delete;

    /// Borrows `observer`. Not while something is being expanded.
    void Add(ExpansionObserver& observer) { m_observers.push_back(&observer); }

    bool IsEmpty() const { return m_observers.empty(); }

    void ExpansionBegins(const ObservedExpansion& expansion) override;
    void ExpansionEnds() noexcept override;
    void InvocationBegins(const ObservedInvocation& invocation) override;
    void InvocationEnds() noexcept override;
    void RoundBegins(const ObservedRound& round) override;
    void RoundEnds() noexcept override;
    void DirectiveBegins(const ObservedDirective& directive) override;
    void DirectiveEnds() noexcept override;
    void ImportBegins(const ObservedImport& import) override;
    void ImportEnds() noexcept override;
    void Defined(const ObservedDefinition& definition) override;
    void PieceWritten(const ObservedPiece& piece) override;

private:
    using End = void (ExpansionObserver::*)() noexcept;

    template <class Event>
    void Begin(void (ExpansionObserver::*begin)(const Event&), End end, const Event& event);
    template <class Event>
    void Tell(void (ExpansionObserver::*what)(const Event&), const Event& event);
    void EndLast(size_t count, End end) noexcept;

    std::vector<ExpansionObserver*> m_observers;
};

} // namespace telv
