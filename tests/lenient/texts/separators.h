// SPDX-License-Identifier: MIT
int a = 1'000'000;
auto s = u8"x", c = L'\377', d = '\e';
