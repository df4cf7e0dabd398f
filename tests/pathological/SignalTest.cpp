// SPDX-License-Identifier: MIT
// Signals at the moments when a run can be met: while it expands, while it waits for input, while
// its outputs are half written. It ends by the signal and leaves nothing behind.
#include "HostileTest.h"
#include "support/PlainCrc32.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace telv::test
{
namespace
{

class SignalTest : public HostileTest
{
protected:
    /// Waits until something has happened, or fails.
    static void Await(const std::function<bool()>& happened)
    {
        using namespace std::chrono_literals;
        for (int i = 0; i < 60'000 && !happened(); ++i)
            std::this_thread::sleep_for(500us);
        EXPECT_TRUE(happened());
    }

    /// Whether each of the process's threads waits for something.
    static bool IsAsleep(pid_t pid)
    {
        const auto tasks = "/proc/" + std::to_string(pid) + "/task";
        for (const auto& task : std::filesystem::directory_iterator(tasks))
        {
            const std::string stat = ReadFile(task.path() / "stat").value_or("");
            if (stat.find("(tlexpand) S") == std::string::npos)
                return false;
        }
        return true;
    }

    void ExpectDeath(LimitedProgram& program, int signal)
    {
        program.Send(signal);
        const ProgramResult result = program.Finish();
        EXPECT_EQ(result.signal, signal) << Describe(result);
        EXPECT_FALSE(result.timedOut);
        EXPECT_EQ(Strangers(), std::set<std::string>());
    }
};

const int s_signals[] = {SIGTERM, SIGINT, SIGHUP, SIGQUIT};

/// Every signal that ends a process, can be caught and is not one of writing.
std::vector<int> EndingSignals()
{
    std::vector<int> signals = {SIGHUP,  SIGINT,  SIGQUIT, SIGILL,  SIGTRAP, SIGABRT,  SIGBUS,
                                SIGFPE,  SIGUSR1, SIGSEGV, SIGUSR2, SIGALRM, SIGTERM,  SIGSTKFLT,
                                SIGXCPU, SIGPROF, SIGPOLL, SIGPWR,  SIGSYS,  SIGVTALRM};
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal)
        signals.push_back(signal);
    // The sanitizer reports these and ends the process in its own way.
    if (s_underAddressSanitizer)
        for (const int reported : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT})
            std::erase(signals, reported);
    return signals;
}

TEST_F(SignalTest, WhileItExpands)
{
    Write("out.txt", "earlier");
    Write("main.tl", "@scope{@println(ready)}@while(true){}");
    for (const int signal : s_signals)
    {
        LimitedOptions options;
        options.outputPath = "/dev/null";
        LimitedProgram program(CommandLine({"main.tl"}), InDirectory(options));
        Await([&] { return program.ErrorSoFar() == "ready\n"; });
        ExpectDeath(program, signal);
    }
    EXPECT_EQ(Read("out.txt"), "earlier");
}

TEST_F(SignalTest, WhileOutputsAreWritten)
{
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    Expect("fifo");
    Write("map.json", "earlier");
    Write("main.tl", "text");
    for (const int signal : EndingSignals())
    {
        // The map's temporary file is there while the opening of the pipe waits for a reader.
        LimitedProgram program(CommandLine({"--map", "map.json", "-o", "fifo", "main.tl"}),
                               InDirectory({}));
        Await([&] { return !Strangers().empty(); });
        ExpectDeath(program, signal);
        EXPECT_EQ(Read("map.json"), "earlier");
    }
}

TEST_F(SignalTest, WhileItWaitsForInput)
{
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    Expect("fifo");
    const int writer = open(Path("fifo").c_str(), O_RDWR | O_CLOEXEC);
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(writer, 0);
    ASSERT_GE(terminal, 0);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    Write("out.txt", "earlier");
    for (const std::string& input : {Path("fifo"), std::string(ptsname(terminal))})
        for (const int signal : s_signals)
        {
            LimitedOptions options;
            options.inputPath = input;
            LimitedProgram program(CommandLine({"-o", "out.txt", "-"}), InDirectory(options));
            Await([&] { return IsAsleep(program.Pid()); });
            ExpectDeath(program, signal);
            EXPECT_EQ(Read("out.txt"), "earlier");
        }
    close(writer);
    close(terminal);
}

TEST_F(SignalTest, WhileItWaitsForTheOpeningOfItsInput)
{
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    Expect("fifo");
    for (const int signal : s_signals)
    {
        LimitedProgram program(CommandLine({"fifo"}), InDirectory({}));
        Await([&] { return IsAsleep(program.Pid()); });
        ExpectDeath(program, signal);
    }
}

/// The process that `pid` has started; 0 while it has none.
pid_t ChildOf(pid_t pid)
{
    const std::string task = "/proc/" + std::to_string(pid) + "/task/" + std::to_string(pid);
    const std::string children = ReadFile(task + "/children").value_or("");
    return children.empty() ? 0 : std::stoi(children);
}

TEST_F(SignalTest, AsTheFirstProcessOfAContainer)
{
    std::vector<std::string> unshare = {"/usr/bin/unshare", "--pid", "--fork"};
    if (geteuid() != 0) // others may do so where they are root themselves
        unshare.insert(unshare.end(), {"--user", "--map-root-user"});
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    Expect("fifo");
    Write("map.json", "earlier");
    Write("main.tl", "text");
    for (const int signal : s_signals)
    {
        std::vector<std::string> command = unshare;
        for (const std::string& word : CommandLine({"--map", "map.json", "-o", "fifo", "main.tl"}))
            command.push_back(word);
        LimitedProgram program(command, InDirectory({}));
        Await([&] { return !Strangers().empty(); });
        ASSERT_EQ(kill(ChildOf(program.Pid()), signal), 0);
        const ProgramResult result = program.Finish();
        EXPECT_EQ(result.status, 128 + signal) << Describe(result);
        EXPECT_EQ(Strangers(), std::set<std::string>());
        EXPECT_EQ(Read("map.json"), "earlier");
    }
}

#if TELV_HAS_PYTHON

// The signal of a timer goes to any thread that does not hold it back: to Python's while the one
// that renames does.
TEST_F(SignalTest, ThatAThreadOfPythonReceives)
{
    Write("main.tl", "@runpython\n{\nimport signal, threading, time\n"
                     "thread = threading.Thread(target=time.sleep, args=(100,))\n"
                     "thread.daemon = True\nthread.start()\ntime.sleep(0.001)\n"
                     "signal.setitimer(signal.ITIMER_REAL, int(_DELAY_) * 1e-6)\n}\ntext");
    for (int i = 0; i < 120; ++i)
    {
        Write("out.txt", "earlier");
        Write("map.json", "earlier");
        const int delay = 100 + i * 100;
        const ProgramResult result =
            RunLimited(CommandLine({"-o", "out.txt", "--map", "map.json", "-D",
                                    "DELAY=" + std::to_string(delay), "main.tl"}),
                       InDirectory({}));
        const bool isNew = Read("out.txt") == "text";
        EXPECT_EQ(Read("out.txt"), isNew ? "text" : "earlier");
        EXPECT_EQ(Read("map.json").rfind(isNew ? "{\"version\":1," : "earlier", 0), 0u) << delay;
        EXPECT_EQ(result.signal, result.status == 0 ? 0 : SIGALRM) << Describe(result);
        EXPECT_EQ(Strangers(), std::set<std::string>());
    }
}

#endif

TEST_F(SignalTest, IgnoredSignalsStayIgnored)
{
    Write("main.tl", "@println(ready)@for(x in [" + Repeat("1,", 200'000) + "1]){x}");
    LimitedOptions options;
    options.ignoredSignals = {SIGHUP, SIGINT};
    LimitedProgram program(CommandLine({"main.tl"}), InDirectory(options));
    Await([&] { return program.ErrorSoFar() == "ready\n"; });
    for (int i = 0; i < 20; ++i)
    {
        program.Send(SIGHUP);
        program.Send(SIGINT);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const ProgramResult result = program.Finish();
    EXPECT_EQ(result.status, 0) << Describe(result);
    EXPECT_EQ(result.out, Repeat("1", 200'001));
}

/// What the outputs of a run of `text` with -o, --map and --depfile are: "earlier", "new", or what
/// is wrong with them.
std::string GenerationOf(const std::string& out, const std::string& map, const std::string& depfile,
                         const std::string& text)
{
    if (out == "earlier" && map == "earlier" && depfile == "earlier")
        return "earlier";
    const std::string sum = "\"crc32\":" + std::to_string(PlainCrc32(text)) + ",";
    const bool isMapNew = map.find(sum) != std::string::npos && map.ends_with("]}\n");
    if (out == text && isMapNew && depfile == "out.txt: main.tl\n")
        return "new";
    return out.substr(0, 20) + "..., " + map.substr(0, 100) + "..., " + depfile;
}

TEST_F(SignalTest, AtAnyMoment)
{
    const std::string text = Repeat("0123456789abcdef\n", 60'000);
    Write("main.tl", text);
    for (int i = 0; i < 60; ++i)
    {
        for (const char* const output : {"out.txt", "map.json", "out.d"})
            Write(output, "earlier");
        LimitedProgram program(CommandLine({"-o", "out.txt", "--map", "map.json", "--map-runs",
                                            "--depfile", "out.d", "main.tl"}),
                               InDirectory({}));
        // Half of the signals come while it starts and reads, half when files are being made.
        const bool hasBegun = i % 2 != 0;
        if (hasBegun)
            Await([&] { return !Strangers().empty() || Read("out.txt") == text; });
        std::this_thread::sleep_for(std::chrono::microseconds(hasBegun ? 40 * i : 500 * i));
        program.Send(i % 4 < 2 ? SIGTERM : SIGINT);
        const ProgramResult result = program.Finish();
        const std::string generation =
            GenerationOf(Read("out.txt"), Read("map.json"), Read("out.d"), text);
        EXPECT_TRUE(generation == "new" || (generation == "earlier" && result.signal != 0))
            << i << ": " << generation << "\n"
            << Describe(result);
        EXPECT_EQ(Strangers(), std::set<std::string>());
    }
}

} // namespace
} // namespace telv::test
