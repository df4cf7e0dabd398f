// SPDX-License-Identifier: MIT
// Deep expressions: they work while there is stack, and end in an error where there is none.
#include "ExpressionSupport.h"
#include <pthread.h>

namespace telv::expression
{

namespace
{

std::string Repeated(const char* part, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += part;
    return text;
}

xstring ToXString(const std::string& text)
{
    return xstring(text.data(), text.data() + text.size());
}

} // namespace

TEST(ExpressionParser, DeepNestingWorksWhileThereIsStack)
{
    const int depth = 1000;
    EXPECT_EQ(Evaluate(ToXString(Repeated("(", depth) + "5" + Repeated(")", depth))), "int64 5");
    EXPECT_EQ(Evaluate(ToXString(Repeated("- ", depth) + "5")), "int64 5");
    EXPECT_EQ(Evaluate(ToXString(Repeated("false ? 1 : ", depth) + "5")), "int64 5");
    EXPECT_EQ(Evaluate(ToXString(Repeated("true ? ", depth) + "5" + Repeated(" : 1", depth))),
              "int64 5");
    EXPECT_EQ(Evaluate(ToXString(Repeated("1 + (", depth) + "5" + Repeated(")", depth))),
              "int64 1005");
}

TEST(ExpressionParser, LongChainsOfOneLevelNeedNoStack)
{
    EXPECT_EQ(Evaluate(ToXString("0" + Repeated(" + 1", 100000))), "int64 100000");
    EXPECT_EQ(Evaluate(ToXString("1" + Repeated(" ^^ 1", 100000))), "int64 1");
    EXPECT_EQ(Evaluate(ToXString("'a'" + Repeated("[0]", 1) + Repeated(" == 97 == true", 1))),
              "bool true");
}

namespace
{

/// Evaluates `part` repeated a million times: the description of the error, whose place must lie
/// in the text.
std::string EvaluateEndless(const char* part)
{
    const xstring text = ToXString(Repeated(part, 1000000));
    ExpressionParser parser;
    parser.Init(text);
    LSLiteral literal;
    try
    {
        parser.ParseExpression(literal);
        return "no error";
    }
    catch (const ExpansionLimitException& e)
    {
        EXPECT_TRUE(text.begin() <= e.m_pos && e.m_pos <= text.end()) << part;
        return StdString(e.m_description);
    }
    catch (const LexScannerException& e)
    {
        return "wrong class: " + StdString(e.m_description);
    }
}

/// The stack of the main thread may be without bounds: this one is not.
void RunOnOneMebibyte(void* (*function)(void*))
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 1 << 20), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, function, nullptr), 0);
    pthread_attr_destroy(&attributes);
    pthread_join(thread, nullptr);
}

} // namespace

TEST(ExpressionParser, EndlessNestingIsAnErrorInsteadOfACrash)
{
    RunOnOneMebibyte(
        [](void*) -> void*
        {
            for (const char* part : {"(", "- ", "+ ", "!", "~", "1?", "true?1:", "'a'[", "len(",
                                     "sin(", "1+(", "1||1&&1|1^1&1==1<1<<1+1*1^^("})
                EXPECT_EQ(EvaluateEndless(part), "Expansion nested too deeply") << part;
            return nullptr;
        });
}

} // namespace telv::expression
