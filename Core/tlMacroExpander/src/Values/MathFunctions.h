// SPDX-License-Identifier: MIT
// The functions of the C library that live in its part for mathematics, a shared library of its
// own.
//
// Few texts use one, and to find, map and bind that library costs a tenth of a program's start. So
// the tool is not linked with it: there the first call of one of these functions loads it.
#pragma once

namespace telv
{

/// The functions of the same names of the standard library. All are set.
struct MathFunctions
{
    double (*m_sin)(double);
    double (*m_cos)(double);
    double (*m_tan)(double);
    double (*m_exp)(double);
    double (*m_log)(double);
    double (*m_pow)(double, double);
};

/// The functions, for the life of the process; null while their library can't be loaded (no
/// descriptor is left, say): the next call tries again. Any thread may call it.
const MathFunctions* FindMathFunctions();

/// The same; throws `LiteralException` in place of null.
const MathFunctions& GetMathFunctions();

} // namespace telv
