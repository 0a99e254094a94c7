// SPDX-License-Identifier: Apache-2.0
// cDescriptor: an open file or socket that is closed with the object.
#pragma once

#include <unistd.h>

#include <utility>

namespace tav::gateway::web {

class cDescriptor {
 public:
  explicit cDescriptor(int descriptor = -1) : m_descriptor(descriptor) {}
  ~cDescriptor() {
    if (m_descriptor >= 0) close(m_descriptor);
  }
  cDescriptor(cDescriptor&& other) noexcept : m_descriptor(other.Release()) {}
  cDescriptor& operator=(cDescriptor&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
  }

  bool IsOpen() const { return m_descriptor >= 0; }
  int Get() const { return m_descriptor; }
  // It is somebody else's to close from now on.
  int Release() { return std::exchange(m_descriptor, -1); }

 private:
  int m_descriptor;
};

}  // namespace tav::gateway::web
