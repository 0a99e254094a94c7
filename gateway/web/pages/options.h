// SPDX-License-Identifier: Apache-2.0
// What tav-pages can be told by its command line.
#pragma once

#include <optional>
#include <string>

#include <gateway/web/pages/access/access.h>

namespace tav::pages {

struct cOptions {
  std::string dir;  // of sockets and accounts; empty: each at its usual place
  cAccess::cOptions access;
  std::string account;  // whose password is set, from standard input; empty: pages are served
  eRole role = eRole::Admin;
  int trace = 4;
};

struct cParsedOptions {
  std::optional<cOptions> options;  // none: end with this exit code
  int exitCode = 0;
  std::string text;  // help or the error, for people
};

cParsedOptions ParseOptions(int argc, const char* const* argv);

}  // namespace tav::pages
