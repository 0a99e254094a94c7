// SPDX-License-Identifier: Apache-2.0
// The interface for programs as an OpenAPI document (3.0.3), made of the table of endpoints.
#pragma once

#include <string>

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

std::string MakeOpenApi();

class cOpenApiPage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  void Start() override { ShowText("application/json", MakeOpenApi()); }
};

}  // namespace tav::pages
