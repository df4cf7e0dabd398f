// SPDX-License-Identifier: MIT
// The table of the options, and what each of them sets.
#include "options/Options.h"
#include "Files.h"
#include "options/OptionValues.h"
#include "options/OptionWalk.h"

namespace telv::tool
{

namespace
{

/// Values of options without a letter.
enum ELongOption
{
    OPT_FIRST = 256,
    OPT_SRC_INDENT = OPT_FIRST,
    OPT_LIST,
    OPT_DST_INDENT,
    OPT_KEEP_IMPORTS,
    OPT_LENIENT,
    OPT_KEEP_UNCHANGED,
    OPT_CHECK,
    OPT_BATCH,
    OPT_OUT_DIR,
    OPT_KEEP_GOING,
    OPT_MAP,
    OPT_MAP_RUNS,
    OPT_CHAINS,
    OPT_VERIFY_MAP,
    OPT_LINE_DIRECTIVES,
    OPT_LINE_FORMAT,
    OPT_SOURCE_MAP,
    OPT_SOURCE_MAP_CONTENTS,
    OPT_FROM_MAP,
    OPT_TRACE,
    OPT_DEPFILE,
    OPT_DEPEND,
    OPT_DEPFILE_TARGET,
    OPT_NO_PYTHON,
    OPT_PYTHON_PATH,
    OPT_WARN,
    OPT_WERROR,
    OPT_MAX_DEPTH,
    OPT_MAX_STEPS,
    OPT_MAX_OUTPUT,
    OPT_MAX_MEMORY,
    OPT_COLOUR,
    OPT_SETTING,
    OPT_PATH_SETTING
};

/// The commands whose options stand here.
enum ECommand : unsigned
{
    Expand = 1,
    Explain = 2, // takes what decides about the text, not what else is made of it
    Project = 4,
    Everywhere = Expand | Explain | Project
};

/// An option, and the commands that take it.
struct OptionRow
{
    const char* m_name;
    int m_argument; ///< As getopt_long names it.
    int m_code;     ///< Its letter, or an ELongOption.
    unsigned m_commands;
};

// clang-format off
constexpr OptionRow s_rows[] = {
    {"setting",              required_argument, OPT_SETTING,          Project},
    {"path-setting",         required_argument, OPT_PATH_SETTING,     Project},
    {"output",               required_argument, 'o',                  Expand | Explain},
    {"import-path",          required_argument, 'I',                  Everywhere},
    {"define",               required_argument, 'D',                  Everywhere},
    {"eval",                 required_argument, 'E',                  Expand | Explain},
    {"list",                 required_argument, OPT_LIST,             Expand | Explain},
    {"src-indent",           required_argument, OPT_SRC_INDENT,       Expand | Explain},
    {"dst-indent",           required_argument, OPT_DST_INDENT,       Expand | Explain},
    {"lenient",              no_argument,       OPT_LENIENT,          Expand | Explain},
    {"keep-imports",         no_argument,       OPT_KEEP_IMPORTS,     Expand | Explain},
    {"keep-unchanged",       no_argument,       OPT_KEEP_UNCHANGED,   Expand | Explain},
    {"check",                no_argument,       OPT_CHECK,            Expand},
    {"batch",                required_argument, OPT_BATCH,            Expand},
    {"out-dir",              required_argument, OPT_OUT_DIR,          Expand},
    {"jobs",                 required_argument, 'j',                  Expand},
    {"keep-going",           no_argument,       OPT_KEEP_GOING,       Expand},
    {"from-map",             required_argument, OPT_FROM_MAP,         Explain},
    {"map",                  required_argument, OPT_MAP,              Expand},
    {"map-runs",             no_argument,       OPT_MAP_RUNS,         Expand},
    {"chains",               no_argument,       OPT_CHAINS,           Expand},
    {"verify-map",           no_argument,       OPT_VERIFY_MAP,       Expand},
    {"line-directives",      no_argument,       OPT_LINE_DIRECTIVES,  Expand},
    {"line-format",          required_argument, OPT_LINE_FORMAT,      Expand},
    {"source-map",           required_argument, OPT_SOURCE_MAP,       Expand},
    {"source-map-contents",  no_argument,       OPT_SOURCE_MAP_CONTENTS, Expand},
    {"trace",                required_argument, OPT_TRACE,            Expand},
    {"depfile",              required_argument, OPT_DEPFILE,          Expand},
    {"depend",               required_argument, OPT_DEPEND,           Expand},
    {"depfile-target",       required_argument, OPT_DEPFILE_TARGET,   Expand},
    {"no-python",            no_argument,       OPT_NO_PYTHON,        Everywhere},
    {"python-path",          required_argument, OPT_PYTHON_PATH,      Everywhere},
    {"warn",                 required_argument, OPT_WARN,             Expand},
    {"werror",               no_argument,       OPT_WERROR,           Expand},
    {"max-depth",            required_argument, OPT_MAX_DEPTH,        Everywhere},
    {"max-steps",            required_argument, OPT_MAX_STEPS,        Everywhere},
    {"max-output",           required_argument, OPT_MAX_OUTPUT,       Everywhere},
    {"max-memory",           required_argument, OPT_MAX_MEMORY,       Everywhere},
    {"color",                required_argument, OPT_COLOUR,           Everywhere},
    {"version",              no_argument,       'V',                  Everywhere},
    {"help",                 no_argument,       'h',                  Everywhere},
};
// clang-format on

/// The options of one command, as getopt_long takes them.
struct OptionTable
{
    std::vector<option> m_long;
    std::string m_letters = "-:";

    explicit OptionTable(ECommand command)
    {
        for (const OptionRow& row : s_rows)
        {
            if ((row.m_commands & command) == 0)
                continue;
            m_long.push_back(option{row.m_name, row.m_argument, nullptr, row.m_code});
            if (row.m_code >= OPT_FIRST)
                continue;
            m_letters += static_cast<char>(row.m_code);
            if (row.m_argument == required_argument)
                m_letters += ':';
        }
        m_long.push_back(option{nullptr, 0, nullptr, 0});
    }
};

void SetFile(CommonOptions& options, const char* file)
{
    if (*file == '\0')
        throw UsageError("the name of the file is empty");
    options.m_files.emplace_back(file);
    options.m_file = options.m_files.front();
}

void RefuseMoreFiles(const CommonOptions& options)
{
    if (options.m_files.size() > 1)
        throw UsageError("more than one file: '" + options.m_files[0] + "' and '" +
                         options.m_files[1] + "'");
}

/// Handles what both commands understand; false for another code.
bool SetCommonOption(CommonOptions& options, int code, const char* value)
{
    switch (code)
    {
    case s_operandCode:
        SetFile(options, value);
        return true;
    case 'I':
        options.m_importPaths.emplace_back(value);
        return true;
    case 'D':
        options.m_definitions.push_back(ParseDefinition(value));
        return true;
    case OPT_NO_PYTHON:
        options.m_python = false;
        return true;
    case OPT_PYTHON_PATH:
        options.m_pythonPath.push_back(AbsolutePath(ParseFileName("--python-path", value)));
        return true;
    case OPT_MAX_DEPTH:
        options.m_limits.m_maxDepth = ParseCount("--max-depth", value);
        return true;
    case OPT_MAX_STEPS:
        options.m_limits.m_maxSteps = ParseCount("--max-steps", value);
        return true;
    case OPT_MAX_OUTPUT:
        options.m_limits.m_maxOutput = ParseSize("--max-output", value);
        return true;
    case OPT_MAX_MEMORY:
        options.m_limits.m_maxMemory = ParseSize("--max-memory", value);
        return true;
    case OPT_COLOUR:
        options.m_colour = ParseColour(value);
        return true;
    case 'h':
        options.m_help = true;
        return true;
    case 'V':
        options.m_version = true;
        return true;
    default:
        return false;
    }
}

/// What decides about the text, where it goes and what is said of it; false for another code.
bool SetTextOption(ExpandOptions& options, int code, const char* value)
{
    switch (code)
    {
    case 'o':
        options.m_output = ParseFileName("-o", value);
        return true;
    case 'E':
        options.m_definitions.push_back({Definition::EKind::Text, "", value});
        return true;
    case OPT_LIST:
        options.m_definitions.push_back(ParseList(value));
        return true;
    case OPT_SRC_INDENT:
        options.m_srcIndent = ParseIndent("--src-indent", value);
        return true;
    case OPT_DST_INDENT:
        options.m_dstIndent = ParseIndent("--dst-indent", value);
        return true;
    case OPT_KEEP_IMPORTS:
        options.m_keepImports = true;
        return true;
    case OPT_LENIENT:
        options.m_lenient = true;
        return true;
    case OPT_KEEP_UNCHANGED:
        options.m_keepUnchanged = true;
        return true;
    case OPT_FROM_MAP:
        options.m_fromMap = ParseFileName("--from-map", value);
        return true;
    case OPT_WARN:
        options.m_warnings = ParseWarnings(value);
        return true;
    case OPT_WERROR:
        options.m_warningsAreErrors = true;
        return true;
    case OPT_CHECK:
        options.m_check = true;
        return true;
    default:
        return false;
    }
}

/// What else may be made of an expansion.
void SetExpandOption(ExpandOptions& options, int code, const char* value)
{
    if (SetTextOption(options, code, value))
        return;
    switch (code)
    {
    case OPT_BATCH:
        options.m_batch = ParseFileName("--batch", value);
        break;
    case OPT_OUT_DIR:
        options.m_outDirectory = ParseFileName("--out-dir", value);
        break;
    case 'j':
        options.m_jobs = ParsePositiveCount("-j", value);
        break;
    case OPT_KEEP_GOING:
        options.m_keepGoing = true;
        break;
    case OPT_MAP:
        options.m_map = ParseFileName("--map", value);
        break;
    case OPT_MAP_RUNS:
        options.m_mapRuns = true;
        break;
    case OPT_CHAINS:
        options.m_chains = true;
        break;
    case OPT_VERIFY_MAP:
        options.m_verifyMap = true;
        break;
    case OPT_LINE_DIRECTIVES:
        if (!options.m_lineFormat)
            options.m_lineFormat = s_lineFormat;
        break;
    case OPT_LINE_FORMAT:
        options.m_lineFormat = ParseLineFormat("--line-format", value);
        break;
    case OPT_SOURCE_MAP:
        options.m_sourceMap = ParseFileName("--source-map", value);
        break;
    case OPT_SOURCE_MAP_CONTENTS:
        options.m_sourceMapContents = true;
        break;
    case OPT_TRACE:
        options.m_trace = ParseFileName("--trace", value);
        break;
    case OPT_DEPFILE:
        options.m_depfile = ParseFileName("--depfile", value);
        break;
    case OPT_DEPEND:
        options.m_dependencies.push_back(ParseFileName("--depend", value));
        break;
    case OPT_DEPFILE_TARGET:
        options.m_depfileTarget = ParseFileName("--depfile-target", value);
        break;
    }
}

void SetProjectOption(ProjectOptions& options, int code, const char* value)
{
    const bool isPath = code == OPT_PATH_SETTING;
    auto& names = isPath ? options.m_pathSettings : options.m_settings;
    names.push_back(ParseIdentifier(isPath ? "--path-setting" : "--setting", value));
}

template <class Options>
Options ParseArguments(int argc, char** argv, ECommand command,
                       void (*setOption)(Options&, int, const char*))
{
    const OptionTable table(command);
    Options options;
    ForEachOption(argc, argv, table.m_letters.c_str(), table.m_long.data(),
                  [&](int code, const char* value)
                  {
                      if (!SetCommonOption(options, code, value))
                          setOption(options, code, value);
                  });
    return options;
}

/// Whether many files are asked for; then what concerns one output makes no sense.
bool CheckBatch(const ExpandOptions& options)
{
    if (!options.m_batch && !options.m_outDirectory)
    {
        if (options.m_jobs != 1 || options.m_keepGoing)
            throw UsageError("-j and --keep-going are for many files: give --batch or --out-dir");
        RefuseMoreFiles(options);
        return false;
    }
    if (options.m_output != s_standardStream || options.m_map || options.m_depfile ||
        options.m_check || options.m_sourceMap || options.m_trace)
        throw UsageError(
            "-o, --map, --source-map, --depfile, --trace and --check are for one file; with many, "
            "outputs are named by --out-dir or by the list");
    if (options.m_files.empty() && !options.m_batch)
        throw UsageError("there is no file for --out-dir");
    return true;
}

void CheckOutputs(const ExpandOptions& options)
{
    if (CheckBatch(options))
        return;
    if (options.m_depfile && options.m_output == s_standardStream)
        throw UsageError("--depfile needs -o: a dependency file says what the output depends on");
    if (!options.m_depfile && !options.m_dependencies.empty())
        throw UsageError("--depend needs --depfile");
    if (!options.m_depfile && options.m_depfileTarget)
        throw UsageError("--depfile-target needs --depfile");
    if (options.m_check && options.m_output == s_standardStream)
        throw UsageError("--check needs -o: the file that is compared with the expansion");
    if (options.m_check &&
        (options.m_map || options.m_sourceMap || options.m_depfile || options.m_trace))
        throw UsageError(
            "--check writes nothing: leave out --map, --source-map, --depfile and --trace");
    if (options.m_mapRuns && !options.m_map)
        throw UsageError("--map-runs needs --map");
    if (options.m_chains && !options.m_map)
        throw UsageError("--chains needs --map");
    if (options.m_sourceMapContents && !options.m_sourceMap)
        throw UsageError("--source-map-contents needs --source-map");
    // The depfile cannot be where the expansion is: it needs -o.
    const std::pair<const char*, const std::optional<std::string>> outputs[] = {
        {"the expansion", options.m_output},
        {"the map", options.m_map},
        {"the source map", options.m_sourceMap},
        {"the dependency file", options.m_depfile},
        {"the trace", options.m_trace}};
    const char* first = nullptr;
    for (const auto& [name, path] : outputs)
    {
        if (path != s_standardStream)
            continue;
        if (first != nullptr)
            throw UsageError(std::string(first) + " and " + name +
                             " can't both go to standard output");
        first = name;
    }
}

} // namespace

ExpandOptions ParseExpandOptions(int argc, char** argv)
{
    ExpandOptions options = ParseArguments(argc, argv, Expand, SetExpandOption);
    if (options.m_file.empty())
        options.m_file = s_standardStream;
    if (!options.m_help && !options.m_version)
        CheckOutputs(options);
    return options;
}

ExpandOptions ParseExplainOptions(int argc, char** argv)
{
    ExpandOptions options = ParseArguments(argc, argv, Explain, SetExpandOption);
    options.m_isExplained = true;
    RefuseMoreFiles(options);
    if (options.m_fromMap && !options.m_file.empty())
        throw UsageError("with --from-map there is no file to expand");
    if (options.m_file.empty())
        options.m_file = s_standardStream;
    return options;
}

ProjectOptions ParseProjectOptions(int argc, char** argv)
{
    ProjectOptions options = ParseArguments(argc, argv, Project, SetProjectOption);
    if (options.m_file.empty())
        options.m_file = s_standardStream;
    RefuseMoreFiles(options);
    return options;
}

} // namespace telv::tool
