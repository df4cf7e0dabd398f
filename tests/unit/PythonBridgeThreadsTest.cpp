// SPDX-License-Identifier: MIT
// Python from several threads of the application: one at a time, each with its run's output and
// errors, whatever the order of starts and ends.
#if TELV_HAS_PYTHON

#include "PythonBridgeSupport.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <functional>
#include <thread>

namespace telv::python
{

namespace
{

void InThreads(int count, const std::function<void(int)>& operation)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&operation, i] { operation(i); });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(PythonBridge, ThreadsUsePythonOneAtATime)
{
    InThreads(8,
              [](int i)
              {
                  StringStream printed(4096);
                  ExpansionRun run;
                  run.m_printStream = &printed;
                  const ExpansionRunScope scope(run);
                  const std::string n = std::to_string(i);
                  std::string expected;
                  for (int k = 0; k < 50; ++k)
                  {
                      EXPECT_EQ(Expand("@defpython p = {" + n + " * 2}@println(a" + n +
                                       ")@runpython{import time; time.sleep(0.0001); print 'b" + n +
                                       "'}p"),
                                std::to_string(i * 2));
                      expected += "a" + n + "\nb" + n + "\n";
                      EXPECT_EQ(Eval("1/0 + " + n),
                                Raised("ZeroDivisionError: integer division or modulo by zero"));
                  }
                  EXPECT_EQ(Str(printed.GetString()), expected);
              });
}

TEST_F(PythonBridge, ThreadsStartAndEndItInAnyOrder)
{
    InThreads(8,
              [](int i)
              {
                  for (int k = 0; k < 10; ++k)
                  {
                      EXPECT_EQ(Eval("__import__('threading').currentThread().getName() and " +
                                     std::to_string(i)),
                                std::to_string(i));
                      if (k % 4 == i % 4)
                          UninitPython();
                  }
              });
}

TEST_F(PythonBridge, TheThreadThatStartedItMayEndFirst)
{
    for (int k = 0; k < 5; ++k)
    {
        std::thread([] { EXPECT_EQ(Execute("import threading\nkept = [1]\n"), ""); }).join();
        std::thread([] { EXPECT_EQ(Eval("kept"), "[1]"); }).join();
        EXPECT_EQ(Eval("kept"), "[1]");
        std::thread(UninitPython).join();
        EXPECT_EQ(Eval("'kept' in globals()"), "0");
    }
}

TEST_F(PythonBridge, ThreadsOfPythonPrintForTheRunThatWaitsForThem)
{
    StringStream printed(4096);
    ExpansionRun run;
    run.m_printStream = &printed;
    const ExpansionRunScope scope(run);
    EXPECT_EQ(Execute("import threading\ndef f():\n  print 'from a thread'\n"
                      "t = threading.Thread(target=f)\nt.start()\nt.join()\n"),
              "");
    EXPECT_EQ(Str(printed.GetString()), "from a thread\n");
}

TEST_F(PythonBridge, DaemonThreadsOutliveTheEnd)
{
    for (int k = 0; k < 5; ++k)
    {
        ASSERT_EQ(Execute("import threading, time\ndef f():\n  while True: time.sleep(0.0001)\n"
                          "for i in range(3):\n  t = threading.Thread(target=f)\n"
                          "  t.daemon = True\n  t.start()\ntime.sleep(0.002)\nv = 1\n"),
                  "");
        UninitPython();
        EXPECT_FALSE(s_haveInitialisedPython);
        EXPECT_EQ(Eval("'v' in globals()"), "0");
        EXPECT_EQ(Execute("import time\ntime.sleep(0.002)\n"), "");
    }
}

TEST_F(PythonBridge, FinishingTellsTheFirstError)
{
    EXPECT_EQ(Execute("import atexit\ndef f(): raise ValueError('late')\natexit.register(f)\n"),
              "");
    try
    {
        FinishPython(s_errorPosition);
        FAIL();
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(e.m_pos, s_errorPosition);
        EXPECT_NE(Str(e.m_description).find("ValueError: late\n"), std::string::npos);
    }
    EXPECT_FALSE(s_haveInitialisedPython);
    FinishPython(s_errorPosition);
    EXPECT_EQ(Execute("import atexit, sys\natexit.register(sys.exit, 3)\n"), "");
    UninitPython();
    EXPECT_EQ(Eval("1"), "1");
}

} // namespace

} // namespace telv::python

#endif
