// SPDX-License-Identifier: Apache-2.0
// cDiskSync: counts how often this process waits for the disk, and makes it fail. It stands in the place of the C
// library's fdatasync and fsync, for every library of the test program.
#pragma once

class cDiskSync {
 public:
  static unsigned int GetCount();

  // While it lives every sync fails with EIO.
  class cFailing {
   public:
    cFailing();
    ~cFailing();
  };
};
