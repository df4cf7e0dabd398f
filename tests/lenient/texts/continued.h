// SPDX-License-Identifier: MIT
#define A b c
// one \
two
