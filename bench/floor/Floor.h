// SPDX-License-Identifier: MIT
// What the floor programs share. A floor program does the least that makes the output of one work
// from its input: it knows that work and nothing else. The time of tlexpand is compared with it.
//
// Input is the whole file, mapped; Output gathers into one buffer and writes when it is full. An
// error ends the program with status 1: the runner tells.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace floors
{

[[noreturn]] inline void Fail(const char* what)
{
    std::perror(what);
    std::exit(1);
}

/// A file, mapped for as long as the program runs.
inline std::string_view MapFile(const char* path)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status
    {
    };
    if (file < 0 || fstat(file, &status) != 0)
        Fail(path);
    const auto size = static_cast<size_t>(status.st_size);
    if (size == 0)
        return {};
    void* const text = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0);
    if (text == MAP_FAILED)
        Fail(path);
    close(file);
    return {static_cast<const char*>(text), size};
}

class Output
{
public:
    explicit Output(const char* path)
        : m_file(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666))
    {
        if (m_file < 0)
            Fail(path);
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output() { Flush(); }

    void Put(std::string_view text)
    {
        if (text.size() > s_size - m_used)
        {
            Flush();
            if (text.size() > s_size / 2)
            {
                Write(text);
                return;
            }
        }
        std::memcpy(m_buffer + m_used, text.data(), text.size());
        m_used += text.size();
    }
    void Put(char c) { Put(std::string_view(&c, 1)); }
    template <class Number>
    void PutNumber(Number number)
    {
        if (s_size - m_used < s_longestNumber)
            Flush();
        m_used = static_cast<size_t>(
            std::to_chars(m_buffer + m_used, m_buffer + s_size, number).ptr - m_buffer);
    }

private:
    static constexpr size_t s_size = 65536;
    static constexpr size_t s_longestNumber = 32;

    void Flush()
    {
        Write({m_buffer, m_used});
        m_used = 0;
    }
    void Write(std::string_view text) const
    {
        while (!text.empty())
        {
            const ssize_t written = write(m_file, text.data(), text.size());
            if (written < 0)
                Fail("write");
            text.remove_prefix(static_cast<size_t>(written));
        }
    }

    int m_file;
    size_t m_used = 0;
    char m_buffer[s_size];
};

/// The text behind the first `marker`, which must be there.
inline std::string_view Behind(std::string_view text, std::string_view marker)
{
    const size_t at = text.find(marker);
    if (at == std::string_view::npos)
        Fail("marker");
    return text.substr(at + marker.size());
}

/// What stands before the first `end`; `text` moves behind it.
inline std::string_view Cut(std::string_view& text, std::string_view end)
{
    const size_t at = text.find(end);
    if (at == std::string_view::npos)
        Fail("end");
    const std::string_view head = text.substr(0, at);
    text.remove_prefix(at + end.size());
    return head;
}

/// The number that the text behind `marker` begins with.
inline int NumberBehind(std::string_view text, std::string_view marker)
{
    const std::string_view digits = Behind(text, marker);
    int number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

/// Whether a byte belongs to a word: a letter, a digit, '_' or a byte that is not ASCII.
inline bool IsOfWord(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           (c & 0x80) != 0;
}

/// The end of the word that begins at `p`.
inline const char* EndOfWord(const char* p, const char* end)
{
    while (p != end && IsOfWord(*p))
        ++p;
    return p;
}

/// The arguments of a floor program: its input and its output.
struct Arguments
{
    Arguments(int argc, char** argv)
    {
        if (argc != 3)
        {
            std::fputs("usage: floor INPUT OUTPUT\n", stderr);
            std::exit(2);
        }
        m_input = argv[1];
        m_output = argv[2];
    }
    const char* m_input;
    const char* m_output;
};

} // namespace floors
