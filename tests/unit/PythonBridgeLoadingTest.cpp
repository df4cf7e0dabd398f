// SPDX-License-Identifier: MIT
// Finding and loading Python's library. That happens once in a process, so each test runs in a
// fresh one: the child says on its standard error what happened, for the parent to compare.
#if TELV_HAS_PYTHON

#include "PythonBridgeSupport.h"
#include "support/Files.h"
#include "support/TempDir.h"
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace telv::python
{

namespace
{

/// While it is set, the loader looks for Python's libraries where there are none.
bool s_librariesHidden = false;

/// While it is set, no directory holds Python's modules.
bool s_modulesHidden = false;

} // namespace

} // namespace telv::python

// These stand before the system's own functions for the whole program.

extern "C" __attribute__((visibility("default"))) void* dlopen(const char* name, int flags) noexcept
{
    using Open = void* (*)(const char*, int);
    static const auto next = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "dlopen"));
    if (!telv::python::s_librariesHidden ||
        std::string(name).find("libpython") == std::string::npos)
        return next(name, flags);
    return next(("/hidden/" + std::filesystem::path(name).filename().string()).c_str(), flags);
}

extern "C" __attribute__((visibility("default"))) int stat(const char* name,
                                                           struct stat* status) noexcept
{
    using Stat = int (*)(const char*, struct stat*);
    static const auto next = reinterpret_cast<Stat>(dlsym(RTLD_NEXT, "stat"));
    if (!telv::python::s_modulesHidden || !std::string_view(name).ends_with("python2.7/os.py"))
        return next(name, status);
    errno = ENOENT;
    return -1;
}

namespace telv::python
{

namespace
{

/// These need a process in which nothing is loaded yet.
class PythonLoadingDeathTest : public testing::Test
{
protected:
    PythonLoadingDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

[[noreturn]] void Report(const std::string& text)
{
    const std::string line = text + "\n";
    const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
    _exit(written < 0 ? 1 : 0);
}

bool IsMapped(const std::string& name)
{
    return test::ReadFile("/proc/self/maps").value_or("").find(name) != std::string::npos;
}

/// Hides the libraries of Python while `operation` runs.
template <class Operation>
std::string WithoutLibraries(Operation operation)
{
    s_librariesHidden = true;
    std::string result = operation();
    s_librariesHidden = false;
    return result;
}

TEST_F(PythonLoadingDeathTest, LibraryIsMappedOnFirstUse)
{
    const auto child = []
    {
        Expand("@defpython p = {1}\n@def m = {x}m @runpython{}");
        const bool before = IsMapped("libpython");
        Expand("@runpython{1}");
        const bool after = IsMapped("libpython");
        Report(std::string("mapped: ") + (before ? "1" : "0") + (after ? "1" : "0"));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^mapped: 01\n$");
}

TEST_F(PythonLoadingDeathTest, MissingLibraryIsALocatedErrorEachTime)
{
    const auto child = []
    {
        unsetenv("TELV_PYTHON_LIBRARY");
        const std::string source = "@defpython p = {7}\np";
        const auto expand = [&] { return Expand(source); };
        const std::string first = WithoutLibraries(expand);
        const std::string second = WithoutLibraries(expand);
        Report((first == second ? "same " : "different ") + first + " then " + expand());
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0),
                "^same error: Python 2.7 is not available: /hidden/libpython2\\.7\\.so\\.1\\.0: "
                "cannot open shared object file: No such file or directory\n"
                "    invoking python macro p then 7\n$");
}

TEST_F(PythonLoadingDeathTest, MissingLibraryIsAnErrorOfTheFunctionsToo)
{
    const auto child = []
    {
        unsetenv("TELV_PYTHON_LIBRARY");
        const std::string run = WithoutLibraries([] { return Execute("1\n"); });
        const std::string eval = WithoutLibraries([] { return Eval("1"); });
        Report(("error: " + run) == eval ? eval.substr(0, 37) : "different");
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^error: Python 2.7 is not available: /\n$");
}

TEST_F(PythonLoadingDeathTest, ReasonIsThatOfTheLibraryAskedFor)
{
    const auto child = []
    {
        setenv("TELV_PYTHON_LIBRARY", "libm.so.6", 1);
        Report(WithoutLibraries([] { return Eval("1"); }));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0),
                "^error: Python 2.7 is not available: [^\n]*libm\\.so\\.6: undefined symbol: "
                "PyArg_ParseTuple\n$");
}

TEST_F(PythonLoadingDeathTest, NoOtherLibraryIsTakenForTheOneAskedFor)
{
    const auto child = []
    {
        setenv("TELV_PYTHON_LIBRARY", "/nonexistent/libpython2.7.so.1.0", 1);
        const std::string error = Eval("6 * 7");
        unsetenv("TELV_PYTHON_LIBRARY");
        Report(error + " then " + Eval("6 * 7"));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0),
                "^error: Python 2.7 is not available: /nonexistent/libpython2\\.7\\.so\\.1\\.0: "
                "cannot open shared object file: No such file or directory then 42\n$");
}

TEST_F(PythonLoadingDeathTest, AnEmptyNameAsksForNone)
{
    const auto child = []
    {
        setenv("TELV_PYTHON_LIBRARY", "", 1);
        Report(Eval("6 * 7"));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^42\n$");
}

/// Where the library is found. The parent looks, which loads it; the child inherits the answer.
std::string InstalledLibrary()
{
    if (const char* const known = std::getenv("TELV_TEST_PYTHON_LIBRARY"))
        return known;
    InitPython();
    UninitPython();
    const std::string maps = test::ReadFile("/proc/self/maps").value_or("");
    const size_t name = maps.find("libpython2.7");
    const size_t begin = maps.rfind(' ', name) + 1;
    std::string path = maps.substr(begin, maps.find('\n', name) - begin);
    setenv("TELV_TEST_PYTHON_LIBRARY", path.c_str(), 1);
    return path;
}

TEST_F(PythonLoadingDeathTest, LibraryOfTheEnvironmentComesFirst)
{
    const std::string installed = InstalledLibrary();
    const auto child = [&]
    {
        const test::TempDir dir;
        const std::string copy = dir.Path("libcopied.so");
        std::filesystem::copy_file(installed, copy);
        setenv("TELV_PYTHON_LIBRARY", copy.c_str(), 1);
        const std::string value = Eval("__import__('os').path.basename('a/b')");
        const bool mapped = IsMapped(copy);
        std::filesystem::remove_all(dir.Path(""));
        Report(value + (mapped ? " mapped" : " not mapped"));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^b mapped\n$");
}

TEST_F(PythonLoadingDeathTest, LibraryWithoutModulesIsAnErrorUntilTheyAreThere)
{
    const std::string installed = InstalledLibrary();
    const auto child = [&]
    {
        setenv("TELV_PYTHON_LIBRARY", installed.c_str(), 1);
        s_modulesHidden = true;
        const std::string error = Eval("6 * 7");
        s_modulesHidden = false;
        Report(error + " then " + Eval("6 * 7"));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0),
                "^error: Python 2.7 is not available: /[^\n]*libpython2\\.7[^\n]*: its modules "
                "\\(lib/python2\\.7\\) are not found then 42\n$");
}

} // namespace

} // namespace telv::python

#endif
