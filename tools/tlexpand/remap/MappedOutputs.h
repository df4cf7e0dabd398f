// SPDX-License-Identifier: MIT
// The outputs whose maps are known, by every name that a message can give them, and the way from a
// place in one of them to its source.
#pragma once

#include "Files.h"
#include "map/MappedFiles.h"
#include "remap/LineColumns.h"
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace telv::tool
{

/// A place as messages name it; lines and columns from 1, columns in bytes.
struct MessagePlace
{
    std::string m_path;
    ssize_t m_line = 0;
    ssize_t m_column = 0;
    SubString m_text; ///< The line, without its end; of the outputs, which must outlive this.
};

/// A step of a chain: where, and its sentence. Without a place the path is empty.
struct MessageNote
{
    MessagePlace m_place;
    std::string m_text;
};

/// What the place of a message came from.
struct MessageOrigin
{
    /// Whether it lies in a file; else there are only notes, and the place must stay as it is.
    bool IsInFile() const { return !m_place.m_path.empty(); }

    MessagePlace m_place;
    bool m_isCopied = false;
    std::vector<MessageNote> m_notes; ///< Of the chain, innermost first; of a long one the first.
    size_t m_moreNotes = 0;           ///< Those that were left out.
    SubString m_line;                 ///< Of the output, without its end; lives as long as that.
};

/// A place in an output, as a document gives it.
struct OutputPlace
{
    ssize_t m_line = 0;
    ssize_t m_column = 1;
    EColumnUnit m_unit = EColumnUnit::Bytes;
};

/// The stretch of a source that a stretch of an output was copied from.
struct CopiedRange
{
    MessagePlace m_first;
    MessagePlace m_end; ///< Behind it.
};

/// What a message says about what stands at its place.
struct ColumnHints
{
    std::vector<std::string> m_quoted; ///< Words, one of which is likely to stand there.
    bool m_isOfCompiler = false;       ///< If in doubt, columns are GCC's.
};

class MappedOutputs
{
public:
    /// @param report  Called with what can't be done; the message then stays as it is.
    explicit MappedOutputs(std::function<void(const std::string&)> report)
        : m_report(std::move(report))
    {
    }

    /// Adds the output of a map. What is wrong with the map is reported.
    void Add(const std::string& mapPath, const std::string& output);

    /// The last parts of the outputs' paths.
    const std::vector<std::string>& LastParts() const { return m_lastParts; }
    /// The number of the output that `path` means in the directory that messages are relative to
    /// now; nothing when it is none.
    std::optional<size_t> Find(const std::string& path);
    /// The origin of a place in the output; nothing when there is none. A line that the output does
    /// not have, a source that is no file, and an output that does not fit its map, are reported
    /// once.
    std::optional<MessageOrigin> Map(size_t output, ssize_t line, std::optional<ssize_t> column,
                                     EColumnUnit unit, const ColumnHints& hints = {});

    /// Where the characters from `first` up to `end` were copied from in one stretch; nothing when
    /// they were not, or when there are none.
    std::optional<CopiedRange> MapRange(size_t output, const OutputPlace& first,
                                        const OutputPlace& end);
    /// The column of a place, from 1, in a unit; a guess is one of bytes.
    ssize_t ColumnIn(const MessagePlace& place, EColumnUnit unit);

    /// Heeds what make and ninja say about the directory that they work in.
    void NoteDirectory(const std::string& line);

private:
    struct Output
    {
        explicit Output(const std::string& map, const std::string& name) : m_files(map, name) {}

        MappedFiles m_files;
        std::string m_absolute; ///< Its name from the root.
        bool m_isBroken = false;
        std::set<ssize_t> m_missing; ///< Lines that it does not have, and that were reported.
        std::set<size_t> m_noFiles;  ///< Sources that are no files, and that were reported.
    };

    void AddName(const std::string& name);
    std::optional<size_t> FindByName(const std::string& path) const;
    std::optional<size_t> FindAbsolute(const std::string& path);
    ssize_t ColumnOffset(SubString line, ssize_t column, EColumnUnit unit,
                         const ColumnHints& hints);
    std::optional<MessageOrigin> MapIn(Output& output, ssize_t line, std::optional<ssize_t> column,
                                       EColumnUnit unit, const ColumnHints& hints);
    std::optional<CopiedRange> MapRangeIn(MappedFiles& files, const OutputPlace& first,
                                          const OutputPlace& end);
    std::optional<MessagePlace> PlaceOf(MappedFiles& files, const SourceRange& range);
    void AddNotes(MappedFiles& files, const Origin& origin, MessageOrigin& result);

    std::function<void(const std::string&)> m_report;
    std::string m_here = ResolvedPath(".");
    std::vector<std::unique_ptr<Output>> m_outputs;
    LineColumns m_columns;                                ///< Of outputs and sources.
    std::vector<std::string> m_lastParts;                 ///< Of their paths.
    std::multimap<std::string, size_t> m_byName;          ///< By the last part of the path.
    std::map<std::string, std::optional<size_t>> m_known; ///< Answers of `FindAbsolute`.
    std::vector<std::string> m_directories;               ///< That were entered, innermost last.
};

} // namespace telv::tool
