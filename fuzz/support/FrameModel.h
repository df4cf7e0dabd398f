// SPDX-License-Identifier: MIT
// What the fuzzer of frames compares the library with: look-ups that walk frames, imports and
// parents literally, in time that grows with the number of paths.
#pragma once

#include "tlMacroExpander/VarFrame.h"
#include <map>
#include <set>
#include <string>
#include <vector>

namespace telv::fuzz
{

/// What a look-up gave: a variable, or nothing, or how it failed.
struct Answer
{
    LSVariable* m_var = nullptr;
    bool m_ambiguous = false;
    bool m_broken = false; ///< The assertion that two hits have an import that leads to them.

    bool operator==(const Answer&) const = default;
};

/// A frame of the model. Orders among imports are those of the addresses of the real frames.
class ModelFrame
{
public:
    explicit ModelFrame(ModelFrame* parent) : m_parent(parent) {}

    std::map<std::string, LSVariable*> m_variables;
    std::map<VarFrame*, ModelFrame*> m_all;
    std::map<VarFrame*, ModelFrame*> m_direct;
    std::vector<ModelFrame*> m_imports;
    std::map<std::string, std::string> m_dollarMacros;
    ModelFrame* m_parent;

    LSVariable* FindOwn(const std::string& name) const
    {
        const auto found = m_variables.find(name);
        return found == m_variables.end() ? nullptr : found->second;
    }

    Answer Find2(const std::string& name) const
    {
        for (const ModelFrame* frame = this; frame != nullptr; frame = frame->m_parent)
            if (LSVariable* const var = frame->FindOwn(name))
                return {var};
        return {};
    }

    Answer Find(const std::string& name) const
    {
        for (const ModelFrame* frame = this; frame != nullptr; frame = frame->m_parent)
            if (const Answer answer = frame->FindLocal(name); answer != Answer())
                return answer;
        return {};
    }

    Answer FindLocal(const std::string& name) const
    {
        if (LSVariable* const var = FindOwn(name))
            return {var};
        std::set<LSVariable*> hits;
        for (const auto& [address, frame] : m_all)
            if (LSVariable* const var = frame->Find2(name).m_var)
                hits.insert(var);
        if (hits.size() < 2)
            return {hits.empty() ? nullptr : *hits.begin()};
        const Answer answer = FindInDirectImports(name);
        return answer == Answer() ? Answer{nullptr, false, true} : answer;
    }

    Answer FindInDirectImports(const std::string& name) const
    {
        Answer found;
        for (const auto& [address, frame] : m_direct)
        {
            const Answer answer = frame->FindLocal(name);
            if (answer.m_ambiguous || answer.m_broken)
                return answer;
            if (answer.m_var == nullptr)
                continue;
            if (found.m_var != nullptr && found.m_var != answer.m_var)
                return {nullptr, true, false};
            found = answer;
        }
        return found;
    }

    const std::string* FindDollarMacro(const std::string& name) const
    {
        const auto own = m_dollarMacros.find(name);
        if (own != m_dollarMacros.end())
            return &own->second;
        for (const ModelFrame* import : m_imports)
            if (const std::string* const value = import->FindDollarMacro(name))
                return value;
        return nullptr;
    }
};

} // namespace telv::fuzz
