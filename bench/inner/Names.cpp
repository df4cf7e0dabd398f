// SPDX-License-Identifier: MIT
// Looking a name up: where it is visible, how deep the frames are nested, how many files are
// imported, and a word that is no name at all, as most words are.
#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/VarFrame.h"
#include <benchmark/benchmark.h>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace telv;

SubString View(const std::string& text)
{
    return SubString(text.data(), text.data() + text.size());
}

/// A main file that imports files of ten names each, and blocks nested in it.
class Scene
{
public:
    Scene(int files, int depth)
    {
        for (int i = 0; i < 10 * files; ++i)
            m_names.push_back("name" + std::to_string(i));
        for (int i = 0; i < files; ++i)
        {
            auto& file = *m_files.emplace_back(std::make_unique<FileScopeVarFrame>());
            for (int j = 10 * i; j < 10 * i + 10; ++j)
                Define(file, m_names[static_cast<size_t>(j)]);
            m_main.AddImport(&file);
        }
        Define(m_main, m_ownName);
        VarFrame* parent = &m_main;
        for (int i = 0; i < depth; ++i)
        {
            m_blocks.push_back(std::make_unique<VarFrame>(parent));
            parent = m_blocks.back().get();
        }
    }
    ~Scene()
    {
        while (!m_blocks.empty())
            m_blocks.pop_back();
    }

    VarFrame& Innermost() { return m_blocks.empty() ? m_main : *m_blocks.back(); }
    const std::string& Imported() const { return m_names[m_names.size() / 2]; }
    const std::string& Own() const { return m_ownName; }

private:
    static void Define(VarFrame& frame, const std::string& name)
    {
        frame.m_localVariables.Add(new LSValueVariable(LSV_INT, View(name), SubString("1")));
    }

    std::string m_ownName = "ownName";
    std::vector<std::string> m_names;
    std::vector<std::unique_ptr<FileScopeVarFrame>> m_files;
    FileScopeVarFrame m_main;
    std::vector<std::unique_ptr<VarFrame>> m_blocks;
};

void Find(benchmark::State& state, Scene& scene, const std::string& name, bool isThere)
{
    for (auto _ : state)
    {
        const LSVariable* const found = scene.Innermost().Find(View(name), name.data());
        if ((found != nullptr) != isThere)
        {
            state.SkipWithError("wrong answer");
            break;
        }
    }
}

void FindOwnName(benchmark::State& state)
{
    Scene scene(1, static_cast<int>(state.range(0)));
    Find(state, scene, scene.Own(), true);
}
BENCHMARK(FindOwnName)->ArgName("depth")->Arg(0)->Arg(10)->Arg(1000);

void FindImportedName(benchmark::State& state)
{
    Scene scene(static_cast<int>(state.range(0)), 2);
    Find(state, scene, scene.Imported(), true);
}
BENCHMARK(FindImportedName)->ArgName("files")->Arg(1)->Arg(1000);

void FindNoName(benchmark::State& state)
{
    Scene scene(static_cast<int>(state.range(0)), 2);
    Find(state, scene, "nothing", false);
}
BENCHMARK(FindNoName)->ArgName("files")->Arg(1)->Arg(1000);

} // namespace
