// SPDX-License-Identifier: Apache-2.0
// Whole files in and out, with a cFailure that names the file and what is wrong with it.
#pragma once

#include <cstddef>
#include <istream>
#include <string>

namespace tav::ctl {

// All bytes of a file, or of the stream for "-"; more than so many are refused.
std::string ReadInput(const std::string& name, std::istream& in, std::size_t most);
// The same without the line's end: a value that stands in a file because others can see the command line.
std::string ReadValue(const std::string& name, std::istream& in, std::size_t most);

// Replaces the file whole, or leaves it as it was. Only its owner may read it: it may hold secrets.
void WriteFile(const std::string& name, const std::string& bytes);

}  // namespace tav::ctl
