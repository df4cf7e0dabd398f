// SPDX-License-Identifier: MIT
// Files by device and inode where there are any, else by the way to them.
#include "input/BatchOutputs.h"
#include <filesystem>

namespace telv::tool
{

namespace
{

namespace fs = std::filesystem;

constexpr int s_mostLinks = 40; // as the system has it

} // namespace

std::string FileNames::Key(const FileIdentity& file)
{
    return std::to_string(file.m_device) + " " + std::to_string(file.m_inode);
}

std::string FileNames::Key(const std::string& path)
{
    if (const auto status = StatusOf(path); status && S_ISREG(status->st_mode))
        return Key(FileIdentity(*status));
    return Place(path);
}

const std::string& FileNames::RealDirectory(const std::string& path)
{
    const auto [entry, isNew] = m_directories.try_emplace(path);
    if (isNew)
        entry->second = fs::weakly_canonical(fs::path(m_start) / path).string();
    return entry->second;
}

/// Links are followed as for an output: also one whose target is still to be made.
std::string FileNames::Place(const std::string& path)
{
    fs::path name(path);
    fs::path place;
    for (int links = 0; links <= s_mostLinks; ++links)
    {
        const fs::path directory = RealDirectory(name.parent_path().string());
        place = directory / name.filename();
        std::error_code isNoLink;
        const fs::path target = fs::read_symlink(place, isNoLink);
        if (isNoLink)
            break;
        name = directory / target;
    }
    return place.string();
}

BatchOutputs::BatchOutputs(const std::vector<BatchJob>& jobs)
{
    for (const BatchJob& job : jobs)
    {
        m_makers.emplace(m_names.Place(job.m_output), &job);
        m_makers.emplace(m_names.Key(job.m_output), &job);
    }
}

const BatchJob* BatchOutputs::FindMaker(const std::string& path)
{
    auto maker = m_makers.find(m_names.Place(path));
    if (maker == m_makers.end())
        maker = m_makers.find(m_names.Key(path));
    return maker == m_makers.end() ? nullptr : maker->second;
}

std::string DescribeReplacedImport(const std::string& import, const std::string& reader,
                                   const BatchJob& maker)
{
    return "'" + import + "', which '" + reader + "' reads, is the output of '" + maker.m_input +
           "': expand that in a run of its own, before";
}

} // namespace telv::tool
