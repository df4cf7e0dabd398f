// SPDX-License-Identifier: MIT
// @for and @while: a block once per element of a list, or while a condition holds.
//
// The list of @for exists only while the loop runs; its elements are bound by name, and what they
// define may outlive it, so it is a temporary text.
#include "tlMacroExpander/src/Directives/RoundFrame.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/ObservedSpan.h"
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/OpenedAt.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include "tlMacroExpander/src/Texts/RepeatedText.h"

namespace telv
{

/// What the head of a @for says.
struct MacroExpander::ForHead
{
    xvector<SubString> m_names;
    bool m_isSingle = true;          ///< One name without parentheses.
    const char* m_listPos = nullptr; ///< Where the list stands in the source.
};

/// The list of a loop that is gone through again and again, as it was cut the last time. The same
/// text has the same elements.
struct MacroExpander::KnownList
{
    static constexpr ssize_t s_longest = ssize_t(1) << 15;

    struct Round
    {
        SubString m_element;
        size_t m_firstValue;
    };

    /// Before the second time. Words are then known as names.
    void Scan()
    {
        if (m_scanned)
            return;
        m_scanned = ScannedText::Make(m_text->Text());
        if (!m_scanned)
            return;
        for (LevelText& value : m_values)
            value = m_scanned->Part(value.m_text);
    }

    std::shared_ptr<TemporaryText> m_text;
    HeldVector<Round> m_rounds;
    HeldVector<LevelText> m_values; ///< What is bound, round after round.
    CountedRef<ScannedText> m_scanned;
};

/// A loop over a list that has been expanded.
class MacroExpander::ForLoop
{
public:
    ForLoop(MacroExpander& expander, const ForHead& head, TemporaryText& list,
            const TextBlock& block)
        : m_expander(expander), m_head(head), m_list(list), m_rest(list.Text()),
          m_block(block.m_text), m_indent(block.m_indent), m_outputPos(expander.GetOutputPos()),
          m_frame(*expander.m_vf, head.m_names, &list)
    {
    }

    void Run();
    /// Goes through a list that has been cut before.
    void Run(const KnownList& list);
    /// What `Run` cut is written down there.
    void Note(KnownList& list) { m_noted = &list; }

private:
    LSToken CutElement(SubString& s, SubString& element, EToken close) const;
    void NoteFaulty(ssize_t index) const;
    void HintAtFaulty(SubString element) const;
    void BeginRound();
    void ExpandElement(SubString element);
    void ExpandRound(VarFrame& frame, SubString element);
    void ExpandObservedRound(VarFrame& frame, SubString element);
    void BindValues(SubString element);
    void Bind(ssize_t name, const LevelText& value);

    MacroExpander& m_expander;
    const ForHead& m_head;
    const TemporaryText& m_list;
    SubString m_rest;
    RepeatedText m_block;
    ssize_t m_indent;
    ssize_t m_outputPos;
    RoundFrame m_frame;
    KnownList* m_noted = nullptr;
    ssize_t m_round = 0;                                         ///< Counted from 1.
    ExpansionObserver* m_observer = RunState::CurrentObserver(); ///< Or null.
};

void MacroExpander::ProcessForDirective()
{
    ForHead head;
    const char* const open = SkipBlanks(m_str.begin(), m_str.end());
    try
    {
        ReadForHead(head, [this] { return NextToken(); });
    }
    catch (const LexScannerException& e)
    {
        NoteOpenedAround(open, e.m_pos, m_str.end());
        throw;
    }
    head.m_listPos = m_str.begin();
    const std::shared_ptr<TemporaryText> list =
        MakeText(CutSection(/*readOpen=*/false, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN));
    LoopFor(head, list, CutLoopBlock("\n    for @for directive"), nullptr);
}

PlannedAction MacroExpander::PlanFor(PlanReader& reader)
{
    auto head = std::make_shared<ForHead>();
    ReadForHead(*head, [&] { return reader.Token(); });
    head->m_listPos = reader.m_rest.begin();
    const LevelText section =
        reader.Section(/*readOpen=*/false, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    const TextBlock block = reader.Block();
    const auto known = std::make_shared<std::shared_ptr<KnownList>>();
    return [=](MacroExpander& expander)
    {
        xstring listString;
        expander.ExpandToString(section, 0, listString);
        const KnownList* const last = known->get();
        std::shared_ptr<TemporaryText>
            list; // A round may come here again and replace what is known.
        if (last != nullptr && last->m_text->IsOfCurrentRun() && last->m_text->Text() == listString)
            list = last->m_text;
        else
        {
            known->reset();
            list = MakeHeldShared<TemporaryText>(listString, expander.DirectiveRange());
        }
        expander.LoopFor(*head, list, block, known.get());
    };
}

/// `known`: what is known of the list, if anything; filled in when it is empty. Null: that is not
/// wanted.
void MacroExpander::LoopFor(const ForHead& head, const std::shared_ptr<TemporaryText>& list,
                            const TextBlock& block, std::shared_ptr<KnownList>* known)
{
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    ForLoop loop(*this, head, *list, block);
    if (known == nullptr || list->Text().size() > KnownList::s_longest)
        return loop.Run();
    if (const std::shared_ptr<KnownList> last = *known)
    {
        last->Scan();
        return loop.Run(*last);
    }
    const auto noted = std::make_shared<KnownList>();
    noted->m_text = list;
    loop.Note(*noted);
    loop.Run();
    *known = noted;
}

/// Reads `(`, the names and the word `in`.
template <class Next>
void MacroExpander::ReadForHead(ForHead& head, const Next& next)
{
    LSToken token = next();
    if (token.m_type != TOKEN_LEFT_PAREN)
        ThrowAtToken({"( expected after @for when read "}, token);
    token = next();
    if (token.m_type == TOKEN_LEFT_PAREN)
    {
        head.m_isSingle = false;
        do
        {
            token = next();
            if (token.m_type != TOKEN_IDENTIFIER)
                ThrowAtToken({"Identifier expected when read "}, token);
            head.m_names.push_back(token.m_str);
            token = next();
            if (token.m_type != TOKEN_RIGHT_PAREN && token.m_type != TOKEN_COMMA)
                ThrowAtToken({", or ) expected when read "}, token);
        } while (token.m_type == TOKEN_COMMA);
    }
    else if (token.m_type == TOKEN_IDENTIFIER)
        head.m_names.push_back(token.m_str);
    else
        ThrowAtToken({"Identifier expected after @for( when read "}, token);
    token = next();
    if (token.m_str != "in")
        ThrowAtToken({"'in' expected when read "}, token);
}

TextBlock MacroExpander::CutLoopBlock(const char* context)
{
    try
    {
        return CutBlock();
    }
    catch (LexScannerException& e)
    {
        AddErrorContext(e, {context});
        throw;
    }
}

void MacroExpander::ForLoop::Run()
{
    const LSToken open = LsScanToken(m_rest, /*returnComments=*/false);
    if (open.m_type == TOKEN_IDENTIFIER)
        HintAtList(*m_expander.m_vf, SubString(m_head.m_listPos, m_expander.m_origStr.end()),
                   open.m_str);
    if (open.m_type != TOKEN_LEFT_SQUARE)
        ThrowAt(m_head.m_listPos, {"[ expected when read read ", TokenText(open)});
    for (;;)
    {
        SubString element;
        const LSToken end = CutElement(m_rest, element, TOKEN_RIGHT_SQUARE);
        const bool isRound = end.m_type == TOKEN_COMMA || !element.empty();
        if (isRound)
            ExpandElement(element);
        if (isRound && end.m_type == TOKEN_COMMA)
            continue;
        if (end.m_type != TOKEN_RIGHT_SQUARE)
            ThrowAtToken({", or ] expected when read "}, end);
        m_expander.BeginRound(0);
        return;
    }
}

/// The element with this index is not what it should be.
void MacroExpander::ForLoop::NoteFaulty(ssize_t index) const
{
    NoteElement(*m_expander.m_vf, SubString(m_head.m_listPos, m_expander.m_origStr.end()),
                m_list.Text(), index);
}

/// The element of this round has not the values that are wanted.
void MacroExpander::ForLoop::HintAtFaulty(SubString element) const
{
    NoteFaulty(m_round - 1);
    HintAtElement(element, m_head.m_names.size());
}

/// Cuts the next element, or a value of one, out of the list.
LSToken MacroExpander::ForLoop::CutElement(SubString& s, SubString& element, EToken close) const
{
    try
    {
        return ScanArgument(s, element, close);
    }
    catch (LexScannerException& e)
    {
        NoteFaulty(close == TOKEN_RIGHT_SQUARE ? m_round : m_round - 1);
        if (dynamic_cast<ExpansionLimitException*>(&e) == nullptr)
            e.m_pos = m_head.m_listPos;
        AddErrorContext(e, {"\n    in @for directive for list ", m_list.Text()});
        throw;
    }
}

void MacroExpander::ForLoop::Run(const KnownList& list)
{
    const ssize_t n = m_head.m_names.size();
    for (const KnownList::Round& round : list.m_rounds)
    {
        BeginRound();
        VarFrame& frame = m_frame.Begin();
        for (ssize_t i = 0; i < n; ++i)
            Bind(i, list.m_values[round.m_firstValue + static_cast<size_t>(i)]);
        ExpandRound(frame, round.m_element);
    }
    m_expander.BeginRound(0);
}

void MacroExpander::ForLoop::BeginRound()
{
    m_expander.CountStep();
    m_expander.BeginRound(++m_round);
}

void MacroExpander::ForLoop::ExpandElement(SubString element)
{
    BeginRound();
    if (m_noted != nullptr)
        m_noted->m_rounds.push_back({element, m_noted->m_values.size()});
    VarFrame& frame = m_frame.Begin();
    if (m_head.m_isSingle)
        Bind(0, LevelText{element});
    else
        BindValues(element);
    ExpandRound(frame, element);
}

void MacroExpander::ForLoop::ExpandRound(VarFrame& frame, SubString element)
{
    try
    {
        if (m_observer == nullptr)
            m_expander.ExpandHere(frame, m_block.Next(), m_indent, m_outputPos);
        else
            ExpandObservedRound(frame, element);
    }
    catch (LexScannerException& e)
    {
        if (!IsSwallowed(e))
            m_expander.NoteRound(m_round);
        const SubString name = m_head.m_isSingle ? m_head.m_names[0] : SubString();
        AddErrorContext(e, {"\n    in @for directive when ", name, " = ", element});
        throw;
    }
    catch (...)
    {
        m_expander.NoteRound(m_round);
        throw;
    }
}

void MacroExpander::ForLoop::ExpandObservedRound(VarFrame& frame, SubString element)
{
    m_observer->RoundBegins({m_expander.DirectiveRange(), "for", m_round, element});
    const ObservedSpan span(*m_observer, &ExpansionObserver::RoundEnds);
    m_expander.ExpandHere(frame, m_block.Next(), m_indent, m_outputPos);
}

/// Binds the values of an element `(a, b)`. What follows its closing bracket is not looked at.
void MacroExpander::ForLoop::BindValues(SubString element)
{
    const SubString whole(element);
    const LSToken open = LsScanToken(element, /*returnComments=*/false);
    if (open.m_type != TOKEN_LEFT_PAREN)
        HintAtFaulty(whole);
    if (open.m_type != TOKEN_LEFT_PAREN)
        ThrowAtToken({"( expected when read "}, open);
    const ssize_t n = m_head.m_names.size();
    for (ssize_t i = 0; i < n; ++i)
    {
        SubString value;
        const LSToken end = CutElement(element, value, TOKEN_RIGHT_PAREN);
        Bind(i, LevelText{value});
        if ((i < n - 1) != (end.m_type == TOKEN_COMMA))
            HintAtFaulty(whole);
        if (i < n - 1 && end.m_type != TOKEN_COMMA)
            ThrowAtToken({", expected when read "}, end);
        if (i == n - 1 && end.m_type != TOKEN_RIGHT_PAREN)
            ThrowAtToken({") expected when read "}, end);
    }
}

void MacroExpander::ForLoop::Bind(ssize_t name, const LevelText& value)
{
    if (m_noted != nullptr)
        m_noted->m_values.push_back(value);
    m_frame.Bind(name, value);
}

void MacroExpander::ProcessWhileDirective()
{
    const LevelText condition = CutSection(/*readOpen=*/true, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    LoopWhile(condition, CutLoopBlock("\n    for @while directive"));
}

PlannedAction MacroExpander::PlanWhile(PlanReader& reader)
{
    const LevelText condition = reader.Condition(/*readOpen=*/true);
    const TextBlock block = reader.Block();
    return [=](MacroExpander& expander) { expander.LoopWhile(condition, block); };
}

void MacroExpander::LoopWhile(const LevelText& condition, const TextBlock& block)
{
    RepeatedText conditions(condition, /*isExpression=*/true);
    RepeatedText rounds(block.m_text);
    AdvanceWritePos(m_str.begin(), /*write=*/false);
    const ssize_t outputPos = GetOutputPos();
    const bool isObserved = RunState::CurrentObserver() != nullptr;
    for (ssize_t round = 1; EvaluateCondition(conditions.Next(), "@while"); ++round)
    {
        CountStep();
        if (isObserved)
            ExpandObservedRound(rounds.Next(), block.m_indent, outputPos, round);
        else if (!block.m_text.m_text.empty())
            ExpandRound(rounds.Next(), block.m_indent, outputPos, round);
    }
}

/// A warning in the round says which one it was; 0: between two.
void MacroExpander::BeginRound(ssize_t round) const
{
    if (ExpansionLevel* const level = OwnLevel())
        level->SetRound(round);
}

void MacroExpander::ExpandRound(const LevelText& block, ssize_t indent, ssize_t dstIndent,
                                ssize_t round)
{
    try
    {
        BeginRound(round);
        ExpandBlock(block, indent, dstIndent);
        BeginRound(0);
    }
    catch (const LexScannerException& e)
    {
        if (!IsSwallowed(e))
            NoteRound(round);
        throw;
    }
    catch (...)
    {
        NoteRound(round);
        throw;
    }
}

void MacroExpander::ExpandObservedRound(const LevelText& block, ssize_t indent, ssize_t dstIndent,
                                        ssize_t round)
{
    ExpansionObserver& observer = *RunState::CurrentObserver();
    observer.RoundBegins({DirectiveRange(), "while", round, SubString()});
    const ObservedSpan span(observer, &ExpansionObserver::RoundEnds);
    if (!block.m_text.empty())
        ExpandRound(block, indent, dstIndent, round);
}

/// An error passes a round of the loop that is the current directive.
void MacroExpander::NoteRound(ssize_t round) const
{
    if (RunState* const state = RunState::Current())
        state->NoteCall(CallPlace::CALL_LOOP, SubString(), m_startDirectivePos, round);
}

} // namespace telv
