// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/data_page.h>

#include <utility>

#include <gateway/web/pages/core/gateway_clients.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::pages {

void cDataPage::TakeRows(const vorn::cRecord& answer, std::string_view key) {
  for (vorn::cRecordPar par = answer.GetPar(key); par.IsValid(); par = par.NextSame()) {
    vorn::cRecord row;
    if (par.GetRecord(row)) m_onRow(row);
  }
}

void cDataPage::TakeAll(const vorn::cRecord& answer, std::string_view key) {
  m_handle = answer.GetUuidPar(db_ctrl::kHandle);
  TakeRows(answer, key);
  Fetch([](const Go& go) { go(); });
}

void cDataPage::ReadLastValues(cDbCtrlRequest request, OnRow onRow, Done done) {
  m_onRow = std::move(onRow);
  m_done = std::move(done);
  Await(db_ctrl::kProtocol, db_ctrl::eGetLastValues, Gateway().data.GetLastValues(Id(), request),
        [this](const vorn::cRecord& answer) { TakeAll(answer, db_ctrl::kRow); });
}

void cDataPage::ReadMeterStatus(cDbCtrlRequest request, OnRow onRow, Done done) {
  m_onRow = std::move(onRow);
  m_done = std::move(done);
  Await(db_ctrl::kProtocol, db_ctrl::eGetMeterStatus, Gateway().data.GetMeterStatus(Id(), request),
        [this](const vorn::cRecord& answer) { TakeAll(answer, db_ctrl::kMeterStatus); });
}

void cDataPage::ReadList(unsigned int request, OnRow onRow, Done done) {
  m_onRow = std::move(onRow);
  m_done = std::move(done);
  AskForList(request, {});
}

void cDataPage::AskForList(unsigned int request, const vorn::cRecord& record) {
  Ask(Gateway().data, db_ctrl::kProtocol, request, record, [this, request](const vorn::cRecord& answer) {
    TakeRows(answer, db_ctrl::kRow);
    const vorn::cRecordPar next = answer.GetPar(db_ctrl::kNext);
    if (!next.IsValid()) return std::exchange(m_done, {})();
    vorn::cRecord further;
    further.AppendDataPar(db_ctrl::kAfter, next.GetData());
    AskForList(request, further);
  });
}

void cDataPage::ReadStoredValues(cDbCtrlRequest request, OnRow onRow, std::function<void(Go)> pause, Done done) {
  m_onRow = std::move(onRow);
  m_done = std::move(done);
  Await(db_ctrl::kProtocol, db_ctrl::eGetStoredValues, Gateway().data.GetStoredValues(Id(), request),
        [this, pause = std::move(pause)](const vorn::cRecord& answer) {
          m_handle = answer.GetUuidPar(db_ctrl::kHandle);
          Fetch(pause);
        });
}

// Without a handle everything has been told.
void cDataPage::Fetch(const std::function<void(Go)>& pause) {
  if (!m_handle.IsValid()) return std::exchange(m_done, {})();
  Await(db_ctrl::kProtocol, db_ctrl::eFetchStoredValues, Gateway().data.FetchStoredValues(Id(), m_handle, kPageRows),
        [this, pause](const vorn::cRecord& answer) {
          if (answer.GetBoolPar(db_ctrl::kEnd)) m_handle.Clear();
          TakeRows(answer, db_ctrl::kRow);
          pause([this, pause] { Fetch(pause); });
        });
}

void cDataPage::OnGone() {
  if (m_handle.IsValid()) Gateway().data.CloseResult(Id(), m_handle);
  m_handle.Clear();
}

}  // namespace tav::pages
