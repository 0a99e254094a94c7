// SPDX-License-Identifier: Apache-2.0
// cTroubleNote: takes the trace while it lives and keeps its last failure, which tells why a service cannot be reached.
// Nothing is traced to the terminal: what matters is said by the command that fails.
#pragma once

#include <string>

#include <tav/framework/trace.h>

namespace tav::ctl {

class cTroubleNote {
 public:
  // The text outlives the note.
  explicit cTroubleNote(std::string& note) {
    vorn::SetTraceSink([&note](const vorn::cUnit&, int level, const std::string& text) {
      if (level <= kFailure) note = text;
    });
  }
  ~cTroubleNote() { vorn::SetTraceSink({}); }
  cTroubleNote(const cTroubleNote&) = delete;
  cTroubleNote& operator=(const cTroubleNote&) = delete;

 private:
  static constexpr int kFailure = 2;
};

}  // namespace tav::ctl
