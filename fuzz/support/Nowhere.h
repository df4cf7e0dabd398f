// SPDX-License-Identifier: MIT
// A stream for what fuzzed texts print.
#pragma once

#include "tlUtils/xostream.h"

namespace telv::fuzz
{

/// What is printed goes nowhere.
class Nowhere final : public IndentingStream
{
public:
    void Flush() override {}

private:
    void Write(const char*, ssize_t) override {}
    char LastCharacter() const override { return '\n'; }
};

} // namespace telv::fuzz
