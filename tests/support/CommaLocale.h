// SPDX-License-Identifier: MIT
// A locale with a decimal comma, made for a test: few machines have one.
#pragma once

#include "support/TempDir.h"

#include <string>

namespace telv::test
{

/// The definition of such a locale in a directory of its own, in the form that `setlocale` reads.
class CommaLocale
{
public:
    /// @throws std::runtime_error  `localedef` is not there or makes none.
    CommaLocale();

    /// What the variable LOCPATH has to hold so that `setlocale` finds it.
    std::string Directory() const { return m_directory.Path(""); }
    /// Its name for `setlocale`.
    static constexpr const char* s_name = "comma";

private:
    TempDir m_directory;
};

/// Makes it the locale of this process, for all categories, until the end of the scope.
class CommaLocaleScope
{
public:
    /// @throws std::runtime_error  It can't be set, or numbers are read as before.
    CommaLocaleScope();
    ~CommaLocaleScope();
    CommaLocaleScope(const CommaLocaleScope&) = delete;
    CommaLocaleScope& operator=(const CommaLocaleScope&) = delete;

private:
    CommaLocale m_locale;
};

} // namespace telv::test
