// SPDX-License-Identifier: Apache-2.0
#include <tavctl/protocol_command.h>

#include <tavctl/failure.h>
#include <tavctl/options.h>
#include <tavctl/protocol_page.h>
#include <tavctl/protocols.h>

namespace tav::ctl {

void cProtocolCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "SERVICE", m_service, "Name of the service", eNeed::Required);
}

eExit cProtocolCommand::Run(cContext& context) {
  if (context.json) throw cFailure(eExitUsage, "protocol: --json: the page is no JSON document");
  const cProtocol* const protocol = FindProtocol(m_service);
  if (protocol != nullptr) {
    context.streams.out << ProtocolPage(*protocol);
    return eExitDone;
  }
  std::string known;
  for (const cProtocol* each : kProtocols) known += " " + std::string(each->GetService());
  throw cFailure(eExitNegative, "there is no protocol of service '" + m_service + "'; known are:" + known);
}

}  // namespace tav::ctl
