// SPDX-License-Identifier: MIT
// Texts of the library compare with each other and with the strings of C++, either way round, and
// those of C++ among themselves as ever: in the project of a user who has said `using namespace
// telv`, too.
#include <string>
#include <tlMacroExpander/tlMacroExpander.h>
#ifdef TELV_USING
using namespace telv;
#endif

template <class A, class B>
bool Compare(const A& a, const B& b)
{
    return a == b && b == a && !(a != b) && !(b != a);
}

template <class A>
bool CompareWithAll(const A& a, telv::SubString view, const telv::xstring& text)
{
    const std::string string("x");
    const char* const pointer = "x";
    return Compare(a, view) && Compare(a, text) && Compare(a, std::string_view("x")) &&
           Compare(a, string) && Compare(a, pointer) && Compare(a, "x");
}

// Not templates: names are looked up where they stand.
bool CompareOthers(std::string_view view, const std::string& string, const char* pointer)
{
    return view == "x" && "x" == view && view == pointer && pointer != view && view == string &&
           string == "x" && string != pointer && view < "y";
}

int main()
{
    const telv::xstring text("x");
    const telv::SubString view = text;
    const bool areEqual = CompareWithAll(view, view, text) && CompareWithAll(text, view, text) &&
                          view == text && text != "y" && view != "y" &&
                          view == std::string_view("x");
    return areEqual && !CompareOthers("x", "x", "x") ? 0 : 1;
}
