// SPDX-License-Identifier: MIT
// A stream of messages, as it comes: cuts it into lines, and rewrites each as soon as it is whole.
#pragma once

#include "remap/LineRemapper.h"

namespace telv::tool
{

class MessageStream
{
public:
    /// @param outputs  Must outlive this.
    /// @param write    Takes what is to be written.
    MessageStream(MappedOutputs& outputs, std::function<void(const std::string&)> write)
        : m_outputs(outputs), m_lines(outputs), m_write(std::move(write))
    {
    }

    /// Takes the next bytes of the stream and writes every line that they complete.
    void Add(SubString bytes);
    /// Writes the rest.
    void Finish();

private:
    /// How much is looked at before a stream that begins like JSON is taken for it.
    static constexpr size_t s_sureSize = 4096;

    void AddLine(const std::string& line);
    void AddToDocument(const std::string& line);
    void WriteDocument();
    std::string RemapLine(const std::string& line);

    MappedOutputs& m_outputs;
    LineRemapper m_lines;
    std::function<void(const std::string&)> m_write;
    std::string m_rest;     ///< Of a line whose end has not come.
    std::string m_document; ///< A document of several lines, as far as it has come.
    bool m_isFirst = true;  ///< No line has come.
};

} // namespace telv::tool
