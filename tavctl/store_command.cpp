// SPDX-License-Identifier: Apache-2.0
#include <tavctl/store_command.h>

#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/data_query.h>
#include <tavctl/options.h>

namespace tav::ctl {

namespace {

constexpr cColumn kNameColumns[] = {{db_ctrl::kStore, "STORE"}};
constexpr cColumn kValueColumns[] = {{db_ctrl::kKey, "KEY"}, {db_ctrl::kValue, "VALUE"}};

}  // namespace

void cStoreCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "NAME", m_name, "Name of the store: a driver's name, or its own", eNeed::Optional);
}

eExit cStoreCommand::Run(cContext& context) {
  cDataQuery data(context);
  vorn::cRecord request;
  if (!m_name.empty()) request.AppendTextPar(db_ctrl::kStore, m_name);
  const auto rows = context.Rows(m_name.empty() ? Columns(kNameColumns) : Columns(kValueColumns));
  const auto outcome = data.List(db_ctrl::eListStores, request, 0, [&](const vorn::cRecord& row) { rows->Write(row); });
  rows->End();
  if (outcome.rows != 0) return eExitDone;
  context.Note(m_name.empty() ? "there is no store yet" : "store '" + m_name + "' holds nothing; see tavctl store");
  return m_name.empty() ? eExitDone : eExitNegative;
}

}  // namespace tav::ctl
