# SPDX-License-Identifier: MIT
"""Dots, dashes, bands, rectangles, reduction and smoothing."""
import ctypes

import numpy as np
import pytest

import vexo
from vexo._points import records_from_polylines
from vexo._records import POINT_DTYPE, GeomDotShape

LINE = np.array([(0.0, 0.0), (10.0, 0.0)])
BENT = np.array([(0.0, 0.0, 0.0), (3.0, 4.0, 1.0), (3.0, 10.0, 2.0)])


def xs(polylines):
    return [p[:, 0].tolist() for p in polylines]


# Every pitch from the start, or from the phase on.
@pytest.mark.parametrize("phase,starts", [(0.0, [0.0, 3.0, 6.0, 9.0]),
                                          (1.0, [1.0, 4.0, 7.0, 10.0])])
def test_dots_every_pitch_from_the_phase(phase, starts):
    assert xs(vexo.dots([LINE], 3.0, phase=phase)) == [[x] for x in starts]


def test_fitted_dots_hit_both_ends():
    got = xs(vexo.dots([LINE], 3.0, fit=True))
    assert np.allclose(got, [[0.0], [10 / 3], [20 / 3], [10.0]], rtol=0, atol=1e-12), got


def test_dot_count_follows_arc_length_across_vertices():
    # Length 5 + 6 = 11: floor(11 / 2) + 1 dots.
    assert len(vexo.dots([BENT], 2.0)) == 6


def test_dots_with_shape_equal_library_array(reference):
    shape = vexo.dot_shape(0.5, steps=8)
    records = records_from_polylines([LINE])
    lib = reference.lib
    lib.vexo_line_to_pattern.restype = ctypes.c_void_p
    lib.vexo_line_to_pattern.argtypes = [ctypes.c_void_p, ctypes.c_uint32, ctypes.c_double,
                                         ctypes.c_double, ctypes.c_uint32, ctypes.c_bool,
                                         ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p]
    raw_shape = ctypes.create_string_buffer(bytes(GeomDotShape(0, 0, 0, 8, 500, 0, 0)), 24)
    count, status = ctypes.c_uint32(), ctypes.c_uint32()
    address = lib.vexo_line_to_pattern(records.ctypes.data, len(records), 5.0, 0.0, 0, True,
                                       raw_shape, ctypes.addressof(count),
                                       ctypes.addressof(status))
    raw = np.frombuffer(reference.take_points(address, count.value), dtype=POINT_DTYPE)
    ours = vexo.dots([LINE], 5.0, shape=shape)
    assert status.value == 1
    assert np.array_equal(np.concatenate(ours), np.column_stack([raw["x"], raw["y"], raw["z"]]))


def test_circle_dots_have_the_shape_radius():
    figures = vexo.dots([LINE], 5.0, shape=vexo.dot_shape(0.5, steps=16))
    radii = [np.hypot(f[:, 0] - f[:, 0].mean(), f[:, 1]).round(6).tolist()
             for f in (figure[:-1] for figure in figures)]
    assert radii == [[0.5] * 16] * 3


# On, off, on...; an odd count of entries is repeated once to make it even.
@pytest.mark.parametrize("pattern,pieces", [
    ([2.0, 1.0], [[0.0, 2.0], [3.0, 5.0], [6.0, 8.0], [9.0, 10.0]]),
    ([2.0], [[0.0, 2.0], [4.0, 6.0], [8.0, 10.0]]),
])
def test_dashes_on_off(pattern, pieces):
    assert xs(vexo.dashes([LINE], pattern)) == pieces


def test_dash_keeps_the_vertex_inside_it():
    pieces = vexo.dashes([BENT], [7.0, 100.0])
    assert pieces[0][1].tolist() == [3.0, 4.0, 1.0], pieces[0]


def test_inner_part_rect_cuts_at_the_bounds():
    assert xs(vexo.inner_part_rect([LINE], 2.0, 1.0, 5.0, -1.0)) == [[2.0, 5.0]]


def test_slice_band_keeps_band_with_overlap():
    assert xs(vexo.slice_band([LINE], 1, 4.0, overlap=0.5)) == [[3.5, 8.5]]


def test_reduce_drops_close_points_keeps_ends():
    line = np.array([(0.0, 0.0), (0.001, 0.0), (5.0, 0.0), (10.0, 0.0)])
    assert xs(vexo.reduce([line], 0.01)) == [[0.0, 5.0, 10.0]]


def test_smoothen_averages_with_smoothed_predecessor():
    zigzag = np.array([(0.0, 0.0), (1.0, 1.0), (2.0, 0.0), (3.0, 1.0), (4.0, 0.0)])
    y = vexo.smoothen([zigzag], 5.0)[0][:, 1]
    # (0 + 1 + 0) / 3, then (1/3 + 0 + 1) / 3; the triple holding the end stays.
    assert np.allclose(y, [0.0, 1 / 3, 4 / 9, 1.0, 0.0], rtol=0, atol=1e-15), y


@pytest.mark.parametrize("call", [
    lambda: vexo.dot_shape(-1.0),
    lambda: vexo.dashes([LINE], [1.0] * 17),
    lambda: vexo.slice_band([LINE], 0, 4.0, axis="z"),
], ids=["dot_radius", "seventeen_dashes", "band_axis"])
def test_bad_argument_raises_value_error(call):
    with pytest.raises(ValueError):
        call()


@pytest.mark.parametrize("call", [
    lambda: vexo.dots([LINE], 0.0),
    lambda: vexo.dashes([LINE], [1.0, -1.0]),
], ids=["dot_pitch_0", "negative_dash"])
def test_refused_call_raises_invalid_parameter(call):
    with pytest.raises(vexo.VexoError) as error:
        call()
    assert (error.value.status, error.value.name) == (16, "VEXO_ERROR_INVALID_PARAMETER")
