// SPDX-License-Identifier: MIT
// Temporary texts: registered with the run that made them, reported when they die under an error.
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
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

TemporaryText::TemporaryText(xstring& text, SubString origin)
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

TextScope::TextScope(xstring& text, SubString origin)
    : m_text(MakeHeldShared<TemporaryText>(text, origin))
{
}

} // namespace telv
