// SPDX-License-Identifier: MIT
// The library-wide header of the last correction load.  Hosts read it from
// any thread while another loads, so it lives behind a mutex and a load
// replaces it whole: a reader sees either the old or the new header, never
// a mix of both.
#pragma once

#include "vexo.h"

namespace vexo {

CorrHead current_corr_head() noexcept;
void publish_corr_head(const CorrHead &head) noexcept;
void clear_corr_head() noexcept;

} // namespace vexo
