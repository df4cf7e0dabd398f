// SPDX-License-Identifier: MIT
// One table, read both ways.
#include "WarningNames.h"

namespace telv::tool
{

namespace
{

constexpr struct
{
    EWarning m_kind;
    const char* m_name;
} s_warnings[] = {{WARN_DROPPED_TEXT, "dropped-text"},
                  {WARN_UNKNOWN_DIRECTIVE, "unknown-directive"},
                  {WARN_UNKNOWN_NAME, "unknown-name"},
                  {WARN_HIDDEN_NAME, "hidden-name"},
                  {WARN_UNUSED, "unused"},
                  {WARN_TABS, "tabs"}};

} // namespace

EWarning FindWarning(const std::string& name)
{
    for (const auto& warning : s_warnings)
        if (name == warning.m_name)
            return warning.m_kind;
    return WARN_NONE;
}

const char* NameOfWarning(EWarning kind)
{
    for (const auto& warning : s_warnings)
        if (kind == warning.m_kind)
            return warning.m_name;
    return "";
}

std::string NamesOfWarnings()
{
    std::string names;
    for (const auto& warning : s_warnings)
        names.append(names.empty() ? "" : ", ").append(warning.m_name);
    return names;
}

} // namespace telv::tool
