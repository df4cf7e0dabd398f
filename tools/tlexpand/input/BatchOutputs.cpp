// SPDX-License-Identifier: MIT
// A walk through the texts, each read once, with the search of FileImportHandler. It finds what is
// named in them before anything is expanded; a name that a text makes up is looked at when it is
// imported.
#include "input/BatchOutputs.h"
#include "input/NamedImports.h"
#include <fcntl.h>
#include <filesystem>
#include <set>

namespace telv::tool
{

namespace
{

namespace fs = std::filesystem;

using Strings = std::vector<std::string>;

constexpr int s_mostLinks = 40;

std::string In(const std::string& directory, const std::string& name)
{
    return name.starts_with('/') ? name : JoinPath(directory, name);
}

class ImportWalk
{
public:
    ImportWalk(const ExpandOptions& options, const std::vector<BatchJob>& jobs)
        : m_options(options), m_outputs(jobs)
    {
    }

    /// Adds to `found` what is wrong with the imports of a job.
    void Visit(const BatchJob& job, Strings& found);

private:
    const NamedImports& ImportsOf(const std::string& path);
    std::string WithDollarMacros(std::string name) const;
    void VisitImports(const NamedImports& imports, const std::string& directory);
    void VisitFile(const std::string& path);
    bool IsReplaced(const std::string& path);

    const ExpandOptions& m_options;
    BatchOutputs m_outputs;
    std::map<std::string, NamedImports> m_imports;
    // Of the job at hand.
    const BatchJob* m_job = nullptr;
    Strings m_directories; ///< Of `@importpath`.
    std::set<std::string> m_visited;
    Strings* m_found = nullptr;
};

/// Nothing for what is no regular file: a pipe can be read once only.
const NamedImports& ImportWalk::ImportsOf(const std::string& path)
{
    const auto [entry, isNew] = m_imports.try_emplace(path);
    if (isNew && IsRegularFile(path))
    {
        const Descriptor file(OpenAt(StartDirectory(), path.c_str(), O_RDONLY | O_NOCTTY));
        if (!file.IsOpen())
            throw MakeFileError("read", path, errno);
        entry->second = FindNamedImports(ReadAll(file.Get(), path));
    }
    return entry->second;
}

/// With the dollar macros of the command line.
std::string ImportWalk::WithDollarMacros(std::string name) const
{
    for (const Definition& definition : m_options.m_definitions)
    {
        if (definition.m_kind != Definition::EKind::DollarMacro)
            continue;
        const std::string use = "$(" + definition.m_name + ")";
        for (size_t i = name.find(use); i != std::string::npos;
             i = name.find(use, i + definition.m_value.size()))
            name.replace(i, use.size(), definition.m_value);
    }
    return name;
}

bool ImportWalk::IsReplaced(const std::string& path)
{
    const BatchJob* const maker = m_outputs.FindMaker(path);
    if (maker == nullptr || maker == m_job)
        return false;
    m_found->push_back(m_job->m_place + DescribeReplacedImport(path, m_job->m_input, *maker));
    return true;
}

void ImportWalk::VisitImports(const NamedImports& imports, const std::string& directory)
{
    for (const std::string& name : imports.m_directories)
        m_directories.push_back(In(directory, WithDollarMacros(name)));
    for (const std::string& name : imports.m_files)
    {
        Strings places = {directory};
        places.insert(places.end(), m_directories.begin(), m_directories.end());
        places.insert(places.end(), m_options.m_importPaths.begin(), m_options.m_importPaths.end());
        for (const std::string& place : places)
        {
            const std::string path = In(place, WithDollarMacros(name));
            if (IsReplaced(path))
                break;
            if (!IsRegularFile(path))
                continue;
            VisitFile(path);
            break;
        }
    }
}

void ImportWalk::VisitFile(const std::string& path)
{
    if (m_visited.insert(path).second)
        VisitImports(ImportsOf(path), DirectoryOf(path));
}

void ImportWalk::Visit(const BatchJob& job, Strings& found)
{
    m_job = &job;
    m_found = &found;
    m_directories.clear();
    m_visited.clear();
    for (const Definition& definition : m_options.m_definitions)
    {
        if (definition.m_kind == Definition::EKind::Text)
            VisitImports(FindNamedImports(ViewOf(definition.m_value)), "");
        else if (definition.m_kind == Definition::EKind::List)
            IsReplaced(definition.m_rows.m_file);
    }
    VisitFile(job.m_input);
}

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

std::vector<std::string> FindReplacedImports(const ExpandOptions& options,
                                             const std::vector<BatchJob>& jobs)
{
    Strings found;
    ImportWalk walk(options, jobs);
    for (const BatchJob& job : jobs)
        walk.Visit(job, found);
    return found;
}

} // namespace telv::tool
