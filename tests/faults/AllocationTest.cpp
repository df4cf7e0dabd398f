// SPDX-License-Identifier: MIT
// Every allocation of the library fails in turn: the run gives the right text or std::bad_alloc,
// frees all that it took, and the next run does not notice.
//
// The allocation functions of this program stand before those of the C library, so the libraries
// use them too. Under the address sanitizer they hand on to its own.
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlUtils/StringExt.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <string>

#if defined(TELV_ADDRESS_SANITIZER)
#define TELV_REAL(name) __interceptor_##name
#else
#define TELV_REAL(name) __libc_##name
#endif

// What stands before other functions must be seen from the libraries.
#define TELV_REPLACES __attribute__((visibility("default")))

extern "C" void* TELV_REAL(malloc)(size_t);
extern "C" void* TELV_REAL(realloc)(void*, size_t);
extern "C" void TELV_REAL(free)(void*);
extern "C" void* TELV_REAL(memalign)(size_t, size_t);

namespace
{

/// What the allocation functions do; nothing unless a run is being watched.
struct Watch
{
    bool isOn = false;
    bool goesOn = false; ///< All later allocations fail too.
    long failAt = 0;
    long count = 0;
    long live = 0; ///< Blocks taken and not given back.
};

thread_local Watch t_watch;

bool Fails()
{
    if (!t_watch.isOn)
        return false;
    ++t_watch.count;
    const bool fails = t_watch.failAt > 0 && (t_watch.goesOn ? t_watch.count >= t_watch.failAt
                                                             : t_watch.count == t_watch.failAt);
    if (fails)
        errno = ENOMEM;
    return fails;
}

void NoteBlock(const void* block, long change)
{
    if (t_watch.isOn && block != nullptr)
        t_watch.live += change;
}

} // namespace

extern "C" TELV_REPLACES void* malloc(size_t size)
{
    void* const block = Fails() ? nullptr : TELV_REAL(malloc)(size);
    NoteBlock(block, 1);
    return block;
}

#if !defined(TELV_ADDRESS_SANITIZER)

// The sanitizer has operators of its own for aligned memory.
extern "C" TELV_REPLACES void* aligned_alloc(size_t alignment, size_t size)
{
    void* const block = Fails() ? nullptr : TELV_REAL(memalign)(alignment, size);
    NoteBlock(block, 1);
    return block;
}

#endif

extern "C" TELV_REPLACES void* realloc(void* block, size_t size)
{
    if (Fails())
        return nullptr;
    void* const moved = TELV_REAL(realloc)(block, size);
    if (block == nullptr)
        NoteBlock(moved, 1);
    return moved;
}

extern "C" TELV_REPLACES void free(void* block)
{
    NoteBlock(block, -1);
    TELV_REAL(free)(block);
}

TELV_REPLACES void* operator new(size_t size)
{
    if (void* const block = malloc(size == 0 ? 1 : size))
        return block;
    throw std::bad_alloc();
}

TELV_REPLACES void operator delete(void* block) noexcept
{
    free(block);
}

TELV_REPLACES void operator delete(void* block, size_t) noexcept
{
    free(block);
}

namespace telv
{

namespace
{

const char* const s_programs[] = {
    "text, \"a string\" // and a comment\n  indented\n",
    "@def m(a, int b, c()) = {[a|b|c(x)]}\n@def d(x) = {<x>}\nm(text, 1 + 2, d)\n",
    "@def int f(int n) = {(n) * 2}\nf(21) f(f(1))",
    "@def f(int n) = {@if(n > 0){n f(n - 1)}@else{end}}\nf(30)",
    "@for(x in [one,two,three]){@for((a,b) in [(1,2),(3,4)]){x a b\n}}",
    "@let int i = {0}\n@while(i < 20){@let i = {i + 1}i }",
    "@let string s := {ab}\n@let s := {s@@s}\n@let s := {s@@s}\ns",
    "@let string s = {\"a\" + 'b' + string(1.5)}@let bool b = {true}@let char c = {'x'}@let double d = {1e300}s b c d",
    "@[@quote(@def + m(a) = {<a>})]m(1) @[m(@quote(m(2)))]",
    "@for(x in [@quote(@def + m = {body}),m,m]){x}m",
    "@nakeddef n(x) = {[x]}\n@def call(f()) = {f(text)}\ncall(n) x",
    "@str(some \"text\" \\ with\n lines)\n@strx(a\nb\n)@strW(wide)@unstr(@str(back))",
    "@scope{@exportdef e = {1}@def + g = {2}@def l = {3}l}e g",
    "@$ROOT = \"/usr\"\n@$LIB = \"$(ROOT)/lib\"\n\"$(LIB)/x\" _LIB_ @relativepath(\"/a/b\", \"/a/c\")",
    "@quote(@def not interpreted\n   at all)\n@assert(1 < 2)@assertfails(@fail(\"x\"))@print()",
    "@(((1 + 2) * 3 - 4) / 5 % 6 ^^ 2 << 1 >> 1 & 7 | 8 ^ 9)@(\"abc\"[1] == \"b\" ? len(\"x\") : 0)",
    "@if(false){a}@elseif(1 == 2){b}@elseif(true)\n{\n  several\n    lines\n}\n@else{c}",
    "@def m = {one @def + m = {two} m}\nm m @assertfails(@let int i = {1 2})",
    "@def f = {@fail(\"wrong\")}\n@def g(x, y) = {f}\ng(1, 2)",
    ("@def m(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r) = {a r}\n"
     "m(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18)"),
};

/// Allows `@$` and finds no file.
class NoFiles final : public ImportHandler
{
public:
    bool HandleImport(VarFrame*, const xstring&, const char*) override { return false; }
};

enum class Result
{
    Right,
    Wrong,
    OutOfMemory,
    Other
};

/// The expansion or the message; in a buffer of its own, so that nothing is taken while watched.
struct Answer
{
    char m_text[4096] = {};
    size_t m_size = 0;

    void Set(SubString text)
    {
        m_size = std::min(sizeof(m_text), static_cast<size_t>(text.size()));
        std::copy_n(text.begin(), m_size, m_text);
    }
    bool operator==(const Answer& other) const
    {
        return SubString(m_text, m_text + m_size) ==
               SubString(other.m_text, other.m_text + other.m_size);
    }
};

void Expand(SubString text, Answer& answer)
{
    NoFiles handler;
    FileScopeVarFrame frame;
    xstring output;
    OutputPieces pieces;
    MacroExpand(&handler, &frame, text, 0, 0, output, pieces);
    answer.Set(output);
}

Result Run(SubString text, const Answer& wanted, Answer& answer)
try
{
    Expand(text, answer);
    return answer == wanted ? Result::Right : Result::Wrong;
}
catch (const LexScannerException& e)
{
    answer.Set(e.m_description);
    return answer == wanted ? Result::Right : Result::Wrong;
}
catch (const std::bad_alloc&)
{
    return Result::OutOfMemory;
}
catch (...)
{
    return Result::Other;
}

/// Runs with the allocation number `failAt` failing; 0 for none.
Result RunWatched(SubString text, const Answer& wanted, Answer& answer, long failAt, bool goesOn)
{
    t_watch = Watch();
    t_watch.failAt = failAt;
    t_watch.goesOn = goesOn;
    t_watch.isOn = true;
    const Result result = Run(text, wanted, answer);
    t_watch.isOn = false;
    return result;
}

/// Fails every allocation of the program in turn and returns their number.
long FailEach(SubString text, bool goesOn)
{
    Answer wanted;
    Answer answer;
    Run(text, Answer(), wanted); // Also makes what is made once per thread.
    EXPECT_EQ(RunWatched(text, wanted, answer, 0, false), Result::Right);
    const long count = t_watch.count;
    EXPECT_EQ(t_watch.live, 0);
    for (long at = 1; at <= count; ++at)
    {
        const Result result = RunWatched(text, wanted, answer, at, goesOn);
        EXPECT_TRUE(result == Result::Right || result == Result::OutOfMemory)
            << "allocation " << at;
        EXPECT_EQ(t_watch.live, 0) << "allocation " << at;
    }
    EXPECT_EQ(RunWatched(text, wanted, answer, 0, false), Result::Right);
    return count;
}

TEST(AllocationTest, EachOneFails)
{
    long failed = 0;
    for (const char* const program : s_programs)
    {
        SCOPED_TRACE(program);
        const long count = FailEach(SubString(program), /*goesOn=*/false);
        EXPECT_GT(count, 2);
        failed += count;
    }
    std::printf("%ld allocations failed\n", failed);
}

TEST(AllocationTest, AllFromOneOnFail)
{
    long failed = 0;
    for (const char* const program : s_programs)
    {
        SCOPED_TRACE(program);
        const long count = FailEach(SubString(program), /*goesOn=*/true);
        EXPECT_GT(count, 2);
        failed += count;
    }
    std::printf("%ld allocations failed\n", failed);
}

} // namespace

} // namespace telv
