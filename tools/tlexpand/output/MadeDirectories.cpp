// SPDX-License-Identifier: MIT
// Only a directory that is empty can be removed by its name, so nothing has to be asked before:
// what somebody has put there, this run or another, keeps its directory.
#include "output/MadeDirectories.h"
#include "Files.h"
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace telv::tool
{

namespace fs = std::filesystem;

MadeDirectories::~MadeDirectories()
{
    for (auto made = m_made.rbegin(); made != m_made.rend(); ++made)
        rmdir(made->c_str());
}

void MadeDirectories::MakeFor(const std::string& file)
{
    const fs::path directory = fs::path(file).parent_path();
    if (directory.empty() || !m_known.insert(directory.string()).second)
        return;
    fs::path place;
    for (const fs::path& part : directory)
        if (const int error = Make(place /= part))
            throw MakeFileError("make", directory.string(), error);
}

int MadeDirectories::Make(const fs::path& directory)
{
    if (mkdir(directory.c_str(), 0777) == 0)
    {
        m_made.push_back(fs::absolute(directory));
        return 0;
    }
    const int error = errno;
    std::error_code notThere;
    if (fs::is_directory(directory, notThere))
        return 0;
    return error == EEXIST ? ENOTDIR : error;
}

} // namespace telv::tool
