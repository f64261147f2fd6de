# SPDX-License-Identifier: MIT
"""Field calibration from a photo of marked dots."""
import numpy as np
import pytest

import vexo

pytestmark = pytest.mark.skipif(not vexo.HAS_VISION, reason="library built without vision")

RADIUS, SPACING, N = 6, 50, 5


def dot_photo(angle=0.0, shape=(300, 400), centre=(200.0, 150.0)):
    """Bright discs on black in an N x N grid turned by angle degrees; their centres."""
    rows, cols = np.mgrid[0:shape[0], 0:shape[1]]
    image = np.zeros(shape, np.uint8)
    turn = np.radians(angle)
    centres = []
    for i in range(N):
        for j in range(N):
            gx, gy = (j - N // 2) * SPACING, (i - N // 2) * SPACING
            cx = centre[0] + gx * np.cos(turn) - gy * np.sin(turn)
            cy = centre[1] + gx * np.sin(turn) + gy * np.cos(turn)
            centres.append((cx, cy))
            image[(cols - cx) ** 2 + (rows - cy) ** 2 <= RADIUS ** 2] = 255
    return image, np.array(centres)


# Light dots on a dark ground, and dark ones on a light ground when asked.
@pytest.mark.parametrize("dark", [False, True])
def test_found_centres_are_the_drawn_ones(dark):
    image, centres = dot_photo()
    dots = vexo.find_dots(255 - image if dark else image, dark=dark)
    assert np.allclose(dots[:, :2], centres, rtol=0, atol=1e-9), abs(dots[:, :2] - centres).max()


def test_area_limit_drops_dots():
    image, _ = dot_photo()
    with pytest.raises(vexo.VexoError) as error:
        vexo.find_dots(image, min_area=1000.0)
    assert error.value.name == "VEXO_ERROR_NO_RESULT"


def test_scale_dots_with_origin_and_flip():
    dots = np.array([(110.0, 40.0, 4.0), (210.0, 60.0, 8.0)])
    scaled = vexo.scale_dots(dots, 0.5, 0.25, origin=(10.0, 20.0), flip_y=True)
    assert scaled.tolist() == [[50.0, -5.0, 0.5], [100.0, -10.0, 1.0]]


@pytest.mark.parametrize("call", [
    lambda: vexo.find_dots(dot_photo()[0], min_circularity=1.5),
    lambda: vexo.scale_dots(np.ones((2, 3)), 0.0),
], ids=["circularity_1.5", "scale_0"])
def test_refused_call_raises_invalid_parameter(call):
    with pytest.raises(vexo.VexoError) as error:
        call()
    assert (error.value.status, error.value.name) == (16, "VEXO_ERROR_INVALID_PARAMETER")


def test_unrotate_estimates_grid_rotation():
    image, _ = dot_photo(angle=5.0)
    dots = vexo.scale_dots(vexo.find_dots(image), 1.0, origin=(200.0, 150.0))
    _, rotation = vexo.unrotate_dots(dots)
    assert rotation == pytest.approx(5.0, abs=0.05)


def test_unrotate_sorts_into_grid_order():
    image, _ = dot_photo(angle=5.0)
    dots = vexo.scale_dots(vexo.find_dots(image), 1.0, origin=(200.0, 150.0))
    grid, _ = vexo.unrotate_dots(dots, N, rotation=5.0)
    expected = np.array([((j - 2) * SPACING, (i - 2) * SPACING)
                         for i in range(N) for j in range(N)], dtype=float)
    # A turned disc drawn in whole pixels has its centroid within a few
    # tenths of a pixel of the true centre.
    assert np.allclose(grid[:, :2], expected, rtol=0, atol=0.15), abs(grid[:, :2] - expected).max()


def test_sorting_a_grid_with_a_missing_dot_raises_no_result():
    image, _ = dot_photo()
    dots = vexo.scale_dots(vexo.find_dots(image)[1:], 1.0, origin=(200.0, 150.0))
    with pytest.raises(vexo.VexoError) as error:
        vexo.unrotate_dots(dots, N)
    assert error.value.name == "VEXO_ERROR_NO_RESULT"


def test_photo_to_table_of_a_true_grid_is_near_neutral():
    # Marks made through the neutral table exactly where they were meant:
    # the table found from their photo stays within a quarter pixel (0.05
    # mm at 0.2 mm a pixel) of neutral (65535 / 50 units per millimetre).
    image, _ = dot_photo(angle=5.0)
    dots = vexo.scale_dots(vexo.find_dots(image), 0.2, origin=(200.0, 150.0))
    measured, _ = vexo.unrotate_dots(dots, N)
    nominal = np.array([((j - 2) * 10.0, (i - 2) * 10.0) for i in range(N) for j in range(N)])
    table = vexo.CorrTable.from_grid(measured, nominal, 50.0)
    worst = abs(table.deviation()[:, :, :2]).max()
    assert worst < 0.05 * 65535 / 50, worst
