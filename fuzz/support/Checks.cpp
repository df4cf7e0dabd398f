// SPDX-License-Identifier: MIT
#include "Checks.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace telv::fuzz
{

void Fail(const char* condition, const char* file, int line)
{
    std::fprintf(stderr, "%s(%d): does not hold: %s\n", file, line, condition);
    std::abort();
}

ExactText::ExactText(const void* data, size_t size) : m_block(new char[size]), m_size(size)
{
    if (size != 0)
        std::memcpy(m_block.get(), data, size);
}

bool ExactText::Holds(const char* pos) const
{
    const std::less_equal<const char*> notAfter;
    return notAfter(m_block.get(), pos) && notAfter(pos, m_block.get() + m_size);
}

bool ExactText::Holds(SubString view) const
{
    return Holds(view.m_p1) && Holds(view.m_p2) && view.m_p1 <= view.m_p2;
}

ssize_t ExactText::OffsetOf(const char* pos) const
{
    return Holds(pos) ? pos - m_block.get() : -1;
}

std::string ToStd(SubString s)
{
    return s.empty() ? std::string() : std::string(s.begin(), s.end());
}

uint64_t Decisions::Word()
{
    uint64_t word = 0;
    for (int i = 0; i < 8; ++i)
        word = word << 8 | Byte();
    return word;
}

std::string Decisions::Text(size_t longest)
{
    std::string text;
    for (size_t left = Below(longest + 1); left != 0 && !AtEnd(); --left)
        text += static_cast<char>(Byte());
    return text;
}

Outcome MakeOutcome(const LexScannerException& e, const ExactText& text)
{
    FUZZ_REQUIRE(e.m_pos == nullptr || text.Holds(e.m_pos));
    FUZZ_REQUIRE(e.m_path.empty() && e.m_lineNumber == -1);
    FUZZ_REQUIRE(std::strlen(e.what()) <= static_cast<size_t>(e.m_description.size()));
    const bool isLimit = dynamic_cast<const ExpansionLimitException*>(&e) != nullptr;
    return {isLimit ? Outcome::LimitError : Outcome::LexError, ToStd(e.m_description),
            text.OffsetOf(e.m_pos)};
}

bool IsAssertion(const Outcome& outcome, const char* condition)
{
    const std::string start = std::string("Assertion failed: ") + condition + " at ";
    return outcome.m_kind == Outcome::Assertion && outcome.m_text.starts_with(start);
}

} // namespace telv::fuzz
