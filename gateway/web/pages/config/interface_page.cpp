// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/interface_page.h>

#include <gateway/web/pages/config/config_answers.h>
#include <gateway/web/pages/config/config_table.h>
#include <gateway/web/pages/config/config_urls.h>
#include <gateway/web/pages/core/gateway_clients.h>

namespace tav::pages {

std::string cInterfacePage::GetName() const { return IsNew() ? m_interface.name : Query("name"); }
std::string cInterfacePage::GetUrl() const { return InterfaceUrl(GetName()); }
std::string cInterfacePage::GetNewUrl() const { return kInterfacePath; }
std::string cInterfacePage::GetListUrl() const { return kInterfacesPath; }

void cInterfacePage::Load() {
  const std::string name = IsNew() ? Posted("name") : Query("name");
  m_interface.enabled = true;  // a new one is meant to be used
  if (name.empty()) return Loaded(false);
  Await(db_ctrl::kProtocol, db_ctrl::eGetInterface, Gateway().data.GetInterface(Id(), "", true, false),
        [this, name](const vorn::cRecord& answer) {
          bool isThere = false;
          for (const cInterfaceRecord& found : ThingsOf<cInterfaceRecord>(answer, db_ctrl::kInterfaceRecord))
            if (found.name == name) {
              isThere = true;
              if (!IsNew()) m_interface = found;
            }
          Loaded(isThere);
        });
}

void cInterfacePage::Edit(cFieldForm& form) {
  if (IsNew()) return form.Edit(m_interface, form::kInterfaceFields, {});
  form.Edit(m_interface, form::kInterfaceFields, {.fixed = {"name"}});
}

std::string cInterfacePage::FaultOfThing() {
  cInterfaceRecord read;
  return read.FromRecord(m_interface.ToRecord()) ? std::string() : read.error;
}

void cInterfacePage::Store() {
  m_interface.valid = true;
  AwaitChange(db_ctrl::eSetInterface, Gateway().data.SetInterface(Id(), m_interface));
}

void cInterfacePage::Erase() {
  AwaitChange(db_ctrl::eDeleteInterface, Gateway().data.DeleteInterface(Id(), GetName()));
}

std::string cInterfacePage::GetLoss() const {
  return m_interface.meters.empty() ? "No meter is read through it." : "It cannot go while meters are read through it.";
}

cHtml cInterfacePage::GetRest() {
  return cHtml().Put("<h2>Meters</h2>\n{}", MeterTable(m_interface.meters, "No meter is read through it."));
}

}  // namespace tav::pages
