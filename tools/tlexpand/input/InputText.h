// SPDX-License-Identifier: MIT
// The text of an input. Small files and pipes are read; a large file is mapped, so that its bytes
// are neither copied nor cleared for.
//
// A file that is mapped can be changed by others while it is worked on. One that becomes shorter
// ends the run with status 2 when the missing part is touched, but the page in which it ends now is
// read as zeros; that one, and one that changes otherwise, has to be asked for by `FindChange`
// before anything is made of its text, an error of it included.
#pragma once

#include "Files.h"
#include <optional>

namespace telv::tool
{

/// Owns a text, which keeps its address until this object is destroyed.
class InputText
{
public:
    InputText() = default;
    explicit InputText(xstring text);
    ~InputText();
    InputText(InputText&& other) noexcept;
    InputText& operator=(InputText&& other) noexcept;

    /// All that the descriptor gives; `path` names it in errors. The descriptor may be closed
    /// afterwards.
    ///
    /// @throws FileError
    static InputText Read(int fd, const std::string& path);
    /// The same where the status of the regular file is known.
    static InputText Read(int fd, const std::string& path, const struct stat& status);

    /// Never empty at null: an empty text has an address of its own.
    SubString Text() const { return m_text; }

    /// What has happened to the file since it was mapped, as messages say it, wherever it is by
    /// now; null: nothing.
    const char* FindChange() const;

private:
    bool Map(int fd, const std::string& path, const struct stat& status);

    SubString m_text;
    xstring m_read;                      ///< Holds the text unless it is mapped.
    std::optional<struct stat> m_mapped; ///< The file as it was.
    Descriptor m_file;                   ///< It, when it is mapped.
};

} // namespace telv::tool
