// SPDX-License-Identifier: MIT
// What the tests of the text foundation share: texts as standard strings, which the test framework
// prints, and the text of a failed assertion.
#pragma once

#include "tlUtils/StringExt.h"
#include <cstdio>
#include <string>
#include <unistd.h>

namespace telv::foundation
{

inline std::string Str(SubString s)
{
    return s.empty() ? std::string() : std::string(s.begin(), s.end());
}

inline std::string Str(const xstring& s)
{
    return Str(SubString(s));
}

/// A view of a standard string, which may hold NULs.
inline SubString View(const std::string& s)
{
    return SubString(s.data(), s.data() + s.size());
}

/// What `operation` wrote to a stream of its own.
template <class Operation>
std::string Written(Operation operation)
{
    StringStream stream(4096);
    operation(stream);
    return Str(stream.GetString());
}

/// The text of the assertion that `operation` fails, up to the line number.
template <class Operation>
std::string FailedAssertion(Operation operation)
{
    try
    {
        operation();
    }
    catch (const TelvAssertionError& e)
    {
        const std::string text = e.what();
        return text.substr(0, text.rfind('('));
    }
    return "no assertion failed";
}

inline std::string AssertionIn(const std::string& path, const std::string& condition)
{
    return "Assertion failed: " + condition + " at Core/tlUtils/" + path;
}

/// A pipe whose descriptors are closed at the end of the scope.
struct Pipe
{
    Pipe()
    {
        if (::pipe(m_ends) != 0)
            std::perror("pipe");
    }
    ~Pipe()
    {
        CloseWriting();
        ::close(m_ends[0]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void CloseWriting()
    {
        if (m_ends[1] >= 0)
            ::close(m_ends[1]);
        m_ends[1] = -1;
    }

    /// Everything that is written until the writing end is closed.
    std::string ReadAll() const
    {
        std::string text;
        char buffer[4096];
        for (ssize_t n; (n = ::read(m_ends[0], buffer, sizeof buffer)) > 0;)
            text.append(buffer, static_cast<size_t>(n));
        return text;
    }

    int m_ends[2] = {-1, -1};
};

} // namespace telv::foundation
