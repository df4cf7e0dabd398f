// SPDX-License-Identifier: MIT
// What a file was when it was read. Its number alone does not tell: the system gives the number of
// a file that was removed to the next one.
#pragma once

#include "Files.h"
#include <ctime>

namespace telv::tool
{

/// Device, inode, size and times of a file.
class FileStamp
{
public:
    /// To be made before the file is read.
    explicit FileStamp(const struct stat& status);

    const FileIdentity& Identity() const { return m_identity; }
    /// Whether the file, which has the same identity, has the same size and the same text's time.
    bool HasSameText(const struct stat& status) const;
    /// Whether nothing at all has happened to it: it is the file that was read, under whatever
    /// name.
    bool IsSettled(const struct stat& status) const;

private:
    FileIdentity m_identity;
    off_t m_size;
    timespec m_modified;
    timespec m_changed;
    bool m_tellsChanges; ///< The last change was long enough before: the next has another time.
};

} // namespace telv::tool
