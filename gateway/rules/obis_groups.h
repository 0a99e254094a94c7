// SPDX-License-Identifier: Apache-2.0
// The groups of an OBIS identifier "A-B:C.D.E*F", as texts.
#pragma once

#include <array>
#include <string>

namespace tav::rules {

// Groups A to F; empty for those that it does not have.
using Groups = std::array<std::string, 6>;

Groups GroupsOf(const std::string& obis);

}  // namespace tav::rules
