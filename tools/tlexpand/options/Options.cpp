// getopt_long, told to return operands in their place, so that options may stand after them and
// the environment has no say in it.
#include "options/Options.h"
#include "options/OptionValues.h"
#include <getopt.h>

namespace telv::tool
{

namespace
{

/// Values of options without a letter.
enum ELongOption
{
    OPT_SRC_INDENT = 256,
    OPT_LIST,
    OPT_DST_INDENT,
    OPT_KEEP_IMPORTS,
    OPT_KEEP_UNCHANGED,
    OPT_MAP,
    OPT_DEPFILE,
    OPT_DEPEND,
    OPT_DEPFILE_TARGET,
    OPT_NO_PYTHON,
    OPT_MAX_DEPTH,
    OPT_MAX_STEPS,
    OPT_MAX_OUTPUT,
    OPT_COLOUR,
    OPT_SETTING,
    OPT_PATH_SETTING
};

// clang-format off
constexpr option s_expandTable[] = {
    {"output",       required_argument, nullptr, 'o'},
    {"import-path",  required_argument, nullptr, 'I'},
    {"define",       required_argument, nullptr, 'D'},
    {"eval",         required_argument, nullptr, 'E'},
    {"list",         required_argument, nullptr, OPT_LIST},
    {"src-indent",   required_argument, nullptr, OPT_SRC_INDENT},
    {"dst-indent",   required_argument, nullptr, OPT_DST_INDENT},
    {"keep-imports", no_argument,       nullptr, OPT_KEEP_IMPORTS},
    {"keep-unchanged", no_argument,     nullptr, OPT_KEEP_UNCHANGED},
    {"map",          required_argument, nullptr, OPT_MAP},
    {"depfile",      required_argument, nullptr, OPT_DEPFILE},
    {"depend",       required_argument, nullptr, OPT_DEPEND},
    {"depfile-target", required_argument, nullptr, OPT_DEPFILE_TARGET},
    {"no-python",    no_argument,       nullptr, OPT_NO_PYTHON},
    {"max-depth",    required_argument, nullptr, OPT_MAX_DEPTH},
    {"max-steps",    required_argument, nullptr, OPT_MAX_STEPS},
    {"max-output",   required_argument, nullptr, OPT_MAX_OUTPUT},
    {"color",        required_argument, nullptr, OPT_COLOUR},
    {"version",      no_argument,       nullptr, 'V'},
    {"help",         no_argument,       nullptr, 'h'},
    {nullptr, 0, nullptr, 0}};

constexpr option s_projectTable[] = {
    {"setting",      required_argument, nullptr, OPT_SETTING},
    {"path-setting", required_argument, nullptr, OPT_PATH_SETTING},
    {"import-path",  required_argument, nullptr, 'I'},
    {"define",       required_argument, nullptr, 'D'},
    {"no-python",    no_argument,       nullptr, OPT_NO_PYTHON},
    {"max-depth",    required_argument, nullptr, OPT_MAX_DEPTH},
    {"max-steps",    required_argument, nullptr, OPT_MAX_STEPS},
    {"max-output",   required_argument, nullptr, OPT_MAX_OUTPUT},
    {"color",        required_argument, nullptr, OPT_COLOUR},
    {"version",      no_argument,       nullptr, 'V'},
    {"help",         no_argument,       nullptr, 'h'},
    {nullptr, 0, nullptr, 0}};
// clang-format on

/// getopt's code of an operand, and how the letters of `-` and `:` ask for it and for silence.
constexpr int s_operand = 1;
constexpr const char* s_expandLetters = "-:o:I:D:E:Vh";
constexpr const char* s_projectLetters = "-:I:D:Vh";

void SetFile(CommonOptions& options, const char* file)
{
    if (!options.m_file.empty())
        throw UsageError("more than one file: '" + options.m_file + "' and '" + file + "'");
    if (*file == '\0')
        throw UsageError("the name of the file is empty");
    options.m_file = file;
}

[[noreturn]] void ThrowBadOption(int code, char** argv)
{
    const std::string written = optopt != 0 && optopt < OPT_SRC_INDENT
                                    ? std::string("-") + static_cast<char>(optopt)
                                    : std::string(argv[optind - 1]);
    if (code == ':')
        throw UsageError("option '" + written + "' needs a value");
    const std::string name = written.substr(0, written.find('='));
    throw UsageError("unknown option or needless value: '" + name + "'");
}

/// Handles what both commands understand; false for another code.
bool SetCommonOption(CommonOptions& options, int code)
{
    switch (code)
    {
    case s_operand:
        SetFile(options, optarg);
        return true;
    case 'I':
        options.m_importPaths.emplace_back(optarg);
        return true;
    case 'D':
        options.m_definitions.push_back(ParseDefinition(optarg));
        return true;
    case OPT_NO_PYTHON:
        options.m_python = false;
        return true;
    case OPT_MAX_DEPTH:
        options.m_limits.m_maxDepth = ParseCount("--max-depth", optarg);
        return true;
    case OPT_MAX_STEPS:
        options.m_limits.m_maxSteps = ParseCount("--max-steps", optarg);
        return true;
    case OPT_MAX_OUTPUT:
        options.m_limits.m_maxOutput = ParseSize("--max-output", optarg);
        return true;
    case OPT_COLOUR:
        options.m_colour = ParseColour(optarg);
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

void SetExpandOption(ExpandOptions& options, int code)
{
    switch (code)
    {
    case 'o':
        options.m_output = ParseFileName("-o", optarg);
        break;
    case 'E':
        options.m_definitions.push_back({Definition::EKind::Text, "", optarg});
        break;
    case OPT_LIST:
        options.m_definitions.push_back(ParseList(optarg));
        break;
    case OPT_SRC_INDENT:
        options.m_srcIndent = ParseIndent("--src-indent", optarg);
        break;
    case OPT_DST_INDENT:
        options.m_dstIndent = ParseIndent("--dst-indent", optarg);
        break;
    case OPT_KEEP_IMPORTS:
        options.m_keepImports = true;
        break;
    case OPT_KEEP_UNCHANGED:
        options.m_keepUnchanged = true;
        break;
    case OPT_MAP:
        options.m_map = ParseFileName("--map", optarg);
        break;
    case OPT_DEPFILE:
        options.m_depfile = ParseFileName("--depfile", optarg);
        break;
    case OPT_DEPEND:
        options.m_dependencies.push_back(ParseFileName("--depend", optarg));
        break;
    case OPT_DEPFILE_TARGET:
        options.m_depfileTarget = ParseFileName("--depfile-target", optarg);
        break;
    }
}

void SetProjectOption(ProjectOptions& options, int code)
{
    const bool isPath = code == OPT_PATH_SETTING;
    auto& names = isPath ? options.m_pathSettings : options.m_settings;
    names.push_back(ParseIdentifier(isPath ? "--path-setting" : "--setting", optarg));
}

template <class Options>
Options ParseArguments(int argc, char** argv, const char* letters, const option* table,
                       void (*setOption)(Options&, int))
{
    Options options;
    opterr = 0;
    optind = 0; // Starts anew, and reads the letters anew.
    int code = 0;
    while ((code = getopt_long(argc, argv, letters, table, nullptr)) != -1)
    {
        if (code == '?' || code == ':')
            ThrowBadOption(code, argv);
        if (!SetCommonOption(options, code))
            setOption(options, code);
    }
    for (int i = optind; i < argc; ++i)
        SetFile(options, argv[i]);
    return options;
}

void CheckOutputs(const ExpandOptions& options)
{
    if (options.m_depfile && options.m_output == s_standardStream)
        throw UsageError("--depfile needs -o: a dependency file says what the output depends on");
    if (!options.m_depfile && !options.m_dependencies.empty())
        throw UsageError("--depend needs --depfile");
    if (!options.m_depfile && options.m_depfileTarget)
        throw UsageError("--depfile-target needs --depfile");
    const bool isMap = options.m_map == s_standardStream;
    if (isMap && options.m_output == s_standardStream)
        throw UsageError("the expansion and the map can't both go to standard output");
    if (isMap && options.m_depfile == s_standardStream)
        throw UsageError("the map and the dependency file can't both go to standard output");
}

} // namespace

ExpandOptions ParseExpandOptions(int argc, char** argv)
{
    ExpandOptions options =
        ParseArguments(argc, argv, s_expandLetters, s_expandTable, SetExpandOption);
    if (options.m_file.empty())
        options.m_file = s_standardStream;
    if (!options.m_help && !options.m_version)
        CheckOutputs(options);
    return options;
}

ProjectOptions ParseProjectOptions(int argc, char** argv)
{
    ProjectOptions options =
        ParseArguments(argc, argv, s_projectLetters, s_projectTable, SetProjectOption);
    if (options.m_file.empty())
        options.m_file = s_standardStream;
    return options;
}

} // namespace telv::tool
