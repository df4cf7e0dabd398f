// SPDX-License-Identifier: MIT
// What --help prints.
#include "options/Options.h"

namespace telv::tool
{

namespace
{

// What several commands take.
constexpr const char* s_textOptions =
    R"(  -I, --import-path DIR    search DIR for imported files; repeatable
  -D, --define NAME=VALUE  define a dollar macro that every file sees
  -E, --eval TEXT          expand TEXT first; its definitions are seen by every file
      --list NAME=FILE[:COLUMNS]
                           define the macro NAME, a list of the rows of FILE (.csv, .json)
      --src-indent N       indentation of the source's lines that is removed
      --dst-indent N       indentation that the lines of the output get
      --lenient            take quotes, numbers and comments of other languages as text
      --keep-imports       keep the text of import directives in the output
      --keep-unchanged     leave an output file alone whose bytes would be the same
)";
constexpr const char* s_pythonOptions =
    R"(      --no-python          refuse Python
      --python-path DIR    search DIR for Python modules first; repeatable
)";
constexpr const char* s_limitOptions =
    R"(      --max-depth N        limit the nesting of expansions
      --max-steps N        limit the number of expansions, invocations and loop rounds
      --max-output SIZE    limit the output: bytes, or with K, M or G
      --max-memory SIZE    limit the memory that the run holds
)";
constexpr const char* s_lastOptions =
    R"(      --color WHEN         colour diagnostics: auto, always or never
  -V, --version            print the version
  -h, --help               print this
)";

} // namespace

std::string ExpandHelp()
{
    return R"(Usage: tlexpand [OPTIONS] [FILE]            expand FILE ('-' or none: standard input)
       tlexpand [OPTIONS] --out-dir DIR [--batch LIST] [FILE...]
       tlexpand project [OPTIONS] [FILE]    read a project file and print it as JSON
       tlexpand where [OPTIONS] MAP PLACE   say where a place of an output came from
       tlexpand remap [OPTIONS] MAP...      turn places in outputs into places in sources
       tlexpand explain [OPTIONS] [FILE]    make a page that shows output and sources

Options of an expansion:
  -o, --output FILE        write the expansion to FILE (default: standard output)
)" + std::string(s_textOptions) +
           R"(      --check              write nothing: compare the FILE of -o with the expansion and
                           print the difference, exit status 1, when there is one
      --batch LIST         expand the files that LIST names, one a line, each with its own
                           outcome; a tab and the name of its output may stand behind it
      --out-dir DIR        where the outputs go that LIST does not name, without '.tl'
  -j, --jobs N             expand them in N processes (default: 1)
      --keep-going         go on after one that failed
      --map FILE           write the map from the output to the sources as JSON
      --map-runs           join what continues each other in the map
      --chains             put the macros and loops that led to each piece into it
      --source-map FILE    write a source map, version 3
      --source-map-contents
                           put the texts of the sources into it
      --line-directives    put lines '#line N "FILE"' into the output
      --line-format TEXT   the same in another form: '%l' is the line, '%f' the file
      --verify-map         check that the map keeps its laws, chains included
      --trace FILE         write a line for each call, round, definition and import
      --depfile FILE       write a dependency file for make and ninja (needs -o)
      --depfile-target NAME
                           the target in it (default: the output)
      --depend FILE        name FILE in it too; repeatable
)" + s_pythonOptions +
           R"(      --warn LIST          warn of: dropped-text (default), unknown-directive, unknown-name,
                           hidden-name, unused, tabs; or all, or none
      --werror             a warning makes the run fail
)" + s_limitOptions +
           s_lastOptions + R"(
FILE of an output may be '-', standard output, for one of them.
Exit status: 0 expanded, 1 error in a source text (or --check finds a difference), 2 usage
error or a file that cannot be read or written.
)";
}

std::string ExplainHelp()
{
    return R"(Usage: tlexpand explain [OPTIONS] [FILE]
       tlexpand explain [OPTIONS] --from-map MAP [OUTPUT]

Expands FILE ('-' or none: standard input) and writes a page for a browser that shows the
sources beside the output: what belongs together lights up. It needs nothing else.

Options:
  -o, --output PAGE        write the page to PAGE (default: standard output)
      --from-map MAP       show the output of an earlier expansion, with the map of --map;
                           OUTPUT where it is, if not where the map says
)" + std::string(s_textOptions) +
           s_pythonOptions + s_limitOptions + s_lastOptions;
}

std::string ProjectHelp()
{
    return std::string(
               R"(Usage: tlexpand project [OPTIONS] [FILE]  read a project file ('-' or none: standard input)
                                          and print it as JSON

Options:
      --setting NAME       $NAME = "..." is a setting; repeatable
      --path-setting NAME  the same for a path with forward slashes; repeatable
  -I, --import-path DIR    search DIR for imported files; repeatable
  -D, --define NAME=VALUE  define a dollar macro
)") + s_pythonOptions +
           R"(      --max-depth N, --max-steps N, --max-output SIZE, --max-memory SIZE
                           limits, as for an expansion
)" + s_lastOptions;
}

} // namespace telv::tool
