// SPDX-License-Identifier: MIT
// The outputs of a run over many files, by where they lie or will lie.
#pragma once

#include "Files.h"
#include "input/FileList.h"
#include <map>
#include <string>
#include <vector>

namespace telv::tool
{

/// Tells files apart, those too that are still to be made.
class FileNames
{
public:
    static std::string Key(const FileIdentity& file);

    /// The same text for all names of a file, as long as none is made or replaced.
    std::string Key(const std::string& path);
    /// The same text for all ways to a name in a directory, whatever has that name, unless that is
    /// a symbolic link: then for all ways to where it leads.
    std::string Place(const std::string& path);

private:
    const std::string& RealDirectory(const std::string& path);

    std::string m_start = AbsolutePath("."); ///< Python code may leave it.
    std::map<std::string, std::string> m_directories;
};

/// Finds whose output a file is, before and after that has been written.
class BatchOutputs
{
public:
    /// The jobs are borrowed and must stay where they are.
    explicit BatchOutputs(const std::vector<BatchJob>& jobs);

    /// The job that makes the file at `path`, or null.
    const BatchJob* FindMaker(const std::string& path);

private:
    FileNames m_names;
    std::map<std::string, const BatchJob*> m_makers; ///< By place, and by file where there is one.
};

/// Why `import`, which `reader` reads, can't be the output of `maker`.
std::string DescribeReplacedImport(const std::string& import, const std::string& reader,
                                   const BatchJob& maker);

} // namespace telv::tool
