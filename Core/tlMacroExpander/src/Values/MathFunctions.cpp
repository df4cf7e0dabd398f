// SPDX-License-Identifier: MIT
// Uses the C library's mathematics where it is linked, and loads it where it is not.
#include "tlMacroExpander/src/Values/MathFunctions.h"
#include "tlMacroExpander/LSLiteral.h"
#if __has_include(<gnu/lib-names.h>)
#include <gnu/lib-names.h>
#endif
#ifdef LIBM_SO
#include <atomic>
#include <dlfcn.h>
#else
#include <cmath>
#endif

namespace telv
{

#ifdef LIBM_SO

// Null in a program that is linked without the library, as the tool is. An application has it, with
// the C++ library if not otherwise, and calls from threads whose stack the loader may be too much
// for.
extern "C"
{
    double LinkedSin(double) __asm__("sin") __attribute__((weak));
    double LinkedCos(double) __asm__("cos") __attribute__((weak));
    double LinkedTan(double) __asm__("tan") __attribute__((weak));
    double LinkedExp(double) __asm__("exp") __attribute__((weak));
    double LinkedLog(double) __asm__("log") __attribute__((weak));
    double LinkedPow(double, double) __asm__("pow") __attribute__((weak));
}

namespace
{

constexpr bool IsComplete(const MathFunctions& functions)
{
    return functions.m_sin != nullptr && functions.m_cos != nullptr && functions.m_tan != nullptr &&
           functions.m_exp != nullptr && functions.m_log != nullptr && functions.m_pow != nullptr;
}

template <class Function>
void Find(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
}

/// Whose pointer is set when the functions are known.
std::atomic<const MathFunctions*> s_found = nullptr;

/// Loads the library; threads that do so at once find the same. It is never unloaded.
const MathFunctions* Load()
{
    void* const library = dlopen(LIBM_SO, RTLD_NOW);
    if (library == nullptr)
        return nullptr;
    MathFunctions functions = {};
    Find(library, "sin", functions.m_sin);
    Find(library, "cos", functions.m_cos);
    Find(library, "tan", functions.m_tan);
    Find(library, "exp", functions.m_exp);
    Find(library, "log", functions.m_log);
    Find(library, "pow", functions.m_pow);
    if (!IsComplete(functions))
        return nullptr;
    static const MathFunctions s_loaded = functions;
    s_found.store(&s_loaded, std::memory_order_release);
    return &s_loaded;
}

} // namespace

const MathFunctions* FindMathFunctions()
{
    static constinit const MathFunctions s_linked = {LinkedSin, LinkedCos, LinkedTan,
                                                     LinkedExp, LinkedLog, LinkedPow};
    if (IsComplete(s_linked))
        return &s_linked;
    const MathFunctions* const found = s_found.load(std::memory_order_acquire);
    return found != nullptr ? found : Load();
}

#else

const MathFunctions* FindMathFunctions()
{
    static const MathFunctions s_all = {std::sin, std::cos, std::tan, std::exp, std::log, std::pow};
    return &s_all;
}

#endif

const MathFunctions& GetMathFunctions()
{
    const MathFunctions* const functions = FindMathFunctions();
    if (functions == nullptr)
        throw LiteralException("Unable to load the library of mathematical functions");
    return *functions;
}

} // namespace telv
