// SPDX-License-Identifier: MIT
// Eight threads with frames and runs of their own. Under ThreadSanitizer (preset tsan) any access
// of two threads to the same memory is found; elsewhere the results alone count.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/UsePython.h"
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace telv::test
{
namespace
{

constexpr int s_threads = 8;
constexpr int s_expansions = 12'500; ///< Of each thread.

/// Threads that begin at the same moment.
void InThreads(const std::function<void(int)>& work)
{
    std::atomic<int> waiting = s_threads;
    std::vector<std::thread> threads;
    for (int i = 0; i < s_threads; ++i)
        threads.emplace_back(
            [&, i]
            {
                --waiting;
                while (waiting > 0)
                    std::this_thread::yield();
                work(i);
            });
    for (std::thread& thread : threads)
        thread.join();
}

/// One file, "lib", which each importer has a frame of its own for.
class LibraryHandler final : public ImportHandler
{
public:
    bool HandleImportPath(const xstring&, const char*) override { return true; }
    bool HandleImport(VarFrame* vf, const xstring& path, const char*) override
    {
        if (path != "lib")
            return false;
        if (m_frame == nullptr)
        {
            m_frame = std::make_unique<FileScopeVarFrame>();
            xstring dropped;
            MacroExpand(this, m_frame.get(), "@def twice(x) = {x x}@$WHO = \"lib\"", 0, 0, dropped);
        }
        vf->m_fileScopeFrame->AddImport(m_frame.get());
        return true;
    }

private:
    std::unique_ptr<FileScopeVarFrame> m_frame; ///< Outlives the importer's.
};

/// The output, or the message.
std::string Expand(const std::string& text)
{
    StringStream printed(4096);
    ExpansionRun run;
    run.m_printStream = &printed;
    run.m_limits.m_maxDepth = 200;
    run.m_limits.m_maxMemory = ssize_t(16) << 20;
    const ExpansionRunScope scope(run);
    LibraryHandler handler;
    FileScopeVarFrame frame;
    xstring output;
    try
    {
        MacroExpand(&handler, &frame, SubString(text.data(), text.data() + text.size()), 0, 0,
                    output);
    }
    catch (const LexScannerException& e)
    {
        return "error: " + std::string(e.m_description.begin(), e.m_description.end());
    }
    const xstring shown = printed.GetString();
    return (output.empty() ? std::string() : std::string(output.begin(), output.end())) +
           (shown.empty() ? std::string() : std::string(shown.begin(), shown.end()));
}

/// What is expanded, and what must come of it; `#` is a number of the thread's own.
struct Row
{
    const char* text;
    const char* result;
};

constexpr Row s_rows[] = {
    {"@def f(x) = {[x]}f(#)", "[#]"},
    {"@for(i in [#,2,3]){@(i + 1);}", "@;3;4;"},
    {"@import \"lib\"\ntwice(#) \"$(WHO)\"", "@import \"lib\"\n# # \"lib\""},
    {"@let int n = {#}@while(n > 0){@let n = {n - n}x}@(n)", "x0"},
    {"@let string s = {\"#\"}@assertfails{@(1 / 0)}@str(s)", "\"#\""},
    {"@def f = {f}f", nullptr},
    {"@(1 / 0 + #)", nullptr},
    {"@import \"nothing\"", "error: Can't import file: nothing"},
    {"@[@quote(@def + m = {made #})]m", "made #"},
    {"@print(#)@(1.5 * 2)", "3#"},
};

std::string Fill(const char* text, int number)
{
    std::string filled;
    for (const char* c = text; *c != '\0'; ++c)
        filled += *c == '#'                  ? std::to_string(number)
                  : *c == '@' && c[1] == ';' ? std::to_string(number + 1)
                                             : std::string(1, *c);
    return filled;
}

TEST(ThreadsTest, ManyExpansionsOfManyKinds)
{
    InThreads(
        [](int thread)
        {
            for (int i = 0; i < s_expansions; ++i)
            {
                const Row& row = s_rows[static_cast<size_t>(i + thread) % std::size(s_rows)];
                const int number = thread * 1000 + i % 1000 + 1;
                const std::string result = Expand(Fill(row.text, number));
                if (row.result != nullptr)
                    ASSERT_EQ(result, Fill(row.result, number)) << row.text;
                else
                    ASSERT_EQ(result.rfind("error: ", 0), 0u) << row.text << " " << result;
            }
        });
}

/// Counting begins while others expand: nothing that they look up changes its meaning.
TEST(ThreadsTest, StatisticsBeginWhileOthersExpand)
{
    InThreads(
        [](int thread)
        {
            for (int i = 0; i < 500; ++i)
            {
                if (thread == 0 && i == 100)
                    SetStarted();
                ASSERT_EQ(Expand("@def f(x) = {[x]}f(f(1))"), "[[1]]");
            }
        });
    EXPECT_GT(s_count, 0);
    s_started = false;
}

#if TELV_HAS_PYTHON

/// The first use is that of eight at once; between the uses each expands other text.
TEST(ThreadsTest, PythonBeginsOnAnyThread)
{
    InThreads(
        [](int thread)
        {
            for (int i = 0; i < 200; ++i)
            {
                const std::string n = std::to_string(thread * 1000 + i);
                ASSERT_EQ(Expand("@defpython p(x) = {x * 2}p(" + n + ")"),
                          std::to_string((thread * 1000 + i) * 2));
                ASSERT_EQ(Expand("@runpython{print 'n" + n + "'}"), "n" + n + "\n");
                ASSERT_EQ(Expand("@defpython p = {nothing" + n + "}p").rfind("error: ", 0), 0u);
                ASSERT_EQ(Expand("@def f(x) = {[x]}f(" + n + ")"), "[" + n + "]");
            }
        });
    UninitPython();
}

/// Python is begun by some, ended by others, while the counting of look-ups begins.
TEST(ThreadsTest, PythonAndStatisticsBeginInAnyOrder)
{
    InThreads(
        [](int thread)
        {
            for (int i = 0; i < 40; ++i)
            {
                if (i == thread * 5)
                    SetStarted();
                ASSERT_EQ(Expand("@defpython p = {" + std::to_string(i) + "}p"), std::to_string(i));
                if (i % 8 == thread)
                    UninitPython();
            }
        });
    s_started = false;
}

#endif

} // namespace
} // namespace telv::test
