// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/list_pages.h>

#include <gateway/web/pages/config/config_answers.h>
#include <gateway/web/pages/config/config_table.h>
#include <gateway/web/pages/config/config_urls.h>
#include <gateway/web/pages/config/edit_page.h>
#include <gateway/web/pages/core/gateway_clients.h>

namespace tav::pages {

void cListPage::ShowList(const std::string& title, const cHtml& table, const char* newPath, const char* newText) {
  cHtml body = OutcomeNote(Query("done"));
  body.Put(table);
  if (GetVisitor().MayChange())
    body.Put("<p class=\"actions\"><a class=\"button\" href=\"{}\">{}</a></p>\n", std::string_view(newPath),
             std::string_view(newText));
  ShowPage(title, body);
}

void cInterfacesPage::Start() {
  Await(db_ctrl::kProtocol, db_ctrl::eGetInterface, Gateway().data.GetInterface(Id(), "", false, false),
        [this](const vorn::cRecord& answer) {
          std::vector<cThingRow> rows;
          for (const cInterfaceRecord& each : ThingsOf<cInterfaceRecord>(answer, db_ctrl::kInterfaceRecord))
            rows.push_back(MakeRow(each, form::kInterfaceFields, InterfaceUrl(each.name)));
          ShowList("Interfaces",
                   ThingTable(form::kInterfaceColumns, rows, "No interface yet. Meters are read through interfaces."),
                   kInterfacePath, "New interface");
        });
}

// By way of the interfaces, which give their meters without collectors: these are many, and not listed.
void cMeterConfigsPage::Start() {
  Await(db_ctrl::kProtocol, db_ctrl::eGetInterface, Gateway().data.GetInterface(Id(), "", true, false),
        [this](const vorn::cRecord& answer) {
          std::vector<cMeterConfig> meters;
          for (const cInterfaceRecord& each : ThingsOf<cInterfaceRecord>(answer, db_ctrl::kInterfaceRecord))
            meters.insert(meters.end(), each.meters.begin(), each.meters.end());
          ShowList("Meter settings", MeterTable(meters, "No meter is configured yet."), kMeterConfigPath, "New meter");
        });
}

void cPushTargetsPage::Start() {
  Await(db_ctrl::kProtocol, db_ctrl::eGetPushTarget, Gateway().data.GetPushTarget(Id(), ""),
        [this](const vorn::cRecord& answer) {
          std::vector<cThingRow> rows;
          for (const cPushTarget& each : ThingsOf<cPushTarget>(answer, db_ctrl::kPushTargetRecord))
            rows.push_back(MakeRow(each, form::kPushTargetFields, PushTargetUrl(each.idx)));
          ShowList("Push targets",
                   ThingTable(form::kPushTargetColumns, rows, "No push target yet. Collectors push to such."),
                   kPushTargetPath, "New push target");
        });
}

void cTemplatesPage::Start() {
  Await(db_ctrl::kProtocol, db_ctrl::eGetMeterTemplate, Gateway().data.GetMeterTemplate(Id(), ""),
        [this](const vorn::cRecord& answer) {
          std::vector<cThingRow> rows;
          for (const cMeterTemplate& each : TemplatesOf(answer))
            rows.push_back(MakeRow(each, form::kTemplateFields, TemplateUrl(each.name)));
          ShowList("Templates",
                   ThingTable(form::kTemplateColumns, rows, "No template yet. New meters begin as one has it."),
                   kTemplatePath, "New template");
        });
}

}  // namespace tav::pages
