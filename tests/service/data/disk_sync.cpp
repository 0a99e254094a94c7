// SPDX-License-Identifier: Apache-2.0
#include <tests/service/data/disk_sync.h>

#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

unsigned int count = 0;
bool failing = false;

int Sync(long number, int descriptor) {
  ++count;
  if (!failing) return static_cast<int>(syscall(number, descriptor));
  errno = EIO;
  return -1;
}

}  // namespace

extern "C" {
__attribute__((visibility("default"))) int fdatasync(int descriptor) { return Sync(SYS_fdatasync, descriptor); }
__attribute__((visibility("default"))) int fsync(int descriptor) { return Sync(SYS_fsync, descriptor); }
}

unsigned int cDiskSync::GetCount() { return count; }

cDiskSync::cFailing::cFailing() { failing = true; }

cDiskSync::cFailing::~cFailing() { failing = false; }
