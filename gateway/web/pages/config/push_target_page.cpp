// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/push_target_page.h>

#include <gateway/web/pages/config/config_answers.h>
#include <gateway/web/pages/config/config_urls.h>
#include <gateway/web/pages/core/gateway_clients.h>

namespace tav::pages {

std::string cPushTargetPage::GetName() const {
  if (IsNew()) return m_target.name;
  return m_name.empty() ? Query("idx") : m_name;
}

std::string cPushTargetPage::GetUrl() const { return PushTargetUrl(m_target.idx); }
std::string cPushTargetPage::GetNewUrl() const { return kPushTargetPath; }
std::string cPushTargetPage::GetListUrl() const { return kPushTargetsPath; }

void cPushTargetPage::Load() {
  m_target.enabled = true;  // a new one is meant to be used
  Await(db_ctrl::kProtocol, db_ctrl::eGetPushTarget, Gateway().data.GetPushTarget(Id(), ""),
        [this](const vorn::cRecord& answer) {
          const std::string idx = IsNew() ? Posted("idx") : Query("idx");
          bool isThere = false;
          for (const cPushTarget& found : ThingsOf<cPushTarget>(answer, db_ctrl::kPushTargetRecord))
            if (std::to_string(found.idx) == idx) {
              isThere = true;
              m_name = found.name;
              if (!IsNew()) m_target = found;
            }
          Loaded(isThere);
        });
}

void cPushTargetPage::Edit(cFieldForm& form) {
  if (IsNew()) return form.Edit(m_target, form::kPushTargetFields, {});
  form.Edit(m_target, form::kPushTargetFields, {.fixed = {"idx"}});
}

std::string cPushTargetPage::FaultOfThing() { return m_target.isValid() ? std::string() : m_target.error; }

std::string cPushTargetPage::FaultOfNew() const {
  return "number " + std::to_string(m_target.idx) + " is that of the push target \"" + m_name + "\"";
}

void cPushTargetPage::Store() { AwaitChange(db_ctrl::eSetPushTarget, Gateway().data.SetPushTarget(Id(), m_target)); }

void cPushTargetPage::Erase() {
  AwaitChange(db_ctrl::eDeletePushTarget, Gateway().data.DeletePushTarget(Id(), m_target.idx, m_target.name));
}

// The service may have chosen the number.
void cPushTargetPage::TakeChange(const vorn::cRecord& answer) { m_target.idx = answer.GetUInt64Par(db_ctrl::kIdx); }

}  // namespace tav::pages
