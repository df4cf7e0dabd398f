// SPDX-License-Identifier: MIT
// The expansion of the main file on its way to the output, less what its imports leave in it.
//
// The library leaves `@import "NAME"` where it stands. Which characters those are is said by the
// import handler while the directives run; nothing is searched for, so text that only looks like an
// import stays. A line on which nothing but blanks is left goes whole, and so does the empty line
// of an `@importpath`. For this a line is held back as long as it is blank, and so is what came
// last; everything else may be in the file already.
#pragma once

#include "output/OutputFile.h"
#include "tlUtils/xostream.h"
#include <vector>

namespace telv::tool
{

/// Characters [m_begin, m_end) of an output.
struct OutputRange
{
    ssize_t m_begin;
    ssize_t m_end;
};

/// Takes the text; the stream behind an xostream.
class TextStream final : public IndentingStream
{
public:
    /// @param file  Gets the text as it comes. Null, or what is written directly: all is kept until
    ///              `Rest`.
    /// @param whole  Gets all that comes, what is removed included; borrowed. Null: nobody wants
    /// it.
    explicit TextStream(OutputFile* file, xstring* whole = nullptr);

    /// What came so far, a byte order mark, stands before the first line.
    void StartText();
    /// An `@import` that will be written as it stands in the source, at [begin, end), goes: these
    /// characters and what is put between them. Calls are in the order of the text.
    void RemoveSource(const char* begin, const char* end);
    /// An `@import` that has just been written, as the last `length` characters, goes. False, with
    /// nothing done, when these are more than are kept at hand (16 KiB).
    bool RemoveLast(ssize_t length);
    /// An `@importpath` stood here: the line goes if it stays blank.
    void RemoveBlankLine() { BeginRemoval(); }

    /// The text is complete.
    void Finish();
    /// What the file has not got yet.
    SubString Rest() const { return Held(); }
    /// What was removed of all that came: sorted, disjoint, not empty.
    const std::vector<OutputRange>& Removed() const { return m_removed; }

    void Flush() override {}

private:
    struct SourceRange
    {
        const char* m_begin;
        const char* m_end;
    };

    void Write(const char* text, ssize_t length) override;
    char LastCharacter() const override { return Held().empty() ? '\n' : Room()[-1]; }

    SubString Held() const { return SubString(m_buffer.begin(), Room()); }
    /// Number of the characters that came.
    ssize_t Position() const { return m_sentAndRemoved + Held().size(); }
    SubString PassSource(SubString text, const SourceRange& source);
    void Take(SubString text);
    SubString PassBlanks(SubString text);
    void Append(SubString text);
    void Copy(SubString text);
    bool CanSend(ssize_t length) const;
    void Send(SubString text);
    void SendHeld();
    void OfferBuffer();
    void BeginRemoval();
    void AddRemoved(ssize_t begin);
    void RemoveLine();

    OutputFile* m_file;          ///< Null: all is kept.
    xstring* m_whole;            ///< Or null.
    xstring m_buffer;            ///< Room for what is held.
    ssize_t m_textBegin = 0;     ///< Of the first line, in what is held.
    bool m_beginsInText = false; ///< What is held begins in a line that is not blank before.
    bool m_isLineToGo = false;   ///< The last line has lost something and is blank without it.
    ssize_t m_lineBegin = 0;     ///< Of that line, in what is held.
    std::vector<SourceRange> m_sources; ///< Still to be removed, and earlier ones.
    size_t m_nextSource = 0;
    ssize_t m_removalBegin = -1;  ///< Of the removal in progress; -1 when there is none.
    ssize_t m_sentAndRemoved = 0; ///< Characters that came and are not held.
    std::vector<OutputRange> m_removed;
};

} // namespace telv::tool
