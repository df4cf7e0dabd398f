// SPDX-License-Identifier: MIT
const a = 'it\'s', b = "x\u{1F600}", c = `t ${a + `n ${b}`}`;
