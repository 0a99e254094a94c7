// SPDX-License-Identifier: Apache-2.0
// What programs read: each page answers with an array of objects as its endpoint (endpoints.h) has them.
#pragma once

#include <string>

#include <gateway/web/pages/api/endpoints.h>
#include <gateway/web/pages/core/data_page.h>

namespace tav::pages {

// Gathers rows, then shows them.
class cRowsPage : public cDataPage {
 public:
  cRowsPage(const cPageContext& context, const cEndpoint& endpoint) : cDataPage(context), m_endpoint(endpoint) {}

 protected:
  void Add(const vorn::cRecord& row);
  void Show();

 private:
  const cEndpoint& m_endpoint;
  std::string m_rows;
};

class cMetersApi final : public cRowsPage {
 public:
  explicit cMetersApi(const cPageContext& context) : cRowsPage(context, kMetersEndpoint) {}

 private:
  void Start() override;
};

class cLastValuesApi final : public cRowsPage {
 public:
  explicit cLastValuesApi(const cPageContext& context) : cRowsPage(context, kLastValuesEndpoint) {}

 private:
  void Start() override;
};

class cStatusApi final : public cRowsPage {
 public:
  explicit cStatusApi(const cPageContext& context) : cRowsPage(context, kStatusEndpoint) {}

 private:
  void Start() override;
};

class cRulesApi final : public cRowsPage {
 public:
  explicit cRulesApi(const cPageContext& context) : cRowsPage(context, kRulesEndpoint) {}

 private:
  void Start() override;
};

}  // namespace tav::pages
