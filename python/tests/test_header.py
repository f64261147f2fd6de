# SPDX-License-Identifier: MIT
"""The package's numbers against the header's text and the library."""
import ctypes
import re

import pytest

import vexo
from vexo import _records as records
from vexo import clipping, corr, geometry, vision


def defines(text, prefix):
    """{name: value} of every `#define PREFIX... <number>u` in the header."""
    pattern = re.compile(r"^#define (" + prefix + r"\w*) (0x[0-9A-Fa-f]+|\d+)u?\b", re.M)
    return {name: int(value, 0) for name, value in pattern.findall(text)}


def test_format_numbers_match_header(header_text):
    found = defines(header_text, "VEXO_CORR_FORMAT_")
    expected = {f"VEXO_CORR_FORMAT_{name.upper()}": n for name, n in corr.FORMATS.items()}
    assert found == expected


@pytest.mark.parametrize("package_name,header_name", [
    ("geometry.HATCH_BIDIRECTIONAL", "VEXO_HATCH_BIDIRECTIONAL"),
    ("geometry.HATCH_CONNECT", "VEXO_HATCH_CONNECT"),
    ("geometry.HATCH_CONTOUR_BEFORE", "VEXO_HATCH_CONTOUR_BEFORE"),
    ("geometry.HATCH_CONTOUR_AFTER", "VEXO_HATCH_CONTOUR_AFTER"),
    ("geometry.MERGE_ORDER", "VEXO_MERGE_ORDER"),
    ("geometry.ORDER_ROTATE_CLOSED", "VEXO_ORDER_ROTATE_CLOSED"),
    ("geometry.ORDER_KEEP_DIRECTION", "VEXO_ORDER_KEEP_DIRECTION"),
    ("geometry.CLOSE_SNAP", "VEXO_CLOSE_SNAP"),
    ("geometry.CLOSE_DROP_DEGENERATE", "VEXO_CLOSE_DROP_DEGENERATE"),
    ("geometry.SLICE_LEFT", "VEXO_SLICE_LEFT"),
    ("geometry.SLICE_RIGHT", "VEXO_SLICE_RIGHT"),
    ("geometry.PART_OUTSIDE", "VEXO_PART_OUTSIDE"),
    ("geometry.BAND_X", "VEXO_BAND_X"),
    ("geometry.BAND_Y", "VEXO_BAND_Y"),
    ("geometry.PATTERN_2D", "VEXO_PATTERN_2D"),
    ("geometry.PATTERN_FIT", "VEXO_PATTERN_FIT"),
    ("geometry.PATTERN_RING", "VEXO_PATTERN_RING"),
    ("geometry.DOT_REVERSE", "VEXO_DOT_REVERSE"),
    ("geometry.DOT_OUTWARD", "VEXO_DOT_OUTWARD"),
    ("clipping.UNION", "VEXO_CLIP_UNION"),
    ("clipping.DIFFERENCE", "VEXO_CLIP_DIFFERENCE"),
    ("clipping.JOIN_MITER", "VEXO_CLIP_JOIN_MITER"),
    ("clipping.JOIN_ROUND", "VEXO_CLIP_JOIN_ROUND"),
    ("clipping.JOIN_SQUARE", "VEXO_CLIP_JOIN_SQUARE"),
    ("clipping.FLAT", "VEXO_CLIP_2D"),
    ("clipping.KEYHOLE", "VEXO_CLIP2_KEYHOLE"),
    ("corr.INFO_HEAD", "VEXO_CORR_INFO_HEAD"),
    ("corr.INFO_SCALE", "VEXO_CORR_INFO_SCALE"),
    ("corr.INFO_FACTORS", "VEXO_CORR_INFO_FACTORS"),
    ("corr.INFO_PARAMS", "VEXO_CORR_INFO_PARAMS"),
    ("corr.INFO_TRAILER", "VEXO_CORR_INFO_TRAILER"),
    ("corr.INFO_NO_Z", "VEXO_CORR_INFO_NO_Z"),
    ("corr.BASE_FOCUS", "VEXO_CORR_BASE_FOCUS"),
    ("corr.APPLY_INVERSE", "VEXO_CORR_APPLY_INVERSE"),
    ("vision.IMAGE_FORMAT_RGB24", "IMAGE_FORMAT_RGB24"),
    ("vision.IMAGE_FORMAT_GREY8", "IMAGE_FORMAT_GREY8"),
    ("vision.IMAGE_KIND", "VEXO_IMAGE_KIND"),
    ("vision.HEADER_SIZE", "VEXO_IMAGE_HEADER_SIZE"),
    ("vision.SIFT", "RECOGNISER_SIFT"),
    ("vision.SURF", "RECOGNISER_SURF"),
    ("vision.ORB", "RECOGNISER_ORB"),
    ("vision.ROBUST", "VEXO_RECOGNISER_ROBUST"),
    ("vision.THRESHOLD_FIXED", "VEXO_PRCG_THRESHOLD_FIXED"),
    ("vision.THRESHOLD_OTSU", "VEXO_PRCG_THRESHOLD_OTSU"),
    ("vision.DOTS_DARK", "VEXO_PRCG_DOTS_DARK"),
    ("vision.DOTS_NO_BORDER", "VEXO_PRCG_DOTS_NO_BORDER"),
    ("vision.DOTS_UNDISTORT", "VEXO_PRCG_DOTS_UNDISTORT"),
    ("vision.DOTS_PERSPECTIVE", "VEXO_PRCG_DOTS_PERSPECTIVE"),
    ("vision.SCALE_FLIP_Y", "VEXO_PRCG_SCALE_FLIP_Y"),
    ("vision.ROTATION_GIVEN", "VEXO_PRCG_ROTATION_GIVEN"),
    ("vision.SORT_GRID", "VEXO_PRCG_SORT_GRID"),
])
def test_constant_matches_header(header_text, package_name, header_name):
    module, attribute = package_name.split(".")
    value = getattr({"geometry": geometry, "clipping": clipping, "corr": corr,
                     "vision": vision}[module], attribute)
    assert value == defines(header_text, header_name)[header_name]


def test_point_end_flag_matches_header(header_text):
    assert vexo._points.POINT_END == defines(header_text, "VEXO_POINT_END")["VEXO_POINT_END"]


@pytest.mark.parametrize("record,pattern", [
    (records.VexoHatch, r"Hatch parameters: (\d+) bytes"),
    (records.VexoDash, r"Dash pattern: (\d+) bytes"),
    (records.PrcgDotParams, r"vexo_prcg_find_dots \((\d+) bytes on 64-bit hosts\)"),
    (records.CorrBase, r"\} CorrBase;\s+/\* (\d+) bytes"),
    (records.CalibrationRecord, r"Calibration exchange record \((\d+) bytes\)"),
    (records.PatternKeypoint, r"A taught keypoint \((\d+) bytes\)"),
    (records.RecognitionReport, r"vexo_prcg_start_recogniser2 \((\d+) bytes\)"),
    (records.GeomPoint, r"One point of a polyline array: (\d+) bytes"),
    (records.ImageBlock, r"#define VEXO_IMAGE_HEADER_SIZE (\d+)u"),
    (records.CorrHead, r"The (\d+)-byte header of the kxo format"),
])
def test_record_size_matches_header(header_text, record, pattern):
    stated = re.search(pattern, header_text)
    assert stated, f"the header no longer states the size of {record.__name__}"
    assert ctypes.sizeof(record) == int(stated.group(1))


# Field offsets as the header's comments state them ("name;  /* offset: ...").
@pytest.mark.parametrize("record,fields", [
    (records.VexoHatch, len(records.VexoHatch._fields_)),
    (records.VexoDash, len(records.VexoDash._fields_)),
    (records.CalibrationRecord, 7),  # at least: its reserved runs go unnamed
])
def test_field_offsets_match_header(header_text, record, fields):
    block = header_text[header_text.index(f"typedef struct {record.__name__}"):]
    block = block[:block.index(f"}} {record.__name__};")]
    stated = {name: int(offset) for name, offset in
              re.findall(r"(\w+)(?:\[\w+\])*;\s+/\*\s*(\d+):", block)}
    assert len(stated) >= fields, stated
    assert {name: getattr(record, name).offset for name in stated} == stated


def test_dash_maximum_matches_header(header_text):
    assert records.DASH_MAX == defines(header_text, "VEXO_DASH_MAX")["VEXO_DASH_MAX"]


@pytest.mark.parametrize("name,value", [
    ("VEXO_OK", 1), ("VEXO_ERROR_NO_RESULT", 5), ("VEXO_ERROR_OPEN_FILE", 19),
    ("VEXO_ERROR_UNKNOWN_FORMAT", 34), ("VEXO_ERROR_NO_RATIO_MATCH", 0x10000009),
])
def test_error_carries_status_name(header_text, name, value):
    assert defines(header_text, name)[name] == value
    assert vexo.VexoError(value).name == name


def test_error_of_unknown_status_is_named_unknown():
    error = vexo.VexoError(12345)
    assert (error.status, error.name) == (12345, "VEXO_STATUS_UNKNOWN")


def test_error_message_names_status_and_text():
    assert str(vexo.VexoError(19, "cannot load")).startswith(
        "cannot load: VEXO_ERROR_OPEN_FILE (19): ")


def test_library_version_matches_header(header_text):
    parts = [defines(header_text, f"VEXO_VERSION_{p}")[f"VEXO_VERSION_{p}"]
             for p in ("MAJOR", "MINOR", "PATCH")]
    assert vexo.library_version() == ".".join(map(str, parts))
