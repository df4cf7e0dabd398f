// SPDX-License-Identifier: MIT
// A name of a file can end like a line, so a place can be read in two ways; the caller chooses.
#include "options/WhereOptions.h"
#include "options/OptionTable.h"
#include "options/OptionValues.h"
#include <charconv>

namespace telv::tool
{

namespace
{

/// Takes ":NUMBER" from the end of `text`.
std::optional<ssize_t> TakeNumber(std::string& text)
{
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos)
        return std::nullopt;
    ssize_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + colon + 1, end, number);
    if (error != std::errc() || stop != end || number < 1)
        return std::nullopt;
    text.resize(colon);
    return number;
}

FilePlace ParsePlace(const char* /*option*/, const std::string& text)
{
    FilePlace place;
    place.m_file = text;
    const std::optional<ssize_t> last = TakeNumber(place.m_file);
    const std::string longer = place.m_file;
    const std::optional<ssize_t> first = last ? TakeNumber(place.m_file) : std::nullopt;
    if (!last || place.m_file.empty())
        throw UsageError("bad place '" + text + "': FILE:LINE or FILE:LINE:COLUMN is wanted");
    place.m_line = first.value_or(*last);
    if (first)
    {
        place.m_column = last;
        place.m_longerFile = longer;
    }
    return place;
}

void SetOperand(WhereOptions& options, const char* operand)
{
    if (options.m_map.empty())
        options.m_map = ParseFileName("MAP", operand);
    else if (!options.m_place)
        options.m_place = ParsePlace("", operand);
    else
        throw UsageError(std::string("one argument too many: '") + operand + "'");
}

// clang-format off
constexpr OptionRow<WhereOptions> s_rows[] = {
    {"source",  0,   Value<&WhereOptions::m_source, ParsePlace>},
    {"output",  'o', Value<&WhereOptions::m_output, ParseFileName>},
    {"color",   0,   Value<&WhereOptions::m_colour, ParseColour>},
    {"version", 'V', Flag<&WhereOptions::m_version>},
    {"help",    'h', Flag<&WhereOptions::m_help>},
};
// clang-format on

} // namespace

WhereOptions ParseWhereOptions(int argc, char** argv)
{
    WhereOptions options;
    ReadArguments<WhereOptions>(argc, argv, options, {s_rows}, SetOperand);
    if (options.m_help || options.m_version)
        return options;
    if (options.m_map.empty())
        throw UsageError("the map is missing");
    if (options.m_place.has_value() == options.m_source.has_value())
        throw UsageError("either OUTPUT:LINE[:COLUMN] or --source FILE:LINE is wanted");
    return options;
}

std::string WhereHelp()
{
    return R"(Usage: tlexpand where [OPTIONS] MAP OUTPUT:LINE[:COLUMN]
       tlexpand where [OPTIONS] MAP --source FILE:LINE

Says where a place of an output came from, or what came of a line of a source. MAP is what
--map has written. Where it was written with --chains, the steps that led to the place follow,
the innermost first, and of a line is listed too what came through a call or a loop on it
("through this").

Options:
      --source FILE:LINE   list all ranges of the output that come from this line
  -o, --output FILE        the output, where MAP does not name it or it lies elsewhere
      --color WHEN         colour the excerpt: auto, always or never
  -V, --version            print the version
  -h, --help               print this

Exit status: 0 found, 1 nothing comes from there, 2 usage error, or a file that cannot be
read or does not fit the map.
)";
}

} // namespace telv::tool
