// SPDX-License-Identifier: MIT
// Finds the bracket that closes another one, and remembers what it found.
//
// Directives nest, and each one cuts its own block out of the text before the block is expanded, so
// the innermost of n blocks would be read n times. The first scan that passes over nested brackets
// therefore records where each of them closes, and later scans jump. What is recorded depends on
// nothing but the characters between the brackets: results are those of scanning again, which is
// tested. Only complete matches are recorded, so that errors are found as often as without. For
// texts in which comments that never end are no errors, it is known besides where none ends.
//
// Internal: exported for its test alone.
#pragma once

#include "tlMacroExpander/src/LSToken.h"
#include "tlUtils/HeldContainers.h"

namespace telv
{

/// Where a bracket closes. Views of the text that was scanned.
struct MatchingBracket
{
    const char* m_close;   ///< The start of the closing bracket.
    const char* m_end;     ///< Its end.
    const char* m_lastEnd; ///< The end of the last token before it, if only the opening one.
};

/// The matching brackets known of one text, whose owner also owns the cache; the text must not
/// change. A lookup is constant time; memory is about 40 bytes for each pair that is recorded, and
/// bounded. Allocates nothing until something is recorded.
class TLEXPANDER_API BracketCache : public HeldObject
{
public:
    static constexpr ssize_t s_minimumSpan = 256; ///< Characters between brackets worth recording.

    explicit BracketCache(SubString text) : m_text(text) {}
    BracketCache(const BracketCache&) = delete;
    BracketCache& operator=(const BracketCache&) = delete;

    SubString Text() const { return m_text; }

    /// Pairs recorded so far.
    ssize_t size() const { return m_count; }

    /// True, and `found` is set, when it is known where the bracket of kind `close` is that closes
    /// the one before `s`, and `s`, which lies in the text, holds it.
    bool Find(SubString s, EToken close, MatchingBracket& found) const;

    /// True when it is known that `text` holds no end of a comment.
    bool IsWithoutCommentEnd(SubString text) const
    {
        return m_withoutCommentEnd.begin() <= text.begin() &&
               text.end() <= m_withoutCommentEnd.end();
    }
    /// Remembers that `text`, a part of the cache's, holds none. One such part is remembered.
    void NoteWithoutCommentEnd(SubString text);

private:
    friend class BracketScan;

    struct Entry
    {
        uint64 m_key = 0; ///< 0 where nothing is recorded.
        ssize_t m_close;
        ssize_t m_lastEnd;
    };

    uint64 MakeKey(const char* behindOpen, EToken close) const;
    size_t SlotOf(uint64 key, const HeldVector<Entry>& table) const;
    bool Grow();

    /// Records a pair unless it is so short that scanning again costs less, or the table is full.
    void Record(const char* behindOpen, EToken close, const MatchingBracket& found);

    SubString m_text;
    HeldVector<Entry> m_table; ///< Open addressing, for little memory; 0 or a power of two slots.
    ssize_t m_count = 0;
    const char* m_furthest = nullptr; ///< Behind the last bracket in the text that is recorded.
    SubString m_withoutCommentEnd;
    HeldVector<const char*> m_open; ///< Of the scan in progress: behind each open nested bracket.
};

/// The cache of the text that is being expanded, or null.
BracketCache* CurrentBracketCache();

/// Advances `s`, which begins right behind a bracket of kind `open`, to behind the bracket of kind
/// `close` that closes it, and sets `found`. False, with `s` at its end, when there is none. Only
/// brackets of these two kinds count; those in strings and comments never do.
///
/// @param cache  Consulted and filled when `s` lies in its text; may be null.
/// @throws LexScannerException  There is a lexical error before the closing bracket.
TLEXPANDER_API bool SkipToMatchingBracket(SubString& s, EToken open, EToken close,
                                          MatchingBracket& found, BracketCache* cache);

} // namespace telv
