// SPDX-License-Identifier: MIT
// What a directive or a call in a scanned text asks for, read once.
//
// Reading depends on nothing but the characters, as long as the text is taken to end at the same
// place; what is read is then done again and again. There is a plan only where reading succeeded:
// an error is found, at its place, by reading again.
//
// When what is kept about texts is no longer valid:
// - A scanned text (ScannedText.h) depends on the characters and on how lenient the run is; it ends
//   with the macro, block or plan that owns it. A run that is lenient otherwise does not take it
//   (SuitsRun). Its names are entries of one table of names, and are looked for anew in another
//   tree of frames or when the table is gone (ResolveNames).
// - A plan, or that there is none, is kept until its scanned text ends. It is not taken, but kept,
//   where the text ends elsewhere (`m_limit`), or the call is of a macro with another number of
//   arguments.
// - A kept list of a @for (KnownList in Directives/Loops.cpp) belongs to the plan of the loop. The
//   list is expanded each time; other characters, or another run, and it is cut anew.
#pragma once

#include "tlMacroExpander/src/Expressions/ExpressionProgram.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/LevelText.h"
#include "tlUtils/HeldContainers.h"
#include <functional>
#include <memory>

namespace telv
{

class MacroExpander;

/// Does what was read, with the text of `behind` taken as read.
using PlannedAction = std::function<void(MacroExpander&)>;

/// Belongs to an item of a scanned text and views that text.
class Plan : public HeldObject
{
public:
    PlannedAction m_action;         ///< Of a directive.
    HeldVector<LevelText> m_args;   ///< Of a call.
    bool m_keepsBlanks = false;     ///< Blanks before the directive are written.
    const char* m_limit = nullptr;  ///< Where the text was taken to end,
    const char* m_behind = nullptr; ///< and where it goes on.
    HeldVector<std::unique_ptr<ExpressionProgram>> m_programs; ///< Of the expressions in it.

private:
    static constexpr ssize_t s_sizeOfAction = 256;

    MemoryHold m_hold{s_sizeOfAction};
};

/// Reads a directive or a call for its plan: each function throws where there is nothing to plan.
class PlanReader
{
public:
    /// `rest`: the text behind the item.
    PlanReader(Plan& plan, ScannedText& scanned, SubString rest);

    /// The text not read yet.
    SubString m_rest;

    LSToken Token();
    /// The text in the brackets that follow.
    LevelText Section(bool readOpen, EToken open, EToken close);
    /// The same between round brackets, as an expression.
    LevelText Condition(bool readOpen);
    TextBlock Block();
    TextBlock RoundBlock();
    /// A block as an expression.
    LevelText ValueBlock();
    /// An argument of a call, and the token behind it.
    LevelText Argument(LSToken& end, bool isExpression);

private:
    void Compile(LevelText& text);

    Plan& m_plan;
    ScannedText& m_scanned;
};

} // namespace telv
