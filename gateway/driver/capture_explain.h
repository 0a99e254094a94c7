// SPDX-License-Identifier: Apache-2.0
// What explanations of captures share, whatever the meters speak: the result, and what the mapping rules say about a
// value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tav {

// What the mapping rules say about a value.
struct cObisNaming {
  struct cRule {
    std::uint64_t id = 0;
    std::string name;
    std::string obis;
  };

  std::optional<cRule> rule;       // the one that names it; without one its common name is shown
  std::vector<std::string> notes;  // for people, a line each
};

struct cExplanation {
  // Of telegrams, and of the bytes that are no part of one.
  struct cCounts {
    std::uint64_t good = 0;
    std::uint64_t bad = 0;
    std::uint64_t incomplete = 0;  // cut off
    std::uint64_t skippedBytes = 0;
  };

  std::string listing;
  std::string json;  // one line
  cCounts counts;
  std::string firstBad;      // of the telegrams that are not good: where it is, and why if that is known
  std::uint64_t faults = 0;  // within good telegrams: wrong checksums of messages, what could not be read

  // Something was read, and nothing of it is bad.
  bool AllGood() const { return counts.good != 0 && counts.bad == 0 && faults == 0; }
};

}  // namespace tav
