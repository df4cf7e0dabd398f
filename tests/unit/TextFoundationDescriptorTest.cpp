// SPDX-License-Identifier: MIT
// Streams that write to a descriptor: standard output, traces, and what goes wrong with them.
#include "TextFoundationSupport.h"
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

namespace telv::foundation
{

namespace
{

/// Lets a descriptor lead to a pipe within the scope.
class Redirection
{
public:
    Redirection(int descriptor, const Pipe& pipe)
        : m_descriptor(descriptor), m_saved(::dup(descriptor))
    {
        ::dup2(pipe.m_ends[1], descriptor);
    }
    ~Redirection()
    {
        ::dup2(m_saved, m_descriptor);
        ::close(m_saved);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    int m_descriptor;
    int m_saved;
};

/// A file without a name.
struct TemporaryFile
{
    TemporaryFile() : m_file(std::tmpfile()), m_descriptor(::fileno(m_file)) {}
    ~TemporaryFile() { std::fclose(m_file); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    ssize_t Size() const
    {
        struct stat status = {};
        ::fstat(m_descriptor, &status);
        return status.st_size;
    }

    FILE* m_file;
    int m_descriptor;
};

std::string ManyLines()
{
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += std::to_string(i) + '\n';
    return text;
}

/// Written before `main`, by a constructor that may run before those of the library's sources.
struct EarlyWriter
{
    EarlyWriter()
    {
        Pipe pipe;
        {
            const Redirection redirection(1, pipe);
            xcout << "early";
            xcout.flush();
        }
        pipe.CloseWriting();
        m_text = pipe.ReadAll();
    }
    std::string m_text;
};

const EarlyWriter s_earlyWriter;

void IgnoreSignal(int) {}

} // namespace

TEST(TextFoundationDescriptor, KeepsTextUntilFlush)
{
    TemporaryFile file;
    DescriptorStream stream(file.m_descriptor);
    stream.Put("text", 4);
    stream.Put("", 0);
    EXPECT_EQ(file.Size(), 0);
    stream.Flush();
    EXPECT_EQ(file.Size(), 4);
    stream.Flush();
    EXPECT_EQ(file.Size(), 4);
    EXPECT_FALSE(stream.Failed());
}

TEST(TextFoundationDescriptor, KeepsNoMoreThan64KiB)
{
    TemporaryFile file;
    DescriptorStream stream(file.m_descriptor);
    const std::string text(65536, 'x');
    stream.Put(text.data(), 65535);
    stream.Put("x", 1);
    EXPECT_EQ(file.Size(), 0);
    stream.Put("y", 1);
    EXPECT_EQ(file.Size(), 65536);
    stream.Put(text.data(), 65536);
    EXPECT_EQ(file.Size(), 2 * 65536 + 1);
}

TEST(TextFoundationDescriptor, IndentsLikeEveryStream)
{
    Pipe pipe;
    DescriptorStream stream(pipe.m_ends[1]);
    xostream os(&stream);
    {
        const Indenter indenter(os, 2);
        os << "a\n";
        os.flush();
        os << "b\n\nc";
    }
    os << "d\n";
    os.flush();
    pipe.CloseWriting();
    EXPECT_EQ(pipe.ReadAll(), "  a\n  b\n\n  cd\n");
}

TEST(TextFoundationDescriptor, ContinuesShortInterruptedAndBlockedWrites)
{
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = IgnoreSignal; // without SA_RESTART
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
    const std::string text = ManyLines();
    for (const int flags : {0, O_NONBLOCK})
    {
        Pipe pipe;
        ASSERT_EQ(::fcntl(pipe.m_ends[1], F_SETFL, flags), 0);
        const pthread_t writer = ::pthread_self();
        std::string received;
        std::thread reader(
            [&]
            {
                char buffer[1000];
                for (ssize_t n; (n = ::read(pipe.m_ends[0], buffer, sizeof buffer)) > 0;)
                {
                    received.append(buffer, static_cast<size_t>(n));
                    ::pthread_kill(writer, SIGUSR1);
                }
            });
        DescriptorStream stream(pipe.m_ends[1]);
        stream.Put(text.data(), 10);
        stream.Put(text.data() + 10, static_cast<ssize_t>(text.size()) - 10);
        stream.Flush();
        EXPECT_FALSE(stream.Failed());
        pipe.CloseWriting();
        reader.join();
        EXPECT_TRUE(received == text);
    }
    ::sigaction(SIGUSR1, &before, nullptr);
}

TEST(TextFoundationDescriptor, RemembersThatAWriteFailed)
{
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    DescriptorStream stream(full);
    stream.Put("text", 4);
    EXPECT_FALSE(stream.Failed());
    stream.Flush();
    EXPECT_TRUE(stream.Failed());
    stream.Flush();
    EXPECT_TRUE(stream.Failed());
    ::close(full);

    DescriptorStream nowhere(-1);
    const std::string large(100000, 'x');
    nowhere.Put(large.data(), static_cast<ssize_t>(large.size()));
    EXPECT_TRUE(nowhere.Failed());
}

TEST(TextFoundationDescriptor, StandardOutputIsDescriptorOne)
{
    std::fflush(stdout);
    Pipe pipe;
    {
        const Redirection redirection(1, pipe);
        xcout << "to " << 1 << '\n';
        xcout.flush();
    }
    pipe.CloseWriting();
    EXPECT_EQ(pipe.ReadAll(), "to 1\n");
}

TEST(TextFoundationDescriptor, StandardOutputWorksBeforeMain)
{
    EXPECT_EQ(s_earlyWriter.m_text, "early");
}

TEST(TextFoundationDescriptor, StandardOutputCanBePointedElsewhere)
{
    StringStream elsewhere(4096);
    IndentingStream* const before = xcout.m_os;
    xcout.m_os = &elsewhere.m_outs;
    xcout << "text";
    xcout.m_os = before;
    EXPECT_EQ(Str(elsewhere.GetString()), "text");
}

TEST(TextFoundationDescriptor, PendingStandardOutputIsWrittenAtExit)
{
    std::fflush(stdout);
    Pipe pipe;
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0)
    {
        ::dup2(pipe.m_ends[1], 1);
        xcout << "pending";
        std::exit(0);
    }
    pipe.CloseWriting();
    EXPECT_EQ(pipe.ReadAll(), "pending");
    ::waitpid(child, nullptr, 0);
}

TEST(TextFoundationDescriptor, TraceGoesToStandardErrorWhenItEnds)
{
    Pipe pipe;
    {
        const Redirection redirection(2, pipe);
        ASSERT_EQ(::fcntl(pipe.m_ends[0], F_SETFL, O_NONBLOCK), 0);
        char c;
        {
            TracerX trace;
            trace << "trace " << 1 << '\n';
            EXPECT_EQ(::read(pipe.m_ends[0], &c, 1), -1);
        }
    }
    pipe.CloseWriting();
    EXPECT_EQ(pipe.ReadAll(), "trace 1\n");
}

} // namespace telv::foundation
