// SPDX-License-Identifier: MIT
// A directory of its own for the files that one test lets be written.
#pragma once

#include <filesystem>
#include <string>

namespace telv::test
{

/// An empty directory with an unforeseeable name; it goes with everything in it when this dies.
class TempDir
{
public:
    /// @throws std::runtime_error  No directory could be made.
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// The path of `name` inside the directory.
    std::string Path(const std::string& name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

} // namespace telv::test
