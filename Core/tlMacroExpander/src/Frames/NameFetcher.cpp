// SPDX-License-Identifier: MIT
// Each name passes five stages, some names apart: its slot, its entry, the variable that the root
// binds, or that an import provides, the body.
#include "tlMacroExpander/src/Frames/NameFetcher.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <algorithm>

namespace telv
{

namespace
{

/// Of the variable, the first lines of the cache.
constexpr size_t s_line = 64;
constexpr size_t s_lines = 3;

void FetchVariable(const LSVariable* var)
{
    for (size_t i = 0; i < s_lines; ++i)
        __builtin_prefetch(reinterpret_cast<const char*>(var) + i * s_line);
}

} // namespace

void NameFetcher::LookAhead(SubString rest, ssize_t& unseen)
{
    if (unseen == 0 || rest.size() - unseen >= s_least)
        return;
    const char* p = rest.end() - std::min(unseen, rest.size());
    const char* const end = rest.begin() + std::min(rest.size(), s_most);
    while (p < end)
    {
        if (ClassOf(*p) > CHAR_RAW_PREFIX)
        {
            ++p;
            continue;
        }
        const char* const start = p;
        p = SkipNameCharacters(p + 1, rest.end());
        const SubString name(start, p);
        if (m_names.MayBeBound(name))
            Fetch(name);
    }
    unseen = rest.end() - p;
}

void NameFetcher::Fetch(SubString name)
{
    const auto stage = [this](size_t waits) -> Stage&
    { return m_stages[(m_count - waits * s_wait) % s_stages]; };
    stage(0) = {HashName(name), nullptr, nullptr};
    m_names.FetchSlot(stage(0).m_hash);
    if (m_count >= s_wait)
        stage(1).m_entry = m_names.FetchEntry(stage(1).m_hash);
    if (m_count >= 2 * s_wait)
        FetchBinding(stage(2));
    if (m_count >= 3 * s_wait)
        FetchImported(stage(3));
    if (m_count >= 4 * s_wait)
        FetchBody(stage(4));
    ++m_count;
}

void NameFetcher::FetchBinding(Stage& stage)
{
    if (stage.m_entry == nullptr)
        return;
    stage.m_var = stage.m_entry->RootVar();
    if (stage.m_var != nullptr)
        FetchVariable(stage.m_var);
    else if (stage.m_entry->Import() != nullptr)
        __builtin_prefetch(stage.m_entry->Import());
}

void NameFetcher::FetchImported(Stage& stage)
{
    if (stage.m_entry == nullptr || stage.m_var != nullptr || stage.m_entry->Import() == nullptr)
        return;
    stage.m_var = stage.m_entry->Import()->m_var;
    FetchVariable(stage.m_var);
}

void NameFetcher::FetchBody(const Stage& stage)
{
    if (stage.m_var != nullptr && stage.m_var->GetType() == LSV_MACRO)
        __builtin_prefetch(
            static_cast<const LSMacroVariable*>(stage.m_var)->GetSubstitutionString().m_p1);
}

} // namespace telv
