// SPDX-License-Identifier: MIT
// What every fuzz target is made of: a check that ends the program, the input in a block of exactly
// its size (so that the address sanitizer sees each read past its end), bytes as decisions, and
// errors in a form that can be compared between two runs.
#pragma once

#include "tlMacroExpander/LSLiteral.h"
#include "tlMacroExpander/src/LSToken.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// Ends the program, with the condition, when it does not hold.
#define FUZZ_REQUIRE(condition)                                                                    \
    (static_cast<bool>(condition) ? static_cast<void>(0)                                           \
                                  : ::telv::fuzz::Fail(#condition, __FILE__, __LINE__))

namespace telv::fuzz
{

[[noreturn]] void Fail(const char* condition, const char* file, int line);

/// A copy of some bytes at an address of its own, with nothing behind them.
class ExactText
{
public:
    ExactText(const void* data, size_t size);
    explicit ExactText(const std::string& text) : ExactText(text.data(), text.size()) {}

    SubString View() const { return SubString(m_block.get(), m_block.get() + m_size); }
    /// True for a position in the text or at its end.
    bool Holds(const char* pos) const;
    /// True for a view with both ends in the text, in order.
    bool Holds(SubString view) const;
    /// Offset of a position that the text holds; -1 for another.
    ssize_t OffsetOf(const char* pos) const;

private:
    std::unique_ptr<char[]> m_block;
    size_t m_size;
};

std::string ToStd(SubString s);

/// The input as a sequence of decisions; zeros when it is used up.
class Decisions
{
public:
    Decisions(const uint8_t* data, size_t size) : m_data(data), m_end(data + size) {}

    bool AtEnd() const { return m_data == m_end; }
    uint8_t Byte() { return AtEnd() ? uint8_t{0} : *m_data++; }
    /// 0 to `bound` - 1.
    size_t Below(size_t bound) { return bound == 0 ? 0 : Byte() % bound; }
    uint64_t Word();
    /// A short text.
    std::string Text(size_t longest);

private:
    const uint8_t* m_data;
    const uint8_t* m_end;
};

/// How a call ended.
struct Outcome
{
    enum Kind
    {
        Value,
        LexError,
        LimitError,
        LiteralError,
        Assertion
    };

    Kind m_kind = Value;
    std::string m_text;    ///< The value as text, or the whole message.
    ssize_t m_offset = -2; ///< Of the error in the text; -1: null.

    bool operator==(const Outcome&) const = default;
};

/// An error in `text`, whose position must lie in it or be null; what is known of no file must be
/// unset.
Outcome MakeOutcome(const LexScannerException& e, const ExactText& text);

/// Calls `run`, which returns the value as text, and catches what the libraries may throw. Any
/// other exception ends the program.
template <class Run>
Outcome Observe(const ExactText& text, Run run)
{
    try
    {
        return {Outcome::Value, run(), -2};
    }
    catch (const LexScannerException& e)
    {
        return MakeOutcome(e, text);
    }
    catch (const LiteralException& e)
    {
        return {Outcome::LiteralError, ToStd(e.m_description), -2};
    }
    catch (const TelvAssertionError& e)
    {
        return {Outcome::Assertion, e.what(), -2};
    }
}

/// True for an assertion whose condition is `condition`.
bool IsAssertion(const Outcome& outcome, const char* condition);

} // namespace telv::fuzz
