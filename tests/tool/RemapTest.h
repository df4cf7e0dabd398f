// SPDX-License-Identifier: MIT
// A directory with generated files and their maps, for tests of tlexpand remap.
#pragma once

#include "ToolTest.h"
#include <nlohmann/json.hpp>

namespace telv::test
{

class RemapTest : public ToolTest
{
protected:
    /// A generator with errors in copied text, in a macro body, in an argument, in a loop and in
    /// calculated text.
    void SetUp() override
    {
        Write("lib.tl", "@def pair(a, b) =\n"
                        "{\n"
                        "    int a = bad_in_body;\n"
                        "    int b = 0;\n"
                        "}\n");
        Write("main.tl", "@import \"lib.tl\"\n"             // 1
                         "int ok = bad_in_text;\n"          // 2
                         "pair(x, y)\n"                     // 3
                         "pair(p, `q = bad_in_argument`)\n" // 4
                         "@for(v in [1, 2])\n"              // 5
                         "{\n"
                         "    int u@(v) = 0;\n"           // 7
                         "    int w@(v) = bad_in_loop;\n" // 8
                         "\n"
                         "}@//\n"
                         "int c = @[@quote(bad_calculated)];\n"); // 11
    }

    static std::string Replace(std::string text, const std::string& from, const std::string& to)
    {
        return text.replace(text.find(from), from.size(), to);
    }

    void Generate(const std::string& output = "gen.cpp",
                  std::vector<std::string> arguments = {}) const
    {
        arguments.insert(arguments.end(), {"-o", output, "--map", output + ".map", "main.tl"});
        Expand(arguments);
    }

    /// Where each name is reported, as "FILE:LINE".
    static std::string PlaceOf(const std::string& messages, const std::string& name)
    {
        std::istringstream lines(messages);
        for (std::string line; std::getline(lines, line);)
            if (line.find("error: ") != std::string::npos && line.find(name) != std::string::npos)
                return line.substr(0, line.find(':', line.find(':') + 1));
        return "(not reported)";
    }

    /// The notes about steps of the expansion below the error that speaks of `name`.
    static std::string NotesOf(const std::string& messages, const std::string& name)
    {
        std::istringstream lines(messages);
        std::string notes;
        bool isBelow = false;
        for (std::string line; std::getline(lines, line);)
        {
            if (line.find("error: ") != std::string::npos)
            {
                if (isBelow)
                    break;
                isBelow = line.find(name) != std::string::npos;
            }
            else if (isBelow && line.find(" note: in ") != std::string::npos)
                notes += line + "\n";
        }
        return isBelow ? notes : "(not reported)";
    }

    static void ExpectNotes(const std::string& messages)
    {
        EXPECT_EQ(NotesOf(messages, "bad_in_text"), "") << messages;
        EXPECT_EQ(NotesOf(messages, "bad_in_body"),
                  "main.tl:3:1: note: in expansion of macro 'pair'\n")
            << messages;
        EXPECT_EQ(NotesOf(messages, "bad_in_argument"),
                  "lib.tl:4:9: note: in expansion of macro 'b'\n"
                  "main.tl:4:1: note: in expansion of macro 'pair'\n")
            << messages;
        EXPECT_EQ(NotesOf(messages, "bad_in_loop"), "main.tl:5:1: note: in round 1 of the loop\n")
            << messages;
        EXPECT_EQ(NotesOf(messages, "bad_calculated"), "") << messages;
    }

    static void ExpectPlaces(const std::string& messages)
    {
        EXPECT_EQ(PlaceOf(messages, "bad_in_text"), "main.tl:2") << messages;
        EXPECT_EQ(PlaceOf(messages, "bad_in_body"), "lib.tl:3") << messages;
        EXPECT_EQ(PlaceOf(messages, "bad_in_argument"), "main.tl:4") << messages;
        EXPECT_EQ(PlaceOf(messages, "bad_in_loop"), "main.tl:8") << messages;
        EXPECT_EQ(PlaceOf(messages, "bad_calculated"), "main.tl:11") << messages;
    }

    /// Runs the filter; nothing may be said on standard error.
    std::string Filter(const std::string& messages) const
    {
        const ProgramResult result = Run({"remap", "gen.cpp.map"}, messages);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.status, 0);
        return result.out;
    }
};

} // namespace telv::test
