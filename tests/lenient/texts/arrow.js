// SPDX-License-Identifier: MIT
const f = async (...a) => ({ ...a, [k]: v ?? w?.x });
