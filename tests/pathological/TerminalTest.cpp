// SPDX-License-Identifier: MIT
// What a source can send to the terminal of someone who only wanted to see an error: nothing that
// drives it, and nothing that makes the text look like another one.
#include "HostileTest.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace telv::test
{
namespace
{

/// A terminal that changes nothing in what is written to it.
class Terminal
{
public:
    Terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK))
    {
        EXPECT_EQ(grantpt(m_master), 0);
        EXPECT_EQ(unlockpt(m_master), 0);
        m_slave = open(Name().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios settings = {};
        EXPECT_EQ(tcgetattr(m_slave, &settings), 0);
        cfmakeraw(&settings);
        EXPECT_EQ(tcsetattr(m_slave, TCSANOW, &settings), 0);
    }
    ~Terminal()
    {
        close(m_slave);
        close(m_master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    std::string Name() const { return ptsname(m_master); }

    /// What was written since the last time.
    std::string Read() const
    {
        std::string text;
        std::array<char, 4096> buffer;
        ssize_t got = 0;
        while ((got = read(m_master, buffer.data(), buffer.size())) > 0)
            text.append(buffer.data(), static_cast<size_t>(got));
        return text;
    }

private:
    int m_master;
    int m_slave = -1;
};

using TerminalTest = HostileTest;

const struct
{
    const char* m_character;
    const char* m_shown;
} s_characters[] = {
    {"\x1b", "\\x1b"},
    {"\x7f", "\\x7f"},
    {"\xc2\x9b", "\\xc2\\x9b"},
    {"\xc2\xad", "\\xc2\\xad"},                   // soft hyphen
    {"\xd8\x9c", "\\xd8\\x9c"},                   // Arabic letter mark
    {"\xe1\x85\xa0", "\\xe1\\x85\\xa0"},          // Hangul filler
    {"\xe2\x80\x8b", "\\xe2\\x80\\x8b"},          // zero width space
    {"\xe2\x80\x8d", "\\xe2\\x80\\x8d"},          // zero width joiner
    {"\xe2\x80\x8f", "\\xe2\\x80\\x8f"},          // right-to-left mark
    {"\xe2\x80\xa8", "\\xe2\\x80\\xa8"},          // line separator
    {"\xe2\x80\xae", "\\xe2\\x80\\xae"},          // right-to-left override
    {"\xe2\x81\xa0", "\\xe2\\x81\\xa0"},          // word joiner
    {"\xe2\x81\xa6", "\\xe2\\x81\\xa6"},          // left-to-right isolate
    {"\xe2\x81\xa9", "\\xe2\\x81\\xa9"},          // pop directional isolate
    {"\xe3\x85\xa4", "\\xe3\\x85\\xa4"},          // Hangul filler
    {"\xef\xb8\x8f", "\\xef\\xb8\\x8f"},          // variation selector
    {"\xef\xbb\xbf", "\\xef\\xbb\\xbf"},          // byte order mark
    {"\xef\xbf\xbb", "\\xef\\xbf\\xbb"},          // interlinear annotation terminator
    {"\xf3\xa0\x80\xa0", "\\xf3\\xa0\\x80\\xa0"}, // tag space
    {"\xf3\xa0\x84\x80", "\\xf3\\xa0\\x84\\x80"}, // variation selector 17
    {"\xc3\xa4", "\xc3\xa4"},                     // a with diaeresis
    {"\xd7\x90", "\xd7\x90"},                     // Hebrew alef
    {"\xe2\x80\x90", "\xe2\x80\x90"},             // hyphen
    {"\xe2\x82\xac", "\xe2\x82\xac"},             // euro sign
    {"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80"},     // grinning face
};

TEST_F(TerminalTest, WhatCannotBeSeenIsShownEscaped)
{
    const Terminal terminal;
    for (const auto& row : s_characters)
    {
        const std::string c = row.m_character;
        const std::string shown = row.m_shown;
        LimitedOptions options;
        options.errorPath = terminal.Name();
        options.environment = {"TERM=dumb"};
        const std::string source = "@fail(\"a" + c + "b\") // " + c + "c\n";
        EXPECT_EQ(Expand(source, {}, options).status, 1);
        const std::string text = terminal.Read();
        EXPECT_NE(text.find("a" + shown + "b"), std::string::npos) << text;
        EXPECT_NE(text.find(" 1 | @fail(\"a" + shown + "b\") // " + shown + "c\n"),
                  std::string::npos)
            << text;
        EXPECT_TRUE(c == shown || text.find(c) == std::string::npos) << text;
    }
}

TEST_F(TerminalTest, NamesOfFilesAreShownEscaped)
{
    const Terminal terminal;
    LimitedOptions options;
    options.errorPath = terminal.Name();
    options.environment = {"TERM=dumb"};
    Run({"no\xe2\x80\xaesuch\x1b[31m"}, options);
    EXPECT_EQ(terminal.Read(),
              "tlexpand: can't read 'no\\xe2\\x80\\xaesuch\\x1b[31m': No such file or directory\n");
}

TEST_F(TerminalTest, OtherReadersGetTheBytes)
{
    for (const auto& row : s_characters)
    {
        const std::string line = std::string("@fail(\"a") + row.m_character + "b\")";
        const ProgramResult result = Expand(line);
        EXPECT_NE(result.err.find(" 1 | " + line), std::string::npos) << result.err;
    }
}

} // namespace
} // namespace telv::test
