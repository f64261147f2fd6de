#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# vexo geom pattern: dots and dashes along polylines given as text, checked
# against positions worked out by hand (python3 reads the text written).
source "$(dirname "$0")/tool_lib.sh"

# A closed square of side 10 (arc length 40).
closed_square() {
    printf '0 0\n10 0\n10 10\n0 10\n0 0\n' >"$1"
}

case_dots_on_a_square_take_each_corner_once() {
    closed_square sq.txt
    run "$vexo" -q geom pattern sq.txt d.txt --pitch 2.5
    expect_rc 0
    check_lines d.txt '
assert len(lines) == 17, len(lines)
assert all(len(l) == 1 for l in lines), lines
pts = [l[0][:2] for l in lines]
assert len(set(pts)) == 16 and pts[0] == pts[-1] == (0, 0), pts
assert (10, 0) in pts and (10, 10) in pts and (0, 10) in pts, pts'
}

case_ring_puts_one_dot_on_the_seam() {
    closed_square sq.txt
    run "$vexo" -q geom pattern sq.txt d.txt --pitch 2.5 --ring
    expect_rc 0
    check_lines d.txt 'assert len(lines) == 16 and lines[-1][0][:2] == (0, 2.5), lines[-1]'
}

case_fit_hits_both_ends() {
    printf '0 0\n10 0\n' >l.txt
    run "$vexo" -q geom pattern l.txt d.txt --pitch 3 --fit
    expect_rc 0
    check_lines d.txt '
xs = [l[0][0] for l in lines]
assert len(xs) == 4 and xs[0] == 0 and xs[-1] == 10, xs
assert abs(xs[1] - 10 / 3) < 1e-12, xs'
}

case_phase_places_the_first_dot() {
    printf '0 0\n10 0\n' >l.txt
    run "$vexo" -q geom pattern l.txt d.txt --pitch 4 --phase 1
    expect_rc 0
    check_lines d.txt 'assert [l[0][0] for l in lines] == [1, 5, 9], lines'
}

case_dashes_follow_the_array() {
    printf '0 0 0\n10 0 5\n' >l.txt
    run "$vexo" -q geom pattern l.txt d.txt --dash 2,1 --2d
    expect_rc 0
    check_lines d.txt '
assert [(l[0][0], l[-1][0]) for l in lines] == [(0, 2), (3, 5), (6, 8), (9, 10)], lines
assert all(abs(p[2] - p[0] / 2) < 1e-12 for l in lines for p in l), lines'
}

case_ring_joins_the_dash_across_the_seam() {
    closed_square sq.txt
    run "$vexo" -q geom pattern sq.txt d.txt --dash 3,2 --phase 1 --ring
    expect_rc 0
    check_lines d.txt '
assert len(lines) == 8, len(lines)
assert lines[-1] == [(0, 1), (0, 0), (2, 0)], lines[-1]
assert abs(sum(length(l) for l in lines) - 24) < 1e-9, [length(l) for l in lines]'
}

case_circle_dots_are_closed_circles_around_each_dot() {
    printf '0 0\n10 0\n' >l.txt
    run "$vexo" -q geom pattern l.txt d.txt --pitch 5 --circle 0.5 --steps 8
    expect_rc 0
    check_lines d.txt '
import math
assert len(lines) == 3 and all(len(l) == 9 for l in lines), [len(l) for l in lines]
for centre, l in zip((0, 5, 10), lines):
    assert l[0] == l[-1], l
    assert all(abs(math.dist(p[:2], (centre, 0)) - 0.5) < 1e-9 for p in l), (centre, l)'
}

case_json_reports_the_dashes() {
    closed_square sq.txt
    run "$vexo" geom pattern sq.txt d.txt --dash 3,2 --json
    expect_rc 0
    json_check 'assert d["polylines"] == 8 and abs(d["mark_length"] - 24) < 1e-9, d'
}

case_svg_picture_is_written() {
    closed_square sq.txt
    run "$vexo" -q geom pattern sq.txt d.svg --pitch 1
    expect_rc 0
    grep -q '<svg' d.svg || fail "d.svg is not an SVG picture"
}

case_pitch_or_dash_is_required() {
    closed_square sq.txt
    run "$vexo" geom pattern sq.txt d.txt
    expect_rc 2
    expect_err "give --pitch (dots) or --dash (dashes)"
}

case_pitch_and_dash_exclude_each_other() {
    closed_square sq.txt
    run "$vexo" geom pattern sq.txt d.txt --pitch 1 --dash 1,1
    expect_rc 2
    expect_err "excludes"
}

case_pitch_at_the_tolerance_is_a_usage_error() {
    closed_square sq.txt
    run "$vexo" geom pattern sq.txt d.txt --pitch 1e-7
    expect_rc 2
    expect_err "above 1e-7"
    [ ! -e d.txt ] || fail "d.txt written"
}

case_dash_of_zero_period_is_a_usage_error() {
    closed_square sq.txt
    run "$vexo" geom pattern sq.txt d.txt --dash 0,0
    expect_rc 2
    expect_err "add up to more than 1e-7"
}

case_seventeen_dash_lengths_are_a_usage_error() {
    closed_square sq.txt
    run "$vexo" geom pattern sq.txt d.txt --dash 1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1
    expect_rc 2
    expect_err "at most 16 lengths"
}

case_result_beyond_the_limit_fails() {
    printf '0 0\n1000000 0\n' >l.txt
    run "$vexo" geom pattern l.txt d.txt --pitch 1e-5
    expect_rc 1
    expect_err "VEXO_ERROR_NO_MEMORY"
    [ ! -e d.txt ] || fail "d.txt written"
}
