// SPDX-License-Identifier: Apache-2.0
// cScmChannel: one live connection between two processes.
//
// Send hands a message to the connection's output buffer; it never blocks, never throws and calls no callback. What is
// sent in one turn of the loop is written together when the turn ends. docs/wire-format.md tells what becomes of a
// message that was accepted when the connection breaks.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <tav/framework/export.h>

namespace vorn {

class cMsg;

// The largest frame, its header included, and the output a slow peer may leave waiting: room for two of them.
constexpr std::size_t kMaxFrameSize = std::size_t{4} << 20;
constexpr std::size_t kMaxOutput = 2 * kMaxFrameSize;

// The other end as the kernel reports it, taken when the connection was made.
struct cScmPeer {
  std::string processName;
  pid_t pid = 0;
  uid_t uid = static_cast<uid_t>(-1);
  gid_t gid = static_cast<gid_t>(-1);
  std::vector<gid_t> groups;  // the supplementary ones

  // "name[pid] uid=...": for lines of trace.
  VORN_API std::string ToString() const;
};

class VORN_API cScmChannel {
 public:
  virtual ~cScmChannel() = default;
  cScmChannel(const cScmChannel&) = delete;
  cScmChannel& operator=(const cScmChannel&) = delete;

  // 1: accepted. 0: not, because the channel is closed, the output buffer is full (it accepts again when the peer has
  // read on), or the message is no frame: over kMaxFrameSize. A refusal changes nothing else.
  virtual int Send(const cMsg& msg) = 0;
  // What was accepted before and can be written without waiting is written; the object stays valid.
  virtual void Close() = 0;
  virtual bool IsOpen() const = 0;
  virtual const cScmPeer& GetPeer() const = 0;

 protected:
  cScmChannel() = default;
};

}  // namespace vorn
