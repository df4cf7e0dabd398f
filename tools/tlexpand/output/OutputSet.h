// SPDX-License-Identifier: MIT
// All outputs of a run: they take their places together, or none does.
#pragma once

#include "output/OutputFile.h"
#include <deque>
#include <vector>

namespace telv::tool
{

class OutputSet
{
public:
    /// Adds an output and finds out where it goes; null for "-", standard output, which is always
    /// there. The pointer stays valid.
    ///
    /// @throws UsageError  It is the same regular file as another output.
    /// @throws FileError   See OutputFile.
    OutputFile* Add(const std::string& path);

    /// @throws UsageError  An output other than `allowed` (may be null) is the file `identity`,
    ///     which the run has read.
    void RefuseInput(const FileIdentity& identity, const OutputFile* allowed) const;

    /// The same for what is at `path`, if anything is; no output may be it.
    void RefuseInput(const std::string& path) const;

    /// @throws UsageError  An output is the file `path`, existing or to be made, which the outputs
    ///     depend on.
    void RefuseDependency(const std::string& path) const;

    /// @throws UsageError  Standard output or standard error is the same regular file as an output:
    ///     what is printed or reported would be lost.
    void RefuseStandardStreams() const;

    /// Whether an output is the file `identity`.
    bool Holds(const FileIdentity& identity) const;

    /// What is to be written to `output`; null is standard output.
    void SetContent(const OutputFile* output, Content content);

    /// Makes Commit leave the files alone whose bytes would be the same.
    void KeepUnchanged() { m_keepsUnchanged = true; }

    /// Writes everything; then renames everything. After a FileError every output is what it was
    /// before, where the file system can exchange two files; elsewhere each is the earlier one or
    /// the new one.
    void Commit();

private:
    struct Output
    {
        explicit Output(const std::string& path) : m_file(path) {}

        OutputFile m_file;
        Content m_content;
    };

    void WriteAllOf(bool direct);
    void RenameAll();

    std::deque<Output> m_outputs;
    Content m_standardOutput;
    bool m_keepsUnchanged = false;
};

} // namespace telv::tool
