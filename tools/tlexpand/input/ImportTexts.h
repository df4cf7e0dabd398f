// SPDX-License-Identifier: MIT
// The texts of imported files, which runs one after the other in a process share: what many files
// import is read once.
//
// A text counts as that of a file only while the file's status says for certain that nothing has
// happened to it since it was read.
#pragma once

#include "input/FileStamp.h"
#include "input/InputText.h"
#include <map>
#include <memory>

namespace telv::tool
{

class ImportTexts
{
public:
    /// The text that was read from the file of this status, or null when it was not read or may be
    /// another one by now.
    std::shared_ptr<const InputText> Find(const struct stat& status) const;

    /// Keeps the text of a file, in place of an earlier one.
    ///
    /// @param stamp  Made before the file was read.
    void Keep(const FileStamp& stamp, std::shared_ptr<const InputText> text);

private:
    struct Entry
    {
        FileStamp m_stamp;
        std::shared_ptr<const InputText> m_text;
    };

    std::map<FileIdentity, Entry> m_entries;
};

} // namespace telv::tool
