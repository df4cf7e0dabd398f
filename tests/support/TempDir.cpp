// SPDX-License-Identifier: MIT
// mkdtemp below the system's directory for temporary files.
#include "support/TempDir.h"

#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace telv::test
{

TempDir::TempDir()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "telv-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("can't make a directory like " + pattern);
    m_path = pattern;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

} // namespace telv::test
