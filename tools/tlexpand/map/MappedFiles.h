// SPDX-License-Identifier: MIT
// A map and the texts that it speaks of: finds them, reads them when they are wanted, and sees
// whether they still fit.
#pragma once

#include "map/LineTable.h"
#include "map/ReadMap.h"
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace telv::tool
{

/// A text that was read, by lines.
struct MappedText
{
    explicit MappedText(xstring text) : m_text(std::move(text)), m_lines(m_text) {}
    MappedText(const MappedText&) = delete;
    MappedText& operator=(const MappedText&) = delete;

    xstring m_text;
    LineTable m_lines;
};

class MappedFiles
{
public:
    /// Reads the map; nothing else yet.
    ///
    /// @param output  The output's name, from the working directory; empty: the one in the map.
    /// @throws FileError, MapError
    MappedFiles(const std::string& mapPath, const std::string& output);

    const OutputMap& Map() const { return m_map; }
    const std::string& MapPath() const { return m_mapPath; }
    /// Where the output is, from the working directory; empty when nobody named it.
    const std::string& OutputPath() const { return m_outputPath; }
    /// The output is at `path`, wherever the map says; to be said before it is read.
    void SetOutputPath(const std::string& path) { m_outputPath = path; }
    /// Where a source is, from the working directory; "<stdin>" and the like as they are.
    std::string SourcePath(size_t source) const;

    /// The output, which has the size that the map says, and the sum if the map has one.
    ///
    /// @throws FileError
    /// @throws MapError  It does not fit.
    const MappedText& Output();
    /// A source, which is long enough for what the map says about it, and from which what was
    /// copied is as it is in the output; null for one that is no file.
    ///
    /// @throws FileError
    /// @throws MapError  It does not fit.
    const MappedText* SourceText(size_t source);

private:
    std::string PathFromHere(const std::string& name) const;
    void CheckCopies(size_t source, SubString text);

    std::string m_mapPath;
    OutputMap m_map;
    std::string m_base; ///< The directory that names in the map are relative to, from here.
    std::string m_outputPath;
    std::unique_ptr<MappedText> m_output;
    std::vector<std::unique_ptr<MappedText>> m_sources;
};

/// Whether a name of a source is that of a file: not "<stdin>", "<command line>", ...
bool IsFileName(const std::string& source);

/// The whole file at `path`, from the working directory.
///
/// @throws FileError
xstring ReadWholeFile(const std::string& path);

} // namespace telv::tool
