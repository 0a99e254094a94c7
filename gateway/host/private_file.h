// SPDX-License-Identifier: Apache-2.0
// Files with secrets: nobody else's to read, and never half written.
#pragma once

#include <string>

namespace tav::gateway {

// Writes a fresh file of mode 0600, has it on the disk, and puts it in the place of the old one. Empty when it is done,
// else what went wrong, with the file's name; then the old one is as it was.
std::string ReplacePrivateFile(const std::string& file, const std::string& content);

}  // namespace tav::gateway
