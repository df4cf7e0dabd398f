// SPDX-License-Identifier: MIT
// Code that needs much stack, on threads that have little.
#if TELV_HAS_PYTHON

#include "PythonBridgeSupport.h"
#include "support/Files.h"
#include "support/TempDir.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <functional>
#include <pthread.h>

namespace telv::python
{

namespace
{

/// Runs `operation` on a thread of its own with `stackSize` bytes of stack.
void RunOnStack(size_t stackSize, std::function<void()> operation)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stackSize);
    pthread_t thread;
    const auto start = [](void* given) -> void*
    {
        (*static_cast<std::function<void()>*>(given))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &operation), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

/// Each either ends well or in an error of Python; the text says which of them.
const Row s_hungry[] = {
    {"x = eval('+'.join(['1'] * 3000))\n", ""},
    {"x = eval('+'.join(['1'] * 300000))\n", ""},
    {"exec 'if 0: pass\\n' + 'elif 0: pass\\n' * 1000\n", ""},
    {"exec 'if 0: pass\\n' + 'elif 0: pass\\n' * 30000\n", ""},
    {"a = 1\nexec 'a' + '<a' * 100000\n", ""},
    {"import marshal\nd = []\nfor i in range(1900): d = [d]\nmarshal.dumps(d)\n", ""},
    {"def f(x): return sorted([1, 2], key=f)\nf(1)\n", "maximum recursion depth exceeded"},
    {"def f(x, y=0): return sorted([1, 2], cmp=f)\nf(1)\n", "maximum recursion depth exceeded"},
    {"def f(x): return map(f, [x])\nf(1)\n", "maximum recursion depth exceeded"},
    {"class C(object):\n  def __getattr__(self, n): return getattr(self, n + 'x')\nC().a\n",
     "maximum recursion depth exceeded"},
    {"class C(object):\n  def __repr__(self): return '%r' % self\nrepr(C())\n",
     "maximum recursion depth exceeded"},
    {"class C:\n  def __cmp__(self, o): return cmp(self, o)\nC() < C()\n",
     "maximum recursion depth exceeded"},
    {"import copy\nd = []\nfor i in range(5000): d = [d]\ncopy.deepcopy(d)\n",
     "maximum recursion depth exceeded"},
    {"import cPickle\nd = []\nfor i in range(5000): d = [d]\ncPickle.dumps(d)\n",
     "maximum recursion depth exceeded"},
    {"import json\njson.loads('[' * 100000)\n", "maximum recursion depth exceeded"},
    {"eval('-' * 5000 + '1')\n", "MemoryError"},
};

TEST_F(PythonBridge, HungryCodeOnSmallStacks)
{
    for (const size_t kibi : {256, 768, 1024, 8192})
        for (const Row& row : s_hungry)
        {
            std::string message;
            RunOnStack(kibi * 1024, [&] { message = Execute(row.source); });
            if (row.expected.empty())
                EXPECT_EQ(message, "") << kibi << " KiB: " << row.source;
            else
                EXPECT_NE(message.find(row.expected), std::string::npos)
                    << kibi << " KiB: " << row.source << message;
        }
}

TEST_F(PythonBridge, HungryCodeAtTheEndOfTheStack)
{
    ASSERT_EQ(Execute("ends = calls = 0\n"
                      "def f(x): return sorted([1, 2], key=f)\n"
                      "def g():\n  global calls, ends\n  calls += 1\n"
                      "  if calls % 16: return 0\n  try: f(1)\n  except RuntimeError: ends += 1\n"
                      "  eval('+'.join(['1'] * 3000))\n  return 0\n"),
              "");
    for (const size_t kibi : {256, 768, 1024})
        RunOnStack(kibi * 1024,
                   []
                   {
                       const std::string message = Expand("@defpython p = {g()}@def m = {p m}m");
                       EXPECT_EQ(message.substr(0, message.find('\n')),
                                 "error: Expansion nested too deeply");
                   });
    EXPECT_EQ(Eval("ends > 5"), "1");
}

TEST_F(PythonBridge, ModulesThatImportOneAnotherAreBoundedToo)
{
    const test::TempDir dir;
    for (int i = 0; i < 1200; ++i)
        test::WriteFile(dir.Path("chain" + std::to_string(i) + ".py"),
                        "import chain" + std::to_string(i + 1) + "\n");
    ExpansionRun run;
    run.m_pythonPath = {dir.Path("")};
    const ExpansionRunScope scope(run);
    const std::string message = Execute("import chain0\n");
    EXPECT_NE(message.find("import chain400\n"), std::string::npos) << message;
    EXPECT_EQ(Eval("__import__('sys').path[0]"), dir.Path(""));
}

TEST_F(PythonBridge, CodeThatNoStackCouldCompileIsAnErrorWithAPlace)
{
    const std::string message = Execute("x = '" + std::string(size_t(80) << 20, 'x') + "'\n");
    EXPECT_EQ(message, "Expansion nested too deeply");
    EXPECT_EQ(Execute("x = '" + std::string(size_t(8) << 20, 'x') + "'\n"), "");
}

TEST_F(PythonBridge, ModulePathIsThatOfTheRun)
{
    const test::TempDir one;
    const test::TempDir two;
    test::WriteFile(one.Path("telvprobe1.py"), "x = 1\n");
    test::WriteFile(two.Path("telvprobe2.py"), "x = 2\n");
    const std::string before = Eval("__import__('sys').path");
    {
        ExpansionRun run;
        run.m_pythonPath = {one.Path(""), two.Path("")};
        const ExpansionRunScope scope(run);
        EXPECT_EQ(Eval("__import__('telvprobe1').x + __import__('telvprobe2').x"), "3");
        EXPECT_EQ(Eval("__import__('sys').path[:2]"),
                  "[" + one.Path("") + "," + two.Path("") + "]");
        EXPECT_EQ(Execute("import sys\nsys.path.insert(0, '/mine')\n"), "");
    }
    EXPECT_EQ(Eval("__import__('sys').path[0]"), "/mine");
    EXPECT_EQ(Execute("del sys.path[0]\n"), "");
    EXPECT_EQ(Eval("__import__('sys').path"), before);
    EXPECT_FALSE(test::ReadFile(one.Path("telvprobe1.pyc")).has_value());
}

} // namespace

} // namespace telv::python

#endif
