// SPDX-License-Identifier: MIT
// The options of a command as rows: how each is written, and what it does. Options may stand behind
// operands, and "--" ends them.
#pragma once

#include <functional>
#include <getopt.h>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

namespace telv::tool
{

/// An option of a command whose options are an `Options`. It has a value or is a flag.
template <class Options>
struct OptionRow
{
    /// @param option  How it is called in messages: "-o" or "--map".
    using SetValue = void (*)(Options&, const char* option, const char* value);
    using SetFlag = void (*)(Options&);

    const char* m_name;
    char m_letter; ///< 0 where there is none.
    SetValue m_setValue = nullptr;
    SetFlag m_setFlag = nullptr;

    constexpr OptionRow(const char* name, char letter, SetValue set)
        : m_name(name), m_letter(letter), m_setValue(set)
    {
    }
    constexpr OptionRow(const char* name, char letter, SetFlag set)
        : m_name(name), m_letter(letter), m_setFlag(set)
    {
    }
    void Set(Options& options, const char* value) const
    {
        const std::string written =
            m_letter != 0 ? std::string("-") + m_letter : std::string("--") + m_name;
        m_setFlag != nullptr ? m_setFlag(options) : m_setValue(options, written.c_str(), value);
    }
};

/// The usual things that a row does: sets a field, to what the value means, or adds that to it.
template <auto Field, class Options>
void Flag(Options& options)
{
    options.*Field = true;
}
template <auto Field, auto Parse, class Options>
void Value(Options& options, const char* option, const char* value)
{
    options.*Field = Parse(option, value);
}
template <auto Field, auto Parse, class Options>
void Add(Options& options, const char* option, const char* value)
{
    (options.*Field).push_back(Parse(option, value));
}

/// What getopt_long is told of the options.
class OptionTable
{
public:
    OptionTable() { m_options.reserve(s_usual); }
    void AddOption(const char* name, char letter, bool hasValue);

    /// Calls `take` with the index and the value of each option, and with -1 and the operand for
    /// each operand.
    ///
    /// @throws UsageError  An option that is not in the table, or without the value that it needs.
    void ForEach(int argc, char** argv, const std::function<void(int, const char*)>& take);

private:
    static constexpr size_t s_usual = 64;

    std::vector<option> m_options;
    std::string m_letters = "-:";
};

/// Reads the arguments behind `argv[0]`.
///
/// @throws UsageError
template <class Options>
void ReadArguments(int argc, char** argv, Options& options,
                   std::initializer_list<std::span<const OptionRow<Options>>> tables,
                   void (*setOperand)(Options&, const char*))
{
    OptionTable table;
    for (const auto& part : tables)
        for (const OptionRow<Options>& row : part)
            table.AddOption(row.m_name, row.m_letter, row.m_setValue != nullptr);
    const auto take = [&](int index, const char* value)
    {
        if (index < 0)
            return setOperand(options, value);
        auto left = static_cast<size_t>(index);
        auto part = tables.begin();
        for (; left >= part->size(); ++part)
            left -= part->size();
        (*part)[left].Set(options, value);
    };
    table.ForEach(argc, argv, take);
}

} // namespace telv::tool
