#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# End-to-end checks of the vexo tool: conversions round-trip, info reports a
# known table, plots decode to the requested size, errors exit non-zero with
# a message naming the file.
set -u
vexo=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
passed=0
failed=0

ok() { passed=$((passed + 1)); }
fail() { failed=$((failed + 1)); echo "FAIL: $*"; }

# expect_ok DESCRIPTION COMMAND...: the command succeeds.
expect_ok() {
    local what=$1; shift
    if "$@" >"$work/out" 2>"$work/err"; then ok; else fail "$what"; cat "$work/err"; fi
}
# expect_error DESCRIPTION PATTERN COMMAND...: fails, stderr matches PATTERN.
expect_error() {
    local what=$1 pattern=$2; shift 2
    if "$@" >"$work/out" 2>"$work/err"; then
        fail "$what (succeeded)"
    elif grep -q -- "$pattern" "$work/err"; then
        ok
    else
        fail "$what (message: $(cat "$work/err"))"
    fi
}
# expect_output DESCRIPTION PATTERN: the last command's stdout matches.
expect_output() {
    if grep -q -- "$2" "$work/out"; then ok; else fail "$1: $(cat "$work/out")"; fi
}
max_difference() { "$vexo" corr diff "$1" "$2" | awk '/max difference/ {print $3}'; }
below() { awk -v a="$1" -v b="$2" 'BEGIN { exit !(a < b) }'; }

cd "$work"
expect_ok "neutral kxo" "$vexo" corr neutral neutral.kxo
expect_ok "info on neutral" "$vexo" corr info neutral.kxo
expect_output "neutral format" "format:     kxo (5)"
expect_output "neutral header" "version 1, header size 12"
expect_output "neutral deviation" "deviation:  max 0.000 units"
expect_output "neutral monotonic" "monotonic:  rows yes, columns yes"
expect_output "neutral range" "x range:    -32767.500 .. 32767.500"

expect_ok "sample" "$vexo" corr sample sample.kxo
expect_ok "info on sample" "$vexo" corr info sample.kxo
expect_output "sample deviates" "deviation:  max [1-9]"

# kxo -> ctb -> cor -> kxo, each within its format's resolution.
expect_ok "to ctb" "$vexo" corr convert sample.kxo sample.ctb
expect_ok "to cor" "$vexo" corr convert sample.ctb sample.cor --field 110
expect_ok "back to kxo" "$vexo" corr convert sample.cor back.kxo
d=$(max_difference sample.kxo sample.ctb)
below "$d" 0.71 && ok || fail "ctb round trip differs by $d"
d=$(max_difference sample.ctb back.kxo)
below "$d" 0.71 && ok || fail "cor round trip differs by $d"
test "$(stat -c %s sample.cor)" -eq 33840 && ok || fail "cor size"
test "$(stat -c %s sample.kxo)" -eq 50712 && ok || fail "kxo size"

# Adjustments apply in order and change the table.
expect_ok "convert with adjustments" "$vexo" corr convert sample.kxo adjusted.kxo --scale 0.9 \
    --focal 160 110 100 --spatial 0 1.01 --adjust 100,100,200,250,4,3
d=$(max_difference sample.kxo adjusted.kxo)
below 100 "$d" && ok || fail "adjustments changed too little ($d)"

expect_ok "plot" "$vexo" corr plot sample.kxo sample.png --size 400
expect_ok "plot neutral" "$vexo" corr plot neutral.kxo neutral.png --size 400 --exaggerate 1
python3 - "$work" <<'PY' && ok || fail "plot pictures"
import struct, sys, zlib
def size(path):
    data = open(path, "rb").read()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "not a PNG"
    return struct.unpack(">II", data[16:24])
d = sys.argv[1]
assert size(d + "/sample.png") == (400, 400), size(d + "/sample.png")
assert open(d + "/sample.png", "rb").read() != open(d + "/neutral.png", "rb").read()
PY

expect_error "missing file" "nothere.kxo" "$vexo" corr info nothere.kxo
expect_error "unknown format" "UNKNOWN_FORMAT" "$vexo" corr info sample.png
expect_error "bad format number" "--format must be" "$vexo" corr info sample.kxo --format 12
expect_error "bad scale" "bad number for --scale" "$vexo" corr convert sample.kxo x.kxo --scale abc
expect_error "bad adjust" "--adjust needs 6" "$vexo" corr convert sample.kxo x.kxo --adjust 1,2,3
expect_error "bad output kind" "cannot write this kind" "$vexo" corr convert sample.kxo x.txt
expect_error "truncated file" "READ_FILE" bash -c "head -c 1000 sample.kxo > short.kxo && '$vexo' corr info short.kxo"
expect_error "unknown command" "unknown corr command" "$vexo" corr frobnicate
expect_ok "help" "$vexo" corr convert --help
expect_output "help text" "usage: vexo corr convert"

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
