// SPDX-License-Identifier: MIT
// The tool's own readers of bytes: command lines (arguments end with a NUL), values of options, and
// what shows text: JSON strings, excerpts, UTF-8.
#include "options/Options.h"
#include "Checks.h"
#include "Utf8.h"
#include "options/OptionValues.h"
#include "output/JsonText.h"
#include "report/Excerpt.h"
#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace telv::fuzz
{
namespace
{

using namespace telv::tool;

/// Words of the command line that the fuzzer need not find: a byte above 0x7f stands for one.
constexpr const char* s_words[] = {"-o",
                                   "-I",
                                   "-D",
                                   "-E",
                                   "--output=",
                                   "--define",
                                   "--src-indent",
                                   "--dst-indent",
                                   "--keep-imports",
                                   "--map",
                                   "--depfile",
                                   "--no-python",
                                   "--max-depth",
                                   "--max-steps",
                                   "--max-output",
                                   "--max-memory",
                                   "--color",
                                   "--color=never",
                                   "--version",
                                   "--help",
                                   "--setting",
                                   "--path-setting",
                                   "--",
                                   "-",
                                   "A=b",
                                   "1000000",
                                   "9223372036854775807",
                                   "8388608T",
                                   "9007199254740991K",
                                   "always",
                                   "--max"};

std::vector<std::string> SplitArguments(const ExactText& text)
{
    std::vector<std::string> arguments{"tlexpand"};
    std::string argument;
    for (const char c : ToStd(text.View()))
        if (c == '\0')
            arguments.push_back(std::exchange(argument, ""));
        else if (static_cast<unsigned char>(c) >= 0x80)
            argument += s_words[static_cast<unsigned char>(c) % std::size(s_words)];
        else
            argument += c;
    arguments.push_back(argument);
    return arguments;
}

void CheckCommon(const CommonOptions& options)
{
    for (const ssize_t limit : {options.m_limits.m_maxDepth, options.m_limits.m_maxSteps,
                                options.m_limits.m_maxOutput, options.m_limits.m_maxMemory})
        FUZZ_REQUIRE(limit >= 0);
    for (const Definition& definition : options.m_definitions)
        FUZZ_REQUIRE((definition.m_kind == Definition::EKind::Text) == definition.m_name.empty());
}

/// Calls `parse` with an argument vector that it may reorder.
template <class Parse>
void ParseCommandLine(const std::vector<std::string>& arguments, Parse parse)
{
    std::vector<std::string> copies(arguments);
    std::vector<char*> argv;
    for (std::string& copy : copies)
        argv.push_back(copy.data());
    argv.push_back(nullptr);
    try
    {
        parse(static_cast<int>(copies.size()), argv.data());
    }
    catch (const UsageError& e)
    {
        FUZZ_REQUIRE(e.what()[0] != '\0');
    }
}

void CheckCommandLines(const ExactText& text)
{
    const std::vector<std::string> arguments = SplitArguments(text);
    ParseCommandLine(arguments,
                     [](int argc, char** argv)
                     {
                         const ExpandOptions options = ParseExpandOptions(argc, argv);
                         CheckCommon(options);
                         FUZZ_REQUIRE(!options.m_file.empty());
                         FUZZ_REQUIRE(options.m_srcIndent >= 0 && options.m_srcIndent <= 1'000'000);
                         FUZZ_REQUIRE(options.m_dstIndent >= 0 && options.m_dstIndent <= 1'000'000);
                     });
    ParseCommandLine(arguments,
                     [](int argc, char** argv)
                     {
                         const ProjectOptions options = ParseProjectOptions(argc, argv);
                         CheckCommon(options);
                         FUZZ_REQUIRE(!options.m_file.empty() || options.m_help ||
                                      options.m_version);
                     });
}

template <class Read>
void ReadValue(Read read)
{
    try
    {
        FUZZ_REQUIRE(read() >= 0);
    }
    catch (const UsageError& e)
    {
        FUZZ_REQUIRE(e.what()[0] != '\0');
    }
}

void CheckValues(const std::string& text)
{
    ReadValue([&] { return ParseIndent("--src-indent", text); });
    ReadValue([&] { return ParseCount("--max-depth", text); });
    ReadValue([&] { return ParseSize("--max-output", text); });
    ReadValue([&] { return static_cast<ssize_t>(ParseColour("--color", text)); });
    ReadValue([&] { return static_cast<ssize_t>(ParseIdentifier("--setting", text).size()); });
    ReadValue(
        [&]
        {
            const Definition definition = ParseDefinition("-D", text);
            FUZZ_REQUIRE(definition.m_name + "=" + definition.m_value == text);
            return ssize_t{0};
        });
    ReadValue(
        [&]
        {
            const Definition list = ParseList("--list", text);
            FUZZ_REQUIRE(text.starts_with(list.m_name + "=" + list.m_rows.m_file));
            FUZZ_REQUIRE(list.m_rows.m_file.ends_with(list.m_rows.m_isJson ? ".json" : ".csv"));
            return ssize_t{0};
        });
}

/// Characters tile a text; a sequence that is said to be well formed is one code point.
bool CheckUtf8(SubString s)
{
    bool isValid = true;
    while (s)
    {
        const char* const begin = s.m_p1;
        const Utf8Character c = TakeUtf8Character(s);
        FUZZ_REQUIRE(c.m_bytes.m_p1 == begin && c.m_bytes.m_p2 == s.m_p1);
        FUZZ_REQUIRE(c.m_bytes.size() >= 1 && c.m_bytes.size() <= 4);
        FUZZ_REQUIRE(!c.m_valid || (c.m_bytes.size() == 1) == ((*begin & 0x80) == 0));
        isValid = isValid && c.m_valid;
    }
    return isValid;
}

/// The characters of a JSON string; ends the program when it is none.
std::string DecodeJson(const std::string& json)
{
    FUZZ_REQUIRE(json.size() >= 2 && json.front() == '"' && json.back() == '"');
    std::string text;
    for (size_t i = 1; i + 1 < json.size(); ++i)
    {
        FUZZ_REQUIRE(static_cast<unsigned char>(json[i]) >= 0x20 && json[i] != '"');
        if (json[i] != '\\')
        {
            text += json[i];
            continue;
        }
        static const std::string s_letters = "\"\\/bfnrt";
        const size_t letter = s_letters.find(json[++i]);
        FUZZ_REQUIRE(i + 1 < json.size() && (letter != std::string::npos || json[i] == 'u'));
        if (letter != std::string::npos)
        {
            text += "\"\\/\b\f\n\r\t"[letter];
            continue;
        }
        const std::string digits = json.substr(i + 1, 4);
        FUZZ_REQUIRE(digits.size() == 4 && std::all_of(digits.begin(), digits.end(),
                                                       [](char c) { return IsHexDigit(c); }));
        const unsigned long code = std::stoul(digits, nullptr, 16);
        FUZZ_REQUIRE(code < 0x80);
        text += static_cast<char>(code);
        i += 4;
    }
    return text;
}

void CheckShown(const ExactText& text)
{
    const bool isValid = CheckUtf8(text.View());
    const std::string json = JsonString(text.View());
    const std::string decoded = DecodeJson(json);
    const SubString jsonView(json.data(), json.data() + json.size());
    FUZZ_REQUIRE(CheckUtf8(jsonView));
    FUZZ_REQUIRE(!isValid || decoded == ToStd(text.View()));
    for (const char c : EscapeForTerminal(text.View()))
        FUZZ_REQUIRE(c == '\n' || c == '\t' ||
                     (static_cast<unsigned char>(c) >= 0x20 && c != 0x7f));
}

void CheckExcerpt(const ExactText& text, size_t place)
{
    Sources sources;
    const Source& source = sources.Add("name", text.View(), nullptr);
    const char* const pos =
        text.View().m_p1 +
        static_cast<ssize_t>(place % (static_cast<size_t>(text.View().size()) + 1));
    FUZZ_REQUIRE(sources.Find(pos) == &source);
    for (int i = 0; i < 20; ++i) // the first ones are answered in another way
        FUZZ_REQUIRE(source.Line(pos) == GetLineNumber(text.View(), pos));
    const SubString line = source.LineAround(pos, 10);
    FUZZ_REQUIRE(text.Holds(line) && line.m_p1 <= pos && line.m_p2 - pos <= 10);
    const std::string plain = MakeExcerpt(source, pos, {});
    FUZZ_REQUIRE(std::count(plain.begin(), plain.end(), '\n') == 2 && plain.ends_with("^\n"));
    MakeExcerpt(source, pos, {true, true});
}

void Check(const ExactText& text)
{
    CheckCommandLines(text);
    CheckValues(ToStd(text.View()));
    CheckShown(text);
    CheckExcerpt(text, static_cast<size_t>(text.View().size()) * 7 / 3);
}

} // namespace
} // namespace telv::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    telv::fuzz::Check(telv::fuzz::ExactText(data, size));
    return 0;
}
