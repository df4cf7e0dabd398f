// SPDX-License-Identifier: MIT
// Ladders of imports: two frames on each rung, each importing both of the rung below. There are 2^n
// ways from the top to the bottom.
#include "Families.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include <memory>

namespace telv::bench
{

namespace
{

constexpr int s_lookUps = 2000;

/// Owns the frames; those that are imported go last.
class Ladder
{
public:
    /// With `bottomUp`, a rung imports the one below when that is complete, as files do.
    Ladder(size_t rungs, bool bottomUp)
    {
        for (size_t i = 0; i < 2 * rungs; ++i)
            m_frames.push_back(std::make_unique<FileScopeVarFrame>());
        for (size_t rung = 1; rung < rungs; ++rung)
            ImportBelow(bottomUp ? rung : rungs - rung);
    }
    ~Ladder()
    {
        while (!m_frames.empty())
            m_frames.pop_back();
    }

    FileScopeVarFrame& Top() { return *m_frames.back(); }
    FileScopeVarFrame& Bottom(size_t side) { return *m_frames[side]; }

private:
    void ImportBelow(size_t rung)
    {
        for (const size_t importer : {2 * rung, 2 * rung + 1})
            for (const size_t imported : {2 * rung - 2, 2 * rung - 1})
                m_frames[importer]->AddImport(m_frames[imported].get());
    }

    std::vector<std::unique_ptr<FileScopeVarFrame>> m_frames;
};

Work UnknownDollarMacro(size_t n)
{
    const auto ladder = std::make_shared<Ladder>(n, /*bottomUp=*/false);
    return [ladder]
    {
        for (int i = 0; i < s_lookUps / 5; ++i)
            ladder->Top().FindDollarMacro("NOPE");
    };
}

Work NameOfTheBottom(size_t n)
{
    const auto ladder = std::make_shared<Ladder>(n, /*bottomUp=*/true);
    ladder->Bottom(0).InsertDollarMacro("NAME", "value");
    return [ladder]
    {
        for (int i = 0; i < s_lookUps; ++i)
            ladder->Top().Find("_NAME_", nullptr);
    };
}

Work AmbiguousName(size_t n)
{
    const auto ladder = std::make_shared<Ladder>(n, /*bottomUp=*/true);
    ladder->Bottom(0).InsertDollarMacro("NAME", "one");
    ladder->Bottom(1).InsertDollarMacro("NAME", "two");
    return [ladder]
    {
        for (int i = 0; i < s_lookUps / 20; ++i)
            try
            {
                ladder->Top().Find("_NAME_", nullptr);
            }
            catch (const LexScannerException&)
            {
            }
    };
}

constexpr const char* s_sets = "memory: each frame lists every frame that it reaches";

} // namespace

std::vector<Family> FrameFamilies()
{
    return {
        {"import ladder, unknown dollar macro", 500, UnknownDollarMacro, nullptr},
        {"import ladder, name of the bottom", 250, NameOfTheBottom, s_sets},
        {"import ladder, ambiguous name", 250, AmbiguousName, s_sets},
    };
}

} // namespace telv::bench
