// SPDX-License-Identifier: MIT
// Where runtime data lives: the ".vexo_rtdata" folder under the user's
// per-user data folder.
#pragma once

#include <string>

namespace vexo {

// The folder path with its trailing separator, or an empty string when the
// user's data folder cannot be determined.  With `create`, missing folders
// on the way (the data folder itself included) are made, private to the
// user; failures there are left for the file open to report.
std::string runtime_data_folder(bool create);

} // namespace vexo
