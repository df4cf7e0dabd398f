// SPDX-License-Identifier: MIT
// it's
/** don't
 * stop */
x /* y
