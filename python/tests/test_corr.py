# SPDX-License-Identifier: MIT
"""Correction tables through the package against direct library calls."""
import math
import os
import subprocess

import numpy as np
import pytest

import vexo
from vexo.corr import FORMATS

# One sample of every readable format: (format name, file under fuzz/corpus).
SAMPLES = [
    ("ucf", "corr_ucf/long_ucf"),
    ("ctb", "corr_ucf/ctb"),
    ("ct5", "corr_ct5/full_grid"),
    ("gcd", "corr_gcd/triples"),
    ("kxo", "corr_kxo/table"),
    ("xml", "corr_xml/full_grid"),
    ("txt", "corr_txt/full_grid"),
    ("crt", "corr_crt/quadruples"),
    ("cor", "corr_cor/integer_marker"),
    ("fcr", "corr_fcr/planes"),
    ("scor", "corr_scor/grid3"),
]

NEUTRAL_STEP = 65535.0 / 64.0


def test_samples_cover_every_readable_format():
    assert sorted(name for name, _ in SAMPLES) == sorted(n for n in FORMATS if n != "auto")


@pytest.mark.parametrize("name,sample", SAMPLES)
def test_load_by_name_equals_library_load(corpus, reference, name, sample):
    table = vexo.CorrTable.load(corpus / sample, name)
    status, expected = reference.load(corpus / sample, FORMATS[name])
    assert status == 1, f"reference load of {sample}: status {status}"
    assert bytes(table._record) == expected


def test_load_by_number_equals_load_by_dotted_name(corpus):
    by_number = vexo.CorrTable.load(corpus / "corr_gcd/triples", 4)
    by_name = vexo.CorrTable.load(corpus / "corr_gcd/triples", ".GCD")
    assert by_number == by_name


def test_load_by_extension(corpus, tmp_path):
    target = tmp_path / "head.kxo"
    target.write_bytes((corpus / "corr_kxo/table").read_bytes())
    table = vexo.CorrTable.load(target)
    assert table.info.format == "kxo"


def test_load_reports_kxo_header(corpus, reference):
    table = vexo.CorrTable.load(corpus / "corr_kxo/table", "kxo")
    reference.load(corpus / "corr_kxo/table", FORMATS["kxo"])
    head = reference.head()
    expected = (head[4], int.from_bytes(head[8:12], "little"))
    assert (table.info.head_tag, table.info.head_value) == expected


def _sample_table(corpus):
    """A table far from neutral, with z, every value finite."""
    return vexo.CorrTable.load(corpus / "corr_kxo/table", "kxo").scale(0.93).focus(160, 110, 100)


@pytest.mark.parametrize("kind", ["kxo", "ctb", "cor"])
def test_save_matches_library_writer_byte_for_byte(corpus, reference, tmp_path, kind):
    table = _sample_table(corpus)
    table.info = vexo.FileInfo()
    ours, theirs = tmp_path / f"ours.{kind}", tmp_path / f"theirs.{kind}"
    table.save(ours, kind, scale=0.0 if kind == "cor" else None)
    assert reference.save(bytes(table._record), theirs, kind) == 1
    assert ours.read_bytes() == theirs.read_bytes()


# A save writes what the load read beside the grid: the kxo header as the
# library's load left it, the cor sample's scale of 1000.
@pytest.mark.parametrize("kind,sample,extra", [
    ("kxo", "corr_kxo/table", lambda reference: {"head": reference.head()}),
    ("cor", "corr_cor/integer_marker", lambda reference: {"scale": 1000.0}),
], ids=["kxo_header", "cor_scale"])
def test_save_carries_what_the_load_read(corpus, reference, tmp_path, kind, sample, extra):
    table = vexo.CorrTable.load(corpus / sample, kind)
    table.save(tmp_path / f"out.{kind}")
    reference.load(corpus / sample, FORMATS[kind])
    reference.save(bytes(table._record), tmp_path / f"ref.{kind}", kind, **extra(reference))
    assert (tmp_path / f"out.{kind}").read_bytes() == (tmp_path / f"ref.{kind}").read_bytes()


def test_ctb_trailer_survives_round_trip(corpus, tmp_path):
    table = vexo.CorrTable.load(corpus / "corr_ucf/ctb", "ctb")
    original = (corpus / "corr_ucf/ctb").read_bytes()
    trailer = original[65 * 65 * 4:]
    assert table.info.trailer == (trailer or None)
    table.save(tmp_path / "copy.ctb")
    assert (tmp_path / "copy.ctb").read_bytes() == original


def test_neutral_cells_follow_the_grid():
    xyz = vexo.CorrTable.neutral().xyz
    grid = -32767.5 + np.arange(65) * NEUTRAL_STEP
    assert np.array_equal(xyz[:, :, 0], np.tile(grid, (65, 1))), xyz[0, :3, 0]
    assert np.array_equal(xyz[:, :, 1], np.tile(grid[:, None], (1, 65))), xyz[:3, 0, 1]


def test_xyz_is_a_view_of_table_memory():
    table = vexo.CorrTable()
    view = table.xyz
    address = view.__array_interface__["data"][0]
    assert address == vexo.corr.ctypes.addressof(table._record)
    assert view.strides == (65 * 32, 32, 8)


def test_writing_through_xyz_changes_saved_file(reference, tmp_path):
    table = vexo.CorrTable()
    table.xyz[10, 20] = (1234.5, -777.25, 42.0)
    table.save(tmp_path / "edited.kxo")
    status, saved = reference.load(tmp_path / "edited.kxo", FORMATS["kxo"])
    cell = np.frombuffer(saved, dtype=vexo._records.POINT_DTYPE)[10 * 65 + 20]
    assert status == 1
    assert (cell["x"], cell["y"], cell["z"]) == (1234.5, -777.25, 42.0)


def test_writing_through_xyz_leaves_flags_alone():
    table = vexo.CorrTable()
    table.cells["flags"][3, 4] = 0xABCD
    table.xyz[3, 4] = 0.0
    assert table.cells["flags"][3, 4] == 0xABCD


def test_view_outlives_table_object():
    view = vexo.CorrTable().xyz
    import gc
    gc.collect()
    assert view[64, 64, 0] == 32767.5


def test_diff_is_elementwise_difference():
    a, b = vexo.CorrTable(), vexo.CorrTable()
    a.xyz[5, 6, 0] += 3.0
    b.xyz[7, 8, 2] = -2.0
    d = a.diff(b)
    expected = np.zeros((65, 65, 3))
    expected[5, 6, 0], expected[7, 8, 2] = 3.0, 2.0
    assert np.array_equal(d, expected), np.argwhere(d != expected)


def test_diff_returns_a_copy():
    a = vexo.CorrTable()
    d = a.diff(vexo.CorrTable())
    d[0, 0, 0] = 99.0
    assert a.xyz[0, 0, 0] == -32767.5


def test_scale_keeps_the_rim_and_moves_inner_nodes():
    table = vexo.CorrTable().scale(0.9)
    deviation = table.deviation()
    assert abs(deviation[32, 32]).max() == 0.0
    assert abs(deviation[16, 32, 1]) > 0.0, deviation[16, 32]


def test_failed_adjustment_leaves_table_unchanged():
    table = vexo.CorrTable()
    before = bytes(table._record)
    with pytest.raises(vexo.VexoError):
        table.focus(160.0, 0.0, 100.0)
    assert bytes(table._record) == before


def test_trapezoid_scales_one_side_only():
    table = vexo.CorrTable().trapezoid(0, 1.5)
    deviation = table.deviation()
    assert deviation[64, 0, 0] == pytest.approx(-32767.5 * 0.5), deviation[64, 0]
    assert deviation[0, 0, 0] == 0.0


def test_lookup_at_nodes_reads_cells_back(corpus):
    table = _sample_table(corpus)
    field = 100.0
    rows, cols = np.array([0, 13, 32, 64]), np.array([64, 7, 32, 0])
    points = np.column_stack([(cols - 32) / 64 * field, (rows - 32) / 64 * field])
    out = table.lookup(points, field)
    assert np.array_equal(out, table.xyz[rows, cols, :2]), out - table.xyz[rows, cols, :2]


def test_lookup_between_nodes_is_bilinear():
    table = vexo.CorrTable()
    # The neutral table is linear, so a bilinear lookup gives the plane.
    out = table.lookup([(12.3, -40.1)], 100.0)
    expected = np.array([12.3, -40.1]) / 100.0 * 65535.0
    assert np.allclose(out[0], expected, rtol=0, atol=1e-7), out[0] - expected


def test_inverse_lookup_undoes_forward(corpus):
    table = _sample_table(corpus)
    points = np.array([(10.0, 20.0), (-33.3, 4.0), (0.0, 0.0)])
    back = table.lookup(table.lookup(points, 100.0), 100.0, inverse=True)
    assert np.allclose(back, points, atol=1e-6), back - points


def test_head_angles_follow_the_flat_field_formula():
    e, d = 12.0, 200.0
    head = vexo.HeadGeometry(mirror_gap=e, distance=d, field_size=100.0)
    x, y = 30.0, -20.0
    beam_y = math.atan(y / d)
    beam_x = math.atan(x / (e + math.hypot(d, y)))
    expected = (math.degrees(beam_x) / 2, math.degrees(beam_y) / 2)
    assert head.angles(x, y) == pytest.approx(expected, rel=1e-6)


def test_set_head_keeps_table_within_output_range():
    table = vexo.CorrTable()
    full_scale = table.set_head(vexo.HeadGeometry(12.0, 200.0, 100.0, focus=True))
    assert abs(table.xyz[:, :, :2]).max() == 32767.5
    assert full_scale > 0.0


def test_interpolate_of_perfect_measurements_is_linear():
    # A 3 x 3 grid on -40, 0, 40 (first index along X) measured where it
    # was meant gives the linear field: 65535.5 / 100 output units per unit,
    # sampled at column * 2/65 of the grid's width.
    grid = np.array([(a * 40.0 - 40, b * 40.0 - 40) for a in range(3) for b in range(3)])
    table = vexo.CorrTable.interpolate(grid, grid, 100.0)
    line = (np.arange(65) * 2.0 / 65 * 40 - 40) * 655.355
    assert np.allclose(table.xyz[:, :, 0], np.tile(line, (65, 1)), rtol=0, atol=1e-6)
    assert np.allclose(table.xyz[:, :, 1], np.tile(line[:, None], (1, 65)), rtol=0, atol=1e-6)


def nominal_grid(n=5, field=100.0):
    """n x n positions over the field, row i along y, column j along x."""
    axis = np.linspace(-field / 2, field / 2, n)
    return np.array([(x, y) for y in axis for x in axis])


@pytest.mark.parametrize("shape", [(25, 2), (5, 5, 2)])
def test_from_grid_of_perfect_measurements_is_neutral(shape):
    grid = nominal_grid().reshape(shape)
    assert vexo.CorrTable.from_grid(grid, grid, 100.0) == vexo.CorrTable()


def test_from_grid_of_perfect_measurements_returns_base(corpus):
    base = _sample_table(corpus)
    grid = nominal_grid()
    assert vexo.CorrTable.from_grid(grid, grid, 100.0, base=base) == base


def test_from_grid_undoes_a_uniform_shift():
    # Every mark landed 1 mm to the right: each node now aims 1 mm further
    # left, 65535 / 100 output units for the 100 mm field.
    grid = nominal_grid()
    table = vexo.CorrTable.from_grid(grid + (1.0, 0.0), grid, 100.0)
    expected = vexo.CorrTable().xyz[:, :, 0] - 655.35
    assert np.allclose(table.xyz[:, :, 0], expected, rtol=0, atol=1e-6), \
        abs(table.xyz[:, :, 0] - expected).max()


def test_copy_is_independent():
    a = vexo.CorrTable()
    b = a.copy()
    b.xyz[0, 0, 0] = 1.0
    assert a.xyz[0, 0, 0] == -32767.5


def _load_written(path, data):
    path.write_bytes(data)
    return vexo.CorrTable.load(path)


def _folded_from_grid():
    grid = nominal_grid()
    return vexo.CorrTable.from_grid(grid[[1, 0] + list(range(2, 25))], grid, 100.0)


# Calls the library refuses: the status it gives, named, and no file left behind.
@pytest.mark.parametrize("call,status,name", [
    (lambda tmp: vexo.CorrTable().scale(0.0), 16, "VEXO_ERROR_INVALID_PARAMETER"),
    (lambda tmp: vexo.CorrTable().trapezoid(4, 1.1), 16, "VEXO_ERROR_INVALID_PARAMETER"),
    (lambda tmp: vexo.CorrTable().lookup([(0.0, 0.0)], 0.0), 16, "VEXO_ERROR_INVALID_PARAMETER"),
    (lambda tmp: vexo.CorrTable().set_head(vexo.HeadGeometry(-1.0, 200.0, 100.0)), 16,
     "VEXO_ERROR_INVALID_PARAMETER"),
    (lambda tmp: vexo.CorrTable.load(tmp / "absent.kxo"), 19, "VEXO_ERROR_OPEN_FILE"),
    (lambda tmp: vexo.CorrTable().save(tmp / "no" / "t.kxo"), 19, "VEXO_ERROR_OPEN_FILE"),
    (lambda tmp: _load_written(tmp / "short.kxo", bytes(1000)), 21, "VEXO_ERROR_READ_FILE"),
    (lambda tmp: vexo.CorrTable().save(tmp / "t.ucf", "ucf"), 34, "VEXO_ERROR_UNKNOWN_FORMAT"),
    (lambda tmp: _folded_from_grid(), 7, "VEXO_ERROR_INVALID_DATA"),
], ids=["scale_zero", "trapezoid_side_4", "lookup_field_0", "negative_gap", "missing_file",
        "missing_folder", "truncated", "read_only_format", "folded_grid"])
def test_refused_call_raises_its_status(tmp_path, call, status, name):
    with pytest.raises(vexo.VexoError) as error:
        call(tmp_path)
    assert (error.value.status, error.value.name) == (status, name)
    assert sorted(p.name for p in tmp_path.iterdir()) in ([], ["short.kxo"])


# Arguments the package refuses before calling the library.
@pytest.mark.parametrize("call,error", [
    (lambda tmp: vexo.CorrTable().trapezoid(256, 1.1), ValueError),  # not wrapped to a byte
    (lambda tmp: vexo.CorrTable.load(tmp / "x.kxo", "bmp"), ValueError),
    (lambda tmp: vexo.CorrTable.load(tmp / "x.kxo", 12), ValueError),
    (lambda tmp: vexo.CorrTable.from_grid(np.zeros((6, 2)), np.zeros((6, 2)), 100.0), ValueError),
    (lambda tmp: vexo.CorrTable().diff(np.zeros((65, 65, 3))), TypeError),
], ids=["trapezoid_side_256", "format_name", "format_number", "non_square_grid", "diff_array"])
def test_bad_argument_raises_before_the_library(tmp_path, call, error):
    with pytest.raises(error):
        call(tmp_path)


@pytest.mark.parametrize("kind", ["kxo", "ctb", "cor"])
@pytest.mark.parametrize("name,sample", SAMPLES)
def test_save_matches_the_tool_conversion(corpus, tmp_path, name, sample, kind):
    tool = os.environ.get("VEXO_TOOL")
    if not tool:
        pytest.skip("VEXO_TOOL not set (the tool is not built)")
    source = tmp_path / f"in.{name}"
    source.write_bytes((corpus / sample).read_bytes())
    converted = tmp_path / f"tool.{kind}"
    run = subprocess.run([tool, "corr", "convert", str(source), str(converted), "--force", "-q"],
                         capture_output=True, text=True)
    assert run.returncode == 0, run.stderr
    table = vexo.CorrTable.load(source)
    if not table.info.has_z:
        table.xyz[:, :, 2] = 0.0  # the tool writes a format's missing z as 0
    table.save(tmp_path / f"ours.{kind}")
    assert (tmp_path / f"ours.{kind}").read_bytes() == converted.read_bytes()
