// SPDX-License-Identifier: MIT
// Where nothing stands in the way, the references are replaced in one go from left to right, and
// what a value puts together with the text around it is read again from where it began. As no
// reference can overlap another, the result is that of the passes. Only a text that takes much more
// work than its length suggests goes through the passes one by one.
//
// Why those end: macros that refer to each other in a ring, as their values are written, are found
// before the first pass. Without a ring, a chain of references is no longer than there are macros:
// as many passes may go by without a macro that had not come up before. Only values that put new
// references together can need more; they may go on while the text gets shorter, or, in a text of
// moderate size, while there is given text left that they can use up.
#include "tlMacroExpander/src/Frames/DollarMacroPass.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlUtils/HeldContainers.h"
#include <cstring>

namespace telv
{

namespace
{

[[noreturn]] void ThrowContainsItself(SubString name)
{
    xstring description("Dollar macro ");
    description += name;
    description += " contains itself";
    throw ExpansionLimitException(description, nullptr);
}

const char* FindDollar(SubString s)
{
    if (s.empty())
        return s.end();
    const void* const found = std::memchr(s.begin(), '$', static_cast<size_t>(s.size()));
    return found == nullptr ? s.end() : static_cast<const char*>(found);
}

/// A known `$(NAME)` in a text.
struct Reference
{
    SubString m_text;
    SubString m_name;
    const xstring* m_value = nullptr;
};

/// Moves `s` behind the next known reference; false, with `s` empty, when there is none.
bool ScanReference(const FileScopeVarFrame& frame, SubString& s, Reference& reference)
{
    for (s.m_p1 = FindDollar(s); s; s.m_p1 = FindDollar(s))
    {
        SubString name;
        const char* const behind = ScanDollarMacro(s, name);
        const xstring* const value = behind == nullptr ? nullptr : frame.FindDollarMacro(name);
        if (value != nullptr)
        {
            reference = Reference{SubString(s.begin(), behind), name, value};
            s.m_p1 = behind;
            return true;
        }
        ++s;
    }
    return false;
}

/// Throws when a macro that `text` refers to leads back to itself. Depth first, left to right, with
/// the open values on a heap stack.
void CheckForRings(const FileScopeVarFrame& frame, SubString text)
{
    struct OpenValue
    {
        const xstring* m_value;
        SubString m_rest;
    };
    HeldSet<const xstring*> finished;
    HeldSet<const xstring*> open;
    HeldVector<OpenValue> stack{OpenValue{nullptr, text}};
    while (!stack.empty())
    {
        Reference reference;
        if (!ScanReference(frame, stack.back().m_rest, reference))
        {
            open.erase(stack.back().m_value);
            finished.insert(stack.back().m_value);
            stack.pop_back();
            continue;
        }
        if (finished.count(reference.m_value) > 0)
            continue;
        if (!open.insert(reference.m_value).second)
            ThrowContainsItself(reference.m_name);
        stack.push_back(OpenValue{reference.m_value, *reference.m_value});
    }
}

/// Decides whether substitution goes on for ever, from what each pass does.
class ProgressCheck
{
public:
    explicit ProgressCheck(SubString given) : m_given(given.size()) {}

    void NoteReference(const Reference& reference)
    {
        if (m_first.empty())
            m_first = reference.m_name;
        m_isNew = m_known.insert(reference.m_value).second || m_isNew;
    }

    /// Ends a pass that made a text of `before` characters one of `after`.
    void EndPass(ssize_t before, ssize_t after)
    {
        m_passesWithoutNew = m_isNew ? 0 : m_passesWithoutNew + 1;
        const ssize_t spare = m_passesWithoutNew - static_cast<ssize_t>(m_known.size());
        const bool usesGivenText = spare <= m_given && after <= m_given * 2 + s_small;
        if (spare > 0 && after >= before && !usesGivenText)
            ThrowContainsItself(m_first);
        m_isNew = false;
        m_first = SubString();
    }

private:
    static constexpr ssize_t s_small = ssize_t{1024} * 1024;

    ssize_t m_given;
    HeldSet<const xstring*> m_known; ///< Values that have been put in.
    bool m_isNew = false;            ///< The pass put one in for the first time.
    SubString m_first;               ///< The first name of the pass.
    ssize_t m_passesWithoutNew = 0;
};

/// One pass; `progress` may be null.
bool ReplaceOnce(const FileScopeVarFrame& frame, xostream& os, SubString s, ProgressCheck* progress)
{
    ssize_t size = 0;
    const char* written = s.begin();
    Reference reference;
    while (ScanReference(frame, s, reference))
    {
        size += reference.m_text.begin() - written + reference.m_value->size();
        ExpansionLevel::CheckSize(size);
        if (progress != nullptr)
            progress->NoteReference(reference);
        os << SubString(written, reference.m_text.begin()) << *reference.m_value;
        written = s.begin();
    }
    os << SubString(written, s.end());
    return size > 0 || reference.m_value != nullptr;
}

/// All passes in one go.
class Reduction
{
public:
    Reduction(const FileScopeVarFrame& frame, SubString text)
        : m_frame(frame), m_mostPutTogether(text.size() + s_spare),
          m_mostWork(text.size() * 16 + s_spareWork), m_rest{text}
    {
    }

    /// False when it takes too long; there may be no end to it.
    bool Run()
    {
        while (!m_rest.empty())
        {
            SubString& segment = m_rest.back();
            const void* const close =
                segment.empty()
                    ? nullptr
                    : std::memchr(segment.begin(), ')', static_cast<size_t>(segment.size()));
            const char* const end =
                close == nullptr ? segment.end() : static_cast<const char*>(close) + 1;
            m_done.append(segment.begin(), end);
            segment.m_p1 = end;
            if (close == nullptr)
                Leave();
            else if (!ReplaceAtEnd())
                return false;
        }
        return true;
    }

    bool HasChanged() const { return m_hasChanged; }
    SubString Text() const { return SubString(m_done.data(), m_done.data() + m_done.size()); }

private:
    static constexpr ssize_t s_spare = 64;
    static constexpr ssize_t s_spareWork = ssize_t(1) << 24;

    static bool IsOfIdentifier(char c)
    {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || static_cast<unsigned char>(c) >= 0x80;
    }

    void Leave()
    {
        m_rest.pop_back();
        m_joints.push_back(m_done.size());
    }

    /// Takes away a reference that ends the text so far and puts its value before the rest.
    bool ReplaceAtEnd()
    {
        size_t name = m_done.size() - 1;
        while (name > 0 && IsOfIdentifier(m_done[name - 1]))
            --name;
        if (name < 2)
            return true;
        Reference reference;
        SubString tail(m_done.data() + name - 2, m_done.data() + m_done.size());
        if (!ScanReference(m_frame, tail, reference) || !tail.empty())
            return true;
        const size_t start = name - 2;
        m_putTogether += !m_joints.empty() && m_joints.back() > start ? 1 : 0;
        while (!m_joints.empty() && m_joints.back() > start)
            m_joints.pop_back();
        m_done.resize(start);
        m_joints.push_back(start);
        m_rest.push_back(*reference.m_value);
        m_hasChanged = true;
        m_work += 1 + reference.m_value->size();
        ExpansionLevel::CheckSize(static_cast<ssize_t>(start) + reference.m_value->size());
        return m_putTogether <= m_mostPutTogether && m_work <= m_mostWork;
    }

    const FileScopeVarFrame& m_frame;
    const ssize_t m_mostPutTogether;
    const ssize_t m_mostWork;
    HeldString m_done;            ///< Holds no known reference.
    HeldVector<SubString> m_rest; ///< Still to be read, the nearest last.
    HeldVector<size_t> m_joints;  ///< Where in `m_done` texts of different origin meet.
    ssize_t m_putTogether = 0;    ///< References found across joints.
    ssize_t m_work = 0;
    bool m_hasChanged = false;
};

} // namespace

bool RunDollarMacroPass(const FileScopeVarFrame& frame, xostream& os, SubString s)
{
    return ReplaceOnce(frame, os, s, nullptr);
}

bool SubstituteDollarMacros(const FileScopeVarFrame& frame, xstring& s)
{
    CheckForRings(frame, s);
    if (Reduction reduction(frame, s); reduction.Run())
    {
        if (reduction.HasChanged())
            s = reduction.Text();
        return reduction.HasChanged();
    }
    ProgressCheck progress(s);
    xstring text;
    SubString current = s;
    for (ssize_t pass = 0;; ++pass)
    {
        StringStream os(4096);
        if (!ReplaceOnce(frame, os, current, &progress))
        {
            if (pass > 0)
                s.swap(text);
            return pass > 0;
        }
        progress.EndPass(current.size(), os.size());
        os.GetString(text, /*all=*/true);
        current = text;
    }
}

} // namespace telv
