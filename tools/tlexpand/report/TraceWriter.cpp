// SPDX-License-Identifier: MIT
// Each event is a line. Texts in it are shown on one line and only their beginnings, since an
// argument can be as long as a file.
#include "report/TraceWriter.h"
#include "Cleanup.h"
#include "Files.h"
#include "Utf8.h"
#include <algorithm>
#include <unistd.h>

namespace telv::tool
{

namespace
{

constexpr size_t s_longestText = 60;  // bytes
constexpr size_t s_mostIndented = 30; // levels
constexpr size_t s_mostPending = size_t{64} * 1024;

std::string Escaped(SubString character)
{
    const auto c = static_cast<unsigned char>(*character.begin());
    if (c == '\n')
        return "\\n";
    if (c == '\t')
        return "\\t";
    if (c >= ' ' && c != 0x7f)
        return ToStdString(character);
    static constexpr char digits[] = "0123456789abcdef";
    return {'\\', 'x', digits[c / 16], digits[c % 16]};
}

/// The beginning of `text`, on one line.
std::string Brief(SubString text)
{
    std::string brief;
    while (text)
    {
        const std::string next = Escaped(TakeUtf8Character(text).m_bytes);
        if (brief.size() + next.size() > s_longestText)
            return brief + "...";
        brief += next;
    }
    return brief;
}

const char* TypeWord(ELSVariable type)
{
    switch (type)
    {
    case LSV_BOOL:
        return "bool ";
    case LSV_INT:
        return "int ";
    case LSV_DOUBLE:
        return "double ";
    case LSV_CHAR:
        return "char ";
    case LSV_STRING:
        return "string ";
    default:
        return "";
    }
}

/// `int ratio(a,b)`, `python f(x)`.
std::string Signature(const LSMacroVariable& macroVar)
{
    StringStream os(256);
    macroVar.WriteNameAndFormalParameterList(os);
    return std::string(macroVar.m_isPython ? "python " : "") + TypeWord(macroVar.m_returnType) +
           ToStdString(os.GetString());
}

std::string ArgumentList(const std::vector<ObservedArgument>& args)
{
    std::string list;
    for (const ObservedArgument& arg : args)
        list += (list.empty() ? "" : ", ") + ToStdString(arg.m_name) + "=" + Brief(arg.m_value);
    return "(" + list + ")";
}

/// What a name without arguments stands for.
std::string Meaning(const LSVariable& variable)
{
    if (const auto* const macroVar = dynamic_cast<const LSMacroVariable*>(&variable))
        return Brief(macroVar->GetSubstitutionString());
    StringStream os(256);
    variable.WriteValue(os);
    return Brief(os.GetString());
}

} // namespace

void TraceWriter::InvocationBegins(const ObservedInvocation& invocation)
{
    const LSVariable& variable = invocation.m_variable;
    const std::string name = ToStdString(variable.m_name);
    if (!invocation.m_args.empty())
        WriteLine("call " + name + ArgumentList(invocation.m_args), invocation.m_place);
    else if (invocation.m_call.end() != invocation.m_place.end())
        WriteLine("call " + Brief(invocation.m_call), invocation.m_place);
    else
        WriteLine((variable.GetType() == LSV_MACRO ? "call " : "value ") + name + " = " +
                      Meaning(variable),
                  invocation.m_place);
    ++m_depth;
}

void TraceWriter::RoundBegins(const ObservedRound& round)
{
    std::string what =
        "round " + std::to_string(round.m_round) + " of @" + ToStdString(round.m_loop);
    if (round.m_loop == "for")
        what += ": " + Brief(round.m_element);
    WriteLine(what, round.m_place);
    ++m_depth;
}

void TraceWriter::ImportBegins(const ObservedImport& import)
{
    WriteLine("import " + Brief(import.m_path), import.m_place);
    ++m_depth;
}

void TraceWriter::Defined(const ObservedDefinition& definition)
{
    const std::string name = ToStdString(definition.m_place);
    std::string what;
    switch (definition.m_kind)
    {
    case ObservedDefinition::DEFINED_MACRO:
        what = "define " + Signature(static_cast<const LSMacroVariable&>(*definition.m_variable));
        break;
    case ObservedDefinition::DEFINED_VALUE:
        what = std::string("define ") + TypeWord(definition.m_variable->GetType()) + name;
        break;
    case ObservedDefinition::ASSIGNED_VALUE:
        what = "assign " + name;
        break;
    case ObservedDefinition::DEFINED_DOLLAR:
        what = "define $" + name;
        break;
    }
    WriteLine(what + " = " + Brief(definition.m_value), definition.m_place);
}

void TraceWriter::DefinedByOption(const std::string& what, SubString value)
{
    const std::string place = PlaceText(value.begin());
    WriteText("define " + what + " = " + Brief(value) +
              (place.empty() ? " at <command line>" : place));
}

void TraceWriter::WriteLine(const std::string& what, SubString place)
{
    WriteText(what + PlaceText(m_run.ResolvePosition(place.begin())));
}

void TraceWriter::WriteText(const std::string& line)
{
    // Deeper than a screen is wide, the number says what the indentation can't.
    m_pending.append(2 * std::min(m_depth, s_mostIndented), ' ');
    if (m_depth > s_mostIndented)
        m_pending += "[" + std::to_string(m_depth) + "] ";
    m_pending += line + "\n";
    if (m_pending.size() >= s_mostPending)
        Send();
}

void TraceWriter::Send()
{
    if (m_file != nullptr)
        m_file->Append(ViewOf(m_pending));
    else
        WriteAll(STDOUT_FILENO, ViewOf(m_pending), NameOfStream(STDOUT_FILENO));
    m_pending.clear();
}

void TraceWriter::WriteAfterFailure()
{
    if (m_file == nullptr || m_file->IsDirect())
        Send();
}

std::string TraceWriter::PlaceText(const char* pos)
{
    const Source* const source = m_sources.Find(pos);
    return source == nullptr
               ? std::string()
               : " at " + source->Name() + "(" + std::to_string(LineIn(*source, pos)) + ")";
}

ssize_t TraceWriter::LineIn(const Source& source, const char* pos)
{
    const auto known = m_lines.try_emplace(&source, source.File()).first;
    return known->second.At(source.OffsetInFile(pos)).m_line;
}

} // namespace telv::tool
