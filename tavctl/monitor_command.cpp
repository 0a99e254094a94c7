// SPDX-License-Identifier: Apache-2.0
#include <tavctl/monitor_command.h>

#include <tavctl/failure.h>
#include <tavctl/interrupt.h>
#include <tavctl/options.h>
#include <tavctl/service_link.h>
#include <tavctl/utf8.h>

namespace tav::ctl {

namespace {

constexpr unsigned int kTurnMs = 60'000;

}  // namespace

void cMonitorCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "SERVICE", m_options.service, "Name of the service; see tavctl services", eNeed::Required);
  AddText(app, "--filter", m_options.filter, "Only messages with this text in their name or in a parameter's name");
  AddNumber(app, "--count", m_options.count, "End after so many messages, 0: never (default 0)");
  AddFlag(app, "--secrets", m_options.secrets,
          "Show the values of parameters that hold keys, passwords, PINs and users");
}

eExit cMonitorCommand::Run(cContext& context) {
  cInterrupt interrupt(context);
  cMonitorView view(context, m_options);
  AwaitConnection(context, view);
  const auto isDone = [&] { return view.IsComplete() || !view.GetRefusal().empty(); };
  while (!isDone() && !context.interrupted) context.Await(isDone, kTurnMs);
  if (!view.GetRefusal().empty())
    throw cFailure(eExitRefused,
                   "service '" + m_options.service + "' does not show its messages: " + ForTerminal(view.GetRefusal()));
  view.End();
  return eExitDone;
}

}  // namespace tav::ctl
