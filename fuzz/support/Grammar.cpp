// SPDX-License-Identifier: MIT
// One function per construct; nesting is bounded by depth, and a text is short, so that the fuzzer
// can run many of them.
#include "Grammar.h"
#include <iterator>

namespace telv::fuzz
{

namespace
{

constexpr int s_deepest = 5;

constexpr const char* s_names[] = {"a", "b", "f", "g", "m", "n", "s", "x", "y", "_A_", "word"};
constexpr const char* s_types[] = {"bool", "int", "double", "char", "string"};
constexpr const char* s_functions[] = {
    "len",    "is_bool", "is_char", "is_int", "is_double", "bool", "char", "int",
    "double", "string",  "sin",     "cos",    "tan",       "exp",  "log",  "is_string"};
constexpr const char* s_operators[] = {"+", "-",  "*",  "/",  "%",  "&&", "||", "==", "!=", "<",
                                       ">", "<=", ">=", "<<", ">>", "&",  "|",  "^",  "^^", "--"};
constexpr const char* s_literals[] = {
    "0",    "1",         "7",        "2147483648", "0x1F", "2.5",      "1e300",
    "true", "false",     "\"text\"", "'c'",        "\"\"", "r\"\\a\"", "9223372036854775807",
    "0.1",  "\"\\x41\"", "\"a\\n\"", "__LINE__"};
constexpr const char* s_blanks[] = {
    "", "", "", " ", "  ", "\n", "\t", "\r\n", " // note\n", "/* c */", "\f", "\r", " // note\r\n"};

} // namespace

/// One level deeper for the length of a function.
class Grammar::Depth
{
public:
    explicit Depth(Grammar& grammar) : m_grammar(grammar) { ++m_grammar.m_depth; }
    ~Depth() { --m_grammar.m_depth; }
    bool TooDeep() const { return m_grammar.m_depth > s_deepest; }

private:
    Grammar& m_grammar;
};

std::string Grammar::Text(Start start)
{
    switch (start)
    {
    case Start::Expression:
        return Expression();
    case Start::Project:
        return ProjectFiles();
    case Start::Program:
        break;
    }
    std::string text = Statements(8);
    while (OneIn(4))
        text += '\x1e' + Statements(4);
    return text;
}

std::string Grammar::Part(Start start)
{
    switch (start)
    {
    case Start::Expression:
        return OneIn(2) ? Operand() : std::string(s_operators[Below(std::size(s_operators))]);
    case Start::Project:
        return ProjectStatement();
    case Start::Program:
        break;
    }
    return Statement();
}

std::string Grammar::Wrap(const std::string& text)
{
    switch (Below(12))
    {
    case 0:
        return "@scope{" + text + "}";
    case 1:
        return "@if(true){" + text + "}";
    case 2:
        return "@[@quote(" + text + ")]";
    case 3:
        return "@for(" + Name() + " in [" + text + "]){" + Words() + "}";
    case 4:
        return "@str(" + text + ")";
    case 5:
        return "@assertfails{" + text + "}";
    case 6:
        return "@def " + Name() + " =\n{\n    " + text + "\n}\n";
    case 7:
        return Name() + "(" + text + ")";
    case 8:
        return "@(" + text + ")";
    case 9:
        return "@strx(" + text + ")";
    case 10:
        return "@[" + text + "]";
    default:
        return "(" + text + ")";
    }
}

std::string Grammar::Name()
{
    return s_names[Below(std::size(s_names))];
}

const char* Grammar::Type()
{
    return s_types[Below(std::size(s_types))];
}

std::string Grammar::Blank()
{
    return s_blanks[Below(std::size(s_blanks))];
}

std::string Grammar::Statements(size_t most)
{
    std::string text;
    for (size_t left = 1 + Below(most); left != 0; --left)
        text += Statement() + (OneIn(3) ? " " : "\n");
    return text;
}

std::string Grammar::Statement()
{
    const Depth depth(*this);
    if (depth.TooDeep())
        return Words();
    switch (Below(14))
    {
    case 0:
    case 1:
    case 2:
        return Definition();
    case 3:
    case 4:
    case 5:
        return Invocation();
    case 6:
        return Let();
    case 7:
        return Loop();
    case 8:
        return Conditional();
    case 9:
        return Twice();
    case 10:
        return Literal();
    case 11:
        return Diagnostic();
    case 12:
        return OneIn(3) ? Import() : Words();
    default:
        return OneIn(2) ? "@scope" + Block() : "@(" + Expression() + ")";
    }
}

std::string Grammar::Definition()
{
    static constexpr const char* s_words[] = {"@def",       "@def",      "@def",
                                              "@exportdef", "@nakeddef", "@nakeddef"};
    std::string text = s_words[Below(std::size(s_words))];
    text += OneIn(3) ? " + " : " ";
    if (OneIn(6))
        text += std::string(Type()) + " ";
    text += Name();
    if (OneIn(2))
        text += FormalArgs();
    return text + " =" + Body();
}

std::string Grammar::FormalArgs()
{
    std::string text = "(";
    for (size_t left = Below(4); left != 0; --left)
    {
        if (OneIn(4))
            text += std::string(Type()) + " ";
        text += Name();
        if (OneIn(4))
            text += "()";
        if (left > 1)
            text += ", ";
    }
    return text + ")";
}

std::string Grammar::Body()
{
    return OneIn(6) ? " " + Words() + "\n" : Block();
}

std::string Grammar::Block()
{
    switch (Below(4))
    {
    case 0:
        return "\n{\n    " + Statement() + "\n}\n";
    case 1:
        return "\r\n\t{\r\n\t\t" + Statement() + "\r\n\t}\r\n";
    default:
        return "{" + (OneIn(3) ? Statements(3) : Statement()) + "}";
    }
}

std::string Grammar::Invocation()
{
    std::string text = Name();
    if (OneIn(3))
        return text;
    text += Blank() + "(";
    for (size_t left = 1 + Below(3); left != 0; --left)
        text += Argument() + (left > 1 ? "," : "");
    return text + ")";
}

std::string Grammar::Argument()
{
    const Depth depth(*this);
    if (depth.TooDeep() || OneIn(3))
        return Name();
    switch (Below(5))
    {
    case 0:
        return "`" + Words() + "`";
    case 1:
        return Expression();
    default:
        return Statement();
    }
}

std::string Grammar::Let()
{
    const std::string type = OneIn(2) ? std::string(Type()) + " " : "";
    if (OneIn(3))
        return "@let " + type + Name() + " := {" + Statement() + "}";
    return "@let " + type + Name() + " = {" + Expression() + "}";
}

std::string Grammar::Loop()
{
    if (OneIn(5))
        return "@let int x = {0}@while(x<" + std::to_string(Below(4)) + "){" + Statement() +
               "@let x={x+1}}";
    if (OneIn(3))
        return "@for((" + Name() + "," + Name() + ") in [(" + Argument() + "," + Argument() +
               "),(" + Argument() + "," + Argument() + ")])" + Block();
    std::string list = "[" + Argument();
    for (size_t left = Below(3); left != 0; --left)
        list += "," + Argument();
    list += "]";
    if (OneIn(3))
        list = "@quote(" + list + ")";
    return "@for(" + Name() + " in " + list + ")" + Block();
}

std::string Grammar::Conditional()
{
    std::string text = "@if(" + Expression() + ")" + Block();
    while (OneIn(3))
        text += Blank() + "@elseif(" + Expression() + ")" + Block();
    if (OneIn(2))
        text += Blank() + "@else" + Block();
    return text;
}

std::string Grammar::Twice()
{
    if (OneIn(3))
        return "@[" + Name() + "@@" + Name() + "]";
    return "@[@quote(" + Blank() + Statement() + Blank() + ")]";
}

std::string Grammar::Literal()
{
    static constexpr const char* s_words[] = {"@str", "@strx", "@strW", "@strxW"};
    switch (Below(5))
    {
    case 0:
        return "@unstr(" + StringExpression() + ")";
    case 1:
        return "@unstr(@str(" + Statement() + "))";
    case 2:
        return "@quote(" + Words() + ")";
    default:
        return std::string(s_words[Below(std::size(s_words))]) + "(" + Statement() + ")";
    }
}

std::string Grammar::Diagnostic()
{
    switch (Below(5))
    {
    case 0:
        return "@print(" + Statement() + ")";
    case 1:
        return "@println(" + Statement() + ")";
    case 2:
        return "@assert(" + Expression() + ")";
    case 3:
        return "@assertfails{" + Statement() + "}";
    default:
        return OneIn(2) ? "@// note\n" : "@fail(" + StringExpression() + ")";
    }
}

std::string Grammar::Import()
{
    switch (Below(4))
    {
    case 0:
        return "@import \"" + std::to_string(1 + Below(3)) + "\"";
    case 1:
        return "@import (" + StringExpression() + ")";
    case 2:
        return "@$A = \"" + Words() + "$(A)$(B)\"\n@$B = \"b\"";
    default:
        return "@relativepath(\"/a/b\", " + StringExpression() + ")";
    }
}

std::string Grammar::Words()
{
    static constexpr const char* s_words[] = {"word",       " ",    "\n", "    ", ";",
                                              "\"$(A)/x\"", "+1",   "a",  "x",    "'q'",
                                              "\t",         "\r\n", "@@", "{}"};
    std::string text;
    for (size_t left = 1 + Below(5); left != 0; --left)
        text += s_words[Below(std::size(s_words))];
    return text;
}

std::string Grammar::Expression()
{
    const Depth depth(*this);
    if (depth.TooDeep() || OneIn(3))
        return Operand();
    if (OneIn(8))
        return Expression() + " ? " + Expression() + " : " + Expression();
    return Operand() + " " + s_operators[Below(std::size(s_operators))] + " " + Expression();
}

std::string Grammar::Operand()
{
    const Depth depth(*this);
    if (depth.TooDeep() || OneIn(2))
        return OneIn(4) ? Name() : std::string(s_literals[Below(std::size(s_literals))]);
    switch (Below(5))
    {
    case 0:
        return "(" + Expression() + ")";
    case 1:
        return std::string(s_functions[Below(std::size(s_functions))]) + "(" + Expression() + ")";
    case 2:
        return std::string(1, "+-!~"[Below(4)]) + Operand();
    case 3:
        return StringExpression() + "[" + Expression() + "]";
    default:
        return StringExpression();
    }
}

std::string Grammar::StringExpression()
{
    if (OneIn(3))
        return "string(" + Name() + ")";
    return "\"" + Name() + (OneIn(3) ? "\\n$(A)\"" : "\"");
}

/// Sections that are files of their own; they import each other by number.
std::string Grammar::ProjectFiles()
{
    std::string text;
    for (size_t files = 1 + Below(4); files != 0; --files)
    {
        for (size_t left = 1 + Below(5); left != 0; --left)
            text += ProjectStatement();
        if (files > 1)
            text += '\x1e';
    }
    return text;
}

std::string Grammar::ProjectStatement()
{
    switch (Below(7))
    {
    case 0:
        return "$" + Name() + " = path \"$(A)/" + Name() + "/../x\"\n";
    case 1:
        return "$" + Name() + " = (" + StringExpression() + " + \"$(B)\")\n";
    case 2:
        return "@import \"" + std::to_string(Below(4)) + "\"\n";
    case 3:
        return "@importpath \"" + Name() + "\"\n";
    case 4:
        return Definition();
    case 5:
        return "@quote(@import \"" + std::to_string(Below(4)) + "\")\n";
    default:
        return "$" + Name() + " = \"" + Words() + "\"\n";
    }
}

} // namespace telv::fuzz
