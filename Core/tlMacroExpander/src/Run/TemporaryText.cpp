// SPDX-License-Identifier: MIT
// Temporary texts: registered with the run that made them, reported when they die under an error.
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include <algorithm>
#include <exception>
#include <utility>

namespace telv
{

/// Lets go of the chain in a loop: it can be as long as expansions were nested.
TextOrigin::~TextOrigin()
{
    std::shared_ptr<TextOrigin> outer = std::move(m_outer);
    while (outer != nullptr && outer.use_count() == 1)
        outer = std::exchange(outer->m_outer, nullptr);
}

SubString TextOrigin::Outermost() const
{
    const TextOrigin* text = this;
    while (text->m_outer != nullptr)
        text = text->m_outer.get();
    return text->m_origin;
}

const char* TextOrigin::NearestAlive() const
{
    const TextOrigin* text = this;
    while (text->m_outer != nullptr && !text->m_outer->m_alive)
        text = text->m_outer.get();
    return text->m_origin.begin();
}

const char* TextOrigin::FindCopied(SubString text) const
{
    const ssize_t offset = text.begin() - m_begin;
    const auto isBefore = [](ssize_t o, const Copied& copied) { return o < copied.m_offset; };
    const auto next = std::upper_bound(m_copied.begin(), m_copied.end(), offset, isBefore);
    if (next == m_copied.begin())
        return nullptr;
    const Copied& copied = *std::prev(next);
    const ssize_t skipped = offset - copied.m_offset;
    const bool isWhole = skipped + text.size() <= copied.m_given.size();
    return isWhole ? copied.m_given.begin() + skipped : nullptr;
}

namespace
{

/// Notes what was copied, with its places in texts that were given: the texts between need not
/// live on. Neighbours that continue each other are one.
void NoteCopied(TextOrigin& origin, const RunState& state, const OutputPieces& pieces)
{
    ssize_t offset = 0;
    for (const OutputPiece& piece : pieces)
    {
        const char* const given = piece.out == 0 ? state.FindGiven(piece.in) : nullptr;
        const ssize_t size = piece.size();
        TextOrigin::Copied* const last =
            origin.m_copied.empty() ? nullptr : &origin.m_copied.back();
        const bool continues = last != nullptr && last->m_given.end() == given &&
                               last->m_offset + last->m_given.size() == offset;
        if (given != nullptr && continues)
            last->m_given.m_p2 += size;
        else if (given != nullptr)
            origin.m_copied.push_back({offset, SubString(given, given + size)});
        offset += size;
    }
}

} // namespace

TemporaryText::TemporaryText(xstring& text, SubString origin, const OutputPieces* pieces)
    : m_text(text), m_origin(MakeHeldShared<TextOrigin>())
{
    m_origin->m_begin = Text().begin();
    m_origin->m_end = Text().end();
    m_origin->m_origin = origin;

    if (const TemporaryText* const outer = ExpansionLevel::CurrentOwner())
        m_origin->m_outer = outer->m_origin;
    if (Text().empty())
        return;
    RunState* const state = RunState::Current();
    if (state == nullptr) // a member of an expander that an application calls by itself
        return;
    if (state->m_liveTexts == nullptr)
        state->m_liveTexts = MakeHeldShared<LiveTexts>();
    m_liveTexts = state->m_liveTexts;
    if (pieces != nullptr)
        NoteCopied(*m_origin, *state, *pieces);
    if (state->m_deadTexts.capacity() <= m_liveTexts->size())
        state->m_deadTexts.reserve(m_liveTexts->size() * 2 + 1);
    m_liveTexts->emplace(m_origin->m_begin, m_origin.get()); // last: nothing may fail after it
}

bool TemporaryText::IsOfCurrentRun() const
{
    const RunState* const state = RunState::Current();
    return m_liveTexts != nullptr && state != nullptr && m_liveTexts == state->m_liveTexts;
}

TemporaryText::~TemporaryText()
{
    m_origin->m_alive = false;
    if (m_liveTexts == nullptr)
        return;
    m_liveTexts->erase(m_origin->m_begin);
    RunState* const state = RunState::Current();
    if (state != nullptr && state->m_level != nullptr && std::uncaught_exceptions() > m_exceptions)
        state->NoteDeath(*m_origin);
}

} // namespace telv
