// SPDX-License-Identifier: MIT
// Python code that makes processes: only the one that started the run goes on with the expansion,
// prints, reports and writes; and programs that the code starts find ordinary signals.
#include "HostileTest.h"

#if TELV_HAS_PYTHON

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace telv::test
{
namespace
{

/// A block that forks, runs `child` in the child, and in the parent waits for its end, prints its
/// status as a caller of wait gets it, and goes on with `parent`.
std::string Fork(const std::string& child, const std::string& parent = "pass")
{
    return "@runpython\n{\nimport os\npid = os.fork()\nif pid == 0:\n  " + child +
           "\nelse:\n  print os.waitpid(pid, 0)[1]\n  " + parent + "\n}\n";
}

/// Rows of what a child does and the status that its parent sees.
const struct
{
    const char* m_code;
    const char* m_printed;
} s_children[] = {
    {"pass", "0\n"},
    {"print 'child'", "child\n0\n"},
    {"raise ValueError('child')", "256\n"},
    {"import sys; sys.exit(5)", "256\n"},
    {"raise KeyboardInterrupt", "256\n"},
    {"os._exit(7)", "1792\n"},
    {"os.kill(os.getpid(), 15)", "15\n"},
    {"import sys; sys.__stdout__.write('kept back'); sys.__stderr__ = None", "0\n"},
    {"os.chdir('/'); os.close(1); os.close(2)", "0\n"},
    {"os.close(1); os.close(2); print 'nowhere'", "256\n"},
};

using PythonProcessesTest = HostileTest;

TEST_F(PythonProcessesTest, AChildEndsWithItsPythonCode)
{
    for (const auto& row : s_children)
    {
        const ProgramResult result =
            Expand("@println(before)\n" + Fork(row.m_code) + "@println(after)\ntext\n");
        EXPECT_EQ(result.err, std::string("before\n") + row.m_printed + "after\n") << row.m_code;
        EXPECT_EQ(result.out, "text\n") << row.m_code;
        EXPECT_EQ(result.status, 0) << row.m_code;
    }
}

TEST_F(PythonProcessesTest, AChildWritesNoOutput)
{
    for (const char* const name : {"out.txt", "map.json"})
        Expect(name);
    for (const auto& row : s_children)
    {
        const ProgramResult result = Expand(Fork(row.m_code) + "@println(after)\ntext\n",
                                            {"-o", "out.txt", "--map", "map.json"});
        EXPECT_EQ(result.out, row.m_printed + std::string("after\n")) << row.m_code;
        EXPECT_EQ(result.err, "") << row.m_code;
        EXPECT_EQ(Read("out.txt"), "text\n");
    }
}

TEST_F(PythonProcessesTest, AChildReportsNoError)
{
    for (const auto& row : s_children)
    {
        const ProgramResult result = Expand(Fork(row.m_code, "raise ValueError('parent')"));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        const std::string start =
            row.m_printed + std::string("main.tl(1) : error : Python error: ");
        EXPECT_EQ(result.err.substr(0, start.size()), start) << row.m_code;
        EXPECT_EQ(result.err.find(" : error : ", start.size()), std::string::npos) << result.err;
    }
}

TEST_F(PythonProcessesTest, AChildEndsInEveryConstruct)
{
    const std::string define = "@runpython\n{\nimport os\ndef f(value):\n  pid = os.fork()\n"
                               "  if pid == 0: return eval(value)\n"
                               "  return os.waitpid(pid, 0)[1]\n}\n";
    Write("lib.tl",
          define + "@def imported = {@runpython{x = f('0')}done}\n@runpython{x = f('0')}");
    const std::string rows[][2] = {
        {"@defpython p = {f('7')}\np", "0"},
        {"@defpython p = {f('None')}\np", "256"},
        {"@defpython p = {f('1/0')}\np", "256"},
        {"@defpython p(int n) = {n + f('7')}\np(2)", "2"},
        {"@defpython p(string s) = {f('1/0') + s}\np(\"1\")", "257"},
        {"@def m(int i) = {i}\n@defpython p = {f('7')}\nm(p)", "0"},
        {"@assertfails(@runpython{f('0'); raise ValueError})x", "x"},
        {"@assertfails(@runpython{f('1/0'); raise ValueError})x", "x"},
        {"@defpython p = {f('1')}\n@if(p == 0){yes}@else{no}", "yes"},
        {"@defpython p = {[f('1'), f('2')]}\n@for(x in p){x;}", "0;0;"},
        {"@str(@runpython{f('7')}x)", "\"x\""},
        {"@import \"lib.tl\"\nimported", "done"},
    };
    for (const auto& row : rows)
    {
        const ProgramResult result = Expand(define + "@println(once)" + row[0]);
        EXPECT_EQ(result.out, row[1]) << row[0];
        EXPECT_EQ(result.err, "once\n") << row[0];
        EXPECT_EQ(result.status, 0) << row[0];
    }
    ExpectText(Expand("text", {"-E", define + "@runpython{f('7')}"}), "text");
}

TEST_F(PythonProcessesTest, AChildOfAProjectPrintsNoProject)
{
    Write("main.mpfw", Fork("pass") + "$name = \"value\"\n");
    const ProgramResult result = Run({"project", "main.mpfw"});
    EXPECT_EQ(result.err, "0\n");
    EXPECT_NE(result.out.find("\"name\":\"name\",\"value\":\"value\""), std::string::npos);
    EXPECT_EQ(result.out.find("version"), result.out.rfind("version"));
}

TEST_F(PythonProcessesTest, AnExceptionHookOrADestructorThatForksGivesNoSecondRun)
{
    const char* const fork = "pid = os.fork()\n  if pid: os.waitpid(pid, 0)\n";
    const ProgramResult hook =
        Expand("@runpython\n{\nimport os, sys\ndef h(*a):\n  sys.stderr.write('hook')\n  " +
               std::string(fork) + "sys.excepthook = h\n1/0\n}\n");
    ExpectError(hook, "main.tl(1) : error : Python error: hook\n");
    EXPECT_EQ(hook.err.find("main.tl(1)"), hook.err.rfind("main.tl(1)"));
    const std::string method = "def __del__(self):\n   pid = os.fork()\n"
                               "   if pid: os.waitpid(pid, 0)\n";
    ExpectText(Expand("@runpython\n{\nimport os\nclass C(str):\n  " + method +
                      "}\n@defpython p = {C('value')}\np"),
               "value");
}

/// Whether the process has ended; one that nobody has waited for counts.
bool HasEnded(pid_t pid)
{
    const std::string stat = ReadFile("/proc/" + std::to_string(pid) + "/stat").value_or("");
    const size_t name = stat.rfind(") ");
    return name == std::string::npos || stat[name + 2] == 'Z';
}

void Await(const std::function<bool()>& happened)
{
    for (int i = 0; i < 6000 && !happened(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_TRUE(happened());
}

TEST_F(PythonProcessesTest, ASignalForTheChildLeavesTheParentsFiles)
{
    ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
    Expect("fifo");
    Expect("map.json");
    Write("main.tl", "@runpython\n{\nimport os, time\npid = os.fork()\n"
                     "if pid == 0: time.sleep(1000)\nopen('pid', 'w').write('%d.' % pid)\n}\ntext");
    Expect("pid");
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
    {
        // The map's temporary file is there while the opening of the pipe waits for a reader.
        LimitedProgram program(CommandLine({"--map", "map.json", "-o", "fifo", "main.tl"}),
                               InDirectory({}));
        Await([&] { return !Strangers().empty(); });
        const pid_t child = std::stoi(Read("pid"));
        ASSERT_EQ(kill(child, signal), 0);
        Await([&] { return HasEnded(child); });
        EXPECT_EQ(Strangers().size(), 1U);
        const int reader = open(Path("fifo").c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_EQ(program.Finish().status, 0);
        char text[8] = {};
        EXPECT_EQ(read(reader, text, sizeof(text)), 4);
        close(reader);
        EXPECT_NE(Read("map.json").find("\"size\":4"), std::string::npos);
        unlink(Path("map.json").c_str());
    }
}

TEST_F(PythonProcessesTest, ModulesThatMakeProcessesWork)
{
    const std::string code =
        "@runpython\n{\nimport multiprocessing, os, subprocess, sys\n"
        "def f(q): q.put(os.getpid())\n"
        "q = multiprocessing.Queue()\n"
        "p = multiprocessing.Process(target=f, args=(q,))\np.start()\n"
        "print q.get() == p.pid\np.join()\nprint p.exitcode\n"
        "pool = multiprocessing.Pool(2)\nprint pool.map(abs, [1, -2, 3])\n"
        "pool.close()\npool.join()\n"
        "print subprocess.check_output(['echo', 'a']) + os.popen('echo b').read()\n"
        "sys.stdout.flush()\nsys.stderr.flush()\n"
        "os.system('echo c >&2')\n}\ntext";
    const ProgramResult result = Expand("@println(before)" + code);
    EXPECT_EQ(result.err, "before\nTrue\n0\n[1, 2, 3]\na\nb\n\nc\n");
    EXPECT_EQ(result.out, "text");
}

TEST_F(PythonProcessesTest, WhatAProgramWritesComesInItsPlace)
{
    const ProgramResult result =
        Expand("@println(one)@runpython{import os; os.system('echo two >&2')}@println(three)"
               "@defpython p = {os.system('echo four >&2')}p");
    EXPECT_EQ(result.err, "one\ntwo\nthree\nfour\n");
    EXPECT_EQ(result.out, "0");
}

/// Prints the signals that a program started by Python code ignores, as a number.
const char* const s_printIgnored =
    "@runpython\n{\nimport signal, subprocess\n"
    "for line in subprocess.check_output(['cat', '/proc/self/status']).split('\\n'):\n"
    "  if line.startswith('SigIgn'): print int(line.split()[1], 16) & 0x1001000\n}\n";

TEST_F(PythonProcessesTest, ProgramsFindTheSignalsThatTheToolFound)
{
    EXPECT_EQ(Expand(s_printIgnored).err, "0\n");
    LimitedOptions options;
    options.ignoredSignals = {SIGPIPE, SIGXFSZ};
    EXPECT_EQ(Expand(s_printIgnored, {}, options).err, std::to_string(0x1001000) + "\n");
    options.ignoredSignals = {SIGPIPE};
    EXPECT_EQ(Expand(s_printIgnored, {}, options).err, std::to_string(0x1000) + "\n");
}

TEST_F(PythonProcessesTest, APipelineEndsQuietly)
{
    const ProgramResult result =
        Expand("@runpython{import os; os.system('yes 2>&1 | head -n 1 >&2')}");
    EXPECT_EQ(result.err, "y\n");
}

TEST_F(PythonProcessesTest, AScriptCannotBringTheSignalsOfWritingBack)
{
    LimitedOptions options;
    options.fileSize = 64 * 1024;
    options.outputPath = "/dev/null";
    const ProgramResult result =
        Expand("@runpython\n{\nimport signal\nsignal.signal(signal.SIGXFSZ, signal.SIG_DFL)\n"
               "text = 'x' * 100000\n}\n@defpython p = {text}\np",
               {"-o", "out.txt"}, options);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "tlexpand: can't write 'out.txt': File too large\n");
}

} // namespace
} // namespace telv::test

#endif
