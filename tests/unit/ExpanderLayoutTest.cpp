// SPDX-License-Identifier: MIT
// The binary interface of variables, frames and the expander: fields in their order, sizes, numbers
// of enumerators, and slots of virtual functions (x86-64, Itanium C++ ABI).
#include "ExpanderSupport.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <type_traits>

namespace telv::expander
{

// Variables

static_assert(LSV_UNDEF == 0 && LSV_MACRO == 1 && LSV_BOOL == 2 && LSV_INT == 3 &&
              LSV_DOUBLE == 4 && LSV_CHAR == 5 && LSV_STRING == 6);
static_assert(sizeof(ELSVariable) == 4);

static_assert(sizeof(LSFormalArg) == 24 && alignof(LSFormalArg) == 8);
static_assert(offsetof(LSFormalArg, m_name) == 0);
static_assert(offsetof(LSFormalArg, m_type) == 16);
static_assert(offsetof(LSFormalArg, m_isFnArg) == 20);
static_assert(!std::is_polymorphic_v<LSFormalArg>);

static_assert(sizeof(LSVariable) == 32 && alignof(LSVariable) == 8);
static_assert(std::is_abstract_v<LSVariable> && std::has_virtual_destructor_v<LSVariable>);
static_assert(std::is_same_v<decltype(LSVariable::m_name), SubString>);
static_assert(std::is_same_v<decltype(LSVariable::m_next), LSVariable*>);

static_assert(sizeof(LSValueVariable) == 64);
static_assert(std::is_base_of_v<LSVariable, LSValueVariable>);
static_assert(std::is_same_v<decltype(LSValueVariable::m_type), ELSVariable>);
static_assert(std::is_same_v<decltype(LSValueVariable::m_value), xstring>);

static_assert(sizeof(LSVar) == 88);
static_assert(std::is_base_of_v<LSValueVariable, LSVar>);

static_assert(sizeof(LSMacroVariable) == 32 + 8 + 24 + 8 + 8 + 24);
static_assert(std::is_base_of_v<LSVariable, LSMacroVariable>);
static_assert(std::is_same_v<decltype(LSMacroVariable::m_returnType), ELSVariable>);
static_assert(std::is_same_v<decltype(LSMacroVariable::m_argNames), xvector<LSFormalArg>>);
static_assert(std::is_same_v<decltype(LSMacroVariable::m_context), VarFrame*>);
static_assert(std::is_same_v<decltype(LSMacroVariable::m_indentation), ssize_t>);
static_assert(std::is_same_v<decltype(LSMacroVariable::m_substitutionString), StringX>);

// Frames

static_assert(sizeof(LSVariableList) == 56);
static_assert(offsetof(LSVariableList, m_first) == 0);
static_assert(offsetof(LSVariableList, m_map) == 8);
static_assert(!std::is_polymorphic_v<LSVariableList>);

static_assert(sizeof(VarFrame) == 168);
static_assert(offsetof(VarFrame, m_setOfFrames) == 0);
static_assert(offsetof(VarFrame, m_setOfDirectFrames) == 48);
static_assert(offsetof(VarFrame, m_localVariables) == 96);
static_assert(offsetof(VarFrame, m_parent) == 152);
static_assert(offsetof(VarFrame, m_fileScopeFrame) == 160);
static_assert(!std::is_polymorphic_v<VarFrame>);

static_assert(sizeof(FileScopeVarFrame) == 240);
static_assert(std::is_base_of_v<VarFrame, FileScopeVarFrame>);
static_assert(
    std::is_same_v<decltype(FileScopeVarFrame::m_imports), xvector<const FileScopeVarFrame*>>);
static_assert(!std::is_polymorphic_v<FileScopeVarFrame>);

static_assert(std::is_same_v<decltype(s_started), bool>);

// Output

static_assert(sizeof(OutputPiece) == 24);
static_assert(offsetof(OutputPiece, in) == 0);
static_assert(offsetof(OutputPiece, out) == 16);
static_assert(std::is_trivially_copyable_v<OutputPiece> && std::is_aggregate_v<OutputPiece>);

static_assert(sizeof(OutputPieces) == 24);
static_assert(offsetof(OutputPieces, m_pieces) == 0);
static_assert(std::is_same_v<decltype(OutputPieces::m_pieces), xvector<OutputPiece>>);

static_assert(sizeof(ExpandedOutput) == 48);
static_assert(offsetof(ExpandedOutput, m_os) == 0);
static_assert(offsetof(ExpandedOutput, m_columnPos) == 8);
static_assert(offsetof(ExpandedOutput, m_pieces) == 16);
static_assert(offsetof(ExpandedOutput, m_size) == 40);
static_assert(!std::is_polymorphic_v<ExpandedOutput>);

static_assert(sizeof(OutputPiecesMonotonePosMapper) == 24);

// The expander

static_assert(SLM_ASCII == 0 && SLM_WIDE == 1);
static_assert(sizeof(EStrLiteralMode) == 4);

static_assert(sizeof(MacroExpander) == 96);
static_assert(!std::is_polymorphic_v<MacroExpander>);

static_assert(sizeof(ImportHandler) == sizeof(void*));
static_assert(std::is_abstract_v<ImportHandler>);
static_assert(!std::has_virtual_destructor_v<ImportHandler>);

namespace
{

/// How far behind the start of `object` one of its fields stands.
template <class Object>
ssize_t OffsetIn(const Object& object, const void* field)
{
    return static_cast<const char*>(field) - reinterpret_cast<const char*>(&object);
}

/// Virtual function number `slot` of an object.
template <class Function, class Object>
Function Slot(const Object& object, size_t slot)
{
    const Function* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&object), sizeof(table));
    return table[slot];
}

} // namespace

TEST(ExpanderLayout, FieldsOfValueVariables)
{
    const LSVar v("name", "value");
    EXPECT_EQ(OffsetIn(v, static_cast<const LSVariable*>(&v)), 0);
    EXPECT_EQ(OffsetIn(v, &v.m_name), 8);
    EXPECT_EQ(OffsetIn(v, &v.m_next), 24);
    EXPECT_EQ(OffsetIn(v, &v.m_type), 32);
    EXPECT_EQ(OffsetIn(v, &v.m_value), 40);
    EXPECT_EQ(OffsetIn(v, &v.m_nameStr), 64);
}

TEST(ExpanderLayout, FieldsOfMacroVariables)
{
    const LSMacroVariable v(LSV_MACRO, "name", nullptr, false, false, false);
    EXPECT_EQ(OffsetIn(v, static_cast<const LSVariable*>(&v)), 0);
    EXPECT_EQ(OffsetIn(v, &v.m_isPython), 32);
    EXPECT_EQ(OffsetIn(v, &v.m_naked), 33);
    EXPECT_EQ(OffsetIn(v, &v.m_isFnArg), 34);
    EXPECT_EQ(OffsetIn(v, &v.m_returnType), 36);
    EXPECT_EQ(OffsetIn(v, &v.m_argNames), 40);
    EXPECT_EQ(OffsetIn(v, &v.m_context), 64);
    EXPECT_EQ(OffsetIn(v, &v.m_indentation), 72);
    EXPECT_EQ(OffsetIn(v, &v.m_substitutionString), 80);
}

TEST(ExpanderLayout, FieldsOfFileScopeFrames)
{
    const FileScopeVarFrame frame;
    EXPECT_EQ(OffsetIn(frame, static_cast<const VarFrame*>(&frame)), 0);
    EXPECT_EQ(OffsetIn(frame, &frame.m_imports), 168);
    EXPECT_EQ(OffsetIn(frame, &frame.m_dollarMacrosMap), 192);
    EXPECT_EQ(sizeof(frame.m_dollarMacrosMap), 48u);
}

TEST(ExpanderLayout, FieldsOfTheMapper)
{
    const OutputPieces pieces;
    const OutputPiecesMonotonePosMapper mapper(pieces);
    const OutputPieces* first = nullptr;
    std::memcpy(&first, static_cast<const void*>(&mapper), sizeof(first));
    EXPECT_EQ(first, &pieces);
    EXPECT_EQ(OffsetIn(mapper, &mapper.m_index), 8);
    EXPECT_EQ(OffsetIn(mapper, &mapper.m_offset), 16);
}

TEST(ExpanderLayout, FieldsOfTheExpander)
{
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(&os);
    const MacroExpander e(nullptr, &frame, "text", 0, 0, output);
    EXPECT_EQ(OffsetIn(e, &e.m_importHandler), 0);
    EXPECT_EQ(OffsetIn(e, &e.m_vf), 8);
    const ExpandedOutput* third = nullptr;
    std::memcpy(&third, reinterpret_cast<const char*>(&e) + 16, sizeof(third));
    EXPECT_EQ(third, &output);
    EXPECT_EQ(OffsetIn(e, &e.m_srcIndent), 24);
    EXPECT_EQ(OffsetIn(e, &e.m_dstIndent), 32);
    EXPECT_EQ(OffsetIn(e, &e.m_origStr), 40);
    EXPECT_EQ(OffsetIn(e, &e.m_str), 56);
    EXPECT_EQ(OffsetIn(e, &e.m_startDirectivePos), 72);
    EXPECT_EQ(OffsetIn(e, &e.m_endDirectivePos), 80);
    EXPECT_EQ(OffsetIn(e, &e.m_writePos), 88);
}

// The destructor takes two slots, the complete and the deleting one.

TEST(ExpanderLayout, SlotsOfVariables)
{
    using GetType = ELSVariable (*)(const LSVariable*);
    using Write = void (*)(const LSVariable*, xostream&);
    const LSVar value("name", "value");
    LSMacroVariable macroVar(LSV_INT, "m", nullptr, false, false, false);
    macroVar.SetSubstitutionString("body", false, 0);
    const struct
    {
        const LSVariable& m_variable;
        ELSVariable m_type;
        const char* m_description;
        const char* m_value;
    } rows[] = {
        {value, LSV_STRING, "name = value", "value"},
        {macroVar, LSV_MACRO, "m = body", "body"},
    };
    for (const auto& row : rows)
    {
        const LSVariable& v = row.m_variable;
        EXPECT_EQ(Slot<GetType>(v, 2)(&v), row.m_type);
        EXPECT_EQ(Written([&](xostream& os) { Slot<Write>(v, 3)(&v, os); }), row.m_description);
        EXPECT_EQ(Written([&](xostream& os) { Slot<Write>(v, 4)(&v, os); }), row.m_value);
    }
}

TEST(ExpanderLayout, FirstSlotsOfVariablesAreTheDestructor)
{
    using Destroy = void (*)(LSVariable*);
    struct Counting final : LSVar
    {
        explicit Counting(int& count) : LSVar("name", "value"), m_count(count) {}
        ~Counting() override { ++m_count; }
        int& m_count;
    };
    int count = 0;
    alignas(Counting) unsigned char room[sizeof(Counting)];
    Counting* const inPlace = new (room) Counting(count);
    Slot<Destroy>(*inPlace, 0)(inPlace);
    EXPECT_EQ(count, 1);
    Counting* const onHeap = new Counting(count);
    Slot<Destroy>(*onHeap, 1)(onHeap);
    EXPECT_EQ(count, 2);
}

TEST(ExpanderLayout, SlotsOfImportHandlers)
{
    struct Handler final : ImportHandler
    {
        bool HandleImportPath(const xstring& path, const char*) override
        {
            m_calls += "path " + Str(path);
            return true;
        }
        bool HandleImport(VarFrame*, const xstring& path, const char*) override
        {
            m_calls += " import " + Str(path);
            return true;
        }
        std::string m_calls;
    };
    using HandleImportPath = bool (*)(ImportHandler*, const xstring&, const char*);
    using HandleImport = bool (*)(ImportHandler*, VarFrame*, const xstring&, const char*);
    Handler handler;
    ImportHandler& base = handler;
    EXPECT_EQ(static_cast<void*>(&base), static_cast<void*>(&handler));
    EXPECT_TRUE(Slot<HandleImportPath>(base, 0)(&base, "dir", nullptr));
    EXPECT_TRUE(Slot<HandleImport>(base, 1)(&base, nullptr, "file", nullptr));
    EXPECT_EQ(handler.m_calls, "path dir import file");
}

} // namespace telv::expander
