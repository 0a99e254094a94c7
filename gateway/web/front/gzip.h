// SPDX-License-Identifier: Apache-2.0
// cGzip: compresses a stream piece by piece (RFC 1952).
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace tav::gateway::web {

class cGzip {
 public:
  enum class eEnd {
    Open,   // more will follow at once
    Flush,  // what is there has to be readable now
    Whole,  // that was all
  };

  cGzip();
  ~cGzip();
  cGzip(const cGzip&) = delete;
  cGzip& operator=(const cGzip&) = delete;

  // Appends what the bytes give to out. False: there is no memory for it.
  bool Append(std::string_view bytes, eEnd end, std::string& out);

 private:
  struct cState;
  std::unique_ptr<cState> m_state;
};

// All of it at once; empty when that cannot be done.
std::string GzipWhole(std::string_view bytes);

}  // namespace tav::gateway::web
