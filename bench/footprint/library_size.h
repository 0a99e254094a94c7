// SPDX-License-Identifier: Apache-2.0
// What a library adds to a system that has the C and C++ run time anyway.
#pragma once

#include <string>
#include <vector>

namespace tav::bench {

// Bytes of a file when stripped; negative, when that cannot be done here. The copy is made in the directory.
double StrippedSize(const std::string& file, const std::string& directory);

// The libraries that one loads, itself not among them, without the C and C++ run time; "?" when that is not known here.
std::vector<std::string> LoadedBy(const std::string& library);

}  // namespace tav::bench
