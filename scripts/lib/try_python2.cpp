// SPDX-License-Identifier: MIT
// Tells by its exit status whether the Python 2.7 library argv[1] starts with the home argv[2] and
// can import what the bridge needs.
#include <cstdio>
#include <dlfcn.h>

template <class Function>
static Function Get(void* library, const char* name)
{
    return reinterpret_cast<Function>(dlsym(library, name));
}

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    void* library = dlopen(argv[1], RTLD_NOW | RTLD_GLOBAL);
    if (library == nullptr)
    {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    *Get<int*>(library, "Py_IgnoreEnvironmentFlag") = 1;
    Get<void (*)(char*)>(library, "Py_SetPythonHome")(argv[2]);
    Get<void (*)(int)>(library, "Py_InitializeEx")(0);
    const char* program = "import sys, os, traceback, math, json, collections";
    const int failed =
        Get<int (*)(const char*, void*)>(library, "PyRun_SimpleStringFlags")(program, nullptr);
    Get<void (*)()>(library, "Py_Finalize")();
    return failed == 0 ? 0 : 1;
}
