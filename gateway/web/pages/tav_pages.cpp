// SPDX-License-Identifier: Apache-2.0
// tav-pages: the process of the gateway's pages.
#include <signal.h>
#include <sys/stat.h>

#include <cstdio>
#include <iostream>

#include <gateway/host/readiness.h>
#include <gateway/web/pages/options.h>
#include <gateway/web/pages/page_process.h>
#include <gateway/web/pages/setup_notice.h>
#include <tav/framework/trace.h>
#include <tav/framework/watch.h>

namespace {

enum eExitCode : int { eExitDone = 0, eExitUsage = 2, eExitAccounts = 3 };

int Complain(const std::string& text, int code) {
  std::fprintf(stderr, "tav-pages: %s\n", text.c_str());
  return code;
}

int SetPassword(const tav::pages::cOptions& options) {
  tav::pages::cAccounts accounts(options.access.file);
  std::string error;
  if (!accounts.Load(error)) return Complain(error, eExitAccounts);
  std::string password;
  std::getline(std::cin, password);
  if (!accounts.Set(options.account, options.role, password, error)) return Complain(error, eExitAccounts);
  return eExitDone;
}

int Serve(const tav::pages::cOptions& options) {
  tav::pages::cPageProcess process(options.dir, options.access);
  std::string error;
  if (!process.GetAccess().Load(error)) return Complain(error, eExitAccounts);
  const vorn::cSignalWatch stop(&process, {SIGTERM, SIGINT}, [&](int) { process.Stop(); });
  tav::pages::cSetupNotice notice(process, [](const std::string& text) { Complain(text, eExitDone); });
  tav::gateway::NotifyManager("READY=1");
  process.Run();
  tav::gateway::NotifyManager("STOPPING=1");
  return eExitDone;
}

}  // namespace

int main(int argc, char** argv) {
  const tav::pages::cParsedOptions parsed = tav::pages::ParseOptions(argc, argv);
  if (!parsed.options) {
    std::fputs(parsed.text.c_str(), parsed.exitCode == eExitDone ? stdout : stderr);
    return parsed.exitCode;
  }
  for (const char* name : {"UnitTAV", "UnitVORN", "UnitPages"})
    vorn::cUnit::Find(name)->SetLevel(parsed.options->trace);
  umask(077);
  signal(SIGPIPE, SIG_IGN);
  return parsed.options->account.empty() ? Serve(*parsed.options) : SetPassword(*parsed.options);
}
