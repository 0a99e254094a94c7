// SPDX-License-Identifier: Apache-2.0
// cMBusScan: finds the meters of a bus. By primary address it asks each in turn; by secondary address it searches with
// wildcards: an identification is narrowed down digit by digit where several answer, then by version, medium and
// manufacturer where identifications are alike.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gateway/driver/mbus/master/mbus_address.h>
#include <gateway/driver/mbus/master/mbus_master.h>

namespace tav::mbus {

struct cMBusScanOptions {
  bool secondary = false;
  std::uint8_t first = 0, last = kLastPrimary;  // primary addresses
  cMBusAddress mask;                            // secondary: only what matches
};

struct cMBusFound {
  cMBusAddress address;  // to read it by
  cMBusHeader header;    // of its answer; hasMeter is false where it did not tell
  std::string note;      // what is not as it should be: several meters at one address, an answer that cannot be read
};

struct cMBusScanProgress {
  std::string asking;  // an address, or a mask as "4495FFFF"
  double done = 0;     // 0 to 1, of what is known to be there to ask
  unsigned int found = 0;
};

class cMBusScan {
 public:
  std::function<void(const cMBusFound&)> onFound;
  std::function<void(const cMBusScanProgress&)> onProgress;
  // It is over; why is empty unless the line was lost.
  std::function<void(const std::string& why)> onEnd;

  cMBusScan(cMBusMaster& master, const cMBusScanOptions& options);
  ~cMBusScan();
  cMBusScan(const cMBusScan&) = delete;
  cMBusScan& operator=(const cMBusScan&) = delete;

  void Start();

 private:
  class cState;
  std::unique_ptr<cState> m_state;
};

}  // namespace tav::mbus
