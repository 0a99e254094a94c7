// SPDX-License-Identifier: Apache-2.0
// cEditPage: one configured thing: shown, changed, created and deleted by forms. What the kinds of things have in
// common is here; a kind says how its thing is read, which fields it has, and how it is stored.
//
// A request goes: Load reads what is there and calls Loaded; that shows it, or does what was asked for with it. Nothing
// is stored that somebody else has changed since the form was made, and nothing that was typed is lost by a refusal,
// but for secrets.
#pragma once

#include <string>

#include <gateway/web/pages/config/field_form.h>
#include <gateway/web/pages/core/form_parts.h>
#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cEditPage : public cWebPage {
 public:
  using cWebPage::cWebPage;

 protected:
  // ---- what a kind of thing says of itself
  virtual std::string GetKind() const = 0;  // "push target"
  virtual std::string GetName() const = 0;  // of the thing
  // The address names none: one is to be created.
  virtual bool IsNew() const = 0;
  virtual std::string GetUrl() const = 0;  // of the thing
  virtual std::string GetNewUrl() const = 0;
  virtual std::string GetListUrl() const = 0;
  // Reads the thing that the address names, or, to create one, what has its name already; ends in Loaded.
  virtual void Load() = 0;
  // The tables of its fields; sets those of the thing.
  virtual void Edit(cFieldForm& form) = 0;
  virtual vorn::cRecord GetRecord() const = 0;
  // Why the thing as it would be stored is not valid; empty when it is.
  virtual std::string FaultOfThing() = 0;
  // Send the change; each ends in AwaitChange.
  virtual void Store() = 0;
  virtual void Erase() = 0;
  // What becomes of other things when it is deleted.
  virtual std::string GetLoss() const { return {}; }
  // What stands above the fields of a new one, and below those of one that is there.
  virtual cHtml GetLead() { return {}; }
  virtual cHtml GetRest() { return {}; }
  // Why one cannot be created, where Load has found one.
  virtual std::string FaultOfNew() const { return "the " + Describe() + " is there already"; }
  // The answer to a change, before the thing is shown again.
  virtual void TakeChange(const vorn::cRecord& /*answer*/) {}
  // A form of the rest was sent.
  virtual void Act(const std::string& action);

  // ---- what they use
  // isThere: the thing has been found.
  void Loaded(bool isThere);
  void AwaitChange(unsigned int request, bool sent);
  // The thing as it is stored, with a notice above it.
  void ShowThing(unsigned int status, const cHtml& notice);
  // A button with a form around it that sends an action here; inputs stand in it.
  cHtml ActionForm(const char* action, const char* button, const cHtml& inputs) const;
  std::string Describe() const { return GetKind() + " \"" + GetName() + "\""; }

 private:
  void Start() override;
  void Save();
  void Delete();
  void ShowForm(unsigned int status, const std::string& fault);
  void ShowDeletion(unsigned int status, const std::string& fault);
  void Refuse(const std::string& reason);
  void Show(unsigned int status, const cHtml& notice);
  cHtml EntryForm() const;

  cFieldForm m_form;
  std::string m_state;      // of the thing as it has been found
  std::string m_formState;  // that the form was made from
  bool m_isThere = false;
  bool m_isDeletion = false;
};

// What a visitor is told after a change: the address that says so, and the note that it gives; empty for other words.
std::string WithOutcome(const std::string& url, const char* outcome);
cHtml OutcomeNote(const std::string& outcome);

}  // namespace tav::pages
