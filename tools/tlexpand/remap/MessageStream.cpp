// SPDX-License-Identifier: MIT
// A document of several lines must be the whole stream: a lone bracket in the middle of messages is
// the line of a program that a compiler quotes, and must not hold the rest back. One on a single
// line can stand anywhere.
#include "remap/MessageStream.h"
#include "Files.h"
#include "remap/JsonRemapper.h"
#include <cstring>

namespace telv::tool
{

void MessageStream::Add(SubString bytes)
{
    const char* p = bytes.begin();
    while (p != bytes.end())
    {
        const void* const feed = std::memchr(p, '\n', static_cast<size_t>(bytes.end() - p));
        const char* const end = feed == nullptr ? bytes.end() : static_cast<const char*>(feed) + 1;
        m_rest.append(p, end);
        p = end;
        if (feed == nullptr)
            break;
        AddLine(m_rest);
        m_rest.clear();
    }
}

void MessageStream::AddLine(const std::string& line)
{
    const bool isFirst = std::exchange(m_isFirst, false);
    if (!m_document.empty())
        return AddToDocument(line);
    if (isFirst && RecogniseJson(line) == EJson::Beginning)
        m_document = line;
    else
        m_write(RemapLine(line));
}

void MessageStream::AddToDocument(const std::string& line)
{
    m_document += line;
    if (m_document.size() < s_sureSize && RecogniseJson(m_document) == EJson::None)
        WriteDocument();
}

/// Writes what began like a document line by line.
void MessageStream::WriteDocument()
{
    const std::string document = std::exchange(m_document, "");
    size_t from = 0;
    while (from < document.size())
    {
        const size_t feed = document.find('\n', from);
        const size_t end = feed == std::string::npos ? document.size() : feed + 1;
        m_write(RemapLine(document.substr(from, end - from)));
        from = end;
    }
}

std::string MessageStream::RemapLine(const std::string& line)
{
    if ((line[0] == '{' || line[0] == '[') && RecogniseJson(line) == EJson::Whole)
        return m_lines.Finish() + RemapJson(line, m_outputs);
    return m_lines.Remap(line);
}

void MessageStream::Finish()
{
    if (!m_rest.empty())
        AddLine(std::exchange(m_rest, ""));
    if (!m_document.empty() && RecogniseJson(m_document) == EJson::Whole)
        m_write(RemapJson(std::exchange(m_document, ""), m_outputs));
    WriteDocument();
    m_write(m_lines.Finish());
}

} // namespace telv::tool
