// SPDX-License-Identifier: MIT
// Writes random programs of the language: definitions, invocations, loops, conditionals, text that
// is expanded twice, strings, errors that are expected.
//
// A few names serve for everything, so that definitions meet their uses and types their mistakes.
// What is written is mostly valid; the mutator and the fuzzer break it.
#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace telv::fuzz
{

/// What a text of a target consists of.
enum class Start
{
    Program,
    Expression,
    Project
};

/// One generator; the text depends on the seed alone.
class Grammar
{
public:
    explicit Grammar(uint32_t seed) : m_random(seed) {}

    /// A whole text of a kind.
    std::string Text(Start start);
    /// What can stand between others of its kind: a statement, an operand.
    std::string Part(Start start);
    /// A directive around `text`.
    std::string Wrap(const std::string& text);
    std::string Name();

    size_t Below(size_t bound) { return bound == 0 ? 0 : m_random() % bound; }
    bool OneIn(size_t n) { return Below(n) == 0; }

private:
    class Depth;

    std::string Statements(size_t most);
    std::string Statement();
    std::string Definition();
    std::string FormalArgs();
    std::string Body();
    std::string Block();
    std::string Invocation();
    std::string Argument();
    std::string Let();
    std::string Loop();
    std::string Conditional();
    std::string Twice();
    std::string Literal();
    std::string Diagnostic();
    std::string Import();
    std::string Words();
    std::string Expression();
    std::string Operand();
    std::string StringExpression();
    std::string ProjectFiles();
    std::string ProjectStatement();
    std::string Blank();
    const char* Type();

    std::minstd_rand m_random;
    int m_depth = 0;
};

} // namespace telv::fuzz
