// SPDX-License-Identifier: MIT
// Look-ups in the frames of programs while they are expanded, against a walk over the lists of
// variables: no table, no memory, as a look-up is defined.
#include "Expansion.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include <gtest/gtest.h>
#include <optional>
#include <set>

namespace telv::test
{
namespace
{

/// What a look-up gives; nothing: an error.
using Answer = std::optional<const LSVariable*>;

/// The newest variable of the name in the frame's own list.
const LSVariable* WalkOwn(const VarFrame& frame, SubString name)
{
    const LSVariable* v = frame.m_localVariables.m_first;
    while (v != nullptr && v->m_name != name)
        v = v->m_next;
    return v;
}

const LSVariable* WalkParents(const VarFrame* frame, SubString name)
{
    for (; frame != nullptr; frame = frame->m_parent)
        if (const LSVariable* const v = WalkOwn(*frame, name))
            return v;
    return nullptr;
}

/// The own variable, else the one that all imports have, else what the direct imports agree on.
Answer WalkLocal(const VarFrame& frame, SubString name)
{
    if (const LSVariable* const v = WalkOwn(frame, name))
        return v;
    std::set<const LSVariable*> hits;
    for (const VarFrame* const imported : frame.m_setOfFrames)
        if (const LSVariable* const v = WalkParents(imported, name))
            hits.insert(v);
    if (hits.size() < 2)
        return hits.empty() ? nullptr : *hits.begin();
    const LSVariable* found = nullptr;
    for (const VarFrame* const direct : frame.m_setOfDirectFrames)
    {
        const Answer answer = WalkLocal(*direct, name);
        if (!answer || (found != nullptr && *answer != nullptr && *answer != found))
            return std::nullopt;
        found = *answer != nullptr ? *answer : found;
    }
    return found;
}

Answer Walk(const VarFrame* frame, SubString name)
{
    for (; frame != nullptr; frame = frame->m_parent)
        if (const Answer answer = WalkLocal(*frame, name); answer != Answer(nullptr))
            return answer;
    return nullptr;
}

Answer Ask(VarFrame& frame, SubString name)
{
    try
    {
        return frame.Find(name, name.begin());
    }
    catch (const LexScannerException&)
    {
        return std::nullopt;
    }
}

/// Compares all names that a frame and its imports have, and a few that none has.
class LookupObserver final : public Observer
{
public:
    void SeeFrame(VarFrame& frame) override
    {
        std::set<std::string> names = {"nothing", "a", "f", "_A_"};
        AddNames(frame, names);
        for (const VarFrame* const imported : frame.m_setOfFrames)
            AddNames(*imported, names);
        for (const std::string& name : names)
        {
            const SubString view(name.data(), name.data() + name.size());
            EXPECT_EQ(Ask(frame, view), Walk(&frame, view)) << name;
            EXPECT_EQ(frame.Find2(view), WalkParents(&frame, view)) << name;
            ++m_count;
        }
    }

    size_t m_count = 0;

private:
    static void AddNames(const VarFrame& frame, std::set<std::string>& names)
    {
        for (const LSVariable* v = frame.m_localVariables.m_first; v != nullptr; v = v->m_next)
            names.emplace(v->m_name.begin(), v->m_name.end());
    }
};

TEST(LookupTest, FramesOfRandomPrograms)
{
    LookupObserver observer;
    for (uint32_t seed = 1; seed <= s_randomPrograms && !testing::Test::HasFailure(); ++seed)
    {
        Program program = RandomProgram(seed);
        // The files import each other in an order, and the same names are defined in several.
        program.files.resize(4);
        for (size_t i = 0; i < program.files.size(); ++i)
            for (size_t j = program.files.size() - 1; j > i; --j)
                if ((seed >> (i + j)) % 2 == 0)
                    program.files[i] = "@import \"" + std::to_string(j) + "\"\n" +
                                       program.files[i] + "\n@import \"" + std::to_string(j) +
                                       "\"\n";
        SCOPED_TRACE(program.name);
        Expand(program, {"all", FastPaths::s_all}, &observer);
    }
    EXPECT_GT(observer.m_count, s_randomPrograms);
}

} // namespace
} // namespace telv::test
