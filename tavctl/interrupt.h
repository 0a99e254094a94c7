// SPDX-License-Identifier: Apache-2.0
// cInterrupt: while it lives, Ctrl-C and a request to terminate end a live command instead of the process.
#pragma once

#include <csignal>

#include <tav/framework/watch.h>
#include <tavctl/context.h>

namespace tav::ctl {

class cInterrupt {
 public:
  explicit cInterrupt(cContext& context)
      : m_watch(&context.service, {SIGINT, SIGTERM, SIGHUP}, [&context](int) { context.interrupted = true; }) {}

 private:
  vorn::cSignalWatch m_watch;
};

}  // namespace tav::ctl
