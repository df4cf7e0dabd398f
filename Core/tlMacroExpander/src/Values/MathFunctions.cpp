// SPDX-License-Identifier: MIT
// Loads the C library's mathematics. Where no header says what its file is called, it is linked.
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

namespace
{

template <class Function>
bool Find(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool FindAll(void* library, MathFunctions& functions)
{
    return Find(library, "sin", functions.m_sin) && Find(library, "cos", functions.m_cos) &&
           Find(library, "tan", functions.m_tan) && Find(library, "exp", functions.m_exp) &&
           Find(library, "log", functions.m_log) && Find(library, "pow", functions.m_pow);
}

/// Whose pointer is set when the functions are known.
std::atomic<const MathFunctions*> s_found = nullptr;

/// Loads the library; threads that do so at once find the same. It is never unloaded.
const MathFunctions* Load()
{
    MathFunctions functions = {};
    void* const library = dlopen(LIBM_SO, RTLD_NOW);
    if (library == nullptr || !FindAll(library, functions))
        return nullptr;
    static const MathFunctions s_all = functions;
    s_found.store(&s_all, std::memory_order_release);
    return &s_all;
}

} // namespace

const MathFunctions* FindMathFunctions()
{
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
