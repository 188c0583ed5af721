// SPDX-License-Identifier: MIT
// Which names lead to one file, and where a name leads in the end.
#pragma once

#include <filesystem>
#include <string>

namespace knotfit {

/// @return whether reading `input` and writing `output` touch one file: equal device and number,
/// whatever the names, through links of both kinds. "-" is standard input or output; devices and
/// pipes are never the same, since writing to them takes nothing away.
bool isSameFile(const std::string& input, const std::string& output);

/// @return the file that a chain of symbolic links ends at, which need not exist; the path itself
/// when it is no link. A link's own name must stay, so its target is what is replaced.
std::filesystem::path linkTarget(const std::filesystem::path& path);

/// @return whether files can be made in a folder ("" is the current one), as far as can be told.
bool takesNewFiles(const std::filesystem::path& folder);

}  // namespace knotfit
