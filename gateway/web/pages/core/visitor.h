// SPDX-License-Identifier: Apache-2.0
// cVisitor: who asks for a page, and what he may.
#pragma once

#include <string>

#include <tav/framework/uuid.h>

namespace tav::pages {

enum class eRole {
  Nobody,  // not logged in
  Viewer,  // sees everything but secrets, changes nothing
  Admin,
};

struct cVisitor {
  eRole role = eRole::Nobody;
  std::string name;
  std::string csrfToken;  // what every form of his carries; empty: he comes without a session
  vorn::cUuid sid;        // of his login

  bool MayChange() const { return role == eRole::Admin; }
};

}  // namespace tav::pages
