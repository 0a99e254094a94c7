// SPDX-License-Identifier: Apache-2.0
// Looks at the socket of a service from outside: whether somebody listens there, and what to tell when nobody does.
#pragma once

#include <string>
#include <vector>

namespace tav::ctl {

enum class eSocket {
  Listening,
  Missing,    // no such file
  Dead,       // left by a process that has ended
  Forbidden,  // no permission to connect
  Unusable,   // anything else; the text says what
};

struct cProbe {
  eSocket state = eSocket::Listening;
  std::string text;  // one sentence that names the path, unless it listens
};

cProbe ProbeSocket(const std::string& path);

// The services that have a socket in the directory, in the order of their names. Throws a cFailure when it cannot be
// read.
std::vector<std::string> ServiceNames(const std::string& directory);

}  // namespace tav::ctl
