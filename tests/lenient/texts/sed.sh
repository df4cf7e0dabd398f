# SPDX-License-Identifier: MIT
sed -e 's/\(a\)/"\1/' -e "s/'//g" < /dev/null || exit 1 # don't
