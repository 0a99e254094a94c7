// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/status_page.h>

#include <gateway/web/pages/core/form_parts.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <gateway/web/pages/core/show.h>
#include <tav/service/status_protocol.h>

namespace tav::pages {

namespace {

cHtml StateOfWriter(bool isConnected) {
  return isConnected ? cHtml().Put("<span class=\"state ok\">connected</span>")
                     : cHtml().Put("<span class=\"state warn\">gone</span>");
}

cHtml Row(const vorn::cRecord& row) {
  const std::string name = row.GetTextPar(status::kName);
  return cHtml().Put(
      "<tr><th scope=\"row\">{}</th><td data-live=\"{}\">{}</td><td>{} ({})</td><td>{}</td><td>{}</td></tr>\n", name,
      name, row.GetTextPar(status::kValue), row.GetTextPar(status::kProcess), row.GetUIntPar(status::kPid),
      StateOfWriter(row.GetBoolPar(status::kConnected)), TimeElement(row.GetUIntPar(status::kChanged)));
}

}  // namespace

void cStatusPage::Start() {
  vorn::cRecord request;
  if (const std::string prefix = Query("prefix"); !prefix.empty()) request.AppendTextPar(status::kPrefix, prefix);
  Ask(Gateway().status, status::kProtocol, status::eList, request,
      [this](const vorn::cRecord& answer) { Show(answer); });
}

void cStatusPage::Show(const vorn::cRecord& answer) {
  cHtml rows;
  for (vorn::cRecordPar par = answer.GetPar(status::kRow); par.IsValid(); par = par.NextSame()) {
    vorn::cRecord row;
    if (par.GetRecord(row)) rows.Put(Row(row));
  }
  cHtml body;
  body.Put(
      "<form class=\"range\" method=\"get\" action=\"/status\">\n{}"
      "<div class=\"actions\"><button>Show</button></div></form>\n",
      TextField({"prefix", "Names that begin with", Query("prefix"), "Such as data. or web."}));
  if (rows.IsEmpty())
    body.Put("<p class=\"empty\">No value has such a name.</p>\n");
  else
    body.Put(Table({"Name", "Value", "From", "Process", "Changed"}, rows));
  ShowPage("Status", body);
}

}  // namespace tav::pages
