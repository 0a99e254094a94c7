// SPDX-License-Identifier: Apache-2.0
// cSocketFile: the listening socket of a service in the file system, DIR/NAME.sock, mode 0660.
//
// A lock on DIR/NAME.lock, held as long as the object lives, tells a living server from a dead one's leftover: the
// kernel drops it with the process. The socket is bound beside its place and renamed into it, so that a stale file is
// replaced in one step and no client meets a socket that does not listen.
#pragma once

#include <string>

#include <sys/types.h>

namespace vorn::detail {

class cSocketFile {
 public:
  cSocketFile() = default;
  ~cSocketFile();
  cSocketFile(const cSocketFile&) = delete;
  cSocketFile& operator=(const cSocketFile&) = delete;

  // A listening socket for the caller to own, or -1 and the reason in error.
  int Open(const std::string& directory, const std::string& name, std::string& error);
  gid_t GetGroup() const { return m_group; }

 private:
  bool Lock(const std::string& path, std::string& error);
  int BindAndListen(const std::string& temporary, std::string& error);

  std::string m_path;  // of the socket, once it is there
  gid_t m_group = static_cast<gid_t>(-1);
  int m_lock = -1;
};

}  // namespace vorn::detail
