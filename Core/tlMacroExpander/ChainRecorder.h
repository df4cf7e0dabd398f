// SPDX-License-Identifier: MIT
// The way to each piece of an output: through which macros, arguments and loops it came.
//
// A recorder observes a run (ExpansionObserver.h) and notes the steps behind the pieces of one
// output. Many pieces share their way, so the steps are a tree: each is stored once and knows the
// step around it. What no piece came through is not stored. The cost is linear in the pieces and
// steps, however deep things nest.
#pragma once

#include "tlMacroExpander/ExpansionObserver.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/MacroExpand.h"
#include <set>
#include <vector>

namespace telv
{

/// A macro that was invoked, or a round of a loop.
struct ChainStep
{
    enum EKind
    {
        STEP_MACRO, ///< A macro, or an argument that stands for text.
        STEP_LOOP
    };

    EKind m_kind;
    SubString m_name;  ///< Of the macro; `@for` or `@while`. Lives as long as the recorder.
    SubString m_place; ///< The name in its call, the `@` of the loop: in a text that was given.
    ssize_t m_round;   ///< Of the loop, counted from 1; 0 for a macro.
    ssize_t m_outer;   ///< The step around it, an earlier one; -1 for the outermost.
};

/// Notes the way to each piece of one output.
///
/// @code
/// const xstring source("@def inner = {text}@def outer = {inner}outer");
/// ChainRecorder chains;
/// ExpansionRun run;
/// run.SetObserver(&chains);
/// const ExpansionRunScope scope(run);
/// FileScopeVarFrame frame;
/// xstring text;
/// OutputPieces pieces;
/// MacroExpand(nullptr, &frame, source, 0, 0, text, pieces); // text: "text"
/// xstring way;
/// for (ssize_t step = chains.StepOfPiece(0); step != -1; step = chains.Steps()[step].m_outer)
///     way += chains.Steps()[step].m_name + xstring(" ");
/// way.resize(way.size() - 1); // way: "inner outer"
/// @endcode
class TLEXPANDER_API ChainRecorder final : public ExpansionObserver
{
public:
    /// @param output  Whose pieces count; null: that of the first expansion which begins.
    explicit ChainRecorder(const ExpandedOutput* output = nullptr) : m_output(output) {}
    ChainRecorder(const ChainRecorder&) = delete;
    ChainRecorder& operator=(const ChainRecorder&) = delete;

    const xvector<ChainStep>& Steps() const { return m_steps; }
    /// Pieces of the output up to the last that an expansion wrote, as many as its map has then.
    ssize_t CountOfPieces() const { return m_stepOfPiece.size(); }
    /// The innermost step on the way to a piece; -1 for text of the outermost level, and for what
    /// the application wrote itself.
    ssize_t StepOfPiece(ssize_t piece) const { return m_stepOfPiece[piece]; }

    void ExpansionBegins(const ObservedExpansion& expansion) override;
    void InvocationBegins(const ObservedInvocation& invocation) override;
    void InvocationEnds() noexcept override;
    void RoundBegins(const ObservedRound& round) override;
    void RoundEnds() noexcept override;
    void PieceWritten(const ObservedPiece& piece) override;

private:
    /// Something that has begun; what is viewed lives until it ends.
    struct Open
    {
        bool m_isStep; ///< False for a value: the piece that it writes says it all.
        ChainStep m_step;
        ssize_t m_index = -1; ///< Of the innermost step up to here; valid once it is stored.
    };

    void End() noexcept;
    ssize_t CurrentStep();
    void Store(Open& open, ssize_t outer);

    const ExpandedOutput* m_output;
    std::vector<Open> m_open;
    size_t m_stored = 0; ///< So many of what is open, from the outermost, are stored.
    xvector<ChainStep> m_steps;
    xvector<ssize_t> m_stepOfPiece;
    std::set<xstring> m_names;
};

} // namespace telv
