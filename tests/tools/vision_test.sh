#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# calib and pattern: records and keypoint files checked when read, pictures
# checked before decoding, intrinsics and reprojection error printed.
source "$(dirname "$0")/tool_lib.sh"

# A grey PNG of random 8-pixel blocks (a pattern no part of which repeats).
write_texture() {
    python3 - "$1" <<'PY'
import random, sys, grey_png
random.seed(7)
w, h = 320, 240
cells = [[random.randrange(256) for _ in range(w // 8)] for _ in range(h // 8)]
grey_png.write(sys.argv[1], [[cells[y // 8][x // 8] for x in range(w)] for y in range(h)])
PY
}

case_board_prints_intrinsics_and_error() {
    write_board board.png
    run "$vexo" calib board board.png 7 5 cam.rec
    expect_rc 0
    expect_out "corners:      35 found"
    expect_out "camera:       fx [0-9]"
    expect_out "distortion:   k1"
    expect_out "reprojection: [0-9.]* pixels RMS"
    [ "$(stat -c %s cam.rec)" -eq 216 ] || fail "record size $(stat -c %s cam.rec)"
}

case_board_json() {
    write_board board.png
    run "$vexo" calib board board.png 7 5 cam.rec --json
    expect_rc 0
    json_check '
assert d["corners_found"] == 35, d["corners_found"]
assert d["fx"] > 0 and d["fy"] > 0, (d["fx"], d["fy"])
assert 0 <= d["reprojection_error_px"] < 1.5, d["reprojection_error_px"]
assert (d["width"], d["height"]) == (480, 400), (d["width"], d["height"])
assert len(d["camera"]) == 9 and d["camera"][8] == 1.0, d["camera"]'
}

case_info_of_a_record() {
    write_board board.png
    "$vexo" -q calib board board.png 7 5 cam.rec >/dev/null
    run "$vexo" calib info cam.rec --json
    expect_rc 0
    json_check 'assert (d["width"], d["height"]) == (480, 400) and d["reprojection_error_px"] is None, d'
    run "$vexo" calib info cam.rec --image board.png --board 7 5
    expect_rc 0
    expect_out "reprojection: [0-9.]* pixels RMS on board.png"
}

case_any_216_bytes_is_not_a_record() {
    head -c 216 /dev/zero >zero.rec
    write_board board.png
    run "$vexo" calib apply zero.rec board.png out.png
    expect_rc 1
    expect_err "zero.rec: not a usable calibration record: size 0 x 0 is outside 1..8192"
    [ ! -e out.png ] || fail "out.png written"
}

case_record_of_wrong_size() {
    head -c 100 /dev/zero >short.rec
    run "$vexo" calib info short.rec
    expect_rc 1
    expect_err "short.rec: not a calibration record (100 bytes where a record has 216)"
}

case_board_not_found_names_image() {
    write_board board.png
    run "$vexo" calib board board.png 9 9 cam.rec
    expect_rc 1
    expect_err "board.png: chessboard of 9 x 9 inner corners not found"
}

case_not_a_picture_one_clean_line() {
    printf 'hello' >junk.png
    run "$vexo" calib board junk.png 7 5 cam.rec
    expect_rc 1
    [ "$(wc -l <err)" -eq 1 ] || fail "more than one line: $(cat err)"
    expect_err "^vexo calib board: junk.png: not a PNG, JPEG or BMP picture"
}

case_fifo_picture_refused_without_hang() {
    mkfifo pipe.png
    run timeout 20 "$vexo" pattern teach pipe.png 0 0 10 10 out.kp
    expect_rc 1
    expect_err "pipe.png: not a regular file"
}

case_too_large_picture_names_size_and_limit() {
    write_png_header big.png 16384 16384
    run "$vexo" pattern teach big.png 0 0 100 100 out.kp
    expect_rc 1
    expect_err "big.png: 16384 x 16384 pixels; the limit is [0-9]* pixels"
}

case_zero_keypoints_refused() {
    printf 'VXKP\0\0\0\0\0\0\0\0' >zero.kp
    write_board board.png
    run "$vexo" pattern find zero.kp board.png board.png
    expect_rc 1
    expect_err "zero.kp: holds 0 keypoints; a recogniser needs at least 3"
}

case_damaged_keypoint_file() {
    printf 'VXKP\0\0\0\0\5\0\0\0abc' >bad.kp
    write_board board.png
    run "$vexo" pattern find bad.kp board.png board.png
    expect_rc 1
    expect_err "bad.kp: damaged: 15 bytes for 5 keypoints (expected 152)"
}

case_teach_and_find_json() {
    write_texture tex.png
    "$vexo" -q pattern teach tex.png 40 40 280 200 tex.kp --detector orb || fail "teach"
    run "$vexo" pattern find tex.kp tex.png tex.png --json
    expect_rc 0
    json_check 'assert abs(d["x"]) < 1 and abs(d["y"]) < 1 and abs(d["rotation"]) < 1, d'
}

case_find_reports_matches_inliers_scale() {
    grep -q VEXO_RECOGNISER_ROBUST "$here/../../include/vexo.h" || skip "no robust recogniser"
    write_texture tex.png
    "$vexo" -q pattern teach tex.png 40 40 280 200 tex.kp --detector orb || fail "teach"
    run "$vexo" pattern find tex.kp tex.png tex.png --robust --json
    expect_rc 0
    json_check '
assert d["matches"] >= 3 and 0 < d["inliers"] <= d["matches"], d
assert abs(d["scale"] - 1) < 0.01, d'
    run "$vexo" pattern find tex.kp tex.png tex.png
    expect_rc 0
    expect_out "scale 1.0[0-9]*  matches [0-9]*  inliers [0-9]*"
}

run_case
