// SPDX-License-Identifier: MIT
// The text of an input. Small files and pipes are read; a large file is mapped, so that its bytes
// are neither copied nor cleared for.
//
// A file that is mapped can be changed by others while it is worked on. One that becomes shorter
// ends the run with status 2 when the missing part is touched; one that changes otherwise has to be
// asked for by `HasChanged` before anything is made of its text.
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

    /// Whether the file at `path`, if it is still the one that was mapped, has been written to.
    bool HasChanged(const std::string& path) const;

private:
    bool Map(int fd, const std::string& path, const struct stat& status);

    SubString m_text;
    xstring m_read;                      ///< Holds the text unless it is mapped.
    std::optional<struct stat> m_mapped; ///< The file as it was.
};

} // namespace telv::tool
