// One list of exceptions for both commands.
#include "GuardedRun.h"
#include "Cleanup.h"
#include "Files.h"
#include <new>
#include <optional>
#include <unistd.h>

namespace telv::tool
{

namespace
{

/// What an exception said, and where.
struct Failure
{
    xstring m_description;
    const char* m_pos; ///< May be null.
};

Failure At(const xstring& description, const ExpansionRun& run)
{
    return {description, run.FailurePosition()};
}

std::optional<Failure> Attempt(const std::function<void()>& work, const ExpansionRun& run)
{
    try
    {
        work();
        return {};
    }
    catch (const LexScannerException& e)
    {
        return Failure{e.m_description, e.m_pos};
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

bool RunGuarded(const std::function<void()>& work, const ExpansionRun& run, const Sources& sources,
                const Diagnostics& diagnostics, PrintedText& printed)
{
    std::optional<Failure> failure = Attempt(work, run);
    if (!IsOriginalProcess())
        _exit(1);
    printed.Flush();
    if (!failure)
        return true;
    failure->m_pos = run.ResolvePosition(failure->m_pos);
    if (sources.Find(failure->m_pos) == nullptr)
        failure->m_pos = run.FailurePosition();
    diagnostics.Report(LexScannerException(failure->m_description, failure->m_pos));
    return false;
}

} // namespace telv::tool
