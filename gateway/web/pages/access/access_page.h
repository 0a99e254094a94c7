// SPDX-License-Identifier: Apache-2.0
// The pages of passwords, accounts and tokens. Everybody changes his own password; accounts and tokens are for
// administrators. All of it stands on one page, each kind of change has a path of its own.
#pragma once

#include <string>

#include <gateway/web/pages/access/accounts.h>
#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cAccessForms : public cWebPage {
 public:
  using cWebPage::cWebPage;

 protected:
  // head: what became of a change.
  void ShowForms(unsigned int status, const cHtml& head);
  void ShowFault(unsigned int status, const std::string& fault);
  // Behind a change of accounts: the visitor's own login ends when it was of what he was before.
  void Finish(const std::string& done);

 private:
  cHtml OwnPassword() const;
  cHtml Accounts();
  cHtml AccountRow(const cAccount& account);
  cHtml Tokens();
};

class cAccessPage final : public cAccessForms {
 public:
  using cAccessForms::cAccessForms;

 private:
  void Start() override;
  void ChangePassword();
};

class cAccountsPage final : public cAccessForms {
 public:
  using cAccessForms::cAccessForms;

 private:
  void Start() override;
  void Set(bool isNew);
  void Remove();
};

class cTokensPage final : public cAccessForms {
 public:
  using cAccessForms::cAccessForms;

 private:
  void Start() override;
};

}  // namespace tav::pages
