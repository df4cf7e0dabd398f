// SPDX-License-Identifier: MIT
#include "HostileTest.h"

#include <filesystem>

namespace telv::test
{

std::string Repeat(const std::string& text, size_t count)
{
    std::string repeated;
    repeated.reserve(text.size() * count);
    for (size_t i = 0; i < count; ++i)
        repeated += text;
    return repeated;
}

std::string Describe(const ProgramResult& result)
{
    constexpr size_t most = 1000;
    return DescribeEnd(result) + "\nout: " + result.out.substr(0, most) +
           "\nerr: " + result.err.substr(0, most);
}

void HostileTest::TearDown()
{
    EXPECT_EQ(Strangers(), std::set<std::string>());
}

void HostileTest::Write(const std::string& name, std::string_view text)
{
    WriteFile(Path(name), text);
    Expect(name);
}

std::string HostileTest::Read(const std::string& name) const
{
    return ReadFile(Path(name)).value_or("(none)");
}

std::set<std::string> HostileTest::Strangers() const
{
    std::set<std::string> strangers;
    for (const auto& entry : std::filesystem::directory_iterator(Path(".")))
        if (const std::string name = entry.path().filename(); m_expected.count(name) == 0)
            strangers.insert(name);
    return strangers;
}

std::vector<std::string> HostileTest::CommandLine(const std::vector<std::string>& arguments) const
{
    std::vector<std::string> argv = {TELV_TLEXPAND_PATH};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return argv;
}

LimitedOptions HostileTest::InDirectory(LimitedOptions options) const
{
    options.directory = Path(".");
    return options;
}

ProgramResult HostileTest::Run(const std::vector<std::string>& arguments,
                               const LimitedOptions& options)
{
    const ProgramResult result = RunLimited(CommandLine(arguments), InDirectory(options));
    EXPECT_EQ(result.signal, 0) << Describe(result);
    EXPECT_FALSE(result.timedOut);
    return result;
}

ProgramResult HostileTest::Expand(std::string_view source, std::vector<std::string> arguments,
                                  const LimitedOptions& options)
{
    Write("main.tl", source);
    arguments.emplace_back("main.tl");
    return Run(arguments, options);
}

void HostileTest::ExpectText(const ProgramResult& result, const std::string& out)
{
    EXPECT_EQ(result.status, 0) << Describe(result);
    EXPECT_TRUE(result.out == out) << Describe(result);
    EXPECT_EQ(result.err, "");
}

void HostileTest::ExpectError(const ProgramResult& result, const std::string& start)
{
    EXPECT_EQ(result.status, 1) << Describe(result);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.substr(0, start.size()), start);
}

} // namespace telv::test
