# SPDX-License-Identifier: MIT
"""Figures, marking geometry, clipping and matrices through the package."""
import ctypes

import numpy as np
import pytest

import vexo
from vexo._points import polylines_from_records, records_from_polylines
from vexo._records import POINT_DTYPE

SQUARE = np.array([(0.0, 0.0), (10.0, 0.0), (10.0, 10.0), (0.0, 10.0)])
SHIFTED = SQUARE + 5.0


def area(ring):
    """Shoelace area of a ring (a closing copy of the first point is harmless)."""
    x, y = ring[:, 0], ring[:, 1]
    return 0.5 * abs(np.dot(x, np.roll(y, -1)) - np.dot(y, np.roll(x, -1)))


def records_bytes(polylines):
    return records_from_polylines(polylines).tobytes()


def test_records_flag_last_point_of_each_polyline():
    records = records_from_polylines([SQUARE, SQUARE[:1], SQUARE[:2]])
    assert list(records["flags"]) == [0, 0, 0, 1, 1, 0, 1]


def test_polylines_survive_records_round_trip():
    lines = [np.array([(1.0, 2.0, 3.0), (4.0, 5.0, 6.0)]), np.array([(7.0, 8.0, 9.0)])]
    back = polylines_from_records(records_from_polylines(lines))
    assert [b.tolist() for b in back] == [line.tolist() for line in lines]


def test_points_after_last_end_flag_form_a_polyline():
    records = np.zeros(3, dtype=POINT_DTYPE)
    records["x"] = [1.0, 2.0, 3.0]
    records["flags"] = [1, 0, 0]
    assert [len(p) for p in polylines_from_records(records)] == [1, 2]


def test_two_column_input_gets_zero_z():
    records = records_from_polylines([SQUARE])
    assert np.array_equal(records["z"], np.zeros(4)), records["z"]


def test_circle_equals_library_array(reference):
    centre = np.zeros(1, dtype=POINT_DTYPE)
    centre["x"], centre["y"], centre["z"] = 1.5, -2.0, 0.25
    count = ctypes.c_uint32()
    address = reference.lib.vexo_geom_create_circle(7.0, centre.ctypes.data, 30.0, 300.0, 40,
                                                     ctypes.addressof(count))
    raw = np.frombuffer(reference.take_points(address, count.value), dtype=POINT_DTYPE)
    ours = vexo.circle(7.0, (1.5, -2.0, 0.25), 30.0, 300.0, 40)
    expected = np.column_stack([raw["x"], raw["y"], raw["z"]])
    assert np.array_equal(ours, expected), ours - expected


def test_circle_points_lie_on_the_radius():
    points = vexo.circle(5.0, (1.0, 1.0), steps=36)
    radii = np.hypot(points[:, 0] - 1.0, points[:, 1] - 1.0)
    assert np.allclose(radii, 5.0, rtol=0, atol=1e-5), radii


def test_full_circle_is_closed():
    points = vexo.circle(5.0, steps=12)
    assert np.array_equal(points[0], points[-1]), (points[0], points[-1])


def test_spiral_runs_from_outer_to_inner_radius():
    points = vexo.spiral(1.0, 5.0, 0.5, steps=36)
    radii = np.hypot(points[:, 0], points[:, 1])
    assert radii[0] == pytest.approx(5.0, abs=1e-5)
    assert 1.0 <= radii[-1] < 1.0 + 0.5, radii[-1]
    assert np.all(np.diff(radii) < 0), np.diff(radii).max()


def test_hatch_equals_library_array(reference):
    rings = [SQUARE * 3.0, SQUARE + 10.0]
    records = records_from_polylines(rings)
    params = vexo._records.VexoHatch(spacing=1.3, angle=25.0, passes=2, angle_step=90.0,
                                     options=vexo.geometry.HATCH_BIDIRECTIONAL)
    count, status = ctypes.c_uint32(), ctypes.c_uint32()
    address = reference.lib.vexo_geom_cover(records.ctypes.data, len(records),
                                            ctypes.addressof(params), ctypes.addressof(count),
                                            ctypes.addressof(status))
    raw = np.frombuffer(reference.take_points(address, count.value), dtype=POINT_DTYPE)
    ours = vexo.hatch(rings, 1.3, angle=25.0, passes=2, bidirectional=True)
    ends = np.flatnonzero(raw["flags"] & 1) + 1
    assert status.value == 1
    assert np.cumsum([len(line) for line in ours]).tolist() == ends.tolist()
    assert np.array_equal(np.concatenate(ours), np.column_stack([raw["x"], raw["y"], raw["z"]]))


def test_hatch_lines_of_a_square_lie_on_the_spacing():
    lines = vexo.hatch([SQUARE], 2.5)
    heights = sorted(line[0, 1] for line in lines)
    assert heights == [0.0, 2.5, 5.0, 7.5], heights


def test_hatch_of_nothing_covered_is_empty():
    assert vexo.hatch([SQUARE], 20.0, origin=(0.0, 5.0), min_length=50.0) == []


def test_merge_joins_touching_lines():
    a = np.array([(0.0, 0.0), (1.0, 0.0)])
    b = np.array([(1.0, 0.0), (2.0, 0.0)])
    merged = vexo.merge_lines([a, b], 0.01)
    assert [m[:, 0].tolist() for m in merged] == [[0.0, 1.0, 2.0]]


def test_order_starts_with_nearest_line():
    far = np.array([(50.0, 0.0), (60.0, 0.0)])
    near = np.array([(5.0, 0.0), (1.0, 0.0)])
    ordered = vexo.order_lines([far, near])
    assert ordered[0][0].tolist() == [1.0, 0.0, 0.0], ordered[0]


def test_slice_keeps_left_part():
    line = np.array([(-5.0, 1.0), (5.0, 1.0)])
    pieces = vexo.slice_line([line], (0.0, -1.0), (0.0, 1.0), right=False)
    xs = sorted(x for piece in pieces for x in piece[:, 0])
    assert xs == [-5.0, 0.0], xs


def test_inner_part_keeps_what_lies_inside():
    line = np.array([(-5.0, 5.0), (15.0, 5.0)])
    pieces = vexo.inner_part([line], [SQUARE])
    assert [p[:, 0].tolist() for p in pieces] == [[0.0, 10.0]]


def test_point_in_polygon_inside_and_outside():
    assert (vexo.geometry.point_in_polygon((5, 5), SQUARE),
            vexo.geometry.point_in_polygon((15, 5), SQUARE)) == (True, False)


# Union, difference and a mitred outline of the squares, by their areas.
@pytest.mark.parametrize("engine", ["clip", "clip2"])
@pytest.mark.parametrize("operation,areas", [
    (lambda e: vexo.union([SQUARE], [SHIFTED], engine=e), [175.0]),
    (lambda e: vexo.difference([SQUARE], [SHIFTED], engine=e), [75.0]),
    (lambda e: vexo.outline([SQUARE], 1.0, join="miter", engine=e), [144.0]),
], ids=["union", "difference", "miter_outline"])
def test_clip_result_areas(engine, operation, areas):
    assert [area(r) for r in operation(engine)] == areas


def test_results_are_closed_rings():
    ring = vexo.union([SQUARE], [SHIFTED])[0]
    assert np.array_equal(ring[0], ring[-1]), (ring[0], ring[-1])


def test_union_equals_library_result(reference):
    lib = reference.lib
    subject = records_from_polylines([SQUARE], closing_copy=True)
    operand = records_from_polylines([SHIFTED], closing_copy=True)
    handle = lib.vexo_clip_create(subject.ctypes.data, len(subject), 0)
    try:
        assert lib.vexo_clip_bool(handle, operand.ctypes.data, len(operand), 1) == 1
        count = ctypes.c_uint32()
        address = lib.vexo_clip_get_result(handle, ctypes.addressof(count))
        raw = reference.take_points(address, count.value)
    finally:
        lib.vexo_clip_release(handle)
    assert records_bytes(vexo.union([SQUARE], [SHIFTED])) == raw


def test_last_ring_keeps_its_last_vertex():
    # The clip calls never read an array's last point; the package must add
    # a closing record so that the last ring loses nothing.
    triangle = np.array([(0.0, 0.0), (10.0, 0.0), (0.0, 10.0)])
    result = vexo.union([triangle], [triangle + 100.0])
    assert sorted(area(r) for r in result) == [50.0, 50.0]


def test_close_polygons_appends_first_point():
    open_ring = np.array([(0.0, 0.0), (10.0, 0.0), (10.0, 10.0), (0.0, 0.01)])
    closed = vexo.close_polygons([open_ring], 0.1)
    expected = [[x, y, 0.0] for x, y in open_ring] + [[0.0, 0.0, 0.0]]
    assert closed[0].tolist() == expected


def test_close_polygons_snap_moves_last_point():
    open_ring = np.array([(0.0, 0.0), (10.0, 0.0), (10.0, 10.0), (0.0, 0.01)])
    closed = vexo.close_polygons([open_ring], 0.1, snap=True)
    assert closed[0][-1].tolist() == [0.0, 0.0, 0.0]


# --- matrices: compared with the textbook forms in numpy -----------------

def test_identity():
    assert np.array_equal(vexo.identity(), np.eye(4))


# A point through a matrix: translation, scaling then translation in that
# order, a quarter turn about z (x axis clockwise), a turn about a centre
# that keeps the centre.
@pytest.mark.parametrize("matrix,point,expected,tolerance", [
    (lambda: vexo.translate(vexo.identity(), 1.0, 2.0, 3.0), (1.0, 1.0, 1.0), (2.0, 3.0, 4.0), 0),
    (lambda: vexo.translate(vexo.scale(vexo.identity(), 2.0, 3.0), 1.0, 1.0), (1.0, 1.0),
     (3.0, 4.0, 0.0), 0),
    (lambda: vexo.rotate(vexo.identity(), az=90.0), (1.0, 0.0), (0.0, -1.0, 0.0), 1e-7),
    (lambda: vexo.rotate(vexo.identity(), az=37.0, centre=(3.0, 4.0, 0.0)), (3.0, 4.0),
     (3.0, 4.0, 0.0), 1e-12),
], ids=["translate", "scale_then_translate", "rotate_z_90", "rotate_about_centre"])
def test_transform_moves_a_point(matrix, point, expected, tolerance):
    out = vexo.transform(matrix(), [point])[0]
    assert np.allclose(out, expected, rtol=0, atol=tolerance), out


def test_multiply_equals_matrix_product():
    rng = np.random.default_rng(7)
    a, b = rng.normal(size=(4, 4)), rng.normal(size=(4, 4))
    product = vexo.multiply(a, b)
    assert np.allclose(product, a @ b, rtol=1e-14, atol=1e-14), product - a @ b


def test_invert_gives_inverse():
    m = vexo.rotate(vexo.translate(vexo.scale(vexo.identity(), 2, 3, 4), 5, 6, 7), 10, 20, 30)
    assert np.allclose(vexo.invert(m) @ m, np.eye(4), atol=1e-12), vexo.invert(m) @ m


def test_rotate_axis_about_z_equals_rotate_z():
    m = vexo.rotate_axis(vexo.identity(), (0.0, 0.0, 1.0), 90.0)
    turned = vexo.rotate(vexo.identity(), az=90.0)
    assert np.allclose(m, turned, atol=1e-12), m - turned


# Arguments the package refuses before calling the library.
@pytest.mark.parametrize("call", [
    lambda: records_from_polylines([SQUARE, np.zeros((0, 3))]),
    lambda: records_from_polylines([np.zeros((3, 4))]),
    lambda: vexo.union([SQUARE], [SHIFTED], engine="clip3"),
    lambda: vexo.outline([SQUARE], 1.0, join="bevel"),
    lambda: vexo.translate(np.eye(3), 1.0, 1.0),
], ids=["empty_polyline", "four_columns", "engine", "join", "matrix_shape"])
def test_bad_argument_raises_value_error(call):
    with pytest.raises(ValueError):
        call()


# Calls the library refuses, with the status it gives.
@pytest.mark.parametrize("call,name", [
    (lambda: vexo.spiral(float("nan"), 5.0, 0.5), "VEXO_ERROR_NO_RESULT"),
    (lambda: vexo.hatch([SQUARE], 0.0), "VEXO_ERROR_INVALID_PARAMETER"),
    (lambda: vexo.outline([SQUARE], float("inf")), "VEXO_ERROR_INVALID_PARAMETER"),
    (lambda: vexo.union([SQUARE], [SQUARE * 1e300]), "VEXO_ERROR_INVALID_PARAMETER"),
], ids=["spiral_nan", "hatch_spacing_0", "outline_inf", "union_off_grid"])
def test_refused_call_raises_its_status(call, name):
    with pytest.raises(vexo.VexoError) as error:
        call()
    assert error.value.name == name
