// SPDX-License-Identifier: MIT
// Outputs of every kind, in every state of the standard streams: a whole file, or the earlier one
// and an error.
#include "HostileTest.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace telv::test
{
namespace
{

class OutputFilesTest : public HostileTest
{
protected:
    /// The run failed as one does that can't write, and said so.
    static void ExpectFileError(const ProgramResult& result, const std::string& err)
    {
        EXPECT_EQ(result.status, 2) << Describe(result);
        EXPECT_EQ(result.err, "tlexpand: " + err + "\n");
    }
};

TEST_F(OutputFilesTest, ErrorKeepsTheEarlierFile)
{
    Write("out.txt", "earlier");
    ExpectError(Expand("text\n@fail(\"no\")", {"-o", "out.txt"}), "main.tl(2) : error : no\n");
    EXPECT_EQ(Read("out.txt"), "earlier");
    ExpectError(Expand("@fail(\"no\")", {"-o", "new.txt"}), "main.tl(1) : error : no\n");
}

TEST_F(OutputFilesTest, ErrorAtTheSecondOutputKeepsTheFirst)
{
    Write("out.txt", "earlier");
    ExpectFileError(Expand("text", {"-o", "out.txt", "--map", "none/map.json"}),
                    "can't write 'none/map.json': No such file or directory");
    ExpectFileError(Expand("text", {"-o", "out.txt", "--map", "/dev/full"}),
                    "can't write '/dev/full': No space left on device");
    EXPECT_EQ(Read("out.txt"), "earlier");
}

TEST_F(OutputFilesTest, OutputsThatAreOneFile)
{
    Write("out.txt", "earlier");
    std::filesystem::create_hard_link(Path("out.txt"), Path("hard"));
    std::filesystem::create_symlink("out.txt", Path("soft"));
    Expect("hard");
    Expect("soft");
    for (const char* const other : {"out.txt", "./out.txt", "hard", "soft"})
    {
        const ProgramResult result = Expand("text", {"-o", "out.txt", "--map", other});
        EXPECT_EQ(result.status, 2) << other;
        EXPECT_EQ(Read("out.txt"), "earlier");
    }
    EXPECT_EQ(Expand("text", {"-o", "new", "--map", "./new"}).status, 2);
}

TEST_F(OutputFilesTest, OutputThatIsAnImport)
{
    Write("lib.tl", "@def m = {x}\n");
    const ProgramResult result = Expand("@import \"lib.tl\"\nm", {"-o", "lib.tl"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(Read("lib.tl"), "@def m = {x}\n");
}

TEST_F(OutputFilesTest, OutputOverTheMainFile)
{
    ExpectText(Expand("@def m = {x}\nm", {"-o", "main.tl"}), "");
    EXPECT_EQ(Read("main.tl"), "x");
}

#if TELV_HAS_PYTHON

TEST_F(OutputFilesTest, WhatComesToAnOutputsPlaceMeanwhileIsNotReplaced)
{
    const struct
    {
        const char* m_code;
        const char* m_reason;
        std::filesystem::file_type m_type;
    } rows[] = {
        {"os.mkdir('NAME')", "Is a directory", std::filesystem::file_type::directory},
        {"os.mkdir('NAME'); open('NAME/x', 'w')", "Is a directory",
         std::filesystem::file_type::directory},
        {"os.mkfifo('NAME')", "File exists", std::filesystem::file_type::fifo},
        {"os.symlink('/dev/null', 'NAME')", "File exists", std::filesystem::file_type::symlink},
    };
    const std::vector<std::string> outputs[] = {
        {"-o", "one"}, {"-o", "one", "--map", "two"}, {"-o", "two", "--map", "one"}};
    for (const auto& row : rows)
        for (const auto& names : outputs)
            for (const bool wasThere : {false, true})
            {
                for (const char* const name : {"one", "two"})
                {
                    std::filesystem::remove_all(Path(name));
                    if (wasThere)
                        Write(name, "earlier");
                    Expect(name);
                }
                std::string code = row.m_code;
                for (size_t at = 0; (at = code.find("NAME")) != std::string::npos;)
                    code.replace(at, 4, "one");
                const std::string remove = wasThere ? "os.remove('one'); " : "";
                ExpectFileError(Expand("@runpython{import os; " + remove + code + "}text", names),
                                std::string("can't write 'one': ") + row.m_reason);
                EXPECT_EQ(std::filesystem::symlink_status(Path("one")).type(), row.m_type);
                EXPECT_EQ(Read("two"), wasThere ? "earlier" : "(none)");
            }
}

#endif

TEST_F(OutputFilesTest, SymbolicLinksAreFollowed)
{
    std::filesystem::create_directory(Path("folder"));
    WriteFile(Path("folder/target"), "earlier");
    std::filesystem::create_symlink("folder/target", Path("link"));
    std::filesystem::create_symlink("link", Path("link2"));
    std::filesystem::create_symlink("folder/absent", Path("dangling"));
    std::filesystem::create_symlink("loop", Path("loop"));
    for (const char* const name : {"folder", "link", "link2", "dangling", "loop"})
        Expect(name);
    ExpectText(Expand("text", {"-o", "link2"}), "");
    EXPECT_TRUE(std::filesystem::is_symlink(Path("link")));
    EXPECT_TRUE(std::filesystem::is_symlink(Path("link2")));
    EXPECT_EQ(Read("folder/target"), "text");
    ExpectText(Expand("text", {"-o", "dangling"}), "");
    EXPECT_EQ(Read("folder/absent"), "text");
    EXPECT_EQ(Expand("text", {"-o", "loop"}).status, 2);
}

TEST_F(OutputFilesTest, DevicesStayDevices)
{
    ExpectText(Expand("text", {"-o", "/dev/null"}), "");
    struct stat status;
    ASSERT_EQ(stat("/dev/null", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
    ExpectFileError(Expand("text", {"-o", "/dev/full"}),
                    "can't write '/dev/full': No space left on device");
    ExpectText(Expand("text", {"-o", "/dev/stdout"}), "text");
    ExpectFileError(Expand("text", {"-o", "."}), "can't write '.': Is a directory");
}

TEST_F(OutputFilesTest, FifosAreWrittenTo)
{
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    Expect("fifo");
    const int reader = open(Path("fifo").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    ExpectText(Expand("text", {"-o", "fifo"}), "");
    char buffer[16];
    EXPECT_EQ(read(reader, buffer, sizeof(buffer)), 4);
    close(reader);
    struct stat status;
    ASSERT_EQ(stat(Path("fifo").c_str(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

TEST_F(OutputFilesTest, FullDisk)
{
    Write("out.txt", "earlier");
    Write("main.tl", "@for(x in [1,2,3,4]){" + std::string(100'000, 'x') + "}");
    LimitedOptions options;
    options.fileSize = 64 * 1024;
    ExpectFileError(Run({"-o", "out.txt", "main.tl"}, options),
                    "can't write 'out.txt': File too large");
    EXPECT_EQ(Read("out.txt"), "earlier");
    LimitedOptions full;
    full.outputPath = "/dev/full";
    ExpectFileError(Run({"main.tl"}, full),
                    "can't write 'standard output': No space left on device");
    ExpectFileError(Expand("@println(x)\n", {"-o", "out.txt"}, full),
                    "can't write standard output: No space left on device");
    EXPECT_EQ(Read("out.txt"), "earlier");
}

TEST_F(OutputFilesTest, FullStandardErrorDoesNotHideTheStatus)
{
    LimitedOptions options;
    options.errorPath = "/dev/full";
    EXPECT_EQ(Expand("@fail(\"no\")", {}, options).status, 1);
    EXPECT_EQ(Run({"--no-such-option"}, options).status, 2);
}

TEST_F(OutputFilesTest, ClosedStreamsHurtNoFile)
{
    Expect("out.txt");
    Expect("map.json");
    for (unsigned set = 0; set < 8; ++set)
    {
        LimitedOptions options;
        for (int fd = 0; fd <= 2; ++fd)
            if ((set >> fd & 1) != 0)
                options.closed.push_back(fd);
        const bool isOutputClosed = (set & 2) != 0;
        for (const std::string source : {"text @println(printed)", "text"})
        {
            Write("out.txt", "earlier");
            Write("map.json", "earlier");
            const ProgramResult result =
                Expand(source, {"-o", "out.txt", "--map", "map.json"}, options);
            // What is printed has nowhere to go without standard output: no silent success then.
            const bool isLost = isOutputClosed && source != "text";
            EXPECT_EQ(result.status, isLost ? 2 : 0) << Describe(result);
            EXPECT_EQ(Read("main.tl"), source);
            EXPECT_EQ(Read("out.txt"), isLost ? "earlier" : "text");
            EXPECT_EQ(Read("map.json").rfind(isLost ? "earlier" : "{\"version\":1,", 0), 0u);
        }
        EXPECT_EQ(Expand("text", {}, options).status, isOutputClosed ? 2 : 0);
        EXPECT_EQ(Expand("@fail(\"no\")", {}, options).status, 1);
        EXPECT_EQ(Read("main.tl"), "@fail(\"no\")");
        EXPECT_EQ(Run({"-"}, options).status, (set & 1) != 0 ? 2 : 0);
    }
}

TEST_F(OutputFilesTest, ReaderThatGoesAway)
{
    LimitedOptions options;
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    Expect("fifo");
    options.outputPath = Path("fifo");
    const int reader = open(Path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    Write("main.tl", "@while(true){@println(" + std::string(1000, 'x') + ")}");
    LimitedProgram program(CommandLine({"-o", "out.txt", "main.tl"}), InDirectory(options));
    pollfd waited{reader, POLLIN, 0};
    EXPECT_EQ(poll(&waited, 1, 30'000), 1);
    close(reader);
    const ProgramResult result = program.Finish();
    ExpectFileError(result, "can't write standard output: Broken pipe");
}

TEST_F(OutputFilesTest, RunsThatRaceLeaveAWholeFile)
{
    Expect("out.txt");
    Write("main.tl", "@for(x in [1,2,3,4,5,6,7,8,9,10]){" + Repeat("\"$(WHO)\"", 2000) + "}");
    std::vector<std::unique_ptr<LimitedProgram>> programs;
    for (int i = 0; i < 30; ++i)
        programs.push_back(std::make_unique<LimitedProgram>(
            CommandLine({"-D", "WHO=" + std::to_string(10 + i), "-o", "out.txt", "main.tl"}),
            InDirectory({})));
    for (const auto& program : programs)
        EXPECT_EQ(program->Finish().status, 0);
    const std::string text = Read("out.txt");
    EXPECT_EQ(text, Repeat(text.substr(0, 4), 20'000));
}

TEST_F(OutputFilesTest, PermissionsOfANewFile)
{
    Expect("out.txt");
    const mode_t before = umask(027);
    ExpectText(Expand("text", {"-o", "out.txt"}), "");
    umask(before);
    struct stat status;
    ASSERT_EQ(stat(Path("out.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0640u);
}

} // namespace
} // namespace telv::test
