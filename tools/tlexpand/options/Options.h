// SPDX-License-Identifier: MIT
// The command line, read and checked.
#pragma once

#include "rows/RowList.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace telv::tool
{

/// A command line that makes no sense; the text says why. Ends the run with status 2.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// When diagnostics are coloured; `Auto`: on a terminal.
enum class Colour
{
    Auto,
    Always,
    Never
};

/// A `-D`, an `-E` or a `--list`.
struct Definition
{
    enum class EKind
    {
        DollarMacro, ///< `m_name` with the value `m_value`.
        Text,        ///< `m_value` is to be expanded.
        List         ///< `m_name` is the macro of the rows `m_rows`.
    };

    EKind m_kind = EKind::DollarMacro;
    std::string m_name;
    std::string m_value;
    RowListOption m_rows = {};
};

/// What all commands that read texts understand.
struct CommonOptions
{
    std::string m_file; ///< "-" is standard input. The first one, when there are more.
    std::vector<std::string> m_files; ///< All of them.
    std::vector<std::string> m_importPaths;
    std::vector<Definition> m_definitions; ///< In the order of the command line.
    Colour m_colour = Colour::Auto;
    bool m_python = true;
    std::vector<std::string> m_pythonPath; ///< Absolute.
    ExpansionLimits m_limits;
    bool m_help = false;
    bool m_version = false;
};

/// The name that stands for standard input or output.
inline const std::string s_standardStream = "-";

/// How a line directive looks: "%l" stands for the line, "%f" for the name of the file with `"` and
/// `\` behind a backslash, "%%" for "%".
inline const std::string s_lineFormat = "#line %l \"%f\"";

/// At most one of the outputs is standard output.
struct ExpandOptions : CommonOptions
{
    std::string m_output = s_standardStream;
    std::optional<std::string> m_map;
    bool m_chains = false;                   ///< The map has the way to each piece.
    bool m_mapRuns = false;                  ///< Join what continues each other.
    bool m_verifyMap = false;                ///< Check the laws of the map.
    std::optional<std::string> m_lineFormat; ///< Of line directives; without it there are none.
    std::optional<std::string> m_sourceMap;
    bool m_sourceMapContents = false;
    bool m_isExplained = false; ///< The output is a page that shows text and sources.
    /// The page is made for this map, without an expansion; the file, if any, is then the output.
    std::optional<std::string> m_fromMap;
    std::optional<std::string> m_depfile;
    std::optional<std::string> m_trace;
    std::optional<std::string> m_depfileTarget; ///< Else the output.
    std::vector<std::string> m_dependencies;    ///< Besides the files that the run reads.
    ssize_t m_srcIndent = 0;
    ssize_t m_dstIndent = 0;
    bool m_keepImports = false;
    bool m_lenient = false; ///< What is no token is text.
    bool m_keepUnchanged = false;
    std::optional<std::string> m_batch;        ///< A list of files.
    std::optional<std::string> m_outDirectory; ///< For the outputs of many files.
    ssize_t m_jobs = 1;                        ///< Processes that expand them.
    bool m_keepGoing = false;                  ///< After a file that failed.
    bool m_check = false; ///< Compare with the output that is there; write nothing.
    unsigned m_warnings = WARN_DROPPED_TEXT; ///< A set of EWarning.
    bool m_warningsAreErrors = false;

    bool UsesStandardOutput() const
    {
        return m_check || m_output == s_standardStream || m_map == s_standardStream ||
               m_sourceMap == s_standardStream || m_depfile == s_standardStream ||
               m_trace == s_standardStream;
    }
    /// Whether what is written is the expansion itself, as it comes.
    bool IsTextPassedOn() const { return !m_lineFormat && !m_check && !m_isExplained; }
    /// Whether it must be known through what each piece of output came.
    bool NeedsChains() const { return m_chains || m_isExplained; }
    /// Whether it must be known where each byte of output came from.
    bool NeedsPieces() const
    {
        return m_map || m_sourceMap || m_lineFormat || m_verifyMap || m_isExplained;
    }
};

struct ProjectOptions : CommonOptions
{
    std::vector<std::string> m_settings;
    std::vector<std::string> m_pathSettings;
};

/// Reads the arguments of an expansion; `argv[0]` is skipped.
///
/// @throws UsageError
ExpandOptions ParseExpandOptions(int argc, char** argv);
/// The same for the command that explains an expansion; `argv[0]` is its name.
ExpandOptions ParseExplainOptions(int argc, char** argv);
/// The same for the project command, whose name is `argv[0]`.
ProjectOptions ParseProjectOptions(int argc, char** argv);

/// The texts of `--help`.
std::string ExpandHelp();
std::string ExplainHelp();
std::string ProjectHelp();

} // namespace telv::tool
