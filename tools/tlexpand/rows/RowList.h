// SPDX-License-Identifier: MIT
// The rows of a CSV or JSON file as the text of a macro, `[(1,one),(2,two)]`, with the way back
// from that text to the file.
#pragma once

#include "Files.h"
#include "Sources.h"
#include <optional>
#include <vector>

namespace telv::tool
{

/// What `--list` asks for.
struct RowListOption
{
    std::string m_file;
    bool m_isJson = false;
    std::vector<std::string> m_columns; ///< In this order; empty: all, in the file's order.
};

struct RowList
{
    xstring m_fileText;
    xstring m_text;
    std::vector<MadePlace> m_places; ///< Of the values, increasing; the first is the start of both.
    std::optional<FileIdentity> m_identity;
};

/// What is wrong with the data. Ends the run with status 2.
class RowError : public std::runtime_error
{
public:
    /// @param offset  Of the place in the file.
    RowError(const std::string& message, ssize_t offset)
        : std::runtime_error(message), m_offset(offset)
    {
    }

    ssize_t m_offset;
};

/// Reads the file that `option` names, which must be a regular one, into `list`.
///
/// @throws FileError  It can't be read, or changes while it is read.
/// @throws RowError   Its data can't be made a list; `list.m_fileText` is the file.
void ReadRowList(const RowListOption& option, RowList& list);

} // namespace telv::tool
