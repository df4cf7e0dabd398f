" SPDX-License-Identifier: MIT
" Comments that do not reach the output, and the tool as the compiler.
if exists('b:did_ftplugin')
    finish
endif
let b:did_ftplugin = 1

setlocal commentstring=@//\ %s
setlocal comments=:@//,://
setlocal expandtab shiftwidth=4
compiler tlexpand

let b:undo_ftplugin = 'setlocal commentstring< comments< expandtab< shiftwidth<'
