// SPDX-License-Identifier: MIT
// Writes the three tables of each type; it knows what a row of each looks like.
#include "Floor.h"
#include <initializer_list>
#include <vector>

using namespace floors;

namespace
{

using View = std::string_view;

struct Member
{
    View m_type;
    View m_name;
};

void Put(Output& output, std::initializer_list<View> parts)
{
    for (const View part : parts)
        output.Put(part);
}

void PutType(Output& output, View type, const std::vector<Member>& members)
{
    Put(output, {"struct ", type, "\n{\n"});
    for (const Member& m : members)
        Put(output, {"    column<", m.m_type, ", ", type, "> ", m.m_name, " = column<", m.m_type,
                     ", ", type, ">();\n"});
    Put(output, {"};\nconst row ", type, "_names[] = {\n"});
    for (const Member& m : members)
        Put(output, {"    {\"", m.m_name, "\", \"", m.m_type, "\", sizeof(", type, "::", m.m_name,
                     ")},\n"});
    Put(output, {"};\nvoid visit(", type, "& self, int index) {\n    switch (index) {\n"});
    for (const Member& m : members)
        Put(output, {"        case ", type, "_", m.m_name, "_index: return accept(self.", m.m_name,
                     ");\n"});
    output.Put("    }\n}\n");
}

} // namespace

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    View text = MapFile(arguments.m_input);
    Output output(arguments.m_output);
    Cut(text, "[");
    View types = Cut(text, "]");
    Cut(text, "[");
    View rows = Cut(text, "]");
    std::vector<Member> members;
    while (rows.find('(') != View::npos)
    {
        Cut(rows, "(");
        const View type = Cut(rows, ", ");
        members.push_back({type, Cut(rows, ")")});
    }
    for (bool more = true; more;)
    {
        more = types.find(", ") != View::npos;
        PutType(output, more ? Cut(types, ", ") : types, members);
    }
}
