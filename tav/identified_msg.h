// SPDX-License-Identifier: Apache-2.0
// Messages under an identifier, as clients of services send them. Internal to the library.
#pragma once

#include <tav/framework/msg.h>

namespace tav {

// Under the caller's identifier, which is created when it is not valid, so that the caller learns it.
inline vorn::cMsg IdentifiedMsg(unsigned int type, vorn::cUuid& id) {
  if (!id.IsValid()) id.Create();
  vorn::cMsg msg(type);
  msg.SetId(id);
  return msg;
}

// Under a fresh one.
inline vorn::cMsg IdentifiedMsg(unsigned int type) {
  vorn::cUuid id;
  return IdentifiedMsg(type, id);
}

}  // namespace tav
