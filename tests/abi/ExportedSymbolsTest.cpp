// SPDX-License-Identifier: MIT
// What the shared libraries export: exactly what the linker was told to, with type information and
// table of virtual operations where a class has one.
//
// Lists hold demangled names as `nm -DC` prints them. Core/LIBRARY/exports.map is the linker's;
// `required` lists are what applications were linked against: a line goes only with the major
// version.
#include "support/Files.h"
#include "support/LimitedRun.h"
#include "support/RunProgram.h"
#include "support/TempDir.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <csignal>
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace telv::test
{
namespace
{

const char* const s_libraries[] = {"tlUtils", "tlMacroExpander"};

std::set<std::string> Lines(const std::string& text)
{
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty() && line[0] != '#')
            lines.insert(line);
    return lines;
}

std::set<std::string> List(const std::string& name)
{
    const auto text = ReadFile(std::string(TELV_SOURCE_DIR) + "/tests/abi/" + name + ".txt");
    EXPECT_TRUE(text) << name;
    return Lines(text.value_or(""));
}

std::string Library(const std::string& name)
{
    return std::string(TELV_LIBRARY_DIR) + "/lib" + name + ".so";
}

/// The output of a tool of the build; it must succeed.
std::string OutputOf(const std::vector<std::string>& argv)
{
    const ProgramResult result = RunProgram(argv);
    EXPECT_EQ(result.status, 0) << argv[0] << result.err;
    return result.out;
}

/// The demangled names that the library defines for others.
std::set<std::string> ExportedNames(const std::string& library)
{
    std::set<std::string> names;
    std::istringstream stream(OutputOf({"/usr/bin/nm", "-DC", "--defined-only", Library(library)}));
    for (std::string line; std::getline(stream, line);)
    {
        // Address, a kind of one letter, the name.
        const size_t kind = line.find(' ');
        if (kind != std::string::npos)
            names.insert(line.substr(kind + 3));
    }
    return names;
}

/// The linker's list of a library: whole names in quotes, and patterns of the shell.
struct ExportList
{
    std::set<std::string> m_names;
    std::vector<std::string> m_patterns;

    explicit ExportList(const std::string& library);
    bool Has(const std::string& name) const
    {
        return m_names.count(name) == 1 ||
               std::any_of(m_patterns.begin(), m_patterns.end(),
                           [&](const std::string& pattern)
                           { return fnmatch(pattern.c_str(), name.c_str(), 0) == 0; });
    }
};

ExportList::ExportList(const std::string& library)
{
    const auto map = ReadFile(std::string(TELV_SOURCE_DIR) + "/Core/" + library + "/exports.map");
    EXPECT_TRUE(map) << library;
    std::istringstream stream(map.value_or(""));
    for (std::string line; std::getline(stream, line);)
    {
        line.erase(0, line.find_first_not_of(' '));
        if (line.starts_with('"'))
            m_names.insert(line.substr(1, line.rfind('"') - 1));
        else if (line.starts_with("telv::"))
            m_patterns.push_back(line.substr(0, line.rfind(';')));
    }
}

TEST(ExportedSymbolsTest, EveryPublicNameIsThere)
{
    for (const char* const library : s_libraries)
    {
        const std::set<std::string> exported = ExportedNames(library);
        for (const std::string& name : List(std::string("required-") + library))
            EXPECT_EQ(exported.count(name), 1u) << library << ": " << name;
    }
#if TELV_HAS_PYTHON
    EXPECT_EQ(ExportedNames("tlMacroExpander").count("telv::TelvMethods"), 1u);
#endif
}

#if TELV_EXPORTS_ARE_LISTED
TEST(ExportedSymbolsTest, ExactlyTheListIsExported)
{
    for (const char* const library : s_libraries)
    {
        const ExportList list(library);
        EXPECT_FALSE(list.m_names.empty());
        const std::set<std::string> exported = ExportedNames(library);
        for (const std::string& name : exported)
            EXPECT_TRUE(list.Has(name)) << library << " exports " << name;
        for (const std::string& name : list.m_names)
            EXPECT_TRUE(exported.count(name) == 1 ||
                        (!TELV_HAS_PYTHON && name == "telv::TelvMethods"))
                << library << " lacks " << name;
    }
}
#endif

/// The installed headers without their comments, one text each.
std::vector<std::string> PublicHeaders()
{
    std::vector<std::string> headers;
    std::istringstream paths(TELV_PUBLIC_HEADERS);
    for (std::string path; std::getline(paths, path, ' ');)
    {
        std::string code;
        std::istringstream text(ReadFile(path).value_or(""));
        for (std::string line; std::getline(text, line);)
            code += line.substr(0, line.find("//")) + '\n';
        headers.push_back(code);
    }
    return headers;
}

/// The class, if any, and the operation or object that an exported name means.
std::vector<std::string> PartsOf(const std::string& name)
{
    std::vector<std::string> parts;
    for (size_t begin = name.find("telv::"); begin != std::string::npos;)
    {
        begin += parts.empty() ? std::string("telv::").size() : std::string("::").size();
        const bool isOperator = name.compare(begin, 8, "operator") == 0;
        size_t end = name.find_first_of(isOperator ? "(" : ":(<", begin);
        parts.push_back(name.substr(begin, end - begin));
        begin = end != std::string::npos && name[end] == ':' ? end : std::string::npos;
    }
    return parts;
}

/// Whether the text has the word; of an operator, the characters.
bool Mentions(const std::string& text, const std::string& word)
{
    const auto isPart = [&](size_t i)
    {
        return i < text.size() &&
               (std::isalnum(static_cast<unsigned char>(text[i])) || text[i] == '_');
    };
    for (size_t i = text.find(word); i != std::string::npos; i = text.find(word, i + 1))
        if (word.starts_with("operator") || (!isPart(i - 1) && !isPart(i + word.size())))
            return true;
    return false;
}

TEST(ExportedSymbolsTest, AnInstalledHeaderDeclaresWhatIsExported)
{
    const std::vector<std::string> headers = PublicHeaders();
    ASSERT_GT(headers.size(), 30u);
    for (const char* const library : s_libraries)
        for (const std::string& name : ExportList(library).m_names)
        {
            if (name == "telv::TelvMethods") // Its type is Python's, whose headers nobody needs.
                continue;
            const std::vector<std::string> parts = PartsOf(name);
            EXPECT_FALSE(parts.empty()) << name;
            const auto declares = [&](const std::string& header)
            {
                return std::all_of(parts.begin(), parts.end(),
                                   [&](const std::string& part) { return Mentions(header, part); });
            };
            EXPECT_TRUE(std::any_of(headers.begin(), headers.end(), declares))
                << library << " exports " << name << ", which no installed header declares";
        }
}

/// The declarations of free functions at the outer level of a header that are neither defined there
/// nor marked as exported.
std::vector<std::string> UnmarkedFunctions(const std::string& header)
{
    static const std::set<std::string> others = {"class",     "struct", "enum",
                                                 "template",  "using",  "typedef",
                                                 "namespace", "extern", "static_assert"};
    std::vector<std::string> found;
    std::istringstream lines(header);
    std::string previous = ";";
    for (std::string line; std::getline(lines, line);)
    {
        if (line.find_first_not_of(' ') == std::string::npos)
            continue;
        const bool begins = std::isalpha(static_cast<unsigned char>(line[0])) != 0 &&
                            std::string(";{}").find(previous.back()) != std::string::npos;
        previous = line.starts_with('#') ? ";" : line;
        const std::string first = line.substr(0, line.find_first_of(" (<"));
        if (!begins || line.find('(') == std::string::npos || others.count(first) == 1 ||
            line.find("_API") != std::string::npos)
            continue;
        std::string declaration = line;
        while (declaration.find_first_of(";{") == std::string::npos && std::getline(lines, line))
            declaration += line;
        if (declaration.find('{') == std::string::npos)
            found.push_back(declaration);
    }
    return found;
}

TEST(ExportedSymbolsTest, WhatInstalledHeadersDeclareIsExported)
{
    EXPECT_EQ(UnmarkedFunctions("void Hidden(int,\n    int);\nTLUTILS_API void Shown();\n"
                                "inline int Inline()\n{\n}\n"),
              std::vector<std::string>{"void Hidden(int,    int);"});
    for (const std::string& header : PublicHeaders())
        EXPECT_EQ(UnmarkedFunctions(header), std::vector<std::string>{});
}

TEST(ExportedSymbolsTest, SonameHasTheMajorVersion)
{
    for (const char* const library : s_libraries)
    {
        const std::string dynamic = OutputOf({"/usr/bin/readelf", "-d", Library(library)});
        EXPECT_NE(dynamic.find("[lib" + std::string(library) + ".so.1]"), std::string::npos);
        EXPECT_EQ(dynamic.find("libpython"), std::string::npos);
    }
}

/// The mappings of the tool while it runs `source`, which prints "ready" and goes on.
std::string MappingsDuring(const std::string& source)
{
    const TempDir directory;
    WriteFile(directory.Path("main.tl"), source);
    LimitedOptions options;
    options.directory = directory.Path(".");
    LimitedProgram program({TELV_TLEXPAND_PATH, "main.tl"}, options);
    for (int i = 0; i < 4000 && program.ErrorSoFar() != "ready\n"; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const std::string maps =
        ReadFile("/proc/" + std::to_string(program.Pid()) + "/maps").value_or("");
    program.Send(SIGTERM);
    EXPECT_EQ(program.Finish().signal, SIGTERM);
    return maps;
}

TEST(ExportedSymbolsTest, PythonIsMappedOnlyWhenItIsUsed)
{
    const std::string without = MappingsDuring("@defpython p = {1}\n@println(ready)@while(true){}");
    EXPECT_NE(without.find("tlexpand"), std::string::npos);
    EXPECT_EQ(without.find("libpython"), std::string::npos);
#if TELV_HAS_PYTHON
    const std::string with = MappingsDuring("@runpython{x = 1}\n@println(ready)@while(true){}");
    EXPECT_NE(with.find("libpython"), std::string::npos);
#endif
}

} // namespace
} // namespace telv::test
