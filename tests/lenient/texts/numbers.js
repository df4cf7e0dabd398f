// SPDX-License-Identifier: MIT
const a = 0b11, b = 1_000n, c = .5, d = 5., e = 1e3, f = 0XFF;
