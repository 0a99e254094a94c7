// SPDX-License-Identifier: Apache-2.0
// cPageRegistry: which page process serves which paths. Of several prefixes that fit a path the longest counts; a
// prefix is whole segments: "/api" serves "/api" and "/api/meters", and not "/apiary".
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <tav/framework/scm_channel.h>

namespace tav::gateway::web {

struct cPageProcess {
  std::shared_ptr<vorn::cScmChannel> channel;
  bool hasFlow = false;  // it wants to be told what becomes of its outputs
};

class cPageRegistry {
 public:
  // prefixes: none stands for all paths. A registration replaces what the same process had. Why it is refused, else an
  // empty text.
  std::string Register(const cPageProcess& process, const std::vector<std::string>& prefixes);
  void Forget(const vorn::cScmChannel* channel);

  // Null when nobody serves that path.
  const cPageProcess* Find(std::string_view path) const;
  std::size_t CountProcesses() const;

 private:
  std::string Check(const cPageProcess& process, const std::string& prefix) const;

  std::map<std::string, cPageProcess, std::less<>> m_prefixes;  // without the slash at their end
};

}  // namespace tav::gateway::web
