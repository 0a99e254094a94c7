// SPDX-License-Identifier: Apache-2.0
// cDescriptorWriter: writes to a descriptor without ever waiting; what does not fit goes out from the loop as soon as
// there is room.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <tav/framework/watch.h>

namespace tav {

class cDescriptorWriter {
 public:
  explicit cDescriptorWriter(vorn::cService* service) : m_service(service) {}

  // The descriptor stays its owner's, who ends with it before closing it.
  void Begin(int descriptor);
  // What is not out yet never will be.
  void End();
  // Behind what is not out yet. A descriptor that cannot be written loses the bytes: whoever reads it learns why.
  void Write(std::string_view bytes);

 private:
  void Flush();

  vorn::cService* m_service;
  int m_descriptor = -1;
  std::string m_pending;
  std::optional<vorn::cWatch> m_watch;
};

}  // namespace tav
