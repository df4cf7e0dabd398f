// SPDX-License-Identifier: MIT
// The pass over a text that writes down what can matter.
#include "tlMacroExpander/src/Texts/ScannedText.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include <algorithm>
#include <cstring>

namespace telv
{

ScanItem::ScanItem() = default;
ScanItem::~ScanItem() = default;
ScanItem::ScanItem(ScanItem&&) noexcept = default;

CountedRef<ScannedText> ScannedText::Make(SubString text)
{
    constexpr ssize_t mostPerCharacter = 256; // when most of them are items with plans
    if (!FastPaths::IsOn(FastPaths::SCANNED_TEXTS) || text.size() > s_longest ||
        !ThreadMemory().HasRoom(text.size() * mostPerCharacter))
        return CountedRef<ScannedText>();
    return CountedRef<ScannedText>(new ScannedText(text));
}

ScannedText::ScannedText(SubString text) : m_text(text)
{
    Scan();
}

void ScannedText::Scan()
{
    SubString rest = m_text;
    const char* known = rest.begin();
    try
    {
        while (rest)
        {
            const char* const blanks = rest.begin();
            const LSToken token = LsScanToken(rest, /*returnComments=*/true);
            AddBlanks(blanks, token.m_str.begin());
            known = rest.begin();
            if (token.m_type == TOKEN_END)
                break;
            AddToken(token);
        }
    }
    catch (const LexScannerException&)
    {
        // The expansion will meet it when it gets there.
    }
    AddItem(ITEM_END, known, known);
}

ScanItem& ScannedText::AddItem(EScanItem kind, const char* begin, const char* end)
{
    ScanItem& item = m_items.emplace_back();
    item.m_begin = Offset(begin);
    item.m_end = Offset(end);
    item.m_kind = kind;
    return item;
}

void ScannedText::AddBlanks(const char* begin, const char* end)
{
    uint32 breaker = 0;
    for (const char* p = begin; p != end; ++p)
    {
        if (*p == '\n')
            AddItem(ITEM_LINE_FEED, p, p + 1).m_breaker = breaker;
        else if (*p != ' ' && *p != '\t')
            breaker = Offset(p) + 1;
    }
}

void ScannedText::AddToken(const LSToken& token)
{
    const SubString s = token.m_str;
    switch (token.m_type)
    {
    case TOKEN_IDENTIFIER:
        AddItem(ITEM_NAME, s.begin(), s.end());
        ++m_nameCount;
        return;
    case TOKEN_AT:
        AddItem(ITEM_DIRECTIVE, s.begin(), s.end());
        return;
    case TOKEN_PREPROC_COMMENT:
        AddItem(ITEM_COMMENT, s.begin(), s.end());
        break;
    case TOKEN_DOUBLE_QUOTED_STRING:
        if (std::memchr(s.begin(), '$', static_cast<size_t>(s.size())) != nullptr)
            AddItem(ITEM_STRING, s.begin(), s.end());
        break;
    case TOKEN_SINGLE_QUOTED_STRING:
    case TOKEN_COMMENT:
        break;
    default:
        return;
    }
    m_solid.push_back({Offset(s.begin()), Offset(s.end())});
}

void ScannedText::ResolveNamesAnew(NameTable& table)
{
    const ScanItem* next = m_items.data();
    m_names.Hold(table, m_nameCount,
                 [&](size_t)
                 {
                     while (next->m_kind != ITEM_NAME)
                         ++next;
                     const ScanItem& item = *next++;
                     return SubString(Begin() + item.m_begin, Begin() + item.m_end);
                 });
    size_t i = 0;
    for (ScanItem& item : m_items)
        if (item.m_kind == ITEM_NAME)
            item.m_name = &m_names[i++];
}

/// Whether `offset` lies within a string or a comment, its ends excluded.
bool ScannedText::IsInsideToken(uint32 offset) const
{
    const auto next = std::upper_bound(m_solid.begin(), m_solid.end(), offset,
                                       [](uint32 o, const Span& span) { return o < span.m_end; });
    return next != m_solid.end() && next->m_begin < offset;
}

uint32 ScannedText::IndexAt(const char* pos, uint32 from) const
{
    const uint32 offset = Offset(pos);
    if (offset > m_items.back().m_begin || IsInsideToken(offset))
        return s_unknown;
    const auto found =
        std::partition_point(m_items.begin() + from, m_items.end() - 1,
                             [=](const ScanItem& item) { return item.m_begin < offset; });
    return static_cast<uint32>(found - m_items.begin());
}

LevelText ScannedText::Part(SubString text)
{
    LevelText part{text};
    if (!EndsBetweenTokens(text.end()))
        return part;
    part.m_first = IndexAt(text.begin(), 0);
    part.m_scanned = part.m_first == s_unknown ? nullptr : this;
    return part;
}

/// A block whose closing bracket does not stand on a line of its own loses a character, which can
/// be one of a token.
bool ScannedText::EndsBetweenTokens(const char* end) const
{
    const uint32 offset = Offset(end);
    if (offset > m_items.back().m_begin || IsInsideToken(offset))
        return false;
    if (end == m_text.end() || ClassOf(*end) == CHAR_BLANK)
        return true;
    const char c = *end;
    return c == ')' || c == '}' || c == ']' || c == ',';
}

} // namespace telv
