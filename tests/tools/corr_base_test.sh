#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# vexo corr base and corr lookup: tables of a head's geometry in every
# writable format, their values against the mirror angles computed here,
# and lookup as a line filter.
source "$(dirname "$0")/tool_lib.sh"

# A flat-field head: 110 mm field, 200 mm from the Y mirror, mirrors 15 mm apart.
head_table() {
    "$vexo" -q corr base "$1" --field 110 --distance 200 --mirror-gap 15 || fail "corr base $1"
}

# near FILE PYTHON: PYTHON runs with `rows`, the number pairs of FILE's
# point lines.
near() {
    python3 - "$1" "$2" <<'PY' || fail "check failed: $2; file: $(head -c 600 "$1")"
import math, sys
rows = [tuple(map(float, l.split())) for l in open(sys.argv[1])
        if l.strip() and not l.startswith("#")]
exec(sys.argv[2])
PY
}

base_readable_as() {
    head_table "b.$1"
    run "$vexo" corr info "b.$1"
    expect_rc 0
    expect_out "format:     $1"
    expect_out "monotonic:  rows yes, columns yes"
}

case_base_kxo_is_readable_by_info() {
    base_readable_as kxo
}

case_base_ctb_is_readable_by_info() {
    base_readable_as ctb
}

case_base_cor_is_readable_by_info() {
    base_readable_as cor
    expect_out "scale:      595.781818 units/mm"
}

case_base_to_names_the_format() {
    run "$vexo" -q corr base table.bin --to ctb --field 100 --distance 300 --mirror-gap 10
    expect_rc 0
    run "$vexo" corr info table.bin --format ctb
    expect_rc 0
    expect_out "monotonic:  rows yes, columns yes"
}

case_base_flat_field_angles_match_the_model() {
    head_table b.kxo
    printf '55 0\n0 55\n0 0\n' >in.txt
    run "$vexo" corr lookup b.kxo --field 110 --input in.txt
    expect_rc 0
    # The largest angle is the Y mirror's at the top and bottom rows,
    # atan(55 / 200) (the X mirror sees the longer path e + d); outputs are
    # angles over it at 32767.5.
    near out '
m = math.atan(55 / 200)
x_edge = math.atan(55 / (15 + 200)) / m * 32767.5
assert abs(rows[0][0] - x_edge) < 1e-3 and abs(rows[0][1]) < 1e-3, (rows[0], x_edge)
assert abs(rows[1][0]) < 1e-3 and abs(rows[1][1] - 32767.5) < 1e-3, rows[1]
assert rows[2] == (0.0, 0.0), rows[2]'
}

case_base_ftheta_angles_match_the_model() {
    run "$vexo" -q corr base f.kxo --field 100 --ftheta 160
    expect_rc 0
    printf '50 0\n' >in.txt
    run "$vexo" corr lookup f.kxo --field 100 --input in.txt
    expect_rc 0
    # r = f * theta; the beam direction's angles, largest over all nodes.
    near out '
def angles(x, y):
    r = math.hypot(x, y)
    t = r / 160
    u = (math.sin(t) * x / r, math.sin(t) * y / r, math.cos(t)) if r else (0, 0, 1)
    return math.atan2(u[0], math.hypot(u[1], u[2])), math.atan2(u[1], u[2])
m = max(max(map(abs, angles((c - 32) / 64 * 100, (r - 32) / 64 * 100)))
        for r in range(65) for c in range(65))
want = angles(50, 0)[0] / m * 32767.5
assert abs(rows[0][0] - want) < 1e-3 and abs(rows[0][1]) < 1e-3, (rows[0], want)'
}

case_base_needs_distance_and_gap_without_ftheta() {
    run "$vexo" corr base b.kxo --field 110 --distance 200
    expect_rc 2
    expect_err "are needed without --ftheta"
    [ ! -e b.kxo ] || fail "b.kxo written"
}

case_base_refuses_a_zero_distance() {
    run "$vexo" corr base b.kxo --field 110 --distance 0 --mirror-gap 1
    expect_rc 2
    [ ! -e b.kxo ] || fail "b.kxo written"
}

case_base_existing_output_needs_force() {
    echo keep >b.kxo
    run "$vexo" corr base b.kxo --field 110 --distance 200 --mirror-gap 15
    expect_rc 1
    expect_err "b.kxo: exists (use --force to overwrite)"
    [ "$(cat b.kxo)" = keep ] || fail "b.kxo replaced"
}

case_base_json_gives_the_full_scale_angle() {
    run "$vexo" corr base b.kxo --field 110 --distance 200 --mirror-gap 15 --json
    expect_rc 0
    # Output 32767.5 stands for the largest mechanical turn: half the beam's
    # atan(55 / 200), in degrees.
    json_check '
import math
want = math.degrees(math.atan(55 / 200)) / 2
assert abs(d["full_scale_degrees"] - want) < 1e-6, (d, want)
assert d["format"] == "kxo", d'
}

case_lookup_of_the_centre_gives_the_centre() {
    head_table b.kxo
    run "$vexo" corr lookup b.kxo --field 110 <<<'0 0'
    expect_rc 0
    [ "$(cat out)" = "0 0" ] || fail "centre looked up as '$(cat out)'"
}

case_lookup_of_a_neutral_table_is_the_identity() {
    "$vexo" -q corr neutral n.kxo
    printf '1000 -2000\n-32767.5 32767.5\n123.25 0.5\n' >in.txt
    run "$vexo" corr lookup n.kxo --input in.txt
    expect_rc 0
    # kxo keeps nodes to 1/30000 of a unit.
    near out '
want = [(1000, -2000), (-32767.5, 32767.5), (123.25, 0.5)]
assert all(abs(a - b) < 1e-4 for r, w in zip(rows, want) for a, b in zip(r, w)), rows'
}

case_lookup_then_inverse_round_trips() {
    head_table b.ctb
    python3 -c '
import random
random.seed(3)
for _ in range(200):
    print("%r %r" % (random.uniform(-55, 55), random.uniform(-55, 55)))' >in.txt
    "$vexo" corr lookup b.ctb --field 110 --input in.txt >fw.txt || fail "forward lookup"
    run "$vexo" corr lookup b.ctb --field 110 --inverse --input fw.txt
    expect_rc 0
    cp out back.txt
    near in.txt '
back = [tuple(map(float, l.split())) for l in open("back.txt")]
assert len(back) == len(rows), (len(back), len(rows))
worst = max(math.dist(a, b) for a, b in zip(rows, back))
assert worst < 1e-6, worst'
}

case_lookup_default_field_comes_from_the_cor_scale() {
    head_table b.cor
    printf '55 0\n' >in.txt
    "$vexo" corr lookup b.cor --field 110 --input in.txt >with.txt || fail "lookup --field"
    run "$vexo" corr lookup b.cor --input in.txt
    expect_rc 0
    same_file out with.txt
}

case_lookup_passes_blank_and_comment_lines() {
    "$vexo" -q corr neutral n.kxo
    printf '# header\n1 2\n\n  # indented\n3 4\n' >in.txt
    run "$vexo" corr lookup n.kxo --input in.txt
    expect_rc 0
    python3 - <<'PY' || fail "lines not passed through: $(cat out)"
got = open("out").read().split("\n")
assert got[0] == "# header" and got[2] == "" and got[3] == "  # indented", got
assert len(got) == 6 and got[5] == "", got
assert [round(float(v), 4) for v in got[1].split() + got[4].split()] == [1, 2, 3, 4], got
PY
}

case_lookup_bad_line_is_reported_with_its_number() {
    "$vexo" -q corr neutral n.kxo
    run "$vexo" corr lookup n.kxo <<<"$(printf '1 2\n# c\n3 y\n')"
    expect_rc 1
    expect_err "vexo corr lookup: standard input: line 3: 'y' is not a number"
    [ ! -s out ] || fail "printed before the bad line was found: $(cat out)"
}

case_lookup_table_and_lines_cannot_both_be_standard_input() {
    run "$vexo" corr lookup - </dev/null
    expect_rc 2
    expect_err "cannot both come from standard input"
}

run_case
