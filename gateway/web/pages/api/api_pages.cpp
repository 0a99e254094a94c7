// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/api/api_pages.h>

#include <nlohmann/json.hpp>

#include <gateway/form/json.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/status_protocol.h>

namespace tav::pages {

void cRowsPage::Add(const vorn::cRecord& row) {
  m_rows += m_rows.empty() ? "\n" : ",\n";
  m_rows += form::ToLine(form::RowToJson(row, m_endpoint.columns));
}

void cRowsPage::Show() { ShowText("application/json", "[" + m_rows + "\n]\n"); }

void cMetersApi::Start() {
  ReadList(
      db_ctrl::eListMeters, [this](const vorn::cRecord& row) { Add(row); }, [this] { Show(); });
}

void cLastValuesApi::Start() {
  cDbCtrlRequest request;
  request.m_meterID = Query("meter");
  request.m_maxLen = 0;
  ReadLastValues(
      request, [this](const vorn::cRecord& row) { Add(row); }, [this] { Show(); });
}

void cStatusApi::Start() {
  vorn::cRecord request;
  request.AppendTextPar(status::kPrefix, Query("prefix"));
  Ask(Gateway().status, status::kProtocol, status::eList, request, [this](const vorn::cRecord& answer) {
    for (vorn::cRecordPar par = answer.GetPar(status::kRow); par.IsValid(); par = par.NextSame()) {
      vorn::cRecord row;
      if (par.GetRecord(row)) Add(row);
    }
    Show();
  });
}

void cRulesApi::Start() {
  for (const auto& [id, rule] : Gateway().obis.map.GetEntries()) Add(rule.ToRecord());
  Show();
}

}  // namespace tav::pages
