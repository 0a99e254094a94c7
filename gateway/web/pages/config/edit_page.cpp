// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/edit_page.h>

#include <gateway/web/pages/config/record_state.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::pages {

namespace {

constexpr const char* kCreated = "created";
constexpr const char* kChanged = "changed";
constexpr const char* kDeleted = "deleted";

constexpr const char* kSomebodyElse =
    " has been changed meanwhile. What is stored now stands beside the fields that differ; save again to store yours "
    "instead.";

std::string Capital(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}

}  // namespace

std::string WithOutcome(const std::string& url, const char* outcome) {
  return url + (url.find('?') == std::string::npos ? "?done=" : "&done=") + outcome;
}

cHtml OutcomeNote(const std::string& outcome) {
  for (const char* known : {kCreated, kChanged, kDeleted})
    if (outcome == known) return DoneNote(Capital(outcome) + ".");
  return {};
}

// ---- what is asked for

void cEditPage::Start() {
  if (IsNew() && !GetVisitor().MayChange()) return ShowError(403, "Your account may only look.");
  Load();
}

void cEditPage::Loaded(bool isThere) {
  m_isThere = isThere;
  if (!IsNew() && !isThere) return ShowError(404, "There is no " + Describe() + ".");
  m_state = IsNew() ? std::string() : RecordState(GetRecord());
  m_formState = IsPost() ? Posted("state") : m_state;
  if (IsPost()) {
    const std::string action = Posted("action");
    if (action == "save") return Save();
    if (!IsNew()) return action == "delete" ? Delete() : Act(action);
    return ShowError(400, "The form asks for nothing that this page does.");
  }
  if (!IsNew() && GetVisitor().MayChange() && !Query("delete").empty()) return ShowDeletion(200, {});
  ShowThing(200, OutcomeNote(Query("done")));
}

void cEditPage::Act(const std::string&) { ShowError(400, "The form asks for nothing that this page does."); }

void cEditPage::Save() {
  cFieldForm present;
  Edit(present);
  m_form = cFieldForm([this](const char* name) { return Posted(name); });
  Edit(m_form);
  if (m_formState != m_state) {
    m_form.Compare(present);
    m_formState = m_state;
    return ShowForm(409, "The " + Describe() + kSomebodyElse);
  }
  if (m_form.HasFault()) return ShowForm(400, "Not saved: what stands in some of the fields does not fit.");
  if (const std::string fault = FaultOfThing(); !fault.empty()) return ShowForm(400, "Not saved: " + fault + ".");
  if (IsNew() && m_isThere) return ShowForm(409, "Not saved: " + FaultOfNew() + ".");
  Store();
}

void cEditPage::Delete() {
  m_isDeletion = true;
  if (m_formState == m_state) return Erase();
  m_formState = m_state;
  ShowDeletion(409, "The " + Describe() + " has been changed meanwhile.");
}

void cEditPage::AwaitChange(unsigned int request, bool sent) {
  Await(
      db_ctrl::kProtocol, request, sent,
      [this](const vorn::cRecord& answer) {
        if (m_isDeletion) return Redirect(WithOutcome(GetListUrl(), kDeleted));
        TakeChange(answer);
        Redirect(WithOutcome(GetUrl(), IsNew() ? kCreated : kChanged));
      },
      [this](const std::string& reason) { Refuse(reason); });
}

void cEditPage::Refuse(const std::string& reason) {
  if (m_isDeletion) return ShowDeletion(409, "Not deleted: " + reason);
  ShowForm(409, "Not saved: " + reason);
}

// ---- what is shown

void cEditPage::ShowForm(unsigned int status, const std::string& fault) { Show(status, ErrorNote(fault)); }

void cEditPage::ShowThing(unsigned int status, const cHtml& notice) {
  m_form = cFieldForm();
  Edit(m_form);
  m_formState = m_state;
  Show(status, notice);
}

void cEditPage::Show(unsigned int status, const cHtml& notice) {
  cHtml body = notice;
  if (IsNew()) body.Put(GetLead());
  if (GetVisitor().MayChange())
    body.Put(EntryForm());
  else
    body.Put(m_form.Facts());
  if (!IsNew()) body.Put(GetRest());
  ShowPage(IsNew() ? "New " + GetKind() : Capital(GetKind()) + " " + GetName(), body, status);
}

cHtml cEditPage::EntryForm() const {
  const std::string url = IsNew() ? GetNewUrl() : GetUrl();
  cHtml form;
  form.Put("<form class=\"entry\" method=\"post\" action=\"{}\">{}{}\n{}<div class=\"actions\">", url, CsrfField(),
           HiddenField("state", m_formState), m_form.Inputs());
  form.Put("<button name=\"action\" value=\"save\">Save</button>");
  if (!IsNew()) form.Put(" <a class=\"button\" href=\"{}&amp;delete=ask\">Delete</a>", url);
  return form.Put("</div>\n</form>\n");
}

void cEditPage::ShowDeletion(unsigned int status, const std::string& fault) {
  cHtml body = ErrorNote(fault);
  body.Put("<p>Delete the {}? {}</p>\n<form method=\"post\" action=\"{}\">{}{}\n", Describe(), GetLoss(), GetUrl(),
           CsrfField(), HiddenField("state", m_formState));
  body.Put(
      "<div class=\"actions\"><button class=\"danger\" name=\"action\" value=\"delete\">Delete</button> "
      "<a class=\"button\" href=\"{}\">Keep</a></div>\n</form>\n",
      GetUrl());
  ShowPage("Delete " + GetKind() + " " + GetName(), body, status);
}

cHtml cEditPage::ActionForm(const char* action, const char* button, const cHtml& inputs) const {
  return cHtml().Put(
      "<form class=\"entry\" method=\"post\" action=\"{}\">{}\n{}<div class=\"actions\">"
      "<button name=\"action\" value=\"{}\">{}</button></div>\n</form>\n",
      GetUrl(), CsrfField(), inputs, std::string_view(action), std::string_view(button));
}

}  // namespace tav::pages
