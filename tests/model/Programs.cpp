// SPDX-License-Identifier: MIT
// Cases come from their folder; random programs from the grammar of the fuzzers.
#include "Programs.h"
#include "Grammar.h"
#include "support/Files.h"
#include "support/TestCase.h"

namespace telv::test
{

namespace
{

constexpr char s_separator = '\x1e';

std::vector<std::string> Split(const std::string& text)
{
    std::vector<std::string> files;
    size_t begin = 0;
    for (size_t end = 0; end != std::string::npos; begin = end + 1)
    {
        end = text.find(s_separator, begin);
        files.push_back(text.substr(begin, end - begin));
    }
    return files;
}

} // namespace

std::vector<Program> CasePrograms()
{
    std::vector<Program> programs;
    for (const TestCase& testCase : FindCases(std::string(TELV_SOURCE_DIR) + "/tests/cases"))
        if (const auto text = ReadFile(testCase.directory + "/" + testCase.name))
            programs.push_back({testCase.path, {*text}});
    return programs;
}

/// What is defined is used again behind it, more than once: what is kept of a text is then used.
Program RandomProgram(uint32_t seed)
{
    fuzz::Grammar grammar(seed);
    std::vector<std::string> files = Split(grammar.Text(fuzz::Start::Program));
    std::string& main = files[0];
    for (size_t i = grammar.Below(4); i != 0; --i)
        main += grammar.Name() + " " + grammar.Part(fuzz::Start::Program) + "\n";
    if (grammar.OneIn(3))
        main = "@let int i = {0}\n@while(i < 3)\n{\n" + main + "\n@let i = {i + 1}\n}\n";
    return {"seed " + std::to_string(seed), files};
}

} // namespace telv::test
