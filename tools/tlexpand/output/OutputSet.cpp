// SPDX-License-Identifier: MIT
// Temporary files first, since they can be taken back; then what is written directly; then the
// renames, which no signal interrupts.
#include "output/OutputSet.h"
#include "options/Options.h"
#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

namespace telv::tool
{

OutputFile* OutputSet::Add(const std::string& path)
{
    if (path == s_standardStream)
        return nullptr;
    OutputFile& added = m_outputs.emplace_back(path).m_file;
    for (const Output& output : m_outputs)
        if (&output.m_file != &added && output.m_file.IsSameFile(added))
            throw UsageError("'" + output.m_file.Path() + "' and '" + path +
                             "' are the same output");
    return &added;
}

void OutputSet::RefuseInput(const FileIdentity& identity, const OutputFile* allowed) const
{
    for (const Output& output : m_outputs)
        if (&output.m_file != allowed && output.m_file.IsFile(identity))
            throw UsageError("the output '" + output.m_file.Path() + "' is a file that is read");
}

void OutputSet::RefuseInput(const std::string& path) const
{
    const Descriptor file(OpenAt(StartDirectory(), path.c_str(), O_PATH));
    if (const std::optional<FileIdentity> identity = RegularFileAt(file.Get()))
        RefuseInput(*identity, nullptr);
}

void OutputSet::RefuseDependency(const std::string& path) const
{
    std::optional<OutputFile> file;
    try
    {
        file.emplace(path);
    }
    catch (const FileError&)
    {
        return; // Nothing that can be written, so no output.
    }
    for (const Output& output : m_outputs)
        if (output.m_file.IsSameFile(*file))
            throw UsageError("the output '" + output.m_file.Path() +
                             "' depends on itself: --depend " + path);
}

void OutputSet::RefuseStandardStreams() const
{
    for (const int fd : {STDOUT_FILENO, STDERR_FILENO})
    {
        const std::optional<FileIdentity> identity = RegularFileAt(fd);
        for (const Output& output : m_outputs)
            if (identity && output.m_file.IsFile(*identity))
                throw UsageError(std::string(NameOfStream(fd)) + " and '" + output.m_file.Path() +
                                 "' are the same output");
    }
}

bool OutputSet::Holds(const FileIdentity& identity) const
{
    return std::ranges::any_of(m_outputs, [&](const Output& output)
                               { return output.m_file.IsFile(identity); });
}

void OutputSet::SetContent(const OutputFile* file, Content content)
{
    const auto output =
        std::ranges::find(m_outputs, file, [](const Output& o) { return &o.m_file; });
    (output != m_outputs.end() ? output->m_content : m_standardOutput) = std::move(content);
}

void OutputSet::WriteAllOf(bool direct)
{
    for (Output& output : m_outputs)
        if (output.m_file.IsDirect() == direct)
            output.m_file.Write(output.m_content);
}

void OutputSet::Commit()
{
    WriteAllOf(/*direct=*/false);
    WriteAllOf(/*direct=*/true);
    for (Output& output : m_outputs)
        if (m_keepsUnchanged)
            output.m_file.LeaveIfUnchanged();
    if (m_standardOutput)
        WriteStandardOutput(m_standardOutput);
    const SignalBlocker blocker;
    RenameAll();
}

/// The earlier files stay at hand until the last output has its place; for a single one there is
/// nothing to keep in step.
void OutputSet::RenameAll()
{
    if (m_outputs.size() == 1)
        return m_outputs.front().m_file.Rename();
    try
    {
        for (Output& output : m_outputs)
            output.m_file.Exchange();
    }
    catch (...)
    {
        for (Output& output : m_outputs)
            output.m_file.UndoExchange();
        throw;
    }
    for (Output& output : m_outputs)
        output.m_file.Settle();
}

} // namespace telv::tool
