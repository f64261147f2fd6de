# SPDX-License-Identifier: MIT
# Shared by the vexo tool's test scripts: each script defines functions
# case_NAME, and CTest runs one case per test as
#   bash SCRIPT VEXO CASE
# in a scratch folder of its own.  A case fails on the first check that does
# not hold, printing what was expected and what came.
set -u
vexo=$1
case_name=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
# The Python checks and picture writers import their helpers from here.
export PYTHONPATH="$here${PYTHONPATH:+:$PYTHONPATH}"
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

fail() {
    echo "FAIL ($case_name): $*"
    exit 1
}
skip() {
    echo "SKIP ($case_name): $*"
    exit 77
}

# run CMD...: runs it with stdout in ./out and stderr in ./err; $rc holds
# the exit status.
run() {
    "$@" >out 2>err
    rc=$?
}
expect_rc() {
    [ "$rc" -eq "$1" ] || fail "exit status $rc, expected $1; stderr: $(cat err); stdout: $(head -c 400 out)"
}
expect_err() {
    grep -q -- "$1" err || fail "stderr lacks '$1': $(cat err)"
}
expect_out() {
    grep -q -- "$1" out || fail "stdout lacks '$1': $(head -c 2000 out)"
}
expect_no_err() {
    [ ! -s err ] || fail "stderr not empty: $(cat err)"
}
# json_check PYTHON: runs PYTHON with `d` the JSON document on stdout;
# the code asserts (assert x == y, (x, y)).
json_check() {
    python3 - "$1" <<'PY' || fail "JSON check failed: $1; stdout: $(head -c 2000 out)"
import json, sys
d = json.load(open("out"))
exec(sys.argv[1])
PY
}
same_file() {
    cmp -s "$1" "$2" || fail "$1 and $2 differ"
}

# check_lines FILE PYTHON: PYTHON runs with `lines`, the polylines of FILE
# as lists of (x, y[, z]) tuples.
check_lines() {
    python3 - "$1" "$2" <<'PY' || fail "polyline check failed: $2; file: $(head -c 600 "$1")"
import math, sys
lines, cur = [], []
for raw in open(sys.argv[1]):
    raw = raw.split("#")[0].strip()
    if not raw:
        if cur: lines.append(cur)
        cur = []
        continue
    cur.append(tuple(float(v) for v in raw.split()))
if cur: lines.append(cur)
length = lambda l: sum(math.dist(a[:2], b[:2]) for a, b in zip(l, l[1:]))
exec(sys.argv[2])
PY
}

# png_check FILE PYTHON: PYTHON runs with w, h and px(x, y) -> (r, g, b).
png_check() {
    python3 - "$1" "$2" <<'PY' || fail "picture check failed: $2"
import struct, sys, zlib
data = open(sys.argv[1], "rb").read()
assert data[:8] == b"\x89PNG\r\n\x1a\n", "not a PNG"
pos, idat = 8, b""
while pos < len(data):
    n, kind = struct.unpack(">I4s", data[pos:pos + 8])
    body = data[pos + 8:pos + 8 + n]
    pos += 12 + n
    if kind == b"IHDR":
        w, h, depth, ctype = struct.unpack(">IIBB", body[:10])
    elif kind == b"IDAT":
        idat += body
assert depth == 8, depth
bpp = {2: 3, 6: 4}[ctype]
raw, stride, rows, prev, i = zlib.decompress(idat), w * bpp, [], bytearray(w * bpp), 0
for y in range(h):
    f, line = raw[i], bytearray(raw[i + 1:i + 1 + stride])
    i += 1 + stride
    for x in range(stride):
        a = line[x - bpp] if x >= bpp else 0
        b = prev[x]
        c = prev[x - bpp] if x >= bpp else 0
        if f == 1: line[x] = (line[x] + a) & 255
        elif f == 2: line[x] = (line[x] + b) & 255
        elif f == 3: line[x] = (line[x] + (a + b) // 2) & 255
        elif f == 4:
            p = a + b - c
            pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
            line[x] = (line[x] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 255
    rows.append(line)
    prev = line
px = lambda x, y: tuple(rows[y][x * bpp:x * bpp + 3])
dark = lambda x, y: sum(px(x, y)) < 150
yellow = lambda x, y: px(x, y)[0] > 200 and px(x, y)[1] > 200 and px(x, y)[2] < 100
coloured = lambda x, y: max(px(x, y)) - min(px(x, y)) > 60
exec(sys.argv[2])
PY
}

run_case() {
    declare -F "case_$case_name" >/dev/null || fail "no such case"
    "case_$case_name"
    echo "PASS ($case_name)"
}

# A grey PNG chessboard: 8 x 6 squares (7 x 5 inner corners)
# seen at a slant, so that one view fixes the camera.
write_board() {
    python3 - "$1" <<'PY'
import sys, grey_png
# A 8 x 6 board of 40 px squares seen at a slant: each image pixel (x, y)
# maps back to board coordinates through a fixed homography.
w, h, s = 480, 400, 40
G = [[1.0, 0.08, -60.0], [0.03, 1.0, -50.0], [0.0006, 0.0004, 1.0]]
rows = []
for y in range(h):
    row = []
    for x in range(w):
        d = G[2][0] * x + G[2][1] * y + G[2][2]
        u = (G[0][0] * x + G[0][1] * y + G[0][2]) / d
        v = (G[1][0] * x + G[1][1] * y + G[1][2]) / d
        inside = 0 <= u < 8 * s and 0 <= v < 6 * s
        row.append(0 if inside and (int(u // s) + int(v // s)) % 2 == 0 else 255)
    rows.append(row)
grey_png.write(sys.argv[1], rows)
PY
}

# A PNG whose header claims W x H pixels (no pixel data follows).
write_png_header() {
    python3 -c 'import sys, grey_png; grey_png.write_header_only(sys.argv[1], int(sys.argv[2]), int(sys.argv[3]))' "$1" "$2" "$3"
}
