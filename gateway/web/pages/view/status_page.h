// SPDX-License-Identifier: Apache-2.0
// cStatusPage: what the gateway's processes publish about themselves; the values go on changing while one looks.
#pragma once

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cStatusPage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  void Start() override;
  void Show(const vorn::cRecord& answer);
};

}  // namespace tav::pages
