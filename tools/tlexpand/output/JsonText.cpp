// SPDX-License-Identifier: MIT
// Escapes what JSON requires: the quote, the backslash and control characters.
#include "output/JsonText.h"
#include "Files.h"
#include "Utf8.h"
#include <cstdio>

namespace telv::tool
{

namespace
{

void AppendByte(std::string& json, char c)
{
    static const char s_letters[] = "\b\f\n\r\t";
    static const char s_escapes[] = "bfnrt";
    for (size_t i = 0; i < sizeof(s_letters) - 1; ++i)
        if (c == s_letters[i])
        {
            json += '\\';
            json += s_escapes[i];
            return;
        }
    if (c == '"' || c == '\\')
        json += '\\';
    if (static_cast<unsigned char>(c) >= 0x20)
    {
        json += c;
        return;
    }
    char code[8];
    std::snprintf(code, sizeof(code), "\\u%04x", static_cast<unsigned char>(c));
    json += code;
}

} // namespace

std::string JsonString(SubString text)
{
    std::string json = "\"";
    while (!text.empty())
    {
        const Utf8Character c = TakeUtf8Character(text);
        if (!c.m_valid)
            json += "\xef\xbf\xbd";
        else if (c.m_bytes.size() == 1)
            AppendByte(json, *c.m_bytes.begin());
        else
            json += ToStdString(c.m_bytes);
    }
    return json + "\"";
}

} // namespace telv::tool
