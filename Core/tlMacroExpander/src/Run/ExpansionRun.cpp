// The run: which is current, and where positions belong.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/LSSourceFile.h"
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include <utility>

namespace telv
{

namespace
{

thread_local constinit ExpansionRun* t_current = nullptr;

} // namespace

ExpansionRun::ExpansionRun() = default;
ExpansionRun::~ExpansionRun() = default;

ExpansionRun* ExpansionRun::Current() noexcept
{
    return t_current;
}

ExpansionRun& FallbackRun() noexcept
{
    thread_local ExpansionRun run;
    return run;
}

ExpansionRun& CurrentRun() noexcept
{
    return t_current != nullptr ? *t_current : FallbackRun();
}

ExpansionRunScope::ExpansionRunScope(ExpansionRun& run) noexcept
    : m_previous(std::exchange(t_current, &run))
{
}

ExpansionRunScope::~ExpansionRunScope()
{
    t_current = m_previous;
}

void ExpansionRun::AddSource(const LSSourceFile& file)
{
    m_sources[file.m_buffer.begin()] = &file;
}

const LSSourceFile* ExpansionRun::FindSource(const char* pos) const
{
    const auto next = m_sources.upper_bound(pos);
    if (pos == nullptr || next == m_sources.begin())
        return nullptr;
    const LSSourceFile* const file = std::prev(next)->second;
    return pos <= file->m_buffer.end() ? file : nullptr;
}

bool ExpansionRun::FindOrigin(const char* pos, SubString& origin) const
{
    if (pos == nullptr || m_liveTexts == nullptr)
        return false;
    const auto next = m_liveTexts->upper_bound(pos);
    if (next == m_liveTexts->begin())
        return false;
    const TextOrigin& text = *std::prev(next)->second;
    if (pos > text.m_end)
        return false;
    origin = text.Outermost();
    return true;
}

const char* ExpansionRun::ResolvePosition(const char* pos) const
{
    SubString origin;
    return FindOrigin(pos, origin) ? origin.begin() : pos;
}

const char* ExpansionRun::CurrentPosition() const
{
    return m_level == nullptr ? nullptr : ResolvePosition(m_level->Position());
}

/// Called from destructors: room was made when the text was (see TemporaryText).
void ExpansionRun::NoteDeath(const TextOrigin& text) noexcept
{
    m_deadTexts.push_back(DeadText{text.m_begin, text.m_end, text.NearestAlive()});
}

} // namespace telv
