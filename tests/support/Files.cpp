// SPDX-License-Identifier: MIT
// Binary streams do it all: no line end is changed and no byte is special.
#include "support/Files.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace telv::test
{

std::optional<std::string> ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void WriteFile(const std::string& path, std::string_view text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    if (!file)
        throw std::runtime_error("can't write " + path);
}

} // namespace telv::test
