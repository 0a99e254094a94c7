// SPDX-License-Identifier: Apache-2.0
// cDownloadPage: stored values of a meter as a file, put out as they are read, however many they are: one lot of rows
// is read when the one before it has been handed on to the client.
#pragma once

#include <memory>
#include <string>

#include <gateway/web/pages/core/data_page.h>
#include <gateway/web/pages/view/value_export.h>

namespace tav::pages {

class cDownloadPage : public cDataPage {
 public:
  using cDataPage::cDataPage;

 protected:
  virtual std::string Format() const { return Query("format"); }
  // Whether the browser is to keep it rather than to show it.
  virtual bool IsFile() const { return true; }

 private:
  void Start() override;
  void OnPassed() override;
  // Puts out what was gathered, and goes on when it has been handed on.
  void Pass(Go go);
  void GoOn();

  std::unique_ptr<cValueExport> m_export;
  std::string m_gathered;
  Go m_go;
  bool m_begun = false;
  unsigned int m_waiting = 0;  // outputs on their way
};

// The same for programs, always JSON.
class cValuesApi final : public cDownloadPage {
 public:
  using cDownloadPage::cDownloadPage;

 private:
  std::string Format() const override { return "json"; }
  bool IsFile() const override { return false; }
};

// Reads meter, identifier, profile and range from the query; false, and in error what was expected.
bool ReadSelection(const cHttpRequest& query, cDbCtrlRequest& request, std::string& error);

}  // namespace tav::pages
