// SPDX-License-Identifier: Apache-2.0
// What a request for stored data asks for, its meters found.
#pragma once

#include <string>
#include <vector>

namespace tav::data {

struct cStoredSelection {
  std::vector<std::string> meters = {};
  std::vector<std::string> obis = {};  // empty: all
  unsigned int from = 0;               // seconds UTC; both ends belong to the range
  unsigned int to = 0xFFFFFFFF;
  std::string rawFormat = {};  // of readings; empty: without their raw telegrams
};

}  // namespace tav::data
