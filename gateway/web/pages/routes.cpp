// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/routes.h>

#include <gateway/web/pages/access/access_page.h>
#include <gateway/web/pages/access/login_page.h>
#include <gateway/web/pages/api/api_pages.h>
#include <gateway/web/pages/api/metrics_page.h>
#include <gateway/web/pages/api/openapi.h>
#include <gateway/web/pages/config/collector_page.h>
#include <gateway/web/pages/config/interface_page.h>
#include <gateway/web/pages/config/list_pages.h>
#include <gateway/web/pages/config/meter_config_page.h>
#include <gateway/web/pages/config/push_target_page.h>
#include <gateway/web/pages/config/rule_page.h>
#include <gateway/web/pages/config/rule_text_pages.h>
#include <gateway/web/pages/config/rule_why_page.h>
#include <gateway/web/pages/config/rules_page.h>
#include <gateway/web/pages/config/template_page.h>
#include <gateway/web/pages/view/devices_page.h>
#include <gateway/web/pages/view/download_page.h>
#include <gateway/web/pages/view/events_page.h>
#include <gateway/web/pages/view/firmware_page.h>
#include <gateway/web/pages/view/live_page.h>
#include <gateway/web/pages/view/meter_page.h>
#include <gateway/web/pages/view/overview_page.h>
#include <gateway/web/pages/view/series_page.h>
#include <gateway/web/pages/view/status_page.h>

namespace tav::pages {

namespace {

template <typename Page>
std::unique_ptr<cWebPage> Make(const cPageContext& context) {
  return std::make_unique<Page>(context);
}

// clang-format off
constexpr cRoute kRoutes[] = {
    {"/",                 "Meters",         eRole::Viewer, eSender::None,   Make<cOverviewPage>},
    {"/meter",            "",               eRole::Viewer, eSender::None,   Make<cMeterPage>},
    {"/live",             "",               eRole::Viewer, eSender::None,   Make<cLivePage>,           true},
    {"/download",         "",               eRole::Viewer, eSender::None,   Make<cDownloadPage>,       true},
    {"/api/series",       "",               eRole::Viewer, eSender::None,   Make<cSeriesPage>,         true},
    {"/interfaces",       "Interfaces",     eRole::Viewer, eSender::None,   Make<cInterfacesPage>},
    {"/interface",        "",               eRole::Viewer, eSender::Admin,  Make<cInterfacePage>},
    {"/meter-configs",    "Meter settings", eRole::Viewer, eSender::None,   Make<cMeterConfigsPage>},
    {"/meter-config",     "",               eRole::Viewer, eSender::Admin,  Make<cMeterConfigPage>},
    {"/collector",        "",               eRole::Viewer, eSender::Admin,  Make<cCollectorPage>},
    {"/push-targets",     "Push targets",   eRole::Viewer, eSender::None,   Make<cPushTargetsPage>},
    {"/push-target",      "",               eRole::Viewer, eSender::Admin,  Make<cPushTargetPage>},
    {"/templates",        "Templates",      eRole::Viewer, eSender::None,   Make<cTemplatesPage>},
    {"/template",         "",               eRole::Viewer, eSender::Admin,  Make<cTemplatePage>},
    {"/rules",            "OBIS rules",     eRole::Viewer, eSender::None,   Make<cRulesPage>},
    {"/rule",             "",               eRole::Viewer, eSender::Admin,  Make<cRulePage>},
    {"/rules/why",        "",               eRole::Viewer, eSender::None,   Make<cRuleWhyPage>},
    {"/rules/lint",       "",               eRole::Viewer, eSender::None,   Make<cRuleLintPage>,       true},
    {"/rules/download",   "",               eRole::Viewer, eSender::None,   Make<cRulesDownloadPage>,  true},
    {"/status",           "Status",         eRole::Viewer, eSender::None,   Make<cStatusPage>},
    {"/devices",          "Devices",        eRole::Viewer, eSender::Admin,  Make<cDevicesPage>},
    {"/events",           "Events",         eRole::Viewer, eSender::None,   Make<cEventsPage>},
    {"/firmware",         "Firmware",       eRole::Viewer, eSender::Admin,  Make<cFirmwarePage>},
    {"/access",           "Access",         eRole::Viewer, eSender::Viewer, Make<cAccessPage>},
    {"/access/accounts",  "",               eRole::Admin,  eSender::Admin,  Make<cAccountsPage>},
    {"/access/tokens",    "",               eRole::Admin,  eSender::Admin,  Make<cTokensPage>},
    {"/api/meters",       "",               eRole::Viewer, eSender::None,   Make<cMetersApi>,          true},
    {"/api/last-values",  "",               eRole::Viewer, eSender::None,   Make<cLastValuesApi>,      true},
    {"/api/values",       "",               eRole::Viewer, eSender::None,   Make<cValuesApi>,          true},
    {"/api/status",       "",               eRole::Viewer, eSender::None,   Make<cStatusApi>,          true},
    {"/api/rules",        "",               eRole::Viewer, eSender::None,   Make<cRulesApi>,           true},
    {"/api/openapi.json", "",               eRole::Viewer, eSender::None,   Make<cOpenApiPage>,        true},
    {"/metrics",          "",               eRole::Viewer, eSender::None,   Make<cMetricsPage>,        true},
    {"/setup",            "",               eRole::Nobody, eSender::Anyone, Make<cSetupPage>},
    {"/login",            "",               eRole::Nobody, eSender::Anyone, Make<cLoginPage>},
    {"/logout",           "",               eRole::Viewer, eSender::Viewer, Make<cLogoutPage>},
};
// clang-format on

constexpr cRoute kNoRoute{"", "", eRole::Nobody, eSender::None, nullptr};

}  // namespace

std::span<const cRoute> GetRoutes() { return kRoutes; }

const cRoute* FindRoute(std::string_view path) {
  for (const cRoute& route : kRoutes)
    if (route.path == path) return &route;
  return nullptr;
}

const cRoute& GetNoRoute() { return kNoRoute; }

}  // namespace tav::pages
