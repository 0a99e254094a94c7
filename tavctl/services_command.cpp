// SPDX-License-Identifier: Apache-2.0
#include <tavctl/services_command.h>

#include <algorithm>

#include <tav/framework/scm_service_io.h>
#include <tavctl/socket_probe.h>

namespace tav::ctl {

namespace {

constexpr cColumn kColumns[] = {
    {"service", "SERVICE"}, {"state", "STATE"}, {"process", "PROCESS"}, {"pid", "PID", eForm::Number}};

constexpr unsigned int kPatienceMs = 2'000;

// One that was found, and its connection when somebody listens.
struct cFound {
  std::string name;
  cProbe probe;
  std::unique_ptr<vorn::cScmServiceIO> link;

  bool IsDecided() const { return !link || link->IsConnected(); }
};

std::vector<cFound> Find(vorn::cScmService& service) {
  std::vector<cFound> all;
  for (const std::string& name : ServiceNames(service.GetDirectory())) {
    cFound found{name, ProbeSocket(service.GetSocketPath(name)), nullptr};
    if (found.probe.state == eSocket::Listening) found.link = std::make_unique<vorn::cScmServiceIO>(&service, name);
    all.push_back(std::move(found));
  }
  return all;
}

const char* StateText(const cFound& found) {
  if (found.link) return found.link->IsConnected() ? "running" : "no answer";
  switch (found.probe.state) {
    case eSocket::Forbidden:
      return "forbidden";
    case eSocket::Unusable:
      return "unusable";
    default:
      return "ended";
  }
}

vorn::cRecord Row(const cFound& found) {
  vorn::cRecord row;
  row.AppendTextPar("service", found.name);
  row.AppendTextPar("state", StateText(found));
  if (found.link && found.link->IsConnected()) {
    const vorn::cScmPeer& peer = found.link->GetChannel()->GetPeer();
    row.AppendTextPar("process", peer.processName);
    row.AppendUIntPar("pid", static_cast<unsigned int>(peer.pid));
  }
  return row;
}

}  // namespace

eExit cServicesCommand::Run(cContext& context) {
  const std::vector<cFound> all = Find(context.service);
  context.Await([&] { return std::all_of(all.begin(), all.end(), std::mem_fn(&cFound::IsDecided)); },
                std::min(context.timeoutMs, kPatienceMs));
  const auto rows = context.Rows(kColumns);
  for (const cFound& found : all) rows->Write(Row(found));
  rows->End();
  const bool anyRuns =
      std::any_of(all.begin(), all.end(), [](const cFound& found) { return found.link && found.link->IsConnected(); });
  if (anyRuns) return eExitDone;
  context.Note("no service answers in " + context.service.GetDirectory());
  return eExitUnreachable;
}

}  // namespace tav::ctl
