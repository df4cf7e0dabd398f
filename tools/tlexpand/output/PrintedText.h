// SPDX-License-Identifier: MIT
// Where the text goes that the source prints: standard output when the expansion has a file, else
// standard error.
#pragma once

#include "tlUtils/xostream.h"
#include <string>

namespace telv::tool
{

/// Points `xcout` to a descriptor for the length of a scope. When the descriptor takes no more (a
/// closed pipe, a full disk) the process ends with status 2: the text that prints may never stop,
/// and no exception may pass through the Python code that it may come from.
class PrintedText final : private IndentingStream
{
public:
    explicit PrintedText(int descriptor);
    ~PrintedText();

    /// Sends off what was printed.
    void Flush() override;

private:
    void Write(const char* text, ssize_t length) override;
    char LastCharacter() const override { return m_last; }

    int m_descriptor;
    char m_last = '\n';
    std::string m_pending;
    IndentingStream* m_before;
};

} // namespace telv::tool
