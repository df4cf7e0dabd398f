// SPDX-License-Identifier: MIT
// The texts that a run has read, in order of reading: the main file, imported files, the texts of
// the command line. Whoever has a position in one of them learns here which text it is in, on which
// line, and through which import the text was reached.
#pragma once

#include "tlUtils/StringExt.h"
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace telv::tool
{

/// Where a stretch of a text that was made from a file came from, up to the next one.
struct MadePlace
{
    ssize_t m_offset; ///< In the text.
    ssize_t m_origin; ///< In the file.
};

/// A text made from a file that is in another language: rows of data. Views both.
struct MadeFrom
{
    SubString m_file;
    const std::vector<MadePlace>* m_places; ///< Increasing; the first is the start of the text.
};

/// One text that was read. Views the text, which must neither move nor change.
///
/// Lines are those of the file that the user knows: for a made text, of the one it was made from.
class Source
{
public:
    Source(const std::string& name, SubString text, size_t index, const char* importPos)
        : m_name(name), m_text(text), m_index(index), m_importPos(importPos)
    {
    }

    const std::string& Name() const { return m_name; }
    SubString Text() const { return m_text; }
    /// Its place in the order of reading.
    size_t Index() const { return m_index; }
    /// Where the directive stands that imported it first; null when none did.
    const char* ImportPosition() const { return m_importPos; }

    /// Makes it a text that was made from a file.
    void SetMadeFrom(const MadeFrom& made)
    {
        m_made = made;
        m_linesBefore.clear();
    }
    bool IsMade() const { return m_made.m_places != nullptr; }
    /// The text that lines and offsets are counted in: of a made text, that of the file.
    SubString File() const { return IsMade() ? m_made.m_file : m_text; }
    /// The place in the file of a position in the text or at its end. Allocates nothing.
    const char* PlaceInFile(const char* pos) const;
    /// The offset in the file.
    ssize_t OffsetInFile(const char* pos) const { return PlaceInFile(pos) - File().begin(); }

    /// The line of a position in the text or at its end, counted from 1. For an error, linear and
    /// without an allocation: it may be that memory has run out. Who asks more often is answered at
    /// once.
    ssize_t Line(const char* pos) const;
    /// The line that holds `pos`, without its end (LF or CR LF), and of a long one at most `most`
    /// bytes on each side of `pos`. A part begins with a whole character.
    SubString LineAround(const char* pos, ssize_t most) const;

private:
    bool MakeLineCounts() const;

    std::string m_name;
    SubString m_text;
    size_t m_index;
    const char* m_importPos;
    MadeFrom m_made = {};
    mutable int m_linesAsked = 0;
    mutable std::vector<ssize_t> m_linesBefore; ///< For each block of bytes, once it is worth it.
};

/// Owns the sources of a run.
class Sources
{
public:
    /// @param text       Must be at an address of its own, even when it is empty.
    /// @param importPos  See `Source::ImportPosition`.
    Source& Add(const std::string& name, SubString text, const char* importPos);

    /// The source whose text holds `pos`, its end included; or null. Logarithmic.
    const Source* Find(const char* pos) const;

    size_t Count() const { return m_sources.size(); }
    const Source& operator[](size_t index) const { return *m_sources[index]; }

private:
    std::vector<std::unique_ptr<Source>> m_sources;
    std::map<const char*, Source*> m_byAddress;
};

} // namespace telv::tool
