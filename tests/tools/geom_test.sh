#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# vexo geom hatch and merge: results checked against the geometry of the
# input (python3 reads the text the tool writes), pictures decoded, bad
# text reported by line.
source "$(dirname "$0")/tool_lib.sh"

square() {
    printf '0 0\n10 0\n10 10\n0 10\n' >"$1"
}

case_hatch_square_gives_one_line_per_spacing() {
    square sq.txt
    run "$vexo" -q geom hatch sq.txt h.txt --spacing 1
    expect_rc 0
    # Lines at y = 0 .. 9 (the top edge is outside the half-open region),
    # each from x = 0 to x = 10.
    check_lines h.txt '
assert len(lines) == 10, len(lines)
assert sorted(l[0][1] for l in lines) == [float(k) for k in range(10)], [l[0] for l in lines]
for l in lines:
    assert len(l) == 2 and l[0][1] == l[1][1], l
    assert sorted([l[0][0], l[1][0]]) == [0.0, 10.0], l'
}

case_hatch_at_90_degrees_runs_along_y() {
    square sq.txt
    run "$vexo" -q geom hatch sq.txt h.txt --spacing 2.5 --angle 90
    expect_rc 0
    # Angles turn with the single-precision pi, so the lines lean by about
    # 4.4e-8 rad: x changes by 4.4e-7 over the height of 10.  The line at
    # x = 0 lies on the edge the half-open rule leaves out.
    check_lines h.txt '
assert len(lines) == 4, len(lines)
for l in lines:
    assert abs(l[0][0] - l[1][0]) < 1e-6, l
    assert abs(length(l) - 10) < 1e-6, l
xs = sorted(l[0][0] for l in lines)
assert all(abs(a - b) < 1e-6 for a, b in zip(xs, [2.5, 5.0, 7.5, 10.0])), xs'
}

case_hatch_leaves_the_hole_empty() {
    square sq.txt
    printf '\n3 3\n7 3\n7 7\n3 7\n' >>sq.txt
    run "$vexo" -q geom hatch sq.txt h.txt --spacing 1
    expect_rc 0
    # Rows 3..6 are cut by the hole: 6 full lines of 10 and 8 pieces of 3.
    check_lines h.txt '
lens = sorted(round(length(l), 9) for l in lines)
assert lens == [3.0] * 8 + [10.0] * 6, lens
for l in lines:
    mid = ((l[0][0] + l[1][0]) / 2, l[0][1])
    assert not (3 < mid[0] < 7 and 3 <= mid[1] < 7), l'
}

case_hatch_inset_shortens_every_line() {
    square sq.txt
    run "$vexo" -q geom hatch sq.txt h.txt --spacing 1 --inset 2
    expect_rc 0
    # The square shrunk by 2: rows y = 2 .. 7, x from 2 to 8 (to the
    # inset's grid precision).
    check_lines h.txt '
assert len(lines) == 6, len(lines)
for l in lines:
    assert abs(length(l) - 6) < 1e-6, l
    assert abs(min(l[0][0], l[1][0]) - 2) < 1e-6, l'
}

case_hatch_cross_adds_a_turned_pass() {
    square sq.txt
    run "$vexo" -q geom hatch sq.txt h.txt --spacing 1 --cross 2
    expect_rc 0
    check_lines h.txt '
horizontal = [l for l in lines if abs(l[0][1] - l[-1][1]) < 1e-6]
vertical = [l for l in lines if abs(l[0][0] - l[-1][0]) < 1e-6]
assert len(horizontal) == 10 and len(vertical) == 10, (len(horizontal), len(vertical))'
}

case_hatch_contour_after_ends_with_the_closed_ring() {
    square sq.txt
    run "$vexo" -q geom hatch sq.txt h.txt --spacing 5 --contour after
    expect_rc 0
    check_lines h.txt '
ring = lines[-1]
assert [p[:2] for p in ring] == [(0, 0), (10, 0), (10, 10), (0, 10), (0, 0)], ring
assert len(lines) == 3, len(lines)'
}

case_summary_matches_the_written_lines() {
    square sq.txt
    run "$vexo" geom hatch sq.txt h.txt --spacing 0.7 --angle 30 --json
    expect_rc 0
    cp out summary.json
    check_lines h.txt '
import json
d = json.load(open("summary.json"))
jumps = sum(math.dist(a[-1][:2], b[0][:2]) for a, b in zip(lines, lines[1:]))
assert d["polylines"] == len(lines), (d, len(lines))
assert d["points"] == sum(map(len, lines)), d
assert abs(d["mark_length"] - sum(map(length, lines))) < 1e-9, (d, sum(map(length, lines)))
assert abs(d["jump_length"] - jumps) < 1e-9, (d, jumps)'
}

case_summary_line_unless_quiet() {
    square sq.txt
    run "$vexo" geom hatch sq.txt h.txt --spacing 1
    expect_rc 0
    expect_out "h.txt: 10 polylines, 20 points, mark length 100, jump length"
    run "$vexo" -q --force geom hatch sq.txt h.txt --spacing 1
    expect_rc 0
    [ ! -s out ] || fail "-q printed: $(cat out)"
}

case_text_to_standard_output() {
    square sq.txt
    run "$vexo" geom hatch sq.txt - --spacing 4
    expect_rc 0
    expect_no_err
    check_lines out 'assert len(lines) == 3 and [l[0][1] for l in lines] == [0, 4, 8], lines'
}

case_json_with_standard_output_is_a_usage_error() {
    square sq.txt
    run "$vexo" geom hatch sq.txt - --json
    expect_rc 2
    expect_err "OUT must be a file"
}

case_zero_spacing_is_a_usage_error() {
    square sq.txt
    run "$vexo" geom hatch sq.txt h.txt --spacing 0
    expect_rc 2
    [ ! -e h.txt ] || fail "h.txt written"
}

case_nothing_to_hatch_fails() {
    printf '0 0\n10 0\n' >line.txt
    run "$vexo" geom hatch line.txt h.txt
    expect_rc 1
    expect_err "the hatch is empty"
    [ ! -e h.txt ] || fail "h.txt written"
}

case_merge_joins_shuffled_pieces_into_one() {
    # A zigzag of 30 segments cut into pieces of 1..3 segments, shuffled,
    # every other one reversed.
    python3 - <<'PY'
import random
random.seed(5)
pts = [(i * 0.5, (i % 3) * 0.25) for i in range(31)]
open("zig.txt", "w").write("\n".join("%r %r" % p for p in pts) + "\n")
pieces, i = [], 0
while i < 30:
    n = min(random.randint(1, 3), 30 - i)
    pieces.append(pts[i:i + n + 1])
    i += n
random.shuffle(pieces)
pieces = [p[::-1] if k % 2 else p for k, p in enumerate(pieces)]
open("pieces.txt", "w").write("\n\n".join("\n".join("%r %r" % q for q in p) for p in pieces) + "\n")
PY
    run "$vexo" -q geom merge pieces.txt m.txt --tolerance 1e-9
    expect_rc 0
    check_lines m.txt '
zig = [tuple(map(float, l.split())) for l in open("zig.txt")]
assert len(lines) == 1, len(lines)
got = [p[:2] for p in lines[0]]
assert got == zig or got == zig[::-1], got'
}

case_merge_keeps_pieces_apart_beyond_the_tolerance() {
    printf '0 0\n1 0\n\n1.1 0\n2 0\n' >p.txt
    run "$vexo" -q geom merge p.txt m.txt --tolerance 0.05
    expect_rc 0
    check_lines m.txt 'assert len(lines) == 2, lines'
    run "$vexo" -q --force geom merge p.txt m.txt --tolerance 0.15
    expect_rc 0
    check_lines m.txt 'assert len(lines) == 1 and len(lines[0]) == 3, lines'
}

case_merge_order_starts_nearest_the_pen() {
    printf '0 0\n1 0\n\n10 10\n11 10\n\n5 5\n6 5\n' >p.txt
    run "$vexo" -q geom merge p.txt m.txt --tolerance 0 --order --start 12 10
    expect_rc 0
    check_lines m.txt '
assert [l[0][:2] for l in lines] == [(11, 10), (6, 5), (1, 0)], lines'
}

case_merge_start_without_order_is_a_usage_error() {
    printf '0 0\n1 0\n' >p.txt
    run "$vexo" geom merge p.txt m.txt --tolerance 0 --start 1 1
    expect_rc 2
    expect_err "need --order"
}

case_png_has_the_requested_size() {
    square sq.txt
    run "$vexo" -q geom hatch sq.txt h.png --spacing 1 --size 321
    expect_rc 0
    python3 - <<'PY' || fail "h.png is not a 321x321 PNG"
import struct
d = open("h.png", "rb").read()
assert d[:8] == b"\x89PNG\r\n\x1a\n", d[:8]
assert d[12:16] == b"IHDR", d[12:16]
w, h = struct.unpack(">II", d[16:24])
assert (w, h) == (321, 321), (w, h)
PY
}

case_png_draws_the_result_bold_and_dark() {
    # Lines at y = 0 and 5 only: dark pixels along two rows where they belong.
    square sq.txt
    run "$vexo" -q geom hatch sq.txt h.png --spacing 5 --size 200
    expect_rc 0
    png_check h.png '
dark_rows = [y for y in range(h) if sum(sum(px(x, y)) < 250 for x in range(w)) > w // 2]
# The square fills 90 % of the picture (18 px per unit) around its centre
# at row 100, y up: the line y = 5 at row 100, y = 0 at row 190, each
# 2 px thick, so its first dark row is one above.
bands = [y for k, y in enumerate(dark_rows) if k == 0 or dark_rows[k - 1] != y - 1]
assert len(bands) == 2, dark_rows
assert abs(bands[0] - 99) <= 1 and abs(bands[1] - 189) <= 1, bands'
}

case_svg_is_written() {
    printf '0 0\n1 0\n\n1 0\n1 1\n' >p.txt
    run "$vexo" -q geom merge p.txt m.svg --tolerance 0
    expect_rc 0
    [ -s m.svg ] || fail "m.svg empty"
    grep -q "<svg" m.svg || fail "m.svg has no <svg element: $(head -c 300 m.svg)"
}

case_existing_output_needs_force() {
    square sq.txt
    echo keep >h.txt
    run "$vexo" geom hatch sq.txt h.txt
    expect_rc 1
    expect_err "h.txt: exists (use --force to overwrite)"
    [ "$(cat h.txt)" = keep ] || fail "h.txt changed: $(head -c 200 h.txt)"
    run "$vexo" --force geom hatch sq.txt h.txt
    expect_rc 0
    check_lines h.txt 'assert len(lines) == 10, len(lines)'
}

case_bad_number_is_reported_with_its_line() {
    printf '0 0\n10 0\n# note\n10 ten\n' >bad.txt
    run "$vexo" geom hatch bad.txt h.txt
    expect_rc 1
    expect_err "vexo geom hatch: bad.txt: line 4: 'ten' is not a number"
}

case_nan_is_reported_with_its_line() {
    printf '0 0\n\nnan 1\n' >bad.txt
    run "$vexo" geom merge bad.txt m.txt --tolerance 0
    expect_rc 1
    expect_err "bad.txt: line 3: 'nan' is not finite"
}

case_wrong_count_is_reported_with_its_line() {
    printf '0 0\n1 1 1 1\n' >bad.txt
    run "$vexo" geom merge bad.txt m.txt --tolerance 0
    expect_rc 1
    expect_err "bad.txt: line 2: more than 3 numbers"
    printf '0 0\n\n7\n' >one.txt
    run "$vexo" geom merge one.txt m.txt --tolerance 0
    expect_rc 1
    expect_err "one.txt: line 3: 1 number, a point needs 2 or 3"
}

case_empty_input_fails() {
    printf '# nothing\n\n' >empty.txt
    run "$vexo" geom hatch empty.txt h.txt
    expect_rc 1
    expect_err "empty.txt: no points"
}

case_oversized_input_is_refused_unread() {
    truncate -s 300M big.txt
    run "$vexo" geom hatch big.txt h.txt
    expect_rc 1
    expect_err "big.txt: 300.0 MiB is larger than the limit of 256.0 MiB"
}

case_standard_input_is_read() {
    run "$vexo" geom merge - - --tolerance 0 <<'INPUT'
0 0
1 0

1 0
1 1
INPUT
    expect_rc 0
    check_lines out 'assert lines == [[(0, 0), (1, 0), (1, 1)]], lines'
}

run_case
