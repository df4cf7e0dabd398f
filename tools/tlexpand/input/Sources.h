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

/// One text that was read. Views the text, which must neither move nor change.
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

    /// The line of a position in the text or at its end, counted from 1. Linear; allocates
    /// nothing.
    ssize_t Line(const char* pos) const;
    /// The line that holds `pos`, without its end (LF or CR LF).
    SubString LineText(const char* pos) const;

private:
    std::string m_name;
    SubString m_text;
    size_t m_index;
    const char* m_importPos;
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
