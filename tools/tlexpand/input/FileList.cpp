// SPDX-License-Identifier: MIT
// A list has one input a line, and behind a tab the output, when that is not in the --out-dir.
// Everything is looked at before anything is expanded: a mistake in line 9,000 costs nothing.
#include "input/FileList.h"
#include "Files.h"
#include "Utf8.h"
#include "input/BatchOutputs.h"
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <optional>
#include <unistd.h>

namespace telv::tool
{

namespace
{

namespace fs = std::filesystem;

constexpr size_t s_mostMessages = 20;

/// The output of an input below the --out-dir: the same place when the input lies below the
/// directory of the start, else its name; without the suffix ".tl".
std::string OutputIn(const std::string& directory, const std::string& input)
{
    fs::path place = fs::path(input).lexically_normal();
    if (place.is_absolute() || *place.begin() == "..")
        place = place.filename();
    if (place.extension() == ".tl")
        place.replace_extension();
    return (fs::path(directory) / place).string();
}

BatchJob MakeJob(const ExpandOptions& options, const std::string& input, const std::string& output,
                 const std::string& place)
{
    if (input.find('\0') != std::string::npos || output.find('\0') != std::string::npos)
        throw UsageError(place + "a name with a NUL byte");
    if (input == s_standardStream)
        throw UsageError(place + "standard input can't be one of many files");
    if (output == s_standardStream)
        throw UsageError(place + "standard output can't be one of many outputs");
    if (!output.empty())
        return {input, output, place, /*outputIsNamed=*/true};
    if (!options.m_outDirectory)
        throw UsageError(place + "no output for '" + input +
                         "': give --out-dir, or name the output behind a tab in the list");
    return {input, OutputIn(*options.m_outDirectory, input), place, /*outputIsNamed=*/false};
}

/// Adds what the list at `path` names; which file that is.
std::optional<FileIdentity> AddList(const ExpandOptions& options, const std::string& path,
                                    std::vector<BatchJob>& jobs)
{
    const NamedInput list(path);
    const xstring whole = ReadAll(list.Fd(), list.Name());
    const std::string text = ToStdString(WithoutByteOrderMark(whole));
    size_t line = 0;
    for (size_t begin = 0; begin < text.size();)
    {
        const size_t end = std::min(text.find('\n', begin), text.size());
        std::string entry = text.substr(begin, end - begin);
        begin = end + 1;
        ++line;
        if (!entry.empty() && entry.back() == '\r')
            entry.pop_back();
        if (entry.empty() || entry[0] == '#')
            continue;
        const std::string place = list.Name() + "(" + std::to_string(line) + "): ";
        const size_t tab = entry.find('\t');
        const std::string output = tab == std::string::npos ? "" : entry.substr(tab + 1);
        if (output.find('\t') != std::string::npos)
            throw UsageError(place + "a second tab: a line has an input, and behind a tab its "
                                     "output, and no more");
        jobs.push_back(MakeJob(options, entry.substr(0, tab), output, place));
    }
    return RegularFileAt(list.Fd());
}

/// Messages of many files, each a line as if it were the only one, that end with how many more
/// there are.
class Messages
{
public:
    void Add(const std::string& message)
    {
        if (m_count++ < s_mostMessages)
            m_text += (m_text.empty() ? "" : s_nextLine) + message;
    }
    bool Empty() const { return m_count == 0; }
    std::string Text() const
    {
        return m_count <= s_mostMessages ? m_text
                                         : m_text + s_nextLine + "... and " +
                                               std::to_string(m_count - s_mostMessages) + " more";
    }

private:
    static constexpr const char* s_nextLine = "\ntlexpand: ";

    std::string m_text;
    size_t m_count = 0;
};

/// Why the file can't be an input, as an `errno`; 0 when it can.
int FindReadError(const std::string& path)
{
    const auto status = StatusOf(path);
    if (!status || faccessat(StartDirectory(), path.c_str(), R_OK, AT_EACCESS) != 0)
        return errno;
    return S_ISDIR(status->st_mode) ? EISDIR : 0;
}

void CheckInputs(const std::vector<BatchJob>& jobs)
{
    Messages missing;
    for (const BatchJob& job : jobs)
        if (const int error = FindReadError(job.m_input))
            missing.Add(job.m_place + MakeFileError("read", job.m_input, error).what());
    if (!missing.Empty())
        throw FileError(missing.Text());
}

void CheckOutputs(const std::vector<BatchJob>& jobs, const std::optional<FileIdentity>& list)
{
    Messages wrong;
    FileNames names;
    std::map<std::string, const BatchJob*> outputs;
    for (const BatchJob& job : jobs)
    {
        const auto [entry, isNew] = outputs.try_emplace(names.Key(job.m_output), &job);
        if (!isNew)
            wrong.Add(job.m_place + "'" + entry->second->m_input + "' and '" + job.m_input +
                      "' have the same output '" + job.m_output + "'");
    }
    for (const BatchJob& job : jobs)
    {
        const auto entry = outputs.find(names.Key(job.m_input));
        if (entry == outputs.end())
            continue;
        if (entry->second != &job)
            wrong.Add(job.m_place + "'" + job.m_input + "' is the output of '" +
                      entry->second->m_input + "'");
        else if (!job.m_outputIsNamed)
            wrong.Add(job.m_place + "'" + job.m_input +
                      "' would be overwritten by its own output: give another --out-dir");
    }
    if (const auto entry = list ? outputs.find(names.Key(*list)) : outputs.end();
        entry != outputs.end())
        wrong.Add(entry->second->m_place + "the output '" + entry->second->m_output + "' of '" +
                  entry->second->m_input + "' is the list itself");
    if (!wrong.Empty())
        throw UsageError(wrong.Text());
}

/// An output takes the place of no directory, and is none that another one needs.
void CheckOutputPlaces(const std::vector<BatchJob>& jobs)
{
    Messages directories;
    for (const BatchJob& job : jobs)
    {
        const auto status = StatusOf(job.m_output);
        if (job.m_output.ends_with('/') || (status && S_ISDIR(status->st_mode)))
            directories.Add(job.m_place + MakeFileError("write", job.m_output, EISDIR).what());
    }
    if (!directories.Empty())
        throw FileError(directories.Text());
    Messages wrong;
    FileNames names;
    std::map<std::string, const BatchJob*> outputs;
    for (const BatchJob& job : jobs)
        outputs.emplace(names.Place(job.m_output), &job);
    for (const auto& [place, job] : outputs)
        for (fs::path above = fs::path(place).parent_path(); above.has_relative_path();
             above = above.parent_path())
            if (const auto entry = outputs.find(above.string()); entry != outputs.end())
                wrong.Add(job->m_place + "the output '" + job->m_output + "' of '" + job->m_input +
                          "' lies in '" + entry->second->m_output + "', the output of '" +
                          entry->second->m_input + "'");
    if (!wrong.Empty())
        throw UsageError(wrong.Text());
}

/// What the texts import is looked at when they do.
void CheckData(const ExpandOptions& options, const std::vector<BatchJob>& jobs)
{
    BatchOutputs outputs(jobs);
    for (const Definition& definition : options.m_definitions)
        if (definition.m_kind == Definition::EKind::List)
            if (const BatchJob* const maker = outputs.FindMaker(definition.m_rows.m_file))
                throw UsageError(maker->m_place + DescribeReplacedImport(definition.m_rows.m_file,
                                                                         "--list", *maker));
}

} // namespace

std::vector<BatchJob> MakeBatch(const ExpandOptions& options)
{
    std::vector<BatchJob> jobs;
    for (const std::string& file : options.m_files)
        jobs.push_back(MakeJob(options, file, "", ""));
    std::optional<FileIdentity> list;
    if (options.m_batch)
        list = AddList(options, *options.m_batch, jobs);
    CheckInputs(jobs);
    CheckOutputs(jobs, list);
    CheckOutputPlaces(jobs);
    CheckData(options, jobs);
    return jobs;
}

} // namespace telv::tool
