" SPDX-License-Identifier: MIT
" :make expands the current file; errors, and the notes below them, go to the quickfix list.
if exists('current_compiler')
    finish
endif
let current_compiler = 'tlexpand'

CompilerSet makeprg=tlexpand\ -o\ /dev/null\ %:S
CompilerSet errorformat=
    \%f(%l)\ :\ %trror\ :\ %m,
    \%f(%l)\ :\ %tarning\ :\ %m,
    \%Icalled\ from\ %f(%l),
    \%Iimported\ from\ %f(%l),
    \%Iopened\ at\ %f(%l),
    \%Iin\ round\ %*\\d\ of\ the\ loop\ at\ %f(%l),
    \%-G%.%#
