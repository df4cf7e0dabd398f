// SPDX-License-Identifier: MIT
// Random trees of frames against a model that walks exactly as look-ups are defined: own variables,
// then imports, then the parent. Frames come and go, sibling subtrees are alive at the same time,
// names are defined again and again, files and blocks import each other.
#include "ExpanderSupport.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <vector>

namespace telv::expander
{

namespace
{

/// What the model knows of a frame. Sets are ordered by the address of the frame itself, as the
/// library's are, so that of several errors the same one comes first.
struct ModelFrame
{
    VarFrame* m_frame = nullptr;
    ModelFrame* m_parent = nullptr;
    size_t m_file = 0;
    int m_users = 0; ///< Children and importers, which must not outlive the frame.
    std::map<std::string, LSVariable*> m_variables;
    std::map<VarFrame*, ModelFrame*> m_frames;
    std::map<VarFrame*, ModelFrame*> m_direct;

    LSVariable* Own(const std::string& name) const
    {
        const auto found = m_variables.find(name);
        return found == m_variables.end() ? nullptr : found->second;
    }

    LSVariable* Find(const std::string& name) const
    {
        for (const ModelFrame* f = this; f != nullptr; f = f->m_parent)
        {
            if (LSVariable* v = f->FindLocal(name))
                return v;
        }
        return nullptr;
    }

    LSVariable* Find2(const std::string& name) const
    {
        for (const ModelFrame* f = this; f != nullptr; f = f->m_parent)
        {
            if (LSVariable* v = f->Own(name))
                return v;
        }
        return nullptr;
    }

    LSVariable* FindLocal(const std::string& name) const
    {
        if (LSVariable* v = Own(name))
            return v;
        std::set<LSVariable*> hits;
        for (const auto& [address, f] : m_frames)
            hits.insert(f->Find2(name));
        hits.erase(nullptr);
        if (hits.size() < 2)
            return hits.empty() ? nullptr : *hits.begin();
        LSVariable* const v = FindInDirectImports(name);
        if (v == nullptr)
            throw "assertion";
        return v;
    }

    LSVariable* FindInDirectImports(const std::string& name) const
    {
        LSVariable* found = nullptr;
        for (const auto& [address, f] : m_direct)
        {
            LSVariable* const v = f->FindLocal(name);
            if (v == nullptr || v == found)
                continue;
            if (found != nullptr)
                throw "ambiguous";
            found = v;
        }
        return found;
    }

    void Import(ModelFrame& other)
    {
        if (m_frames.emplace(other.m_frame, &other).second)
            m_frames.insert(other.m_frames.begin(), other.m_frames.end());
        m_direct.emplace(other.m_frame, &other);
    }
};

/// The address of what was found, or the kind of error.
template <class Operation>
std::string Outcome(Operation operation)
{
    try
    {
        return Written([&](xostream& os)
                       { os << static_cast<long>(reinterpret_cast<intptr_t>(operation())); });
    }
    catch (const char* error)
    {
        return error;
    }
    catch (const LexScannerException&)
    {
        return "ambiguous";
    }
    catch (const TelvAssertionError&)
    {
        return "assertion";
    }
}

/// How large a world is.
struct Size
{
    size_t m_files;
    size_t m_frames;
    unsigned m_letters;   ///< Of which names are made.
    unsigned m_branching; ///< One block of so many is not opened in the newest one.
    unsigned m_pushed;    ///< How many of a hundred changes open a block.
};

constexpr Size s_imports{5, 60, 4, 3, 30};
constexpr Size s_deep{1, 400, 1, 2, 50};

/// A world of files with trees of frames below them, changed at random.
class World
{
public:
    World(unsigned seed, const Size& size) : m_size(size), m_random(seed)
    {
        for (size_t i = 0; i < m_size.m_files; ++i)
        {
            m_files.push_back(std::make_unique<FileScopeVarFrame>());
            AddFrame(m_files.back().get(), nullptr, i);
        }
    }

    /// Children are younger than their parents.
    ~World()
    {
        while (!m_blocks.empty())
            m_blocks.pop_back();
    }

    void Change()
    {
        const unsigned choice = Below(100);
        if (choice < m_size.m_pushed)
            PushBlock();
        else if (choice < 65)
            Define();
        else if (choice < 72)
            Import();
        else
            DestroyBlock(Below(m_frames.size()));
    }

    void Compare()
    {
        const ModelFrame& model = *m_frames[Below(m_frames.size())];
        VarFrame& frame = *model.m_frame;
        const std::string name = Name();
        const SubString view = View(name);
        const std::string found = Outcome([&] { return model.Find(name); });
        EXPECT_EQ(Outcome([&] { return frame.Find(view, nullptr); }), found);
        if (Below(2) == 0)
            CompareByEntry(frame, view, found);
        EXPECT_EQ(Outcome([&] { return frame.Find2(view); }),
                  Outcome([&] { return model.Find2(name); }));
        EXPECT_EQ(Outcome([&] { return frame.FindLocal(view, nullptr); }),
                  Outcome([&] { return model.FindLocal(name); }));
        EXPECT_EQ(Outcome([&] { return frame.FindInDirectImports(view, nullptr); }),
                  Outcome([&] { return model.FindInDirectImports(name); }));
    }

private:
    /// Who holds the entry of a name finds the same, and may believe that nothing is bound.
    static void CompareByEntry(VarFrame& frame, SubString name, const std::string& found)
    {
        NameTable& names = FrameTree::Names(frame);
        NameEntry& entry = *names.Intern(name, NameTable::HashOf(name));
        EXPECT_EQ(Outcome([&] { return names.Find(&frame, entry, nullptr); }), found);
        EXPECT_TRUE(names.MayBeBound(entry) || found == "0");
    }

    unsigned Below(size_t n) { return static_cast<unsigned>(m_random() % n); }
    std::string Name()
    {
        return std::string(1 + Below(2), static_cast<char>('a' + Below(m_size.m_letters)));
    }

    void AddFrame(VarFrame* frame, ModelFrame* parent, size_t file)
    {
        auto model = std::make_unique<ModelFrame>();
        model->m_frame = frame;
        model->m_parent = parent;
        model->m_file = file;
        m_frames.push_back(std::move(model));
    }

    void PushBlock()
    {
        if (m_frames.size() >= m_size.m_frames)
            return;
        // Most blocks are opened in the newest one: chains of parents get long.
        ModelFrame* const parent =
            m_frames[Below(m_size.m_branching) == 0 ? Below(m_frames.size()) : m_frames.size() - 1]
                .get();
        ++parent->m_users;
        m_blocks.push_back(std::make_unique<VarFrame>(parent->m_frame));
        AddFrame(m_blocks.back().get(), parent, parent->m_file);
    }

    void Define()
    {
        ModelFrame& model = *m_frames[Below(m_frames.size())];
        const std::string name = Name();
        LSVariable* const v = new LSVar(View(name), "");
        model.m_frame->m_localVariables.Add(v);
        model.m_variables[name] = v;
    }

    /// Only frames of files with a smaller number are imported: no rings.
    void Import()
    {
        ModelFrame& importer = *m_frames[Below(m_frames.size())];
        ModelFrame& imported = *m_frames[Below(m_frames.size())];
        if (imported.m_file >= importer.m_file)
            return;
        importer.m_frame->ImportFrame(imported.m_frame);
        for (const auto& [address, model] : importer.m_frames)
            --model->m_users;
        importer.Import(imported);
        for (const auto& [address, model] : importer.m_frames)
            ++model->m_users;
    }

    void DestroyBlock(size_t index)
    {
        ModelFrame& model = *m_frames[index];
        if (model.m_parent == nullptr || model.m_users > 0)
            return;
        for (const auto& [address, imported] : model.m_frames)
            --imported->m_users;
        --model.m_parent->m_users;
        std::erase_if(m_blocks, [&](const auto& block) { return block.get() == model.m_frame; });
        m_frames.erase(m_frames.begin() + static_cast<std::ptrdiff_t>(index));
    }

    const Size m_size;
    std::mt19937 m_random;
    std::vector<std::unique_ptr<FileScopeVarFrame>> m_files;
    std::vector<std::unique_ptr<VarFrame>> m_blocks;
    std::vector<std::unique_ptr<ModelFrame>> m_frames;
};

void Simulate(unsigned seed, int steps, const Size& size = s_imports)
{
    World world(seed, size);
    for (int i = 0; i < steps && !testing::Test::HasFailure(); ++i)
    {
        world.Change();
        world.Compare();
        world.Compare();
    }
}

} // namespace

TEST(VarFrameModel, RandomTrees)
{
    for (unsigned seed = 0; seed < 60; ++seed)
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Simulate(seed, 400);
    }
}

TEST(VarFrameModel, DeepTrees)
{
    for (unsigned seed = 2000; seed < 2040; ++seed)
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Simulate(seed, 4000, s_deep);
    }
}

TEST(VarFrameModel, RandomTreesWhileLookUpsAreCounted)
{
    SetStarted();
    for (unsigned seed = 1000; seed < 1020; ++seed)
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Simulate(seed, 400);
    }
    s_started = false;
}

} // namespace telv::expander
