// SPDX-License-Identifier: MIT
// localedef knows ASCII by itself, so nothing but itself has to be installed. Its status is not 0
// when a category is left out; whether the locale works is seen when it is set.
#include "support/CommaLocale.h"

#include "support/Files.h"
#include "support/RunProgram.h"

#include <clocale>
#include <cstdlib>
#include <stdexcept>

namespace telv::test
{

namespace
{

constexpr const char* s_definition = "LC_NUMERIC\n"
                                     "decimal_point \",\"\n"
                                     "thousands_sep \".\"\n"
                                     "grouping 3;3\n"
                                     "END LC_NUMERIC\n";

} // namespace

CommaLocale::CommaLocale()
{
    WriteFile(m_directory.Path("definition"), s_definition);
    const ProgramResult made = RunProgram({"/usr/bin/localedef", "--no-archive", "-c", "-i",
                                           m_directory.Path("definition"), "-f", "ANSI_X3.4-1968",
                                           m_directory.Path(s_name)});
    if (!ReadFile(m_directory.Path(std::string(s_name) + "/LC_NUMERIC")))
        throw std::runtime_error("localedef made no locale: " + made.err);
}

CommaLocaleScope::CommaLocaleScope()
{
    setenv("LOCPATH", m_locale.Directory().c_str(), 1);
    const bool set = std::setlocale(LC_ALL, CommaLocale::s_name) != nullptr;
    unsetenv("LOCPATH");
    if (!set || std::strtod("1,5", nullptr) != 1.5)
        throw std::runtime_error("the locale can't be set");
}

CommaLocaleScope::~CommaLocaleScope()
{
    std::setlocale(LC_ALL, "C");
}

} // namespace telv::test
