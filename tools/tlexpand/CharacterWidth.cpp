// SPDX-License-Identifier: MIT
// The system's table, wcwidth, is that of a locale; the user's may be one without characters beyond
// ASCII, so the thread gets another for as long as the question takes.
#include "CharacterWidth.h"
#include <cwchar>
#include <locale.h>

namespace telv::tool
{

namespace
{

int WidthIn(locale_t locale, char32_t character)
{
    const locale_t before = uselocale(locale);
    const int width = wcwidth(static_cast<wchar_t>(character));
    uselocale(before);
    return width < 0 ? 1 : width; // Of what is not known as printable.
}

} // namespace

int ColumnsOf(const Utf8Character& character)
{
    if (!character.m_valid || character.m_bytes.size() == 1)
        return 1;
    static const locale_t s_utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return s_utf8 == nullptr ? 1 : WidthIn(s_utf8, CodePointOf(character.m_bytes));
}

ssize_t ColumnBehind(ssize_t column, const Utf8Character& character, ssize_t tabWidth)
{
    return *character.m_bytes.begin() == '\t' ? (column / tabWidth + 1) * tabWidth
                                              : column + ColumnsOf(character);
}

} // namespace telv::tool
