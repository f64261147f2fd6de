// SPDX-License-Identifier: MIT
// A geom header including core, which the rules allow.
#pragma once
#include "core/reads_geom.hpp"
