// SPDX-License-Identifier: MIT
// What is not plain in a URI is written as "%" and two digits.
#include "remap/FileUri.h"

namespace telv::tool
{

namespace
{

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

std::string PathOfUri(const std::string& uri)
{
    std::string path;
    const std::string escaped = uri.starts_with(s_fileScheme) ? uri.substr(7) : uri;
    for (size_t i = 0; i < escaped.size(); ++i)
    {
        const bool isEscape = escaped[i] == '%' && i + 2 < escaped.size() &&
                              HexDigit(escaped[i + 1]) >= 0 && HexDigit(escaped[i + 2]) >= 0;
        path += isEscape
                    ? static_cast<char>(HexDigit(escaped[i + 1]) * 16 + HexDigit(escaped[i + 2]))
                    : escaped[i];
        i += isEscape ? 2 : 0;
    }
    return path;
}

std::string UriOfPath(const std::string& path)
{
    static const char s_digits[] = "0123456789ABCDEF";
    static const std::string s_plain = "-._~/!$&'()*+,;=@";
    std::string uri;
    for (const char c : path)
    {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') ||
                             (c >= 'A' && c <= 'Z') || s_plain.find(c) != std::string::npos;
        if (isPlain)
            uri += c;
        else
            uri += std::string("%") + s_digits[byte >> 4] + s_digits[byte & 15];
    }
    return uri;
}

} // namespace telv::tool
