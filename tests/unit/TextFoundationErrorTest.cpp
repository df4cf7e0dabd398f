// SPDX-License-Identifier: MIT
// What a broken assumption raises.
#include "TextFoundationSupport.h"
#include <gtest/gtest.h>
#include <stdexcept>

namespace telv::foundation
{

TEST(TextFoundationError, TextNamesConditionPathAndLine)
{
    try
    {
        ThrowTelvAssertionError("m_p1 < m_p2", "Core/tlUtils/BasicSubString", 42);
        FAIL() << "returned";
    }
    catch (const TelvAssertionError& e)
    {
        EXPECT_STREQ(e.what(), "Assertion failed: m_p1 < m_p2 at Core/tlUtils/BasicSubString(42)");
    }
}

TEST(TextFoundationError, IsALogicError)
{
    EXPECT_THROW(ThrowTelvAssertionError("c", "p", 1), std::logic_error);
}

TEST(TextFoundationError, IsAnExceptionThatWritesItself)
{
    try
    {
        ThrowTelvAssertionError("c", "p", 1);
        FAIL() << "returned";
    }
    catch (const IException& e)
    {
        EXPECT_EQ(Written([&](xostream& os) { e.Write(os); }), "Assertion failed: c at p(1)");
    }
}

TEST(TextFoundationError, AssertReportsTheConditionAsWritten)
{
    const int a = 1;
    EXPECT_EQ(FailedAssertion([&] { TELV_ASSERT_IN("Core/tlUtils/Here", a == 2 && "x"); }),
              AssertionIn("Here", "a == 2 && \"x\""));
    EXPECT_EQ(FailedAssertion([&] { TELV_ASSERT_IN("Core/tlUtils/Here", a == 1); }),
              "no assertion failed");
}

} // namespace telv::foundation
