// SPDX-License-Identifier: MIT
const t = `first
it's "second
`;
