// SPDX-License-Identifier: MIT
// Runs a fuzz target over the files of folders, once each, and names the one that breaks something.
//
//     replay_expand FOLDER OR FILE...
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace
{

std::string s_current; ///< The input being run; changes only between runs.

void NameInput(int)
{
    const std::string& name = s_current;
    [[maybe_unused]] ssize_t written = write(STDERR_FILENO, name.data(), name.size());
    written = write(STDERR_FILENO, " breaks it\n", 11);
}

std::vector<std::string> FindInputs(int argc, char** argv)
{
    std::vector<std::string> inputs;
    for (int i = 1; i < argc; ++i)
    {
        if (!std::filesystem::is_directory(argv[i]))
            inputs.emplace_back(argv[i]);
        else
            for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i]))
                if (entry.is_regular_file())
                    inputs.push_back(entry.path().string());
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

void RunInput(const std::string& path)
{
    s_current = path;
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGABRT, NameInput);
    const std::vector<std::string> inputs = FindInputs(argc, argv);
    for (const std::string& input : inputs)
        RunInput(input);
    std::printf("%zu inputs\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
