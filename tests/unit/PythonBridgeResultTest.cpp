// SPDX-License-Identifier: MIT
// Results of Python expressions as text.
#if TELV_HAS_PYTHON

#include "PythonBridgeSupport.h"

namespace telv::python
{

namespace
{

TEST_F(PythonBridge, IntegersAreDecimal)
{
    ExpectValues({
        {"0", "0"},
        {"-5", "-5"},
        {"0x1f", "31"},
        {"9223372036854775807", "9223372036854775807"},
        {"-9223372036854775807 - 1", "-9223372036854775808"},
        {"True", "1"},
        {"False", "0"},
        {"3 > 4", "0"},
    });
}

TEST_F(PythonBridge, FloatsHaveTheFormOfTheStream)
{
    ExpectValues({
        {"2.5", "2.5"},
        {"2.0", "2"},
        {"0.1", "0.1"},
        {"1e16", "1e+16"},
        {"1e15", "1000000000000000"},
        {"0.00001", "1e-05"},
        {"-0.0", "-0"},
        {"float('inf')", "inf"},
        {"-float('nan')", "nan"},
    });
}

TEST_F(PythonBridge, StringsAreTheirBytes)
{
    ExpectValues({
        {"''", ""},
        {"'a\"b'", "a\"b"},
        {"'a\\tb\\n'", "a\tb\n"},
        {"'a\\0b'", std::string("a\0b", 3)},
        {"''.join(chr(c) for c in (0, 128, 255))", std::string("\0\x80\xff", 3)},
        {"'\xc3\xa9'", "\xc3\xa9"},
        {"['a\\0', 'b']", std::string("[a\0,b]", 6)},
    });
}

TEST_F(PythonBridge, ListsNest)
{
    ExpectValues({
        {"[]", "[]"},
        {"[1]", "[1]"},
        {"['a', 1]", "[a,1]"},
        {"[1, [2.5, [True]], 'x y']", "[1,[2.5,[1]],x y]"},
        {"[[], [[]]]", "[[],[[]]]"},
        {"[[1]] * 3", "[[1],[1],[1]]"},
    });
}

TEST_F(PythonBridge, SubclassesAreWrittenByWhatTheyStore)
{
    ASSERT_EQ(Execute("class N(int):\n"
                      "  def __int__(self): raise ValueError\n"
                      "  __index__ = __str__ = __repr__ = __int__\n"
                      "class F(float):\n"
                      "  def __float__(self): raise ValueError\n"
                      "class S(str):\n"
                      "  def __str__(self): raise ValueError\n"
                      "  def __len__(self): return 0\n"
                      "class L(list):\n"
                      "  def __iter__(self): raise ValueError\n"
                      "  def __len__(self): return 0\n"
                      "  def __getitem__(self, i): raise ValueError\n"),
              "");
    ExpectValues({
        {"N(5)", "5"},
        {"F(0.5)", "0.5"},
        {"S('s')", "s"},
        {"L([1, 2])", "[1,2]"},
        {"[N(5), S('s'), L([F(2)])]", "[5,s,[2]]"},
    });
}

TEST_F(PythonBridge, OtherResultsAreErrors)
{
    const std::vector<std::string> expressions = {
        "10 ** 20",  "5L",  "u'x'",      "(1, 2)",     "()",       "{'a': 1}",
        "None",      "len", "object()",  "set()",      "1j",       "buffer('a')",
        "xrange(3)", "int", "[1, (2,)]", "[[[None]]]", "iter([])", "bytearray('a')",
    };
    for (const std::string& expression : expressions)
        EXPECT_EQ(Eval(expression), "error: Can't convert python result") << expression;
}

TEST_F(PythonBridge, ListThatContainsItselfIsAnError)
{
    ASSERT_EQ(Execute("a = []\na.append(a)\nb = [1]\nc = [2, [b]]\nb.append(c)\n"), "");
    EXPECT_EQ(Eval("a"), "error: Can't convert python result");
    EXPECT_EQ(Eval("b"), "error: Can't convert python result");
    EXPECT_EQ(Eval("[0, a]"), "error: Can't convert python result");
}

TEST_F(PythonBridge, ListsMayNestAMillionDeep)
{
    ASSERT_EQ(Execute("a = []\nfor i in xrange(1000000 - 1): a = [a]\n"), "");
    const std::string text = Eval("a");
    EXPECT_EQ(text, std::string(1000000, '[') + std::string(1000000, ']'));
    EXPECT_EQ(Execute("del a"), "");
}

TEST_F(PythonBridge, ResultReplacesTheText)
{
    xstring result("before");
    EvalPythonExpression("1 + 1", result, s_errorPosition);
    EXPECT_EQ(Str(result), "2");
}

TEST_F(PythonBridge, ErrorLeavesTheResultAndHasThePosition)
{
    for (const char* expression : {"1/0", "1 +", "None", "[1, None]"})
    {
        xstring result("before");
        try
        {
            EvalPythonExpression(expression, result, s_errorPosition);
            FAIL() << expression;
        }
        catch (const LexScannerException& e)
        {
            EXPECT_EQ(e.m_pos, s_errorPosition) << expression;
        }
        EXPECT_EQ(Str(result), "before") << expression;
    }
}

TEST_F(PythonBridge, LeadingBlanksOfAnExpressionAreDropped)
{
    ExpectValues({{" \t 1 + 1", "2"}, {"\t'a'", "a"}, {"1 ", "1"}, {"1\n", "1"}});
}

} // namespace

} // namespace telv::python

#endif
