// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/page_registry.h>

#include <set>

#include <gateway/web/front/http_text.h>

namespace tav::gateway::web {

namespace {

constexpr std::string_view kOwn = "/static";

std::string WithoutSlash(std::string prefix) {
  while (prefix.ends_with('/')) prefix.pop_back();
  return prefix;
}

}  // namespace

std::string cPageRegistry::Register(const cPageProcess& process, const std::vector<std::string>& prefixes) {
  const std::vector<std::string> all = prefixes.empty() ? std::vector<std::string>{"/"} : prefixes;
  for (const std::string& prefix : all)
    if (std::string reason = Check(process, prefix); !reason.empty()) return reason;
  Forget(process.channel.get());
  for (const std::string& prefix : all) m_prefixes[WithoutSlash(prefix)] = process;
  return {};
}

std::string cPageRegistry::Check(const cPageProcess& process, const std::string& prefix) const {
  const std::string name = "prefix \"" + prefix + "\"";
  if (!prefix.starts_with('/') || HasControlCharacter(prefix)) return name + ": expected a path that begins with /";
  const std::string key = WithoutSlash(prefix);
  if (key == kOwn || key.starts_with(std::string(kOwn) + "/")) return name + " is the front end's own";
  const auto found = m_prefixes.find(key);
  if (found == m_prefixes.end() || found->second.channel == process.channel) return {};
  return name + " is served by " + found->second.channel->GetPeer().ToString();
}

void cPageRegistry::Forget(const vorn::cScmChannel* channel) {
  std::erase_if(m_prefixes, [&](const auto& entry) { return entry.second.channel.get() == channel; });
}

const cPageProcess* cPageRegistry::Find(std::string_view path) const {
  while (true) {
    const auto found = m_prefixes.find(path);
    if (found != m_prefixes.end()) return &found->second;
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return nullptr;
    path = path.substr(0, slash);
  }
}

std::size_t cPageRegistry::CountProcesses() const {
  std::set<const vorn::cScmChannel*> processes;
  for (const auto& [prefix, process] : m_prefixes) processes.insert(process.channel.get());
  return processes.size();
}

}  // namespace tav::gateway::web
