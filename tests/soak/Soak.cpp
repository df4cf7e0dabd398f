// SPDX-License-Identifier: MIT
// Runs expansions for a long time in one process and looks at its resident size: after the first
// thousand it may not grow.
//
//     soak [EXPANSIONS [PYTHON_EVALUATIONS]]     default: 1000000 10000
//
// Exit status 1 when the size grew.
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <unistd.h>

namespace telv
{

namespace
{

/// A little of everything that allocates, errors and definitions that escape from dying texts
/// included.
constexpr const char* s_programs[] = {
    "@def m(a, int b) = {[a|b]}\nm(text, 1 + 2) \"$(NAME)\" // comment\n",
    "@for(x in [one,two,three]){@let string s = {\"a\" + \"b\"}s x\n}",
    "@[@quote(@def + m(a) = {<a>})]m(1)@str(m(2))@unstr(@str(m(3)))",
    "@let int i = {0}\n@while(i < 10){@let i = {i + 1}i }",
    "@def f(int n) = {@if(n > 0){n f(n - 1)}@else{@fail(\"end\")}}\n@assertfails(f(5))f(3)",
    "@def call(f()) = {f(zzz)}\ncall(@def q = {body}) q @(1 2)",
};
constexpr size_t s_warmUp = 1000;
/// What the allocator may take later than in the warm-up.
constexpr long s_slack = 256;

void ExpandOnce(const char* program)
{
    FileScopeVarFrame frame;
    frame.InsertDollarMacro("NAME", "value");
    xstring text;
    try
    {
        MacroExpand(nullptr, &frame, SubString(program), 0, 0, text);
    }
    catch (const LexScannerException&)
    {
    }
}

long ResidentKibibytes()
{
    long total = 0;
    long resident = 0;
    std::FILE* const file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr || std::fscanf(file, "%ld %ld", &total, &resident) != 2)
        std::abort();
    std::fclose(file);
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

/// True when the size is the same in the end as after the first thousand.
bool StaysFlat(const char* what, size_t count, const std::function<void(size_t)>& once)
{
    long afterWarmUp = 0;
    for (size_t i = 0; i < count; ++i)
    {
        if (i == s_warmUp)
            afterWarmUp = ResidentKibibytes();
        once(i);
    }
    const long atEnd = ResidentKibibytes();
    const bool isFlat = count <= s_warmUp || atEnd <= afterWarmUp + s_slack;
    std::printf("%-24s %9zu   %7ld KiB after %zu   %7ld KiB at the end   %s\n", what, count,
                afterWarmUp, s_warmUp, atEnd, isFlat ? "flat" : "GREW");
    std::fflush(stdout);
    return isFlat;
}

} // namespace

} // namespace telv

int main(int argc, char** argv)
{
    using namespace telv;
    const size_t expansions = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1'000'000;
    bool isFlat = StaysFlat("expansions", expansions,
                            [](size_t i) { ExpandOnce(s_programs[i % std::size(s_programs)]); });
#if TELV_HAS_PYTHON
    const size_t evaluations = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 10'000;
    isFlat = StaysFlat("Python evaluations", evaluations,
                       [](size_t)
                       {
                           ExpandOnce("@defpython p(a) = {[a, 'text', 2.5]}\np(1)"
                                      "@assertfails(@runpython{raise ValueError('x')})");
                       }) &&
             isFlat;
#endif
    return isFlat ? 0 : 1;
}
