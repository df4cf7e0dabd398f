// SPDX-License-Identifier: MIT
// A language case: a source text and, in files beside it, what expanding it must give. The files
// and their meanings are described in tests/README.md.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace telv::test
{

/// Where a case is. Nothing of it is read before it runs.
struct TestCase
{
    std::string path;      ///< "loops/empty_list": below tests/cases, without ".tl".
    std::string id;        ///< `path` with "_" for everything but letters and digits.
    std::string directory; ///< The directory of the source; the case runs in it.
    std::string name;      ///< The source's file name, with ".tl".

    /// The path of the file of this case that ends in `suffix` (".out").
    std::string File(const std::string& suffix) const;
};

/// How GoogleTest shows a case: its path.
void PrintTo(const TestCase& testCase, std::ostream* os);

/// What a case must give; absent files are absent values.
struct Expectation
{
    std::optional<std::string> out;   ///< The expansion.
    std::optional<std::string> err;   ///< The diagnostic.
    std::optional<std::string> map;   ///< The text of --map.
    std::optional<std::string> print; ///< What the source prints.
    std::optional<std::string> warn;  ///< The warnings of an expansion that succeeds.
};

/// Whether the case is a project file (`.mpfw`), whose output is the `.json` beside it.
bool IsProject(const TestCase& testCase);

/// All cases below `root` in the order of their paths. Folders named "*.d" hold files that cases
/// import, and no cases.
std::vector<TestCase> FindCases(const std::string& root);

/// Reads the files beside the case.
Expectation ReadExpectation(const TestCase& testCase);

/// The lines of the case's ".args".
std::vector<std::string> ReadArguments(const TestCase& testCase);

/// Whether the library alone, without the tool, gives the same: no arguments, no imports, no
/// Python, nothing printed.
bool RunsInLibrary(const TestCase& testCase);

/// Whether this build can run the case: those below python/ need the bridge, unless they refuse
/// Python themselves.
bool RunsInThisBuild(const TestCase& testCase);

/// What the case's files contradict themselves in, empty when they are sound: there must be
/// exactly one of ".out" and ".err", and ".map" and ".warn" go with ".out".
std::string FindContradiction(const Expectation& expectation);

/// The command that runs only this case.
std::string CommandFor(const TestCase& testCase);

} // namespace telv::test
