// SPDX-License-Identifier: MIT
// Many files, imported by one that then uses their names, asks for names that they do not have, or
// does so after each import.
#include "Families.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Frames/GivenNames.h"
#include <memory>
#include <string>

namespace telv::bench
{

namespace
{

constexpr size_t s_namesEach = 10;

/// Files of ten definitions each, and some words that none of them defines.
struct Files
{
    explicit Files(size_t n)
    {
        for (size_t i = 0; i < n; ++i)
            m_words.push_back("word" + std::to_string(i));
        for (size_t i = 0; i < n * s_namesEach; ++i)
            m_names.push_back("name" + std::to_string(i));
        for (size_t i = 0; i < n; ++i)
        {
            m_frames.push_back(std::make_unique<FileScopeVarFrame>());
            for (size_t j = 0; j < s_namesEach; ++j)
                m_frames.back()->m_localVariables.Add(new LSVar(NameOf(i, j), "value"));
        }
    }

    size_t Count() const { return m_frames.size(); }
    SubString NameOf(size_t file, size_t i) const { return View(m_names[file * s_namesEach + i]); }
    SubString Word(size_t i) const { return View(m_words[i]); }

    static SubString View(const std::string& s) { return SubString(s.data(), s.data() + s.size()); }

    std::vector<std::unique_ptr<FileScopeVarFrame>> m_frames;
    std::vector<std::string> m_names;
    std::vector<std::string> m_words;
};

/// `use` is called with the importer, the files and a number for each file: after all imports, or
/// after each.
template <class Use>
Work ImportAndUse(size_t n, bool inTurn, Use use)
{
    const auto files = std::make_shared<Files>(n);
    return [files, inTurn, use]
    {
        FileScopeVarFrame importer;
        for (size_t i = 0; i < files->Count(); ++i)
        {
            importer.AddImport(files->m_frames[i].get());
            if (inTurn)
                use(importer, *files, i);
        }
        for (size_t i = 0; i < files->Count() && !inTurn; ++i)
            use(importer, *files, i);
    };
}

void UseName(FileScopeVarFrame& importer, const Files& files, size_t i)
{
    importer.Find(files.NameOf(i, 3), nullptr);
}

void UseWord(FileScopeVarFrame& importer, const Files& files, size_t i)
{
    importer.Find(files.Word(i), nullptr);
}

void UseDollarMacro(FileScopeVarFrame& importer, const Files& files, size_t i)
{
    importer.FindDollarMacro(files.Word(i));
}

void DefineHere(FileScopeVarFrame& importer, const Files& files, size_t i)
{
    importer.m_localVariables.Add(new LSVar(files.Word(i), "value"));
    importer.Find(files.NameOf(i, 3), nullptr);
}

Work Names(size_t n)
{
    return ImportAndUse(n, /*inTurn=*/false, UseName);
}
Work NamesInTurn(size_t n)
{
    return ImportAndUse(n, /*inTurn=*/true, UseName);
}
Work Words(size_t n)
{
    return ImportAndUse(n, /*inTurn=*/false, UseWord);
}
Work WordsInTurn(size_t n)
{
    return ImportAndUse(n, /*inTurn=*/true, UseWord);
}
Work UnknownDollarMacros(size_t n)
{
    return ImportAndUse(n, /*inTurn=*/false, UseDollarMacro);
}
Work UnknownDollarMacrosInTurn(size_t n)
{
    return ImportAndUse(n, /*inTurn=*/true, UseDollarMacro);
}
Work DefinitionsInTurn(size_t n)
{
    return ImportAndUse(n, /*inTurn=*/true, DefineHere);
}

/// Each file defines something after it has been imported and looked into.
Work LateDefinitions(size_t n)
{
    const auto files = std::make_shared<Files>(n);
    return [files]
    {
        FileScopeVarFrame importer;
        for (const auto& frame : files->m_frames)
            importer.AddImport(frame.get());
        for (int round = 0; round < 3; ++round)
        {
            for (size_t i = 0; i < files->Count(); ++i)
                files->m_frames[i]->m_localVariables.Add(new LSVar(files->Word(i), "late"));
            for (size_t i = 0; i < files->Count(); ++i)
                importer.Find(files->Word(i), nullptr);
        }
    };
}

/// Every file imports one that has as many names as there are files, and uses a few of them.
Work CommonImport(size_t n)
{
    const auto files = std::make_shared<Files>(n);
    const auto common = std::make_shared<FileScopeVarFrame>();
    for (size_t i = 0; i < n; ++i)
        common->m_localVariables.Add(new LSVar(files->Word(i), "value"));
    return [files, common]
    {
        for (size_t i = 0; i < files->Count(); ++i)
        {
            files->m_frames[i]->AddImport(common.get());
            files->m_frames[i]->Find(files->Word(i), nullptr);
        }
    };
}

/// As many definitions are given to every file as there are files; each uses one of them.
Work GivenDefinitions(size_t n)
{
    const auto files = std::make_shared<Files>(n);
    return [files]
    {
        FileScopeVarFrame prelude;
        for (size_t i = 0; i < files->Count(); ++i)
            prelude.InsertDollarMacro(xstring(files->Word(i)), "value");
        GivenNames given;
        given.Give(prelude);
        FileScopeVarFrame importer;
        for (size_t i = 0; i < files->Count(); ++i)
        {
            FileScopeVarFrame& file = *files->m_frames[i];
            given.MakeVisibleIn(file);
            file.AddImport(&prelude);
            file.Find(SubString("_word7_"), nullptr);
            for (size_t j = 0; j < s_namesEach; ++j)
                file.FindDollarMacro(files->NameOf(i, j));
            importer.AddImport(&file);
        }
    };
}

} // namespace

std::vector<Family> ImportFamilies()
{
    return {
        {"imports and a name of each", 2'000, Names, nullptr},
        {"import and its name, in turn", 2'000, NamesInTurn, nullptr},
        {"imports and unknown words", 2'000, Words, nullptr},
        {"import and unknown word, in turn", 2'000, WordsInTurn, nullptr},
        {"imports, unknown dollar macros", 4'000, UnknownDollarMacros, nullptr},
        {"import, unknown dollar macro, in turn", 4'000, UnknownDollarMacrosInTurn, nullptr},
        {"import and definition, in turn", 2'000, DefinitionsInTurn, nullptr},
        {"definitions in imported files", 2'000, LateDefinitions, nullptr},
        {"a common import of many names", 2'000, CommonImport, nullptr},
        {"files, and definitions given to all", 2'000, GivenDefinitions, nullptr},
    };
}

} // namespace telv::bench
