// SPDX-License-Identifier: Apache-2.0
// cConfigInterface: the configuration text of one device interface, "RS485,baud=9600,parity=none", taken apart into the
// physical layer and its options.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/map.h>

namespace tav {

class TAV_API cConfigInterface {
 public:
  // False, and said in error in German, without a physical layer. Options of an earlier text stay in the map: Clean()
  // drops them. One with more than one "=" gives its key an empty value.
  bool SetConfig(const std::string& newConfig);
  void Clean() { *this = cConfigInterface(); }
  // "RS485:baud=9600,term": the map's options in the order of their keys, those without a value as the key alone.
  std::string ToString() const;

  bool valid = false;         // the last SetConfig found a physical layer
  std::string physicalLayer;  // of the last SetConfig that found one
  std::string config;         // the whole text
  std::string options;        // without the physical layer
  std::string error;          // a later success keeps it
  vorn::cMap<std::string, std::string> optionMap;
};

}  // namespace tav
