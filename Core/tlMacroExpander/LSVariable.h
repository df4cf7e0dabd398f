// SPDX-License-Identifier: MIT
// Variables: what a source text defines by name, macros and typed values.
//
// A variable views its name, and a macro its formal names and its body, in the text in which it was
// defined: that text must outlive it. Frames (VarFrame.h, brought in below) own variables.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/StringExt.h"

namespace telv
{

class VarFrame;

/// The type of a variable, of a macro's result or of a formal argument.
enum ELSVariable
{
    LSV_UNDEF = 0,
    LSV_MACRO = 1,
    LSV_BOOL = 2,
    LSV_INT = 3,
    LSV_DOUBLE = 4,
    LSV_CHAR = 5,
    LSV_STRING = 6
};

/// One formal argument of a macro.
struct TLEXPANDER_API LSFormalArg
{
    SubString m_name; ///< Views the text of the definition.
    ELSVariable m_type = LSV_MACRO;
    bool m_isFnArg = false; ///< The argument is itself a macro, called with arguments.
};

/// Base of all variables. Owned by the list that it was added to.
class TLEXPANDER_API LSVariable
{
public:
    SubString m_name;   ///< Never empty once the variable is in a list.
    LSVariable* m_next; ///< Next older variable of the owning list.

    /// Views `name`.
    explicit LSVariable(SubString name);
    LSVariable(const LSVariable&) = delete;
    LSVariable& operator=(const LSVariable&) = delete;
    virtual ~LSVariable();

    virtual ELSVariable GetType() const = 0;
    /// Writes a one-line description.
    virtual void WriteToStream(xostream& os) const = 0;
    /// Writes the value alone.
    virtual void WriteValue(xostream& os) const = 0;
};

/// A typed value, held in its written form.
class TLEXPANDER_API LSValueVariable : public LSVariable
{
public:
    ELSVariable m_type; ///< LSV_BOOL to LSV_STRING.
    xstring m_value;

    /// Views `name`, copies `value`.
    LSValueVariable(ELSVariable type, SubString name, SubString value);

    ELSVariable GetType() const override;
    /// Name, " = ", value.
    void WriteToStream(xostream& os) const override;
    void WriteValue(xostream& os) const override;
};

/// A string variable that owns its name.
class TLEXPANDER_API LSVar : public LSValueVariable
{
public:
    xstring m_nameStr;

    LSVar(SubString name, SubString value);
};

/// A macro: text that is expanded where its name is used, or a Python expression.
class TLEXPANDER_API LSMacroVariable : public LSVariable
{
public:
    bool m_isPython;                 ///< The body is a Python expression.
    bool m_naked;                    ///< Arguments and definitions go to the caller's frame.
    bool m_isFnArg;                  ///< Stands for a macro passed as an argument.
    ELSVariable m_returnType;        ///< LSV_MACRO: text, not a value.
    xvector<LSFormalArg> m_argNames; ///< In order of declaration.
    VarFrame* m_context;             ///< Where names in the body are found; null: where it is used.
    ssize_t m_indentation;           ///< Of the body in its source; -1 until it is set.
    StringX m_substitutionString;    ///< The body.

    LSMacroVariable(ELSVariable returnType, SubString name, VarFrame* context, bool isPython,
                    bool naked, bool isFnArg);

    /// LSV_MACRO.
    ELSVariable GetType() const override;
    /// Signature, " = ", body.
    void WriteToStream(xostream& os) const override;
    /// The body.
    void WriteValue(xostream& os) const override;

    bool IsPython() const { return m_isPython; }
    bool IsNaked() const { return m_naked; }
    ssize_t GetNumArgs() const { return m_argNames.size(); }
    SubString GetSubstitutionString() const { return m_substitutionString.m_subString; }

    /// Sets the body and its indentation in columns. Without `copy`, `body` must outlive the macro.
    void SetSubstitutionString(SubString body, bool copy, ssize_t indentation);

    /// Index of the first formal argument of this name, or -1. Linear.
    ssize_t FindArgName(SubString name) const;

    /// Writes the name and, in parentheses, the names of the formal arguments: `f(a,b)`.
    void WriteNameAndFormalParameterList(xostream& os) const;
};

} // namespace telv

#include "tlMacroExpander/VarFrame.h"
