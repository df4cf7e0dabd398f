// SPDX-License-Identifier: MIT
// What the tests of frames share: definitions, and look-ups as text.
#pragma once

#include "ExpanderSupport.h"
#include <gtest/gtest.h>
#include <string>

namespace telv::expander
{

/// Adds a string variable to `frame`. The value says where it was found.
inline LSVariable* Define(VarFrame& frame, const char* name, const char* value)
{
    auto* const v = new LSVar(name, value);
    frame.m_localVariables.Add(v);
    return v;
}

/// The value of what was found, "none", or the message of the error with its place in `name`.
template <class Operation>
std::string Found(Operation operation)
{
    try
    {
        const LSVariable* const v = operation();
        return v == nullptr ? "none" : Written([&](xostream& os) { v->WriteValue(os); });
    }
    catch (const LexScannerException& e)
    {
        return "error: " + Str(e.m_description);
    }
}

inline std::string Find(VarFrame& frame, const char* name)
{
    return Found([&] { return frame.Find(name, name); });
}

inline std::string FindLocal(VarFrame& frame, const char* name)
{
    return Found([&] { return frame.FindLocal(name, name); });
}

inline std::string Dump(const VarFrame& frame)
{
    return Written([&](xostream& os) { frame.WriteToStream(os); });
}

/// Destruction is counted.
struct Counted : LSVar
{
    Counted(const char* name, int& count) : LSVar(name, ""), m_count(count) {}
    ~Counted() override { ++m_count; }
    int& m_count;
};

/// Counts look-ups of a scope.
class Counting
{
public:
    Counting() : m_before(s_count) { SetStarted(); }
    ~Counting() { s_started = false; }
    long Count() const { return s_count - m_before; }

private:
    long m_before;
};

} // namespace telv::expander
