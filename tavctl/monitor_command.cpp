// SPDX-License-Identifier: Apache-2.0
#include <tavctl/monitor_command.h>

#include <algorithm>

#include <tavctl/failure.h>
#include <tavctl/interrupt.h>
#include <tavctl/options.h>
#include <tavctl/service_link.h>
#include <tavctl/socket_probe.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

constexpr unsigned int kTurnMs = 60'000;

}  // namespace

void cMonitorCommand::AddOptions(CLI::App& app) {
  AddArguments(app, "SERVICE", m_options.services, "Names of the services, without one all; see tavctl services",
               eNeed::Optional);
  AddText(app, "--filter", m_options.filter, "Only messages with this text in their name or in a parameter's name");
  AddText(app, "--process", m_options.process, "Only messages of clients with this process name, such as ehzif");
  AddNumber(app, "--count", m_options.count, "End after so many messages, 0: never (default 0)");
  AddFlag(app, "--secrets", m_options.secrets, "Show the values of parameters that hold keys, passwords or PINs");
}

eExit cMonitorCommand::Run(cContext& context) {
  cInterrupt interrupt(context);
  cMonitorOutput output(context, m_options);
  const Views views = Watch(context, output);
  const auto refusing = [&] {
    return std::find_if(views.begin(), views.end(), [](const auto& view) { return !view->GetRefusal().empty(); });
  };
  const auto isDone = [&] { return output.IsComplete() || refusing() != views.end(); };
  while (!isDone() && !context.interrupted) context.Await(isDone, kTurnMs);
  if (const auto view = refusing(); view != views.end())
    throw cFailure(eExitRefused, "service '" + (*view)->GetName() +
                                     "' does not show its messages: " + ForTerminal((*view)->GetRefusal()));
  output.End();
  return eExitDone;
}

// Services that are named have to be there; of all there are one is enough.
cMonitorCommand::Views cMonitorCommand::Watch(cContext& context, cMonitorOutput& output) const {
  const bool named = !m_options.services.empty();
  const std::vector<std::string> services = named ? m_options.services : ServiceNames(context.service.GetDirectory());
  Views views;
  for (const std::string& service : services) {
    auto view = std::make_unique<cMonitorView>(context, service, output);
    try {
      AwaitConnection(context, *view);
      views.push_back(std::move(view));
    } catch (const cFailure& failure) {
      if (named) throw;
      context.Note(failure.what());
    }
  }
  if (views.empty()) throw cFailure(eExitUnreachable, "no service answers in " + context.service.GetDirectory());
  return views;
}

}  // namespace tav::ctl
