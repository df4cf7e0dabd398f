// SPDX-License-Identifier: MIT
// Random operations on frames, each answered by the library and by a model that walks frames,
// imports and parents literally, without an index. Dollar macros are looked up and substituted too.
#include "Checks.h"
#include "FrameModel.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace telv::fuzz
{
namespace
{

constexpr size_t s_mostFrames = 12;
constexpr int s_mostOperations = 400;

/// A name from a static text: mostly one of few, so that definitions and look-ups meet, otherwise
/// one of many, so that tables grow and names collide in them.
SubString NameOf(Decisions& decisions)
{
    static const char s_few[] = "abc_a_";
    static constexpr int s_ranges[][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 6}};
    static const std::string s_many = []
    {
        std::string names;
        for (int i = 0; i < 256; ++i)
            names += "n" + std::to_string(1000 + i);
        return names;
    }();
    if (decisions.Below(3) != 0)
    {
        const auto& range = s_ranges[decisions.Below(std::size(s_ranges))];
        return SubString(s_few + range[0], s_few + range[1]);
    }
    const char* const name = s_many.data() + 5 * decisions.Below(256);
    return SubString(name, name + 5);
}

/// A real frame and its model.
struct Frame
{
    std::unique_ptr<VarFrame> m_child;
    std::unique_ptr<FileScopeVarFrame> m_file;
    std::unique_ptr<ModelFrame> m_model;
    size_t m_root = 0;           ///< Index of the file-scope frame above, or its own.
    int m_pins = 0;              ///< Children and importers alive.
    std::vector<size_t> m_holds; ///< The frames whose pins this one counts in.

    VarFrame& Real() { return m_file != nullptr ? *m_file : *m_child; }
};

class Frames
{
public:
    void Run(Decisions& decisions);
    ~Frames();

private:
    void AddFrame(Decisions& decisions);
    void Define(Decisions& decisions);
    void Import(Decisions& decisions);
    void Remove(size_t index);
    void LookUp(Decisions& decisions);
    void DefineDollarMacro(Decisions& decisions);
    void Substitute(Decisions& decisions);
    void CheckLists(Decisions& decisions);
    void CheckAllNames();
    std::string SubstitutePlainly(const ModelFrame& model, const std::string& text);

    bool IsOfFile(size_t index) const { return m_frames[m_frames[index].m_root].m_file != nullptr; }
    size_t Pick(Decisions& decisions) const { return decisions.Below(m_frames.size()); }
    void Hold(size_t holder, size_t held);

    std::vector<Frame> m_frames;
};

Frames::~Frames()
{
    while (!m_frames.empty())
        for (size_t i = m_frames.size(); i-- != 0;)
            Remove(i);
}

void Frames::Hold(size_t holder, size_t held)
{
    m_frames[holder].m_holds.push_back(held);
    ++m_frames[held].m_pins;
}

/// A frame of a file, a child of another frame, or now and then a frame of its own that belongs to
/// no file and can have no children.
void Frames::AddFrame(Decisions& decisions)
{
    if (m_frames.size() >= s_mostFrames)
        return;
    const size_t index = m_frames.size();
    const size_t parent = m_frames.empty() ? 0 : Pick(decisions);
    const bool isRoot = m_frames.empty() || decisions.Below(3) == 0 || !IsOfFile(parent);
    const bool isFile = isRoot && (m_frames.empty() || decisions.Below(6) != 0);
    Frame frame;
    frame.m_model = std::make_unique<ModelFrame>(isRoot ? nullptr : m_frames[parent].m_model.get());
    frame.m_root = isRoot ? index : m_frames[parent].m_root;
    if (isFile)
        frame.m_file = std::make_unique<FileScopeVarFrame>();
    else
        frame.m_child = std::make_unique<VarFrame>(isRoot ? nullptr : &m_frames[parent].Real());
    m_frames.push_back(std::move(frame));
    if (!isRoot)
        Hold(index, parent);
    FUZZ_REQUIRE(m_frames[index].Real().m_fileScopeFrame ==
                 m_frames[m_frames[index].m_root].m_file.get());
}

/// The last frame goes when nobody views it; indices of the others stay.
void Frames::Remove(size_t index)
{
    if (index + 1 != m_frames.size() || m_frames[index].m_pins != 0)
        return;
    for (const size_t held : m_frames[index].m_holds)
        --m_frames[held].m_pins;
    m_frames.pop_back();
}

void Frames::Define(Decisions& decisions)
{
    Frame& frame = m_frames[Pick(decisions)];
    const SubString name = NameOf(decisions);
    LSVariable* const var = new LSValueVariable(LSV_STRING, name, "value");
    frame.Real().m_localVariables.Add(var);
    frame.m_model->m_variables[ToStd(name)] = var;
}

/// A frame imports one that was made before it, so that there are no cycles and the imported one
/// lives longer. An ancestor or a descendant is left alone.
void Frames::Import(Decisions& decisions)
{
    const size_t importer = Pick(decisions);
    const size_t imported = Pick(decisions);
    if (m_frames[imported].m_root >= m_frames[importer].m_root || imported >= importer)
        return;
    Frame& from = m_frames[importer];
    Frame& to = m_frames[imported];
    const bool isFile = from.m_file != nullptr && to.m_file != nullptr && decisions.Below(4) != 0;
    if (isFile)
    {
        from.m_file->AddImport(to.m_file.get());
        from.m_model->m_imports.push_back(to.m_model.get());
    }
    else
        from.Real().ImportFrame(&to.Real());
    ModelFrame& model = *from.m_model;
    if (model.m_all.emplace(&to.Real(), to.m_model.get()).second)
        model.m_all.insert(to.m_model->m_all.begin(), to.m_model->m_all.end());
    model.m_direct.emplace(&to.Real(), to.m_model.get());
    Hold(importer, imported);
}

template <class Find>
Answer Ask(const char* pos, Find find)
{
    try
    {
        return {find()};
    }
    catch (const LexScannerException& e)
    {
        FUZZ_REQUIRE(ToStd(e.m_description).starts_with("Ambiguous macro name : "));
        FUZZ_REQUIRE(e.m_pos == pos);
        return {nullptr, true, false};
    }
    catch (const TelvAssertionError&)
    {
        return {nullptr, false, true};
    }
}

/// Frames that import each other's ambiguities may report either failure, by the order of
/// addresses.
void Compare(const Answer& answer, const Answer& model)
{
    const bool fails = answer.m_ambiguous || answer.m_broken;
    FUZZ_REQUIRE(answer.m_var == model.m_var);
    FUZZ_REQUIRE(fails == (model.m_ambiguous || model.m_broken));
}

void Frames::LookUp(Decisions& decisions)
{
    Frame& frame = m_frames[Pick(decisions)];
    const SubString name = NameOf(decisions);
    const std::string key = ToStd(name);
    const char* const pos = name.begin();
    VarFrame& real = frame.Real();
    const ModelFrame& model = *frame.m_model;
    Compare(Ask(pos, [&] { return real.Find(name, pos); }), model.Find(key));
    Compare(Ask(pos, [&] { return real.Find2(name); }), model.Find2(key));
    Compare(Ask(pos, [&] { return real.FindLocal(name, pos); }), model.FindLocal(key));
    Compare(Ask(pos, [&] { return real.FindInDirectImports(name, pos); }),
            model.FindInDirectImports(key));
    FUZZ_REQUIRE(real.m_localVariables.Find(name) == model.FindOwn(key));
}

void Frames::DefineDollarMacro(Decisions& decisions)
{
    static constexpr const char* s_values[] = {"",  "x",   "$(a)",   "$(b)y", "$(c)$(a)",
                                               "$", "(b)", "$(_a_)", "a)"};
    Frame& frame = m_frames[m_frames[Pick(decisions)].m_root];
    if (frame.m_file == nullptr)
        return;
    const xstring name(NameOf(decisions));
    const xstring value(s_values[decisions.Below(std::size(s_values))]);
    frame.m_file->InsertDollarMacro(name, value);
    frame.m_model->m_dollarMacros[ToStd(name)] = ToStd(value);
    xstring varName("_");
    varName += name;
    varName += "_";
    LSVariable* const var = frame.m_file->Find2(varName);
    FUZZ_REQUIRE(var != nullptr && var->GetType() == LSV_STRING);
    FUZZ_REQUIRE(static_cast<LSValueVariable*>(var)->m_value == value);
    frame.m_model->m_variables[ToStd(varName)] = var;
}

std::string Frames::SubstitutePlainly(const ModelFrame& model, const std::string& text)
{
    std::string result;
    for (size_t i = 0; i < text.size();)
    {
        const size_t end = text.compare(i, 2, "$(") == 0 ? text.find(')', i) : std::string::npos;
        const std::string* value = nullptr;
        if (end != std::string::npos)
            value = model.FindDollarMacro(text.substr(i + 2, end - i - 2));
        result += value != nullptr ? *value : text.substr(i, 1);
        i = value != nullptr ? end + 1 : i + 1;
    }
    return result;
}

/// Passes until nothing changes, or none when that does not come to an end soon.
void Frames::Substitute(Decisions& decisions)
{
    static constexpr const char* s_words[] = {"$(a)", "$(b)", "$", "(a)", "$(c)", "$(nope)", "$(a"};
    Frame& frame = m_frames[m_frames[Pick(decisions)].m_root];
    if (frame.m_file == nullptr)
        return;
    std::string text;
    for (size_t left = 1 + decisions.Below(4); left != 0; --left)
        text += s_words[decisions.Below(std::size(s_words))];
    StringStream once(4096);
    frame.m_file->ApplyDollarMacros(once, SubString(text.data(), text.data() + text.size()));
    std::string plain = SubstitutePlainly(*frame.m_model, text);
    FUZZ_REQUIRE(ToStd(once.GetString()) == plain);
    bool ends = false;
    for (int pass = 0; pass < 40 && !ends && plain.size() < 10'000; ++pass)
    {
        const std::string next = SubstitutePlainly(*frame.m_model, plain);
        ends = next == plain;
        plain = next;
    }
    xstring whole(SubString(text.data(), text.data() + text.size()));
    ExpansionRun run;
    run.m_limits.m_maxOutput = 100'000; // else many texts of megabytes, which take long
    const ExpansionRunScope scope(run);
    try
    {
        const bool changed = frame.m_file->ApplyDollarMacros(whole);
        FUZZ_REQUIRE(ends && ToStd(whole) == plain);
        FUZZ_REQUIRE(changed || plain == text);
    }
    catch (const ExpansionLimitException& e)
    {
        const std::string message = ToStd(e.m_description);
        if (message == "Output too large")
            return;
        FUZZ_REQUIRE(message.starts_with("Dollar macro ") && message.ends_with(" contains itself"));
        // A macro that stands for itself alone changes nothing, but never comes to an end either.
        FUZZ_REQUIRE(!ends || plain.find("$(") != std::string::npos);
    }
}

/// Every name that is defined anywhere is found, also after other frames and their names have gone.
void Frames::CheckAllNames()
{
    for (Frame& frame : m_frames)
        for (const auto& [name, var] : frame.m_model->m_variables)
        {
            const SubString view(name.data(), name.data() + name.size());
            FUZZ_REQUIRE(frame.Real().Find2(view) == var);
            FUZZ_REQUIRE(frame.Real().FindLocal(view, nullptr) == var);
        }
}

void Frames::CheckLists(Decisions& decisions)
{
    Frame& frame = m_frames[Pick(decisions)];
    const LSVariableMap& map = frame.Real().m_localVariables.m_map;
    FUZZ_REQUIRE(map.size() == static_cast<ssize_t>(frame.m_model->m_variables.size()));
    auto expected = frame.m_model->m_variables.begin();
    for (const auto& [name, var] : map)
    {
        FUZZ_REQUIRE(ToStd(name) == expected->first && var == expected->second);
        ++expected;
    }
    StringStream os(4096);
    frame.Real().WriteToStream(os);
    FUZZ_REQUIRE(frame.Real().m_setOfFrames.size() ==
                 static_cast<ssize_t>(frame.m_model->m_all.size()));
}

void Frames::Run(Decisions& decisions)
{
    AddFrame(decisions);
    for (int left = s_mostOperations; left != 0 && !decisions.AtEnd(); --left)
        switch (decisions.Below(12))
        {
        case 0:
        case 1:
            AddFrame(decisions);
            break;
        case 2:
            for (size_t more = decisions.Below(12); more != 0; --more)
                Define(decisions);
            break;
        case 3:
            Define(decisions);
            break;
        case 4:
        case 5:
            Import(decisions);
            break;
        case 6:
            DefineDollarMacro(decisions);
            break;
        case 7:
            Substitute(decisions);
            break;
        case 8:
            if (m_frames.size() > 1)
                Remove(m_frames.size() - 1);
            CheckAllNames();
            break;
        case 9:
            CheckLists(decisions);
            break;
        default:
            LookUp(decisions);
        }
}

} // namespace
} // namespace telv::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    telv::fuzz::Decisions decisions(data, size);
    telv::fuzz::Frames frames;
    frames.Run(decisions);
    return 0;
}
