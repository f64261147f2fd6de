#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# corr grid, from-grid and from-photo: the dot grid to mark, tables from a
# measured grid and from a photo of the marks, and what they refuse.
source "$(dirname "$0")/tool_lib.sh"

# A 3 x 3 grid at 10 mm pitch as marks measured exactly where they were
# meant to land, then changed by the sed expression $2 (if any).
write_marks() {
    printf '# nominal_x nominal_y measured_x measured_y\n' >"$1"
    for y in -10 0 10; do
        for x in -10 0 10; do
            printf '%s %s %s %s\n' "$x" "$y" "$x" "$y" >>"$1"
        done
    done
    if [ $# -gt 1 ]; then sed -i "$2" "$1"; fi
}

# A grey PNG of an N x N grid of light discs (radius 5 px, 40 px apart,
# turned by 3 degrees), drawn here with 4 x 4 supersampling; the disc with
# index SKIP (if given) left out.
write_dots() {
    python3 - "$1" "$2" "${3:--1}" <<'PY'
import math, sys, grey_png
n, skip = int(sys.argv[2]), int(sys.argv[3])
w = h = 40 * n + 40
t = math.radians(3)
centres = []
for i in range(n):
    for j in range(n):
        if i * n + j == skip:
            continue
        x, y = (j - (n - 1) / 2) * 40, (i - (n - 1) / 2) * 40
        centres.append((w / 2 + x * math.cos(t) - y * math.sin(t) + 0.3,
                        h / 2 + x * math.sin(t) + y * math.cos(t) - 0.2))
grey = [[30.0] * w for _ in range(h)]
for cx, cy in centres:
    for py in range(int(cy) - 7, int(cy) + 8):
        for px in range(int(cx) - 7, int(cx) + 8):
            inside = sum(((px - 0.5 + (a + 0.5) / 4 - cx) ** 2 +
                          (py - 0.5 + (b + 0.5) / 4 - cy) ** 2) <= 25
                         for a in range(4) for b in range(4))
            grey[py][px] = 30 + 190 * inside / 16
grey_png.write(sys.argv[1], grey)
PY
}

need_photo() {
    # Help after an unknown word still exits 0, so the list is read instead.
    "$vexo" corr --help 2>/dev/null | grep -q "^  from-photo " ||
        skip "tool built without the vision groups"
}

case_grid_text_lists_the_marks_row_by_row() {
    run "$vexo" corr grid g.txt --grid 3 --pitch 10
    expect_rc 0
    [ "$(grep -c . g.txt)" = 9 ] || fail "expected 9 points: $(cat g.txt)"
    [ "$(grep . g.txt | sed -n '1p;2p;4p' | tr '\n' ,)" = "-10 -10,0 -10,-10 0," ] ||
        fail "not row by row from the lowest y: $(cat g.txt)"
}

case_grid_svg_draws_one_circle_per_mark() {
    run "$vexo" corr grid g.svg --grid 4 --pitch 5 --dot-radius 0.5
    expect_rc 0
    [ "$(grep -c '<path' g.svg)" = 16 ] || fail "expected 16 circles: $(head -c 600 g.svg)"
}

case_grid_refuses_a_one_mark_grid() {
    run "$vexo" corr grid g.txt --grid 1 --pitch 10
    expect_rc 2
}

case_from_grid_perfect_measurement_is_the_neutral_table() {
    write_marks m.txt
    "$vexo" corr neutral n.kxo >/dev/null 2>&1 || fail "corr neutral failed"
    run "$vexo" corr from-grid m.txt t.kxo
    expect_rc 0
    same_file n.kxo t.kxo
}

case_from_grid_moves_a_node_against_its_error() {
    # The corner mark at (10, 10) landed 0.5 mm right; along the top row
    # the error grows from 0 at x = 0 to 0.5 at x = 10, that is 0.05 x, so
    # a spot at x = 10 needs the neutral output of p with p + 0.05 p = 10
    # (20 mm field).
    write_marks m.txt 's/^10 10 10 10$/10 10 10.5 10/'
    run "$vexo" corr from-grid m.txt t.kxo
    expect_rc 0
    printf '10 10\n' >p.txt
    run "$vexo" corr lookup t.kxo --field 20 --input p.txt
    expect_rc 0
    python3 -c "
import sys
x, y = map(float, open('out').read().split())
assert abs(x - 10 / 1.05 / 20 * 65535) < 0.01 and abs(y - 32767.5) < 0.01, (x, y)
" || fail "lookup gave $(cat out)"
}

case_from_grid_json_reports_the_residual() {
    write_marks m.txt 's/^0 0 0 0$/0 0 0.3 -0.4/'
    run "$vexo" corr from-grid m.txt t.kxo --json
    expect_rc 0
    json_check "assert d['grid'] == 3, d; assert abs(d['residual_max_mm'] - 0.5) < 1e-12, d; assert d['field_mm'] == 20, d"
}

case_from_grid_bad_line_is_reported_with_its_number() {
    write_marks m.txt '3s/.*/1 2 3/'
    run "$vexo" corr from-grid m.txt t.kxo
    expect_rc 1
    expect_err "m.txt: line 3: 3 numbers"
    [ ! -e t.kxo ] || fail "a table was written"
}

case_from_grid_refuses_marks_that_are_not_a_square_grid() {
    write_marks m.txt '$d'
    run "$vexo" corr from-grid m.txt t.kxo
    expect_rc 1
    expect_err "8 marks do not make an n x n grid"
}

case_from_grid_refuses_a_repeated_nominal_place() {
    write_marks m.txt 's/^10 10 10 10$/0 0 0 0/'
    run "$vexo" corr from-grid m.txt t.kxo
    expect_rc 1
    expect_err "m.txt: line 10: nominal place 0 0 already given on line 6"
}

case_from_grid_refuses_a_fourth_x_value() {
    write_marks m.txt 's/^10 10 10 10$/5 10 5 10/'
    run "$vexo" corr from-grid m.txt t.kxo
    expect_rc 1
    expect_err "the nominal places have 4 x values and 3 y values"
}

case_from_grid_refuses_a_folded_measurement() {
    write_marks m.txt 's/^0 0 0 0$/0 0 12 0/'
    run "$vexo" corr from-grid m.txt t.kxo
    expect_rc 1
    expect_err "folds"
}

case_from_grid_on_a_base_keeps_the_base_for_a_perfect_measurement() {
    write_marks m.txt
    "$vexo" corr base b.kxo --field 20 --distance 100 --mirror-gap 10 >/dev/null 2>&1 ||
        fail "corr base failed"
    run "$vexo" corr from-grid m.txt t.kxo --base b.kxo
    expect_rc 0
    same_file b.kxo t.kxo
}

case_from_photo_measures_a_perfect_grid() {
    need_photo
    write_dots p.png 5
    run "$vexo" corr from-photo p.png t.kxo --grid 5 --pitch 8 --json
    expect_rc 0
    json_check "assert d['dots'] == 25, d; assert d['residual_max_mm'] < 0.02, d; assert abs(d['rotation_degrees'] + 3) < 0.05, d; assert abs(d['mm_per_pixel'] - 0.2) < 1e-3, d"
}

case_from_photo_reports_a_missing_mark() {
    need_photo
    write_dots p.png 5 7
    run "$vexo" corr from-photo p.png t.kxo --grid 5 --pitch 8
    expect_rc 1
    expect_err "found 24 dots, the grid has 25: a mark is missing"
    [ ! -e t.kxo ] || fail "a table was written"
}

case_from_photo_draws_the_found_dots() {
    need_photo
    write_dots p.png 3
    run "$vexo" corr from-photo p.png t.kxo --grid 3 --pitch 8 --dots-png d.png
    expect_rc 0
    png_check d.png "assert (w, h) == (160, 160), (w, h)"
}

# With a calibration record the centres are straightened before they are
# fitted; the picture still rings each dot where it lies in the photo.
case_from_photo_draws_the_dots_where_the_photo_has_them() {
    need_photo
    write_dots p.png 3
    write_board board.png
    "$vexo" -q calib board board.png 7 5 cam.rec >/dev/null 2>&1 || fail "calib board failed"
    run "$vexo" corr from-photo p.png t.kxo --grid 3 --pitch 8 --record cam.rec --dots-png d.png
    [ -s d.png ] || fail "no picture written: $(cat err)"
    png_check d.png "
import math
t = math.radians(3)
red = lambda x, y: px(x, y)[0] > 150 and px(x, y)[1] < 100 and px(x, y)[2] < 100
for i in range(3):
    for j in range(3):
        x, y = (j - 1) * 40, (i - 1) * 40
        cx = 80 + x * math.cos(t) - y * math.sin(t) + 0.3
        cy = 80 + x * math.sin(t) + y * math.cos(t) - 0.2
        ring = [(round(cx + r * math.cos(a / 8)), round(cy + r * math.sin(a / 8)))
                for a in range(51) for r in (6, 7, 8)]
        assert sum(red(*p) for p in ring) > 20, (i, j, sum(red(*p) for p in ring))"
}

case_from_photo_refuses_a_picture_above_the_pixel_budget() {
    need_photo
    write_png_header big.png 4096 4096
    run "$vexo" corr from-photo big.png t.kxo --grid 3 --pitch 8
    expect_rc 1
    expect_err "the limit is"
}

run_case
