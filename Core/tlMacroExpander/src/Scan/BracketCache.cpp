// SPDX-License-Identifier: MIT
// Scans to matching brackets, and the table of those that were found.
//
// The scan is a loop with a list of the nested brackets that are open, not a recursion. A pair is
// recorded when it closes. The list, and with it what one scan records, goes down to a fixed depth;
// deeper pairs are only counted, and a scan that starts down there records the next ones.
#include "tlMacroExpander/src/Scan/BracketCache.h"
#include "tlMacroExpander/src/Scan/TokenScan.h"
#include <algorithm>

namespace telv
{

namespace
{

constexpr ssize_t s_maximumDepth = ssize_t{1} << 17; ///< Of brackets that one scan records.
constexpr size_t s_initialSlots = 64;
constexpr size_t s_maximumSlots = size_t{1} << 22; ///< About 100 MB.

/// A number for each kind of closing bracket that is remembered, or -1.
int BracketNumber(EToken close)
{
    switch (close)
    {
    case TOKEN_RIGHT_PAREN:
        return 0;
    case TOKEN_RIGHT_CURLY:
        return 1;
    case TOKEN_RIGHT_SQUARE:
        return 2;
    default:
        return -1;
    }
}

/// True when `open` is the bracket that `close` closes.
bool IsPair(EToken open, EToken close)
{
    return BracketNumber(close) >= 0 && static_cast<int>(open) == static_cast<int>(close) - 1;
}

} // namespace

uint64 BracketCache::MakeKey(const char* behindOpen, EToken close) const
{
    const uint64 offset = static_cast<uint64>(behindOpen - m_text.begin());
    return ((offset + 1) << 2) | static_cast<uint64>(BracketNumber(close));
}

TELV_WRAPS size_t BracketCache::SlotOf(uint64 key, const HeldVector<Entry>& table) const
{
    const size_t mask = table.size() - 1;
    size_t slot = static_cast<size_t>((key * 0x9e3779b97f4a7c15u) >> 32) & mask;
    while (table[slot].m_key != 0 && table[slot].m_key != key)
        slot = (slot + 1) & mask;
    return slot;
}

bool BracketCache::Find(SubString s, EToken close, MatchingBracket& found) const
{
    if (m_furthest == nullptr || s.begin() > m_furthest)
        return false; // as on every first scan, which so never touches the table
    const Entry& entry = m_table[SlotOf(MakeKey(s.begin(), close), m_table)];
    if (entry.m_key == 0)
        return false;
    const char* const closePos = m_text.begin() + entry.m_close;
    if (closePos >= s.end())
        return false;
    found = {closePos, closePos + 1, m_text.begin() + entry.m_lastEnd};
    return true;
}

/// Parts that overlap are joined: the end of a comment has two characters, so one of them holds it.
void BracketCache::NoteWithoutCommentEnd(SubString text)
{
    SubString& known = m_withoutCommentEnd;
    if (!IsWithin(text, m_text))
        return;
    if (text.begin() < known.end() && known.begin() < text.end())
        known = SubString(std::min(known.begin(), text.begin()), std::max(known.end(), text.end()));
    else if (text.size() > known.size())
        known = text;
}

/// Makes room for another entry; false when the table has its greatest size.
bool BracketCache::Grow()
{
    const size_t used = static_cast<size_t>(m_count) + 1;
    if (used * 4 <= m_table.size() * 3)
        return true;
    if (m_table.size() == s_maximumSlots)
        return false;
    HeldVector<Entry> larger(m_table.empty() ? s_initialSlots : m_table.size() * 2);
    for (const Entry& entry : m_table)
    {
        if (entry.m_key != 0)
            larger[SlotOf(entry.m_key, larger)] = entry;
    }
    m_table.swap(larger);
    return true;
}

void BracketCache::Record(const char* behindOpen, EToken close, const MatchingBracket& found)
{
    if (found.m_close - behindOpen < s_minimumSpan || !Grow())
        return;
    const uint64 key = MakeKey(behindOpen, close);
    Entry& entry = m_table[SlotOf(key, m_table)];
    if (entry.m_key == 0)
        ++m_count;
    if (m_furthest == nullptr || m_furthest < behindOpen)
        m_furthest = behindOpen;
    entry = {key, found.m_close - m_text.begin(), found.m_lastEnd - m_text.begin()};
}

/// One scan for the bracket that closes another: counts the nested ones, and records them.
class BracketScan
{
public:
    /// `cache` may be null.
    BracketScan(EToken close, BracketCache* cache) : m_close(close), m_cache(cache)
    {
        if (m_cache != nullptr)
            m_cache->m_open.clear();
    }

    /// `behindOpen` is the position behind a nested opening bracket.
    void Open(const char* behindOpen)
    {
        if (m_cache != nullptr && m_depth < s_maximumDepth)
            m_cache->m_open.push_back(behindOpen);
        ++m_depth;
    }

    /// `found` is the next closing bracket. True when it closes no nested one.
    bool Close(const MatchingBracket& found)
    {
        if (m_depth == 0)
            return true;
        --m_depth;
        if (m_cache != nullptr && m_depth < s_maximumDepth)
        {
            const char* const behindOpen = m_cache->m_open.back();
            m_cache->m_open.pop_back();
            m_cache->Record(behindOpen, m_close, found);
        }
        return false;
    }

    /// Advances over the section behind an opening bracket when its end is known.
    bool Jump(SubString& s, MatchingBracket& found) const
    {
        if (m_cache == nullptr || !m_cache->Find(s, m_close, found))
            return false;
        s.m_p1 = found.m_end;
        return true;
    }

private:
    EToken m_close;
    BracketCache* m_cache;
    ssize_t m_depth = 0; ///< Nested brackets that are open.
};

bool SkipToMatchingBracket(SubString& s, EToken open, EToken close, MatchingBracket& found,
                           BracketCache* cache)
{
    const bool cached = cache != nullptr && IsPair(open, close) && IsWithin(s, cache->Text());
    BracketScan scan(close, cached ? cache : nullptr);
    if (scan.Jump(s, found))
        return true;
    const char* lastEnd = s.begin();
    for (;;)
    {
        const LSToken token = ScanToEither(s, open, close, lastEnd);
        const MatchingBracket here{token.m_str.begin(), token.m_str.end(), lastEnd};
        if (token.m_type == TOKEN_END)
            return false;
        if (token.m_type == close)
        {
            if (scan.Close(here))
            {
                found = here;
                return true;
            }
        }
        else if (MatchingBracket nested; !scan.Jump(s, nested))
            scan.Open(s.begin());
        lastEnd = s.begin();
    }
}

} // namespace telv
