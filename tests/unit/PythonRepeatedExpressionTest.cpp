// SPDX-License-Identifier: MIT
// Expressions that are evaluated again with other numbers and strings: each has the value, or the
// error, that it has when it is compiled by itself.
#if TELV_HAS_PYTHON

#include "PythonBridgeSupport.h"

namespace telv::python
{

namespace
{

/// The first time each is compiled as it is.
void ExpectTheSameEachTime(const std::vector<std::string>& expressions)
{
    for (const std::string& expression : expressions)
    {
        UninitPython(); // what has been compiled is forgotten
        const std::string first = Eval(expression);
        EXPECT_EQ(Eval(expression), first) << expression;
        EXPECT_EQ(Eval(expression), first) << expression;
    }
}

TEST_F(PythonBridge, RepeatedExpressionsTakeTheirOwnNumbersAndStrings)
{
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(Eval(std::to_string(i) + " * " + std::to_string(i) + " % 97"),
                  std::to_string(i * i % 97));
    for (const char* const text : {"a", "bc", "", "d e"})
        EXPECT_EQ(Eval("'<' + '" + std::string(text) + "' + \">\""), "<" + std::string(text) + ">");
}

TEST_F(PythonBridge, RepeatedExpressionsAreTheSame)
{
    ExpectTheSameEachTime({
        "1 + 2",
        "-5 ** 2",
        "2 ** 100",
        "1 << 70",
        "7 // 2",
        "7 / 0",
        "1 if 0 else 2",
        "not 5",
        "5 in (1, 5)",
        "5 < 6 < 7",
        "[1, 2, 3][1]",
        "[1, 2, 3][0:2]",
        "{1: 2, 3: 4}[3]",
        "999999999999999999 + 1",
        "9999999999999999999",
        "007",
        "0",
        "00",
        "0x1f",
        "1L",
        "1e3",
        "1.5 + 1",
        ".5 + 1",
        "1. + 1",
        "1 .real",
        "3.real",
        "'abc'.upper()",
        "'abc' .upper()",
        "'a' 'b'",
        "'%d-%s' % (5, 'x')",
        "len('abc') + 1",
        "max(1, 2)",
        "int('5', 8)",
        "x5",
        "1or 2",
        "dict(a=5)['a']",
        "'it''s'",
        "'''abc'''",
        "u'abc' == 'abc'",
        "r'a' + 'b'",
        "'a\\n'",
    });
}

TEST_F(PythonBridge, RepeatedExpressionsThatAreWrongStayWrong)
{
    ExpectTheSameEachTime({
        "max(1=2)",
        "dict('a'=2)",
        "'abc' . 'x'",
        "1 2",
        "'a' 2",
        "max . 5",
        "f . 'a'",
        "(1",
        "1)",
        "5(3)",
        "'abc'(3)",
        "1 + 'a'",
        "undefined + 1",
        "undefined(1)",
        "5 5",
        "1 = 2",
        "_telv0 + 1",
        "lambda 5: 1",
    });
}

TEST_F(PythonBridge, RepeatedExpressionsKeepScopesAndIdentities)
{
    ExpectTheSameEachTime({
        "[n * 2 for n in (1, 2)]",
        "(lambda n: n + 257)(1)",
        "257 is 257",
        "sorted(locals())[:0]",
        "eval('1 + 1')",
        "''.join(str(n) for n in (1, 2))",
        "len(dir()) > 5",
        "id(5) == id(5)",
    });
}

} // namespace

} // namespace telv::python

#endif
