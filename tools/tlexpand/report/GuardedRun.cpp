// SPDX-License-Identifier: MIT
// One list of exceptions for both commands. What a text has defined is still there when an error is
// reported, and may be what has used up the memory: some is set aside for the report.
#include "report/GuardedRun.h"
#include "Cleanup.h"
#include "Files.h"
#include "tlMacroExpander/src/UsePython.h"
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace telv::tool
{

namespace
{

bool s_pythonHasRun = false;

/// What an exception said, and where.
struct Failure
{
    xstring m_description;
    const char* m_pos; ///< May be null.
};

/// Memory that is given back when it is needed.
class Reserve
{
public:
    Reserve() : m_memory(new (std::nothrow) char[s_size]) {}
    void Release() { m_memory.reset(); }

private:
    static constexpr size_t s_size = size_t{512} * 1024; // the longest message, several times

    std::unique_ptr<char[]> m_memory;
};

Failure At(const xstring& description, const ExpansionRun& run)
{
    return {description, run.FailurePosition()};
}

std::optional<Failure> Attempt(const std::function<void()>& work, const ExpansionRun& run,
                               Reserve& reserve)
{
    try
    {
        work();
        return {};
    }
    catch (LexScannerException& e)
    {
        // Taken over: it may be too long for a copy.
        std::optional<Failure> failure(Failure{xstring(), e.m_pos});
        failure->m_description.swap(e.m_description);
        return failure;
    }
    catch (const FileError&)
    {
        throw;
    }
    catch (const UsageError&)
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        reserve.Release();
        return At("Out of memory", run);
    }
    catch (const IException& e)
    {
        StringStream os(4096);
        e.Write(os);
        return At(os.GetString(), run);
    }
    catch (const std::exception& e)
    {
        return At(e.what(), run);
    }
}

} // namespace

bool RunGuarded(const std::function<void()>& work, ExpansionRun& run, const Sources& sources,
                const Diagnostics& diagnostics, PrintedText& printed)
{
    const char* lastPython = nullptr;
    run.m_pythonBegins = [&]
    {
        if (!s_pythonHasRun)
            WatchForForks();
        s_pythonHasRun = true;
        printed.Flush();
        if (const char* const pos = run.CurrentPosition())
            lastPython = pos;
    };
    run.m_pythonEnded = EndForkedProcess;
    Reserve reserve;
    std::optional<Failure> failure = Attempt(work, run, reserve);
    // The first error counts; the end of Python's code is due in any case.
    std::optional<Failure> atEnd = Attempt([&] { FinishPython(lastPython); }, run, reserve);
    if (!failure && atEnd)
        failure = std::move(atEnd);
    reserve.Release();
    printed.Flush();
    if (!failure)
        return true;
    failure->m_pos = run.ResolvePosition(failure->m_pos);
    if (sources.Find(failure->m_pos) == nullptr)
        failure->m_pos = run.FailurePosition();
    LexScannerException error(xstring(), failure->m_pos);
    error.m_description.swap(failure->m_description);
    diagnostics.Report(error, &run);
    return false;
}

bool PythonHasRun()
{
    return s_pythonHasRun;
}

} // namespace telv::tool
