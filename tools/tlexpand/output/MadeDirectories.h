// SPDX-License-Identifier: MIT
// Directories that a run makes for its outputs, before it knows which of them there will be: those
// that stay empty go with the run. One that was there before stays, empty or not.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace telv::tool
{

class MadeDirectories
{
public:
    MadeDirectories() = default;
    /// Removes those made that are empty, the innermost first. What stands in the way stays.
    ~MadeDirectories();
    MadeDirectories(const MadeDirectories&) = delete;
    MadeDirectories& operator=(const MadeDirectories&) = delete;

    /// Makes the directory in which `file` is to lie, and those above it, where there are none.
    ///
    /// @throws FileError
    void MakeFor(const std::string& file);

private:
    /// 0 when it is there then, or an `errno`.
    int Make(const std::filesystem::path& directory);

    std::set<std::string> m_known;             ///< Looked at or made before.
    std::vector<std::filesystem::path> m_made; ///< Outer ones first, from the root on.
};

} // namespace telv::tool
