// SPDX-License-Identifier: MIT
// What a file was when it was read. Its number alone does not tell: the system gives the number of
// a file that was removed to the next one.
#pragma once

#include "Files.h"

namespace telv::tool
{

/// Device, inode, size and times of a file.
class FileStamp
{
public:
    /// To be made before the file is read.
    explicit FileStamp(const struct stat& status);

    FileIdentity Identity() const { return FileIdentity(m_status); }
    /// Whether the file, which has the same identity, has the same size and the same text's time.
    bool HasSameText(const struct stat& status) const
    {
        return tool::HasSameText(m_status, status);
    }
    /// Whether nothing at all has happened to it: it is the file that was read, under whatever
    /// name.
    bool IsSettled(const struct stat& status) const;

private:
    struct stat m_status;
    bool m_tellsChanges; ///< The last change was long enough before: the next has another time.
};

} // namespace telv::tool
