#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Nothing is lost silently: formats detected by the final extension and
# checked against the content, tables checked before writing, outputs
# written whole or not at all, write errors on stdout reported.
source "$(dirname "$0")/tool_lib.sh"

case_round_trip_within_resolution() {
    "$vexo" -q corr sample s.kxo
    "$vexo" -q corr convert s.kxo s.ctb
    "$vexo" -q corr convert s.ctb s.cor --field 110
    "$vexo" -q corr convert s.cor back.kxo
    [ "$(stat -c %s s.cor)" -eq 33840 ] || fail "cor size $(stat -c %s s.cor)"
    [ "$(stat -c %s s.kxo)" -eq 50712 ] || fail "kxo size"
    run "$vexo" corr diff s.kxo s.ctb --tolerance 0.71
    expect_rc 0
    run "$vexo" corr diff s.ctb back.kxo --tolerance 0.71
    expect_rc 0
}

case_final_extension_decides() {
    "$vexo" -q corr neutral n.ctb
    cp n.ctb head.ctb.kxo
    run "$vexo" corr info head.ctb.kxo
    expect_rc 1
    expect_err "head.ctb.kxo: named .kxo but the content does not fit: no kxo header"
    run "$vexo" corr info head.ctb.kxo --format ctb
    expect_rc 0
}

case_kxo_named_ctb_refused() {
    "$vexo" -q corr neutral n.kxo
    cp n.kxo wrong.ctb
    run "$vexo" corr info wrong.ctb
    expect_rc 1
    expect_err "wrong.ctb: named .ctb but the content does not fit: labelled as another format"
}

case_no_extension_refused() {
    "$vexo" -q corr neutral n.kxo
    cp n.kxo table.bin
    run "$vexo" corr info table.bin
    expect_rc 1
    expect_err "table.bin: no correction file extension"
}

case_ctb_to_kxo_writes_z_zero() {
    "$vexo" -q corr sample s.kxo
    "$vexo" -q corr convert s.kxo s.ctb
    run "$vexo" corr info s.ctb
    expect_out "z:          no z"
    "$vexo" -q corr convert s.ctb back.kxo
    run "$vexo" corr info back.kxo
    expect_out "z range:    0.000 .. 0.000"
}

case_cor_keeps_its_scale() {
    "$vexo" -q corr sample s.cor --field 110
    "$vexo" -q corr convert s.cor again.cor
    run "$vexo" corr info again.cor
    expect_rc 0
    expect_out "scale:      595.781818 units/mm (field 109.998 mm)"
    expect_out "max [0-9.]* mm"
}

case_out_of_range_refused_with_worst_node() {
    "$vexo" -q corr sample wide.cor --pincushion 0.05
    run "$vexo" corr convert wide.cor wide.ctb
    expect_rc 1
    # Corner (row 64, column 0): -32767.5 * 1.1 - 150 (the shear), as a
    # whole-unit ".cor" delta: -36194.5, 3427 units beyond -32767.5.
    expect_err "wide.ctb: not written: node (row 64, column 0) x = -36194.500 lies 3427.000 units outside the ctb range -32767.5 .. 32767.5"
    [ ! -e wide.ctb ] || fail "wide.ctb written"
}

case_out_of_range_written_with_force() {
    "$vexo" -q corr sample wide.cor --pincushion 0.05
    run "$vexo" --force corr convert wide.cor wide.ctb
    expect_rc 0
    expect_err "warning: wide.ctb: node (row 64, column 0)"
}

case_folded_table_refused() {
    "$vexo" -q corr sample s.kxo
    run "$vexo" corr convert s.kxo x.kxo --scale 0.5 --scale 3
    expect_rc 1
    expect_err "x.kxo: not written: node (row 64, column 64) folds back by"
}

case_existing_output_needs_force() {
    "$vexo" -q corr neutral n.kxo
    "$vexo" -q corr sample s.kxo
    cp s.kxo keep.kxo
    run "$vexo" corr convert n.kxo s.kxo
    expect_rc 1
    expect_err "s.kxo: exists (use --force to overwrite)"
    same_file s.kxo keep.kxo
    run "$vexo" corr convert n.kxo s.kxo --force
    expect_rc 0
    same_file s.kxo n.kxo
}

case_missing_folder_named() {
    "$vexo" -q corr neutral n.kxo
    run "$vexo" corr convert n.kxo nofolder/x.kxo
    expect_rc 1
    expect_err "nofolder/x.kxo: cannot write: folder 'nofolder' does not exist"
}

case_unwritable_format_refused() {
    "$vexo" -q corr neutral n.kxo
    run "$vexo" corr convert n.kxo x.xml
    expect_rc 2
    expect_err "xml files cannot be written"
}

case_stdin_and_stdout() {
    "$vexo" -q corr sample s.kxo
    "$vexo" corr convert - copy.kxo <s.kxo >/dev/null || fail "stdin convert"
    same_file s.kxo copy.kxo
    "$vexo" corr convert s.kxo - --to kxo >piped.kxo || fail "stdout convert"
    same_file s.kxo piped.kxo
    run bash -c "'$vexo' corr convert s.kxo - --to ctb | '$vexo' corr info - --format ctb"
    expect_rc 0
    expect_out "format:     ctb (2)"
}

case_stdin_without_labels_needs_format() {
    "$vexo" -q corr neutral n.ctb
    run bash -c "'$vexo' corr info - < n.ctb"
    expect_rc 2
    expect_err "standard input: give its format with --format"
}

case_full_stdout_is_failure() {
    "$vexo" -q corr neutral n.kxo
    [ -w /dev/full ] || skip "no /dev/full"
    run bash -c "'$vexo' corr info n.kxo > /dev/full"
    expect_rc 1
    expect_err "cannot write to standard output"
    run bash -c "'$vexo' corr convert n.kxo - --to kxo > /dev/full"
    expect_rc 1
    expect_err "cannot write to standard output"
}

case_fifo_refused_without_hang() {
    mkfifo pipe.kxo
    run timeout 20 "$vexo" corr info pipe.kxo
    expect_rc 1
    expect_err "pipe.kxo: not a regular file"
}

case_huge_file_names_the_limit() {
    truncate -s 1G huge.kxo
    run "$vexo" corr info huge.kxo
    expect_rc 1
    expect_err "huge.kxo: 1024.0 MiB is larger than the limit of 64.0 MiB"
}

# A write that fails midway (a full file system) keeps the old file byte for
# byte and leaves no temporary file.
case_failed_write_keeps_old_file() {
    [ "$(id -u)" -eq 0 ] || skip "mounting a small tmpfs needs root"
    mkdir small
    mount -t tmpfs -o size=96k tmpfs small 2>/dev/null || skip "cannot mount a tmpfs here"
    "$vexo" -q corr neutral small/table.kxo
    cp small/table.kxo before.kxo
    "$vexo" -q corr sample s.kxo
    run "$vexo" --force corr convert s.kxo small/table.kxo
    local status=$rc
    local left
    left=$(ls -A small)
    cmp -s small/table.kxo before.kxo
    local same=$?
    umount small
    rc=$status
    expect_rc 1
    expect_err "small/table.kxo: cannot write"
    [ "$same" -eq 0 ] || fail "the old file changed"
    [ "$left" = "table.kxo" ] || fail "left behind: $left"
}

run_case
