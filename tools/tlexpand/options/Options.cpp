// SPDX-License-Identifier: MIT
// The tables of the options, and what the options of one command line say against each other.
#include "options/Options.h"
#include "options/OptionTable.h"
#include "options/OptionValues.h"

namespace telv::tool
{

namespace
{

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

/// The limit of this name, `ExpansionLimits` holding it at `Limit`.
template <auto Limit, auto Parse, class Options>
void SetLimit(Options& options, const char* option, const char* value)
{
    options.m_limits.*Limit = Parse(option, value);
}

template <class Options>
void ForbidPython(Options& options)
{
    options.m_python = false;
}

void SetUsualLineFormat(ExpandOptions& options)
{
    if (!options.m_lineFormat)
        options.m_lineFormat = s_lineFormat;
}

// clang-format off
/// Of every command that reads texts.
template <class Options>
constexpr OptionRow<Options> s_commonRows[] = {
    {"import-path", 'I', Add<&Options::m_importPaths, ParseAnyText>},
    {"define",      'D', Add<&Options::m_definitions, ParseDefinition>},
    {"no-python",   0,   ForbidPython},
    {"python-path", 0,   Add<&Options::m_pythonPath, ParseAbsolutePath>},
    {"max-depth",   0,   SetLimit<&ExpansionLimits::m_maxDepth, ParseCount>},
    {"max-steps",   0,   SetLimit<&ExpansionLimits::m_maxSteps, ParseCount>},
    {"max-output",  0,   SetLimit<&ExpansionLimits::m_maxOutput, ParseSize>},
    {"max-memory",  0,   SetLimit<&ExpansionLimits::m_maxMemory, ParseSize>},
    {"color",       0,   Value<&Options::m_colour, ParseColour>},
    {"version",     'V', Flag<&Options::m_version>},
    {"help",        'h', Flag<&Options::m_help>},
};

/// What decides about the text and where it goes, whatever is made of it.
constexpr OptionRow<ExpandOptions> s_textRows[] = {
    {"output",         'o', Value<&ExpandOptions::m_output, ParseFileName>},
    {"eval",           'E', Add<&ExpandOptions::m_definitions, ParseEvaluatedText>},
    {"list",           0,   Add<&ExpandOptions::m_definitions, ParseList>},
    {"src-indent",     0,   Value<&ExpandOptions::m_srcIndent, ParseIndent>},
    {"dst-indent",     0,   Value<&ExpandOptions::m_dstIndent, ParseIndent>},
    {"lenient",        0,   Flag<&ExpandOptions::m_lenient>},
    {"keep-imports",   0,   Flag<&ExpandOptions::m_keepImports>},
    {"keep-unchanged", 0,   Flag<&ExpandOptions::m_keepUnchanged>},
};

constexpr OptionRow<ExpandOptions> s_expandRows[] = {
    {"check",               0,   Flag<&ExpandOptions::m_check>},
    {"batch",               0,   Value<&ExpandOptions::m_batch, ParseFileName>},
    {"out-dir",             0,   Value<&ExpandOptions::m_outDirectory, ParseFileName>},
    {"jobs",                'j', Value<&ExpandOptions::m_jobs, ParsePositiveCount>},
    {"keep-going",          0,   Flag<&ExpandOptions::m_keepGoing>},
    {"map",                 0,   Value<&ExpandOptions::m_map, ParseFileName>},
    {"map-runs",            0,   Flag<&ExpandOptions::m_mapRuns>},
    {"chains",              0,   Flag<&ExpandOptions::m_chains>},
    {"verify-map",          0,   Flag<&ExpandOptions::m_verifyMap>},
    {"line-directives",     0,   SetUsualLineFormat},
    {"line-format",         0,   Value<&ExpandOptions::m_lineFormat, ParseLineFormat>},
    {"source-map",          0,   Value<&ExpandOptions::m_sourceMap, ParseFileName>},
    {"source-map-contents", 0,   Flag<&ExpandOptions::m_sourceMapContents>},
    {"trace",               0,   Value<&ExpandOptions::m_trace, ParseFileName>},
    {"depfile",             0,   Value<&ExpandOptions::m_depfile, ParseFileName>},
    {"depend",              0,   Add<&ExpandOptions::m_dependencies, ParseFileName>},
    {"depfile-target",      0,   Value<&ExpandOptions::m_depfileTarget, ParseFileName>},
    {"warn",                0,   Value<&ExpandOptions::m_warnings, ParseWarnings>},
    {"werror",              0,   Flag<&ExpandOptions::m_warningsAreErrors>},
};

constexpr OptionRow<ExpandOptions> s_explainRows[] = {
    {"from-map", 0, Value<&ExpandOptions::m_fromMap, ParseFileName>},
};

constexpr OptionRow<ProjectOptions> s_projectRows[] = {
    {"setting",      0, Add<&ProjectOptions::m_settings, ParseIdentifier>},
    {"path-setting", 0, Add<&ProjectOptions::m_pathSettings, ParseIdentifier>},
};
// clang-format on

template <class Options>
Options ReadCommandLine(int argc, char** argv,
                        std::initializer_list<std::span<const OptionRow<Options>>> tables)
{
    Options options;
    ReadArguments<Options>(argc, argv, options, tables,
                           [](Options& o, const char* file) { SetFile(o, file); });
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
    ExpandOptions options = ReadCommandLine<ExpandOptions>(
        argc, argv, {s_commonRows<ExpandOptions>, s_textRows, s_expandRows});
    if (options.m_file.empty())
        options.m_file = s_standardStream;
    if (!options.m_help && !options.m_version)
        CheckOutputs(options);
    return options;
}

ExpandOptions ParseExplainOptions(int argc, char** argv)
{
    ExpandOptions options = ReadCommandLine<ExpandOptions>(
        argc, argv, {s_commonRows<ExpandOptions>, s_textRows, s_explainRows});
    options.m_isExplained = true;
    RefuseMoreFiles(options);
    if (options.m_file.empty() && !options.m_fromMap)
        options.m_file = s_standardStream;
    return options;
}

ProjectOptions ParseProjectOptions(int argc, char** argv)
{
    ProjectOptions options =
        ReadCommandLine<ProjectOptions>(argc, argv, {s_commonRows<ProjectOptions>, s_projectRows});
    if (options.m_file.empty())
        options.m_file = s_standardStream;
    RefuseMoreFiles(options);
    return options;
}

} // namespace telv::tool
