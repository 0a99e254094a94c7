// SPDX-License-Identifier: Apache-2.0
// Pages that say one thing: an error, and where to go instead.
#pragma once

#include <string>
#include <utility>

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cErrorPage final : public cWebPage {
 public:
  // header: a further line of the answer's header; empty: none.
  cErrorPage(const cPageContext& context, unsigned int status, std::string text, std::string header = {})
      : cWebPage(context), m_status(status), m_text(std::move(text)), m_header(std::move(header)) {}

 private:
  void Start() override {
    if (!m_header.empty()) AddHeader(m_header);
    ShowError(m_status, m_text);
  }

  unsigned int m_status;
  std::string m_text;
  std::string m_header;
};

class cRedirectPage final : public cWebPage {
 public:
  cRedirectPage(const cPageContext& context, std::string url) : cWebPage(context), m_url(std::move(url)) {}

 private:
  void Start() override { Redirect(m_url); }

  std::string m_url;
};

}  // namespace tav::pages
