# SPDX-License-Identifier: MIT
"""Chessboard calibration and pattern recognition on drawn numpy images."""
import numpy as np
import pytest

import vexo

pytestmark = pytest.mark.skipif(not vexo.HAS_VISION, reason="library built without vision")

SQUARE, MARGIN, COLUMNS, ROWS = 40, 40, 10, 7


def chessboard():
    """COLUMNS x ROWS squares of SQUARE pixels: inner corners at known places."""
    image = np.full((ROWS * SQUARE + 2 * MARGIN, COLUMNS * SQUARE + 2 * MARGIN), 255, np.uint8)
    for r in range(ROWS):
        for c in range(COLUMNS):
            if (r + c) % 2 == 0:
                image[MARGIN + r * SQUARE:MARGIN + (r + 1) * SQUARE,
                      MARGIN + c * SQUARE:MARGIN + (c + 1) * SQUARE] = 0
    return image


def drawn_corners():
    return np.array([(MARGIN + SQUARE * (i + 1), MARGIN + SQUARE * (j + 1))
                     for j in range(ROWS - 1) for i in range(COLUMNS - 1)])


def textured(seed=3, shape=(240, 320)):
    """Rectangles of dark and light grey on mid grey: corners for every detector."""
    rng = np.random.default_rng(seed)
    image = np.full(shape, 128, np.uint8)
    for _ in range(300):
        x, y = rng.integers(0, shape[1] - 20), rng.integers(0, shape[0] - 20)
        w, h = rng.integers(3, 18, 2)
        image[y:y + h, x:x + w] = rng.choice([rng.integers(0, 70), 255 - rng.integers(0, 70)])
    return image


def placed(image, dx, dy, shape=(300, 400)):
    frame = np.full(shape, 128, np.uint8)
    frame[dy:dy + image.shape[0], dx:dx + image.shape[1]] = image
    return frame


def colour(grey):
    return np.repeat(grey[:, :, None], 3, axis=2)


@pytest.mark.parametrize("picture", [chessboard, lambda: colour(chessboard())],
                         ids=["grey", "colour"])
def test_chessboard_corners_are_the_drawn_ones(picture):
    calibration = vexo.calibrate_chessboard(picture(), COLUMNS - 1, ROWS - 1)
    assert np.array_equal(calibration.corners, drawn_corners()), calibration.corners[:4]


def test_chessboard_record_carries_image_size():
    calibration = vexo.calibrate_chessboard(chessboard(), COLUMNS - 1, ROWS - 1)
    assert (calibration.width, calibration.height) == (chessboard().shape[1],
                                                       chessboard().shape[0])


def test_blank_image_has_no_chessboard():
    with pytest.raises(vexo.VexoError) as error:
        vexo.calibrate_chessboard(np.full((200, 200), 255, np.uint8), 9, 6)
    assert error.value.name == "VEXO_ERROR_NO_RESULT"


@pytest.mark.parametrize("call", [
    lambda: vexo.calibrate_chessboard(chessboard().astype(np.float32), 9, 6),
    lambda: vexo.calibrate_chessboard(np.zeros((50, 50, 4), np.uint8), 9, 6),
    lambda: vexo.Pattern.teach(textured(), 60, 40, 260, 200, detector="brisk"),
], ids=["float_image", "four_channels", "detector"])
def test_bad_argument_raises_value_error(call):
    with pytest.raises(ValueError):
        call()


@pytest.mark.parametrize("frame_of", [lambda grey: grey, colour], ids=["grey", "colour"])
def test_pattern_found_where_it_was_placed(frame_of):
    reference = textured()
    with vexo.Pattern.teach(reference, 60, 40, 260, 200, detector="sift") as pattern:
        match = pattern.find(frame_of(placed(reference, 50, 30)))
    assert (match.x, match.y) == (pytest.approx(50.0, abs=0.1), pytest.approx(30.0, abs=0.1))


def test_teach_reports_chosen_detector():
    pattern = vexo.Pattern.teach(textured(), 60, 40, 260, 200, detector="orb")
    assert pattern.detector == "orb"


def test_pattern_not_found_in_blank_frame_raises():
    pattern = vexo.Pattern.teach(textured(), 60, 40, 260, 200, detector="sift")
    with pytest.raises(vexo.VexoError) as error:
        pattern.find(np.full((300, 400), 128, np.uint8))
    assert error.value.status != 1


def test_keypoints_outside_reference_are_refused():
    pattern = vexo.Pattern.teach(textured(), 60, 40, 260, 200, detector="sift")
    keypoints = pattern.keypoints.copy()
    keypoints["x"][0] = 10_000_000
    with pytest.raises(vexo.VexoError) as error:
        vexo.Pattern(textured(), keypoints, pattern.options)
    assert error.value.status == 16


def test_closed_pattern_refuses_to_find():
    pattern = vexo.Pattern.teach(textured(), 60, 40, 260, 200, detector="sift")
    pattern.close()
    pattern.close()
    with pytest.raises(ValueError):
        pattern.find(textured())
