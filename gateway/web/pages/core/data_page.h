// SPDX-License-Identifier: Apache-2.0
// cDataPage: a page that reads rows of the database control service, one answer after the other.
#pragma once

#include <functional>
#include <string_view>

#include <gateway/web/pages/core/web_page.h>
#include <tav/service/db_ctrl_request.h>

namespace tav::pages {

class cDataPage : public cWebPage {
 public:
  using cWebPage::cWebPage;

 protected:
  using OnRow = std::function<void(const vorn::cRecord& row)>;
  using Done = std::function<void()>;

  // Rows of one answer: enough that asking costs little, and few enough to be passed on at once.
  static constexpr unsigned int kPageRows = 1000;

  // All rows of each kind; a refusal ends the page.
  void ReadLastValues(cDbCtrlRequest request, OnRow onRow, Done done);
  void ReadMeterStatus(cDbCtrlRequest request, OnRow onRow, Done done);
  // A list of the protocol, whose answers tell where the next one goes on.
  void ReadList(unsigned int request, OnRow onRow, Done done);
  // The values as they were stored, or as a profile has them. Each time a lot of rows has been told, pause is asked
  // how to go on: it keeps the function and calls it when there is room for more.
  using Go = std::function<void()>;
  void ReadStoredValues(cDbCtrlRequest request, OnRow onRow, std::function<void(Go)> pause, Done done);

  // What is asked for is not wanted any more: its rows are given back.
  void OnGone() override;

 private:
  // Rows that come at once, and the further ones of their handle.
  void TakeAll(const vorn::cRecord& answer, std::string_view key);
  void TakeRows(const vorn::cRecord& answer, std::string_view key);
  void AskForList(unsigned int request, const vorn::cRecord& record);
  void Fetch(const std::function<void(Go)>& pause);

  OnRow m_onRow;
  Done m_done;
  vorn::cUuid m_handle;
};

}  // namespace tav::pages
