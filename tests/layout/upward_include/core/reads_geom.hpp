// SPDX-License-Identifier: MIT
// A core header reaching up into geom: the include check must refuse it.
#pragma once
#include "geom/figure.hpp"
