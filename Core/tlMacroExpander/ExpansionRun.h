// SPDX-License-Identifier: MIT
// What one run of an application needs beyond the expansion itself: limits for text that is not
// trusted, whether Python may run, which file a position belongs to, and where text that was made
// while expanding came from.
//
// A run is installed for the current thread by an ExpansionRunScope. Everything works without one;
// `MacroExpand` then makes do with a run of its own for the length of the outermost call.
#pragma once

#include "tlMacroExpander/ExpansionWarning.h"
#include "tlUtils/StringExt.h"
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace telv
{

class ExpandedOutput;
class ExpansionObserver;
class LexScannerException;
class LSSourceFile;
class RunState;

/// Bounds on what a text may use up. Past one, an ExpansionLimitException is thrown.
struct TLEXPANDER_API ExpansionLimits
{
    static constexpr ssize_t s_none = std::numeric_limits<ssize_t>::max();

    ssize_t m_maxDepth = s_none; ///< Expansions inside one another, the outermost one included.
    ssize_t m_maxSteps = s_none; ///< Expansions, invocations and loop rounds, in all.
    /// Bytes of any one output, of intermediate strings too, and of all that is printed.
    ssize_t m_maxOutput = s_none;
    /// Bytes that the run holds: texts, values, tables, pieces, descriptions of errors, and what
    /// its thread makes besides with this library's strings. Not what Python code takes.
    ssize_t m_maxMemory = s_none;
};

/// One run. Must outlive the scopes that install it; neither copied nor shared between threads.
class TLEXPANDER_API ExpansionRun
{
public:
    ExpansionRun();
    ~ExpansionRun();
    ExpansionRun(const ExpansionRun&) = delete;
    ExpansionRun& operator=(const ExpansionRun&) = delete;

    /// The run installed for this thread, or null.
    static ExpansionRun* Current() noexcept;

    ExpansionLimits m_limits;

    /// With false, `@runpython` and Python macros are the error "Python is disabled".
    bool m_pythonAllowed = true;

    /// Directories in which Python looks for modules first, in order; absolute ones, since code can
    /// change the working directory.
    std::vector<std::string> m_pythonPath;

    /// Where `@print` and Python's standard output write; borrowed. Null: `xcout`, which all
    /// threads share.
    xostream* m_printStream = nullptr;

    /// Called on the expanding thread each time before Python code runs, so that what was printed
    /// earlier can be sent off: the code may write to descriptors, and may start processes that
    /// inherit buffers. Empty: nothing is called.
    std::function<void()> m_pythonBegins;

    /// Called each time after Python code has run, with false when an exception of it is being
    /// thrown. Python code can fork: an application that must not go on in two processes compares
    /// its process id here. Must not throw. Empty: nothing is called.
    std::function<void(bool succeeded)> m_pythonEnded;

    /// Receives the located errors that do not stop the reading of project files. Empty: they go to
    /// the trace stream.
    std::function<void(const LexScannerException&)> m_fileErrorSink;

    /// The output whose map will be read: text made while expanding that its pieces view is kept
    /// until the run ends. Null: none is kept.
    const ExpandedOutput* m_mappedOutput = nullptr;

    /// With true, a character that begins no token (a quote that is not closed on its line, say) is
    /// ordinary text, and reading goes on behind it: for texts in languages with other quotes,
    /// numbers and comments.
    bool m_lenient = false;

    /// What is warned of: a set of EWarning. Nothing is paid for a kind that is not in it.
    unsigned m_warnings = WARN_NONE;

    /// Receives the warnings on the expanding thread, while the expansion goes on. May throw; what
    /// it throws ends the expansion. Empty: nobody is warned.
    std::function<void(const ExpansionWarning&)> m_warningSink;

    /// With false, outputs that the run's expansions write to record no pieces: their `size()` is
    /// 0, and what is copied goes out in long stretches.
    bool m_recordPieces = true;

    /// Sets who is told what the run's expansions do (ExpansionObserver.h); borrowed. Null, as at
    /// first: nobody.
    ///
    /// @throws TelvAssertionError  Something is being expanded in the run.
    void SetObserver(ExpansionObserver* observer);
    ExpansionObserver* Observer() const;

    /// Makes `file` known by name. It must not change and must outlive the run.
    void AddSource(const LSSourceFile& file);

    /// The known file whose text holds `pos` (its end included), or null. Logarithmic.
    const LSSourceFile* FindSource(const char* pos) const;

    /// If `pos` lies in a live text that was made while expanding, sets `origin` to the directive
    /// or macro name, in a text that the application gave, from which that text came.
    bool FindOrigin(const char* pos, SubString& origin) const;

    /// Where the characters of `text`, a part of a live text that was made while expanding, stand
    /// in a text that the application gave: an element of a `@for` list, say, in the macro that is
    /// the list. Null when they were not copied from one place, or when no `m_mappedOutput` was set
    /// at the time.
    const char* FindCopied(SubString text) const;

    /// `pos` itself, or the start of its origin when it lies in text made while expanding.
    const char* ResolvePosition(const char* pos) const;

    /// The innermost place, in text that the application gave, that is being expanded; null when
    /// nothing is.
    const char* CurrentPosition() const;

    /// The innermost place at the time when an exception without a position (out of memory, a
    /// broken assumption) left an expansion; null when none did.
    const char* FailurePosition() const;

    /// How many call places of an error are remembered.
    static constexpr ssize_t s_mostCallPlaces = 10;

    /// Where the macros and loops stand through which the last exception that left an expansion
    /// came, of whatever type, innermost first; the first ten. Valid until the next expansion.
    const std::vector<CallPlace>& CallPlaces() const;
    /// How many there were besides.
    ssize_t MoreCallPlaces() const;
    /// Where the imports stand that were being read, innermost first. Valid as long.
    const std::vector<const char*>& ImportPlaces() const;

    /// The macros and variables defined in `text`, which must still be there, that no expansion has
    /// used so far, in their order; noted while WARN_UNUSED is in `m_warnings`. A name that stands
    /// elsewhere in one of `texts`, outside comments and strings, counts as used: the part of the
    /// text may not have been expanded.
    std::vector<ExpansionWarning> FindUnused(SubString text,
                                             const std::vector<SubString>& texts) const;
    /// Whether something is defined in the texts `defining` and nothing of it is used, in the same
    /// sense.
    bool DefinesInVain(const std::vector<SubString>& defining,
                       const std::vector<SubString>& texts) const;
    /// The same for many groups of `texts`, where the texts that are not in a group may use it;
    /// each text is read once. `group` appends the numbers of the texts of the group of this
    /// number.
    std::vector<bool>
    DefineInVain(const std::vector<SubString>& texts, size_t groups,
                 const std::function<void(size_t, std::vector<size_t>&)>& group) const;

    /// What would probably mend `error`, the last that left an expansion, in one line; empty when
    /// that is not known. To be asked before the next expansion.
    xstring Hint(const LexScannerException& error) const;
    /// Where the bracket, quote or comment was opened that had no end, when the last error stood at
    /// `errorPos`, the end of the text, for that reason; else null.
    const char* OpenedAt(const char* errorPos) const;
    /// Where the name of the Python macro stands in its definition whose code raised the last
    /// error, which stands at the call; else null. To be asked before the next expansion.
    const char* DefinedAt() const;
    /// Where the element stands, in the list that was given, for which the last error, at its
    /// `@for`, says that it can't be read as one; null when that is not known. As long.
    const char* ElementAt() const;

private:
    friend class RunState;

    std::unique_ptr<RunState> m_state; ///< What only the library uses; never null.
};

/// What texts print to in `run`, which may be null.
inline xostream& PrintStreamOf(const ExpansionRun* run)
{
    return run != nullptr && run->m_printStream != nullptr ? *run->m_printStream : xcout;
}

/// Installs a run for the current thread until the end of the scope; scopes nest.
class TLEXPANDER_API ExpansionRunScope
{
public:
    explicit ExpansionRunScope(ExpansionRun& run) noexcept;
    ~ExpansionRunScope();
    ExpansionRunScope(const ExpansionRunScope&) = delete;
    ExpansionRunScope& operator=(const ExpansionRunScope&) = delete;

private:
    ExpansionRun* m_previous;
};

} // namespace telv
