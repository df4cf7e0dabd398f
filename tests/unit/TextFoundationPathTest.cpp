// SPDX-License-Identifier: MIT
// Paths as text, and reading files.
#include "TextFoundationSupport.h"
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace telv::foundation
{

TEST(TextFoundationPath, Normalise)
{
    const struct
    {
        const char* m_path;
        const char* m_normal;
    } rows[] = {
        {"", ""},
        {"a", "a"},
        {"a\\b\\c", "a/b/c"},
        {"a//b///c", "a/b/c"},
        {"//a", "/a"},
        {"./a/./b/.", "a/b"},
        {"a/", "a"},
        {"a/b//", "a/b"},
        {"/", "/"},
        {"//", "/"},
        {"\\", "/"},
        {".", "."},
        {"./", "."},
        {"./.", "."},
        {"a/..", "."},
        {"a/../", "."},
        {"/.", "/"},
        {"/..", "/"},
        {"/../a", "/a"},
        {"/a/..", "/"},
        {"/a/../../b", "/b"},
        {"a/b/../c", "a/c"},
        {"a/b/../..", "."},
        {"a/../b", "b"},
        {"a/b/../../../c", "../c"},
        {"..", ".."},
        {"../..", "../.."},
        {"../a/..", ".."},
        {"../../a/../b", "../../b"},
        {"a/../..", ".."},
        {"...", "..."},
        {"..a/.b", "..a/.b"},
        {"a/..b/..", "a"},
        {"C:\\x\\..\\y", "C:/y"},
        {" a / b ", " a / b "},
    };
    for (const auto& row : rows)
    {
        xstring path(row.m_path);
        NormalisePath(path);
        EXPECT_EQ(Str(path), row.m_normal) << row.m_path;
        NormalisePath(path);
        EXPECT_EQ(Str(path), row.m_normal) << "again: " << row.m_path;
    }
}

TEST(TextFoundationPath, Relative)
{
    const struct
    {
        const char* m_from;
        const char* m_to;
        const char* m_result;
    } rows[] = {
        {"/a/b", "/a/c/x.h", "../c/x.h"},
        {"/a/b", "/a/b", "."},
        {"/a/b/", "/a/./b", "."},
        {"/a", "/a/b/c", "b/c"},
        {"/a/b/c", "/a", "../.."},
        {"/", "/x", "x"},
        {"/x", "/", ".."},
        {"/ab", "/a", "../a"},
        {"a/b", "a/c", "../c"},
        {"a\\b", "a\\c\\x", "../c/x"},
        {".", "a", "a"},
        {"", "a", "a"},
        {"a", ".", ".."},
        {".", ".", "."},
        {"a", "../b", "../../b"},
        {"../a", "../b", "../b"},
        {"/a", "b/../c", "c"},
        {"a", "/b", "/b"},
        {"../a", "b", "b"},
        {"..", "x/./y", "x/y"},
        {"../..", "../x", "../x"},
        {"..", "..", "."},
    };
    for (const auto& row : rows)
    {
        xstring out("old");
        CalcRelativePath(row.m_from, row.m_to, out);
        EXPECT_EQ(Str(out), row.m_result) << row.m_from << " to " << row.m_to;
    }
}

TEST(TextFoundationPath, RelativeMayReplaceItsArgument)
{
    xstring path("/a/c");
    CalcRelativePath("/a/b", path, path);
    EXPECT_EQ(Str(path), "../c");
}

class TextFoundationFile : public testing::Test
{
protected:
    TextFoundationFile()
    {
        char pattern[] = "/tmp/textfoundation.XXXXXX";
        m_directory = ::mkdtemp(pattern);
        m_path = m_directory + "/file";
    }
    ~TextFoundationFile() override
    {
        ::unlink(m_path.c_str());
        ::rmdir(m_directory.c_str());
    }

    void WriteFile(const std::string& text) const
    {
        FILE* const file = std::fopen(m_path.c_str(), "wb");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(std::fwrite(text.data(), 1, text.size(), file), text.size());
        EXPECT_EQ(std::fclose(file), 0);
    }

    static bool Read(const std::string& path, std::string& text, bool binary = true)
    {
        xstring out("unchanged");
        const bool read = ReadStringFromFile(out, View(path), binary);
        text = Str(out);
        return read;
    }

    std::string m_directory;
    std::string m_path;
};

TEST_F(TextFoundationFile, ThatFailsWhileItIsReadIsFalse)
{
    std::string text;
    EXPECT_FALSE(Read("/proc/self/mem", text)); // a regular file; nothing is mapped at its start
    EXPECT_EQ(text, "unchanged");
}

TEST_F(TextFoundationFile, IsReadWholeAndReplacesTheText)
{
    std::string large;
    for (int i = 0; i < 100000; ++i)
        large += std::to_string(i);
    const std::string contents[] = {"", "x", std::string("a\0\xff\r\n", 5), std::string(4096, 'p'),
                                    large};
    for (const std::string& content : contents)
    {
        WriteFile(content);
        std::string text;
        EXPECT_TRUE(Read(m_path, text));
        EXPECT_EQ(text, content);
    }
}

TEST_F(TextFoundationFile, TextModeReadsCrLfAsLineFeed)
{
    WriteFile("a\r\nb\rc\n");
    std::string text;
    EXPECT_TRUE(Read(m_path, text, false));
    EXPECT_EQ(text, "a\nb\rc\n");
}

TEST_F(TextFoundationFile, WhatCannotBeReadIsFalseAndChangesNothing)
{
    WriteFile("x");
    const std::string rows[] = {m_directory,
                                m_directory + "/none",
                                "",
                                m_path + std::string(1, '\0'),
                                m_path + std::string("\0y", 2),
                                m_path + "/below"};
    for (const std::string& path : rows)
    {
        std::string text;
        EXPECT_FALSE(Read(path, text)) << path;
        EXPECT_EQ(text, "unchanged");
    }
}

TEST_F(TextFoundationFile, FilesWithoutASizeAreReadToTheirEnd)
{
    std::string text;
    EXPECT_TRUE(Read("/proc/self/status", text));
    EXPECT_NE(text.find("\nPid:"), std::string::npos);
}

TEST_F(TextFoundationFile, PipesAreReadToTheirEnd)
{
    Pipe pipe;
    const std::string content(20000, 'y');
    ASSERT_EQ(::write(pipe.m_ends[1], content.data(), content.size()), 20000);
    pipe.CloseWriting();
    std::string text;
    EXPECT_TRUE(Read("/dev/fd/" + std::to_string(pipe.m_ends[0]), text));
    EXPECT_EQ(text, content);
}

TEST_F(TextFoundationFile, NoDescriptorStaysOpen)
{
    const int before = ::dup(0);
    ::close(before);
    std::string text;
    Read("/proc/self/status", text);
    Read(m_directory, text);
    const int after = ::dup(0);
    ::close(after);
    EXPECT_EQ(before, after);
}

} // namespace telv::foundation
