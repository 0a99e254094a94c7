// SPDX-License-Identifier: Apache-2.0
// cBareScan: the limit of reading SML. It knows beforehand where each frame is and that all is well, visits every
// element in place, and checks both checksums; it keeps nothing and explains nothing.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace tav::bench {

class cBareScan {
 public:
  // Whole frames without escaped bytes one behind the other; others are passed over. The stream must live as long.
  explicit cBareScan(std::string_view stream);

  // Over all frames: something made of every element; 0 when a checksum or a structure is wrong.
  std::uint64_t Scan() const;
  std::size_t CountFrames() const { return m_frames.size(); }
  std::size_t CountBytes() const;

 private:
  std::vector<std::string_view> m_frames;  // start and end sequences included
};

}  // namespace tav::bench
