// SPDX-License-Identifier: Apache-2.0
#include <tavctl/manifest_command.h>

#include <tav/config/firmware_manifest.h>
#include <tavctl/failure.h>
#include <tavctl/options.h>

namespace tav::ctl {

namespace {

constexpr cColumn kColumns[] = {{"name", "NAME"}, {"text", "TEXT"}};

}  // namespace

void cManifestCommand::AddOptions(CLI::App& app) { AddArgument(app, "FILE", m_file, "The manifest", eNeed::Required); }

eExit cManifestCommand::Run(cContext& context) {
  cFirmwareManifest manifest;
  context.trouble.clear();
  if (!manifest.initFromFile(m_file)) throw cFailure(eExitFile, context.trouble);
  std::string fault;
  if (!CheckFirmwareManifest(m_file, fault, manifest)) throw cFailure(eExitNegative, m_file + ": " + fault);
  const auto rows = context.Rows(kColumns);
  for (const auto& [name, text] : manifest.info) {
    vorn::cRecord row;
    row.AppendTextPar("name", name);
    row.AppendTextPar("text", text);
    rows->Write(row);
  }
  rows->End();
  return eExitDone;
}

}  // namespace tav::ctl
