// SPDX-License-Identifier: MIT
// The run: which is current, and where positions belong.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/Run/ExpansionRun"

#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/LSSourceFile.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/Watch.h"
#include "tlUtils/HeldMemory.h"
#include <string_view>
#include <utility>

namespace telv
{

thread_local constinit ExpansionRun* detail::t_currentRun = nullptr;

ExpansionRun::ExpansionRun() : m_state(std::make_unique<RunState>()) {}
ExpansionRun::~ExpansionRun() = default;

RunState::RunState() = default;

ExpansionRun* ExpansionRun::Current() noexcept
{
    return detail::t_currentRun;
}

ExpansionRunScope::ExpansionRunScope(ExpansionRun& run) noexcept
    : m_previous(std::exchange(detail::t_currentRun, &run))
{
    RunState::Of(run).Install();
}

ExpansionRunScope::~ExpansionRunScope()
{
    RunState::Of(*detail::t_currentRun).Uninstall();
    detail::t_currentRun = m_previous;
}

void RunState::HoldToEnd(ssize_t bytes)
{
    HoldMemory(bytes);
    m_heldToEnd += BlockSize(bytes);
}

RunState::~RunState()
{
    ThreadMemory().m_bytes -= m_heldToEnd;
}

void RunState::Install() noexcept
{
    if (m_scopes++ == 0)
        m_heldBefore = ThreadMemory().m_bytes - m_held;
}

void RunState::Uninstall() noexcept
{
    if (--m_scopes == 0)
        m_held = ThreadMemory().m_bytes - m_heldBefore;
}

void ExpansionRun::AddSource(const LSSourceFile& file)
{
    m_state->AddText({file.m_name, file.m_buffer, &file});
}

void ExpansionRun::SetObserver(ExpansionObserver* observer)
{
    TELV_ASSERT(m_state->m_level == nullptr);
    m_state->m_observer = observer;
}

ExpansionObserver* ExpansionRun::Observer() const
{
    return m_state->m_observer;
}

const LSSourceFile* ExpansionRun::FindSource(const char* pos) const
{
    const RunState::KnownText* const text = m_state->FindText(pos);
    return text == nullptr ? nullptr : text->m_file;
}

const RunState::KnownText* RunState::FindText(const char* pos) const
{
    const auto next = m_knownTexts.upper_bound(pos);
    if (pos == nullptr || next == m_knownTexts.begin())
        return nullptr;
    const KnownText& text = std::prev(next)->second;
    return pos <= text.m_text.end() ? &text : nullptr;
}

bool ExpansionRun::FindOrigin(const char* pos, SubString& origin) const
{
    return m_state->FindOrigin(pos, origin);
}

const char* ExpansionRun::FindCopied(SubString text) const
{
    const TextOrigin* const made = m_state->FindLiveText(text.begin());
    return made == nullptr ? nullptr : made->FindCopied(text);
}

const char* ExpansionRun::ResolvePosition(const char* pos) const
{
    return m_state->ResolvePosition(pos);
}

const char* ExpansionRun::CurrentPosition() const
{
    const ExpansionLevel* const level = m_state->m_level;
    return level == nullptr ? nullptr : ResolvePosition(level->Position());
}

const char* ExpansionRun::FailurePosition() const
{
    return m_state->m_failurePos;
}

const std::vector<CallPlace>& ExpansionRun::CallPlaces() const
{
    return m_state->m_callPlaces;
}

ssize_t ExpansionRun::MoreCallPlaces() const
{
    return m_state->m_moreCallPlaces;
}

const std::vector<const char*>& ExpansionRun::ImportPlaces() const
{
    return m_state->m_importPlaces;
}

const char* ExpansionRun::OpenedAt(const char* errorPos) const
{
    return errorPos == m_state->m_neverClosed ? m_state->m_openedAt : nullptr;
}

const char* ExpansionRun::DefinedAt() const
{
    return m_state->m_definedAt;
}

const char* ExpansionRun::ElementAt() const
{
    return m_state->m_elementAt;
}

void RunState::NoteCall(CallPlace::EKind kind, SubString name, const char* pos, ssize_t round)
{
    if (static_cast<ssize_t>(m_callPlaces.size()) < ExpansionRun::s_mostCallPlaces)
        m_callPlaces.push_back(CallPlace{kind, xstring(name), ResolvePosition(pos), round});
    else
        ++m_moreCallPlaces;
}

const TextOrigin* RunState::FindLiveText(const char* pos) const
{
    if (pos == nullptr || m_liveTexts == nullptr)
        return nullptr;
    const auto next = m_liveTexts->upper_bound(pos);
    if (next == m_liveTexts->begin())
        return nullptr;
    const TextOrigin& text = *std::prev(next)->second;
    return pos <= text.m_end ? &text : nullptr;
}

bool RunState::FindOrigin(const char* pos, SubString& origin) const
{
    const TextOrigin* const text = FindLiveText(pos);
    if (text == nullptr)
        return false;
    origin = text->Outermost();
    return true;
}

const char* RunState::FindGiven(SubString text) const
{
    const TextOrigin* const made = FindLiveText(text.begin());
    return made == nullptr ? text.begin() : made->FindCopied(text);
}

const char* RunState::ResolvePosition(const char* pos) const
{
    SubString origin;
    return FindOrigin(pos, origin) ? origin.begin() : pos;
}

void RunState::NoteDeath(const TextOrigin& text) noexcept
{
    m_deadTexts.push_back(DeadText{text.m_begin, text.m_end, text.NearestAlive()});
}

} // namespace telv
