// SPDX-License-Identifier: MIT
// What a scan of a text found: the tokens that can matter when it is expanded, in order.
//
// Bodies of macros and blocks of loops are expanded again and again. The second time, the text is
// read once more and what counts is written down; from then on the expander goes from item to item,
// and all between two that matter is copied. Names are kept as entries of the name table, so that a
// word which nobody binds costs one look. What a directive or a call asks for is read once and kept
// with its item (Plan.h).
//
// The items are those of one pass over the whole text. An expansion of a part of it (a block, an
// argument) meets the same tokens, provided that the part begins and ends between two of them;
// where it does not, and behind a place where the text is no text of the language, nothing is known
// and the text is read as if for the first time.
#pragma once

#include "tlMacroExpander/src/Frames/HeldNames.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/LevelText.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include "tlMacroExpander/src/Texts/Counted.h"
#include "tlUtils/HeldContainers.h"
#include <memory>
#include <vector>

namespace telv
{

class Plan;

enum EScanItem : uint8
{
    ITEM_NAME,
    ITEM_LINE_FEED, ///< That may be the end of a line of the text, not one inside a token.
    ITEM_DIRECTIVE, ///< `@`
    ITEM_COMMENT,   ///< `@//` or `@/**/`
    ITEM_STRING,    ///< In double quotes, with a dollar sign.
    ITEM_END        ///< Behind the last; nothing is known from here on.
};

struct ScanItem
{
    uint32 m_begin = 0; ///< Offset in the text.
    uint32 m_end = 0;
    EScanItem m_kind = ITEM_END;
    /// Of a line feed: behind the last carriage return or the like in the white space before it. An
    /// expansion that comes from before that does not take it for the end of a line. 0: none.
    uint32 m_breaker = 0;
    uint32 m_resumed = 0;      ///< Where the expansion went on behind this item the last time,
    uint32 m_resumedIndex = 0; ///< and the item there; 0: not known.
    NameEntry* m_name = nullptr;
    std::unique_ptr<Plan> m_plan; ///< Of a directive or a call.
    bool m_isPlanned = false;     ///< A plan has been made, or there is none.

    ScanItem();
    ~ScanItem();
    ScanItem(ScanItem&&) noexcept;
};

/// Views the text, which must neither move nor change; what is read after the text has died are
/// addresses only.
class ScannedText : public Counted, public HeldObject
{
public:
    /// Longer texts are not worth what the items take.
    static constexpr ssize_t s_longest = ssize_t(1) << 22;

    /// What is known of `text`, or null where that is not wanted.
    static CountedRef<ScannedText> Make(SubString text);

    explicit ScannedText(SubString text);
    ScannedText(const ScannedText&) = delete;
    ScannedText& operator=(const ScannedText&) = delete;

    SubString Text() const { return m_text; }
    const char* Begin() const { return m_text.begin(); }
    ScanItem* Items() { return m_items.data(); }

    /// Makes the names entries of `table`, unless they are.
    void ResolveNames(NameTable& table)
    {
        if (!m_names.AreOf(table)) [[unlikely]]
            ResolveNamesAnew(table);
    }

    /// The first item that does not begin before `pos`; `s_unknown` when `pos` lies inside a token
    /// or behind what is known. `from`: an item that begins before it.
    uint32 IndexAt(const char* pos, uint32 from) const;
    /// Whether the item is this name.
    bool IsName(uint32 item, SubString name) const
    {
        return m_items[item].m_kind == ITEM_NAME && Begin() + m_items[item].m_begin == name.begin();
    }
    /// Whether the item is a name, and the name is all of `text`.
    bool IsWord(uint32 item, SubString text) const
    {
        return IsName(item, text) && Begin() + m_items[item].m_end == text.end();
    }
    /// What was cut out of the text, as a part of it.
    LevelText Part(SubString text);
    /// Whether the text was scanned as this thread's run would now.
    bool SuitsRun() const { return m_isLenient == RunState::IsLenient(); }
    /// Whether `first` is the first item of `part`.
    bool Begins(SubString part, uint32 first) const
    {
        if (!IsWithin(part, m_text))
            return false;
        const uint32 offset = Offset(part.begin());
        return m_items[first].m_begin >= offset &&
               (first == 0 || m_items[first - 1].m_begin < offset);
    }
    /// Whether a part that was cut out and ends at `end` ends between two tokens.
    bool EndsBetweenTokens(const char* end) const;

    static constexpr uint32 s_unknown = ~uint32(0);

private:
    struct Span
    {
        uint32 m_begin;
        uint32 m_end;
    };

    void Scan();
    void AddBlanks(const char* begin, const char* end);
    void AddToken(const LSToken& token);
    ScanItem& AddItem(EScanItem kind, const char* begin, const char* end);
    uint32 Offset(const char* p) const { return static_cast<uint32>(p - m_text.begin()); }
    bool IsInsideToken(uint32 offset) const;
    void ResolveNamesAnew(NameTable& table);

    SubString m_text;
    HeldVector<ScanItem> m_items;
    HeldVector<Span> m_solid; ///< Strings and comments.
    HeldNames m_names;        ///< Of the items that are names, in order.
    size_t m_nameCount = 0;
    bool m_isLenient = RunState::IsLenient();
};

} // namespace telv
