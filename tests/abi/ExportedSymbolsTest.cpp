// What the shared libraries export: every name of the public interface, with type information and
// table of virtual operations where the class has one, and no internal name.
//
// The lists beside this file hold demangled names as `nm -DC` prints them. `required` lists are
// what applications were linked against: a line goes only with the major version.
#include "support/Files.h"
#include "support/LimitedRun.h"
#include "support/RunProgram.h"
#include "support/TempDir.h"

#include <algorithm>
#include <chrono>
#include <csignal>
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

/// The demangled names that the library defines for others, of this project's namespace.
std::set<std::string> ExportedNames(const std::string& library)
{
    std::set<std::string> names;
    std::istringstream stream(OutputOf({"/usr/bin/nm", "-DC", "--defined-only", Library(library)}));
    for (std::string line; std::getline(stream, line);)
    {
        // Address, a kind of one letter, the name.
        const size_t kind = line.find(' ');
        if (kind != std::string::npos && line.find("telv::") != std::string::npos)
            names.insert(line.substr(kind + 3));
    }
    return names;
}

/// "LSVariable" for every name that belongs to the class, "MacroExpand" for the function.
std::string OwnerOf(const std::string& name)
{
    size_t begin = name.find("telv::");
    for (const char* const prefix : {"vtable for ", "typeinfo for ", "typeinfo name for "})
        if (name.rfind(prefix, 0) == 0)
            return name.substr(begin + 6, name.find_first_of("<", begin) - begin - 6);
    begin += 6;
    if (name.compare(begin, 8, "operator") == 0)
        return "operator";
    return name.substr(begin, name.find_first_of("(<:[", begin) - begin);
}

/// Whether clang's sanitizer made the name: it compares the types of functions that are called.
bool DescribesAFunctionType(const std::string& name)
{
    return name.starts_with("typeinfo ") && name.ends_with(")");
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

TEST(ExportedSymbolsTest, NoInternalNameIsThere)
{
    for (const char* const library : s_libraries)
    {
        const std::set<std::string> owners = List(std::string("owners-") + library);
        for (const std::string& name : ExportedNames(library))
        {
            const bool isOfCompiler = name.rfind("std::", 0) == 0 ||
                                      name.find(" std::") != std::string::npos ||
                                      DescribesAFunctionType(name);
            EXPECT_TRUE(isOfCompiler || owners.count(OwnerOf(name)) == 1)
                << library << ": " << name;
        }
    }
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
