// SPDX-License-Identifier: MIT
#ifndef A_H
#define A_H
#define S(x) #x
#define C(a, b) a##b
#error it's wrong
#endif
