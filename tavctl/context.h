// SPDX-License-Identifier: Apache-2.0
// cContext: what a command works with: the loop, the streams, and what was said for all commands.
#pragma once

#include <functional>
#include <istream>
#include <memory>
#include <ostream>
#include <string>

#include <tav/framework/scm_service.h>
#include <tavctl/table.h>

namespace tav::ctl {

struct cStreams {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  bool terminal = false;  // out is one
  bool bold = false;      // and may be sent escape sequences that set text off
};

struct cContext {
  vorn::cScmService& service;
  cStreams streams;
  bool json = false;
  unsigned int timeoutMs = 10'000;  // for a connection, and for an answer
  bool interrupted = false;         // somebody wants a live command to end
  std::string trouble = {};         // the last failure that the framework has traced

  // Rows to the output, in the form that was asked for.
  std::unique_ptr<cRowWriter> Rows(Columns columns) const;
  // A line beside the output.
  void Note(const std::string& text) const;
  // Drives the loop until it holds; false when the time is over or somebody interrupts.
  bool Await(const std::function<bool()>& holds, unsigned int milliseconds) const;
};

}  // namespace tav::ctl
