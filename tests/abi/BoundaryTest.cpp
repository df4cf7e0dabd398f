// SPDX-License-Identifier: MIT
// Objects that one side of the library's boundary makes and the other destroys, and exceptions that
// cross it: between the library, this program and a plug-in that is loaded on its own.
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Mpfw/MpfwParser.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

namespace telv::test
{
namespace
{

/// The plug-in; its names are visible to nobody else.
class Client
{
public:
    Client() : m_handle(dlopen(TELV_CLIENT_PATH, RTLD_NOW | RTLD_LOCAL)) {}
    ~Client() { dlclose(m_handle); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    template <class Function>
    Function* Get(const char* name) const
    {
        void* const found = m_handle == nullptr ? nullptr : dlsym(m_handle, name);
        EXPECT_NE(found, nullptr) << name;
        return reinterpret_cast<Function*>(found);
    }

private:
    void* m_handle;
};

TEST(BoundaryTest, VariablesOfAnApplicationBelongToAFrame)
{
    const Client client;
    FileScopeVarFrame frame;
    frame.m_localVariables.Add(client.Get<LSVariable*()>("MakeVariable")());
    LSVariable* const found = frame.Find("name", nullptr);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->GetType(), LSV_STRING);
} // The library destroys it.

TEST(BoundaryTest, VariablesOfOneSideAreDeletedByAnother)
{
    const Client client;
    client.Get<void(LSVariable*)>("DeleteVariable")(new LSValueVariable(LSV_INT, "x", "12"));
    delete client.Get<LSVariable*()>("MakeVariable")();
}

TEST(BoundaryTest, TextsGrowOnEitherSide)
{
    const Client client;
    FileScopeVarFrame frame;
    xstring text;
    MacroExpand(nullptr, &frame, "@(1 + 1)", 0, 0, text);
    client.Get<void(xstring&)>("AppendText")(text);
    EXPECT_EQ(text.size(), 1 + 9 * 1000);
    MacroExpand(nullptr, &frame, "short", 0, 0, text);
    EXPECT_EQ(text, "short");
}

TEST(BoundaryTest, ExceptionsAreCaughtByType)
{
    const Client client;
    const auto throwError = client.Get<void()>("ThrowThroughTheLibrary");
    try
    {
        throwError();
        ADD_FAILURE();
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(SubString(e.m_description), "no file");
    }
    EXPECT_THROW(throwError(), IException);

    const auto kindOfError = client.Get<int(const char*)>("KindOfError");
    EXPECT_EQ(kindOfError("text"), 0);
    EXPECT_EQ(kindOfError("@fail(stop)"), 1);
    FileScopeVarFrame frame;
    xstring text;
    EXPECT_THROW(MacroExpand(nullptr, nullptr, "text", 0, 0, text), TelvAssertionError);
    EXPECT_THROW(LSLiteral(1).AsBool(/*allowDataLoss=*/false), LiteralException);
}

/// A parser of an application, whose files the library's list destroys.
class CountingFile : public MpfwSourceFile
{
public:
    explicit CountingFile(int& destroyed) : m_destroyed(destroyed) {}
    ~CountingFile() override { ++m_destroyed; }

private:
    int& m_destroyed;
};

TEST(BoundaryTest, FilesOfAnApplicationAreDestroyedByTheList)
{
    int destroyed = 0;
    {
        MpfwSourceFileList files;
        files.AddSrcFile(new CountingFile(destroyed));
        files.AddSrcFile(new CountingFile(destroyed));
    }
    EXPECT_EQ(destroyed, 2);
}

} // namespace
} // namespace telv::test
