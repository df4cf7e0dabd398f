# SPDX-License-Identifier: MIT
cat <<'EOF'
it's "here
EOF
echo $((1 + 2)) >&2
