// SPDX-License-Identifier: MIT
const char* s = R"x(a "b' )y" \)x";
