// SPDX-License-Identifier: MIT
// Loading Python's library: the one that the user names, and no other; else every place is tried in
// turn until one gives all the symbols, is of the right version and has Python's own modules beside
// it. A failure is not remembered, so that a library that turns up, or a descriptor that becomes
// free, is enough for the next attempt.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/PythonApi.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/UsePythonInside.h"
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <system_error>

namespace telv
{

namespace
{

/// Loaded once and kept: Python's extension modules and the objects they made can't be unloaded.
struct LoadedPython
{
    PythonApi m_api;
    std::string m_home; ///< Python keeps a pointer to it. Empty while nothing is loaded.
};

LoadedPython s_python;
std::mutex s_loading;

std::string LoaderReason()
{
    const char* const reason = dlerror();
    return reason == nullptr ? "unknown reason" : reason;
}

/// Sets `address` to that of the symbol.
template <class Pointer>
bool FindSymbol(void* handle, const char* name, Pointer& address)
{
    address = reinterpret_cast<Pointer>(dlsym(handle, name));
    return address != nullptr;
}

bool FindSymbols(void* handle, PythonApi& api)
{
    bool found = true;
#define TELV_FIND_SYMBOL(name) found = found && FindSymbol(handle, #name, api.name);
    TELV_PYTHON_SYMBOLS(TELV_FIND_SYMBOL)
#undef TELV_FIND_SYMBOL
    return found;
}

/// Where the library lies, links resolved.
std::filesystem::path LibraryPath(const PythonApi& api)
{
    Dl_info info = {};
    dladdr(reinterpret_cast<void*>(api.Py_InitializeEx), &info);
    std::error_code error;
    return std::filesystem::canonical(info.dli_fname == nullptr ? "" : info.dli_fname, error);
}

/// Python itself knows the place of its modules by this file.
bool HoldsModules(const std::filesystem::path& prefix)
{
    std::error_code error;
    return std::filesystem::exists(prefix / "lib/python2.7/os.py", error);
}

/// The prefix of the library's modules, or an empty path. Python would look for it beside the
/// executable, which is not its own here.
std::filesystem::path FindHome(const std::filesystem::path& library)
{
    for (std::filesystem::path prefix = library.parent_path(); prefix.has_relative_path();
         prefix = prefix.parent_path())
        if (HoldsModules(prefix))
            return prefix;
    return HoldsModules(TELV_PYTHON_HOME) ? TELV_PYTHON_HOME : "";
}

/// Takes what the bridge needs from a library just opened; false with the reason.
bool UseLibrary(void* handle, std::string& reason)
{
    PythonApi api;
    if (!FindSymbols(handle, api))
    {
        reason = LoaderReason();
        return false;
    }
    const std::filesystem::path library = LibraryPath(api);
    const std::string_view version(api.Py_GetVersion());
    if (!version.starts_with("2.7."))
    {
        reason = library.string() + ": its version is ";
        reason += version.substr(0, version.find(' '));
        return false;
    }
    std::string home = FindHome(library).string();
    if (home.empty())
    {
        reason = library.string() + ": its modules (lib/python2.7) are not found";
        return false;
    }
    s_python.m_home = std::move(home);
    s_python.m_api = api;
    return true;
}

/// Opens and uses one library. Its symbols are global because extension modules need them.
bool TryLibrary(const char* name, std::string& reason)
{
    void* const handle = dlopen(name, RTLD_NOW | RTLD_GLOBAL);
    if (handle == nullptr)
    {
        reason = LoaderReason();
        return false;
    }
    if (UseLibrary(handle, reason))
        return true;
    dlclose(handle);
    return false;
}

/// Tries the places in their order; `reason` becomes why the most wanted one failed. Who names a
/// library must not get the code of another one.
bool TryLibraries(std::string& reason)
{
    const char* const wanted = std::getenv("TELV_PYTHON_LIBRARY");
    if (wanted != nullptr && *wanted != '\0')
        return TryLibrary(wanted, reason);
    for (const char* name : {"libpython2.7.so.1.0", TELV_PYTHON_BUILD_LIBRARY})
    {
        std::string why;
        if (TryLibrary(name, why))
            return true;
        if (reason.empty())
            reason = why;
    }
    return false;
}

} // namespace

const PythonApi& Python()
{
    return s_python.m_api;
}

char* PythonHome()
{
    return s_python.m_home.empty() ? nullptr : s_python.m_home.data();
}

void LoadPython(const char* pos)
{
    std::string reason;
    {
        const std::scoped_lock lock(s_loading);
        if (PythonHome() != nullptr || TryLibraries(reason))
            return;
    }
    xstring message("Python 2.7 is not available: ");
    message += reason.c_str();
    throw LexScannerException(message, pos);
}

} // namespace telv

#endif
