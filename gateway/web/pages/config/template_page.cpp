// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/template_page.h>

#include <gateway/form/config_json.h>
#include <gateway/web/pages/config/config_answers.h>
#include <gateway/web/pages/config/config_table.h>
#include <gateway/web/pages/config/config_urls.h>
#include <gateway/web/pages/core/gateway_clients.h>

namespace tav::pages {

std::string cTemplatePage::GetUrl() const { return TemplateUrl(GetName()); }
std::string cTemplatePage::GetNewUrl() const { return kTemplatePath; }
std::string cTemplatePage::GetListUrl() const { return kTemplatesPath; }

void cTemplatePage::Load() {
  m_template.enable = true;  // a new one is meant to be offered
  Await(db_ctrl::kProtocol, db_ctrl::eGetMeterTemplate, Gateway().data.GetMeterTemplate(Id(), ""),
        [this](const vorn::cRecord& answer) {
          const std::string name = IsNew() ? Posted("name") : Query("name");
          bool isThere = false;
          for (const cMeterTemplate& found : TemplatesOf(answer))
            if (found.name == name) {
              isThere = true;
              if (IsNew()) continue;
              m_template = found;
              m_template.id = found.id;  // which assigning leaves out
            }
          Loaded(isThere);
        });
}

void cTemplatePage::Edit(cFieldForm& form) {
  if (IsNew())
    form.Edit(m_template, form::kTemplateFields, {.fixed = {"idx"}});
  else
    form.Edit(m_template, form::kTemplateFields, {.fixed = {"idx", "name"}});
  form.Edit(m_template.meterConfig, form::kMeterFields,
            {.prefix = std::string(form::kMeterConfig) + ".", .legend = "Meter"});
  form.Edit(m_template.pushConfig, form::kPushTargetFields,
            {.prefix = std::string(form::kPushConfig) + ".", .legend = "Push target"});
}

std::string cTemplatePage::FaultOfThing() {
  if (m_template.name.empty()) return "missing name";
  const std::string fault = form::PushConfigFault(m_template);
  return fault.empty() ? fault : "push target: " + fault;
}

void cTemplatePage::Store() {
  AwaitChange(db_ctrl::eSetMeterTemplate, Gateway().data.SetMeterTemplate(Id(), m_template));
}

void cTemplatePage::Erase() {
  AwaitChange(db_ctrl::eDeleteMeterTemplate, Gateway().data.DeleteMeterTemplate(Id(), m_template.id, m_template.name));
}

cHtml cTemplatePage::GetRest() {
  return cHtml().Put("<h2>Collectors</h2>\n{}", CollectorTable(m_template.meterConfig, eLinks::Without));
}

}  // namespace tav::pages
