// SPDX-License-Identifier: MIT
// The plain way over a text while somebody observes: the same steps, and each is told.
//
// A level whose run is observed wants its pieces (EPieces), which keeps the faster ways from being
// taken. What is told in the middle of a step (a round, an invocation whose arguments are known, a
// definition) is told where that step is taken.
#include "tlMacroExpander/src/Directives/DirectiveTable.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/ObservedSpan.h"

namespace telv
{

namespace
{

/// Takes the pieces behind the first few out of an output again, if they are not wanted there.
class PiecesScope
{
public:
    PiecesScope(OutputPieces& pieces, bool keeps)
        : m_pieces(pieces.m_pieces), m_first(m_pieces.size()), m_keeps(keeps)
    {
    }
    ~PiecesScope()
    {
        if (!m_keeps)
            m_pieces.resize(m_first);
    }
    PiecesScope(const PiecesScope&) = delete;
    PiecesScope& operator=(const PiecesScope&) = delete;

    ssize_t First() const { return m_first; }

private:
    xvector<OutputPiece>& m_pieces;
    ssize_t m_first;
    bool m_keeps;
};

} // namespace

void MacroExpander::ExpandObserved(const ExpansionLevel& level)
{
    ExpansionObserver& observer = *level.State().m_observer;
    observer.ExpansionBegins({level.Text(), *m_vf, m_output});
    const ObservedSpan span(observer, &ExpansionObserver::ExpansionEnds);
    ExpandTokenByToken</*isObserved=*/true>();
}

void MacroExpander::ProcessObservedToken(const LSToken& token)
{
    ExpansionObserver& observer = *RunState::CurrentObserver();
    if (token.m_type == TOKEN_AT)
        return ProcessObservedDirective(observer);
    LSVariable* const var = token.m_type == TOKEN_IDENTIFIER ? FindVariable(token.m_str) : nullptr;
    if (var == nullptr)
        return ProcessToken(token);
    AdvanceWritePos(token.m_str.begin(), /*write=*/true);
    InvokeObserved(observer, *var);
}

void MacroExpander::ProcessObservedDirective(ExpansionObserver& observer)
{
    SubString rest = m_str;
    const LSToken token = LsScanToken(rest, /*returnComments=*/false);
    const Directive* const directive = FindDirective(token);
    const bool isText = token.m_type == TOKEN_DOLLAR && m_importHandler == nullptr;
    if (directive == nullptr || isText)
        return ProcessDirective();
    if (directive->m_flush)
        AdvanceWritePos(m_startDirectivePos, /*write=*/true);
    observer.DirectiveBegins({SubString(m_startDirectivePos, token.m_str.end()), token.m_str});
    const ObservedSpan span(observer, &ExpansionObserver::DirectiveEnds);
    ProcessDirective();
}

/// Tells that a directive gave `name` a meaning. Out of line for those who are not observed.
void MacroExpander::TellDefined(int kind, SubString name, SubString value, const LSVariable* var)
{
    RunState::CurrentObserver()->Defined(
        {static_cast<ObservedDefinition::EKind>(kind), name, value, var});
}

/// Writes text of the source, or text that `src` produced, and tells of each piece of it.
void MacroExpander::WriteObserved(const ExpansionLevel& level, SubString s, const SubString* src)
{
    const PiecesScope scope(m_output.m_pieces, level.KeepsPieces());
    ssize_t offset = m_output.m_size;
    if (src == nullptr)
        m_output.WriteSubStringFromSourceFile(s, m_dstIndent);
    else
        m_output.WriteCalculatedSubString(s, *src, m_dstIndent);
    ExpansionObserver& observer = *level.State().m_observer;
    for (ssize_t i = scope.First(); i < m_output.m_pieces.m_pieces.size(); ++i)
    {
        const OutputPiece piece = m_output.m_pieces.m_pieces[i];
        observer.PieceWritten({m_output, offset, piece});
        offset += piece.size();
    }
}

} // namespace telv
