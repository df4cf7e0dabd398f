// SPDX-License-Identifier: MIT
// A supervisor that expands nothing itself, and workers that take the next file as long as there is
// one. What they tell each other stands in shared memory: the next file, and what became of each.
//
// An output that another file imports must not be replaced. Names that stand in the texts were
// looked at before; of one that a text makes up, the file that imports it and the one that would
// make it both fail.
//
// A worker keeps nothing from one file to the next but the texts of imports. Python code can leave
// traces that later files would see: after a file that used it the worker ends, and another takes
// its place, as for one that died.
#include "BatchCommand.h"
#include "Cleanup.h"
#include "ExpandCommand.h"
#include "Files.h"
#include "input/BatchOutputs.h"
#include "input/FileList.h"
#include "output/MadeDirectories.h"
#include "report/Diagnostics.h"
#include "report/GuardedRun.h"
#include <atomic>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace telv::tool
{

namespace
{

/// What became of a file: its exit status, or this, or the negative process id of the worker that
/// has it.
constexpr pid_t s_waits = -1;

constexpr size_t s_mostNames = 20;
/// Workers that may be ended by signals before they have taken a file.
constexpr int s_mostIdleEnds = 10;
constexpr useconds_t s_progressMicroseconds = 100'000;

using State = std::atomic<pid_t>;
static_assert(State::is_always_lock_free && std::atomic<size_t>::is_always_lock_free);

struct JobState
{
    State m_result = s_waits;
    std::atomic<bool> m_isImported = false; ///< Its output is read by another file.
    std::atomic<bool> m_isReported = false; ///< Its worker ends, and has said why.
};

/// Lies in memory that the processes share.
struct SharedState
{
    std::atomic<size_t> m_next = 0; ///< All before it are taken, and perhaps some others.
    std::atomic<size_t> m_done = 0;
    std::atomic<bool> m_stop = false;
    std::atomic<bool> m_streamFailed = false; ///< A standard stream takes no more.
};

class Batch
{
public:
    Batch(const ExpandOptions& options, const std::vector<BatchJob>& jobs);
    ~Batch() { munmap(m_memory, m_size); }
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    int Run();

private:
    bool HasMore() const { return !m_shared->m_stop && m_shared->m_next < m_jobs.size(); }
    void StartWorker();
    [[noreturn]] void Work();
    bool NoteEarlyEnd(JobState& state, EEnd end);
    std::optional<size_t> TakeJob();
    int RunJob(const BatchJob& job);
    void CheckImports(const BatchJob& job, const std::vector<std::string>& imports);
    JobState& StateOf(const BatchJob& job) { return m_states[&job - m_jobs.data()]; }
    void WaitForWorkers();
    void NoteEnd(pid_t worker, int status);
    void NoteResult(size_t index, int status);
    void ShowProgress(bool isLast) const;
    int Report() const;

    ExpandOptions m_options; ///< Of the file at hand, in a worker.
    ImportTexts m_texts;
    const std::vector<BatchJob>& m_jobs;
    BatchOutputs m_outputs;
    size_t m_size;
    void* m_memory;
    SharedState* m_shared;
    JobState* m_states;
    std::set<pid_t> m_workers;
    int m_idleEnds = 0;
    bool m_showsProgress;
};

Batch::Batch(const ExpandOptions& options, const std::vector<BatchJob>& jobs)
    : m_options(options), m_jobs(jobs), m_outputs(jobs),
      m_size(sizeof(SharedState) + jobs.size() * sizeof(JobState)),
      m_memory(mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
      m_showsProgress(IsCapableTerminal(STDERR_FILENO))
{
    if (m_memory == MAP_FAILED)
        throw std::bad_alloc();
    m_options.m_files.clear();
    m_shared = ::new (m_memory) SharedState;
    m_states = reinterpret_cast<JobState*>(m_shared + 1);
    for (size_t i = 0; i < jobs.size(); ++i)
        ::new (m_states + i) JobState;
}

void Batch::StartWorker()
{
    const pid_t supervisor = getpid();
    const pid_t pid = fork();
    if (pid < 0)
    {
        if (m_workers.empty())
            throw MakeFileError("start", "a process", errno);
        return;
    }
    if (pid > 0)
    {
        m_workers.insert(pid);
        return;
    }
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != supervisor)
        _exit(2);
    Work();
}

void Batch::Work()
{
    InstallSignalHandlers(); // Temporary files are this process's own.
    HandleSignalsHere();
    while (!m_shared->m_stop && !PythonHasRun())
    {
        const std::optional<size_t> index = TakeJob();
        if (!index)
            break;
        SetEndHook([&](EEnd end) { return NoteEarlyEnd(m_states[*index], end); });
        NoteResult(*index, RunJob(m_jobs[*index]));
    }
    _exit(0);
}

/// The run of a file ends here and now; true when its message is still to be written. A standard
/// stream that takes no more ends all, as it would end a run over one file.
bool Batch::NoteEarlyEnd(JobState& state, EEnd end)
{
    state.m_isReported = true;
    if (end != EEnd::Streams)
        return true;
    m_shared->m_stop = true;
    return !m_shared->m_streamFailed.exchange(true);
}

/// The next file that nobody has. In one step it is taken and says who took it: a process that is
/// killed just then has it.
std::optional<size_t> Batch::TakeJob()
{
    const pid_t self = getpid();
    for (size_t index = m_shared->m_next; index < m_jobs.size(); ++index)
    {
        pid_t result = s_waits;
        const bool isTaken = m_states[index].m_result.compare_exchange_strong(result, -self);
        size_t next = index;
        m_shared->m_next.compare_exchange_strong(next, index + 1);
        if (isTaken)
            return index;
    }
    return std::nullopt;
}

void Batch::NoteResult(size_t index, int status)
{
    m_states[index].m_result = status;
    ++m_shared->m_done;
    if (status != 0 && !m_options.m_keepGoing)
        m_shared->m_stop = true;
}

/// @throws UsageError  The job has read the output of another, or another has read its output.
void Batch::CheckImports(const BatchJob& job, const std::vector<std::string>& imports)
{
    for (const std::string& import : imports)
    {
        const BatchJob* const maker = m_outputs.FindMaker(import);
        if (maker == nullptr || maker == &job)
            continue;
        StateOf(*maker).m_isImported = true;
        throw UsageError(DescribeReplacedImport(import, job.m_input, *maker));
    }
    if (StateOf(job).m_isImported)
        throw UsageError("the output '" + job.m_output + "' of '" + job.m_input +
                         "' is read by another of these files");
}

int Batch::RunJob(const BatchJob& job)
{
    m_options.m_file = job.m_input;
    m_options.m_output = job.m_output;
    try
    {
        return RunExpandCommand(m_options, m_texts,
                                [&](const std::vector<std::string>& imports)
                                { CheckImports(job, imports); });
    }
    catch (const std::bad_alloc&)
    {
        ReportToolError(job.m_place + job.m_input + ": Out of memory");
        return 1;
    }
    catch (const std::exception& e)
    {
        ReportToolError(job.m_place + e.what());
        return 2;
    }
}

/// A worker has ended. The file that it had, if any, has failed, whatever status code of the text
/// may have ended the worker with.
void Batch::NoteEnd(pid_t worker, int status)
{
    if (m_workers.erase(worker) == 0)
        return; // A child of whoever was this process before it became the tool.
    bool isIdle = true;
    for (size_t i = 0; i < m_jobs.size(); ++i)
    {
        if (m_states[i].m_result != -worker)
            continue;
        isIdle = false;
        const std::string place = m_jobs[i].m_place + m_jobs[i].m_input;
        if (WIFSIGNALED(status))
            ReportToolError(place + ": the process that expanded it was ended by signal " +
                            std::to_string(WTERMSIG(status)));
        else if (!m_states[i].m_isReported)
            ReportToolError(place + ": the process that expanded it ended without a result");
        NoteResult(i, 2);
    }
    if (isIdle && WIFSIGNALED(status) && ++m_idleEnds > s_mostIdleEnds)
    {
        // Another would not get further.
        m_shared->m_stop = true;
        ReportToolError("the processes that expand files are ended by signal " +
                        std::to_string(WTERMSIG(status)) + " before they begin");
    }
}

void Batch::WaitForWorkers()
{
    while (!m_workers.empty())
    {
        int status = 0;
        const pid_t pid = waitpid(-1, &status, m_showsProgress ? WNOHANG : 0);
        if (pid > 0)
        {
            NoteEnd(pid, status);
            if (HasMore())
                StartWorker();
        }
        else if (pid == 0)
        {
            ShowProgress(/*isLast=*/false);
            usleep(s_progressMicroseconds);
        }
        else if (errno != EINTR)
            break;
    }
}

/// One line that is written again and again, and goes at the end. What else is written meanwhile
/// begins where it does and is longer.
void Batch::ShowProgress(bool isLast) const
{
    if (!m_showsProgress)
        return;
    const std::string line =
        isLast ? ""
               : "[" + std::to_string(m_shared->m_done) + "/" + std::to_string(m_jobs.size()) + "]";
    WriteAll(STDERR_FILENO, ViewOf(line + "\033[K\r"));
}

int Batch::Report() const
{
    if (m_shared->m_streamFailed)
        return 2;
    int largest = 0;
    size_t failed = 0;
    size_t skipped = 0;
    std::string names;
    for (size_t i = 0; i < m_jobs.size(); ++i)
    {
        const int status = m_states[i].m_result;
        if (status < 0)
            ++skipped;
        else if (status != 0)
        {
            largest = std::max(largest, status);
            if (failed++ < s_mostNames)
                names += "\n  " + m_jobs[i].m_input;
        }
    }
    if (m_idleEnds > s_mostIdleEnds)
        largest = 2;
    else if (failed == 0)
        return 0;
    if (failed > s_mostNames)
        names += "\n  ... and " + std::to_string(failed - s_mostNames) + " more";
    std::string text =
        std::to_string(failed) + " of " + std::to_string(m_jobs.size()) + " files failed";
    if (skipped > 0)
        text += ", " + std::to_string(skipped) + " not tried (--keep-going tries them)";
    ReportToolError(names.empty() ? text : text + ":" + names);
    return largest;
}

int Batch::Run()
{
    const size_t wanted = std::min(static_cast<size_t>(m_options.m_jobs), m_jobs.size());
    ShowProgress(/*isLast=*/false);
    while (m_workers.size() < wanted && HasMore())
    {
        const size_t before = m_workers.size();
        StartWorker();
        if (m_workers.size() == before)
            break;
    }
    WaitForWorkers();
    ShowProgress(/*isLast=*/true);
    return Report();
}

} // namespace

bool IsBatch(const ExpandOptions& options)
{
    return options.m_batch || options.m_outDirectory;
}

int RunBatchCommand(const ExpandOptions& options)
{
    const std::vector<BatchJob> jobs = MakeBatch(options);
    MadeDirectories directories;
    for (const BatchJob& job : jobs)
        directories.MakeFor(job.m_output);
    return Batch(options, jobs).Run();
}

} // namespace telv::tool
