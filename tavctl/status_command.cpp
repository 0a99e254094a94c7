// SPDX-License-Identifier: Apache-2.0
#include <tavctl/status_command.h>

#include <tav/service/status_protocol.h>
#include <tavctl/live_view.h>
#include <tavctl/options.h>
#include <tavctl/service_link.h>

namespace tav::ctl {

namespace {

constexpr const char* kState = "state";

constexpr cColumn kColumns[] = {
    {status::kName, "NAME"},
    {status::kValue, "VALUE"},
    {status::kProcess, "FROM"},
    {kState, "STATE"},
    {status::kChanged, "CHANGED", eForm::Time},
};

cLiveView::Rows RowsOf(const vorn::cRecord& answer) {
  cLiveView::Rows rows;
  for (vorn::cRecordPar par = answer.GetPar(status::kRow); par.IsValid(); par = par.NextSame()) {
    vorn::cRecord row;
    if (!par.GetRecord(row)) continue;
    row.AppendTextPar(kState, row.GetBoolPar(status::kConnected) ? "connected" : "gone");
    rows.push_back(row);
  }
  return rows;
}

std::string NameOf(const vorn::cRecord& row) { return row.GetTextPar(status::kName); }

// Follows the service: what it tells says when to look again.
class cFollowingLink {
 public:
  cFollowingLink(cContext& context, const std::string& prefix)
      : m_context(context), m_link(context, status::kProtocol) {
    m_request.AppendTextPar(status::kPrefix, prefix);
    m_link.SetListener([this](const vorn::cMsg& msg) { Listen(msg); });
  }

  // The rows; a value that has gone since is among them once, as removed.
  cLiveView::Rows Ask() {
    m_news = false;
    // Of a client without values of its own; told to every connection, since only those who bring their set are told.
    if (m_following.lock() != m_link.GetChannel()) {
      m_link.Ask(status::eFullSet, {});
      m_following = m_link.GetChannel();
    }
    cLiveView::Rows rows = RowsOf(m_link.Ask(status::eList, m_request));
    std::map<std::string, vorn::cRecord> known;
    for (const vorn::cRecord& row : rows) known[NameOf(row)] = row;
    for (auto& [name, row] : m_known)
      if (known.count(name) == 0) rows.push_back(Removed(row));
    m_known = known;
    return rows;
  }
  void Wait() const {
    m_context.Await([] { return false; }, cStatusCommand::kPauseMs);
    m_context.Await([this] { return m_news; }, cStatusCommand::kPatienceMs);
  }

 private:
  void Listen(const vorn::cMsg& msg) {
    if (msg.GetType() == status::eReplace) msg.GetReplyChannel()->Send(vorn::cMsg(status::eReplaced));
    m_news = true;
  }
  static vorn::cRecord Removed(vorn::cRecord row) {
    row.SetTextPar(kState, "removed");
    return row;
  }

  cContext& m_context;
  cServiceLink m_link;
  vorn::cRecord m_request;
  std::weak_ptr<vorn::cScmChannel> m_following;
  std::map<std::string, vorn::cRecord> m_known;
  bool m_news = false;
};

}  // namespace

void cStatusCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "PREFIX", m_prefix, "How the names begin, such as ehzif.SIM", eNeed::Optional);
  AddFlag(app, "--watch", m_watch, "Show them as they change, until Ctrl-C");
  AddNumber(app, "--count", m_count, "With --watch: end after so many looks, 0: never (default 0)");
}

eExit cStatusCommand::Run(cContext& context) { return m_watch ? Watch(context) : List(context); }

eExit cStatusCommand::List(cContext& context) const {
  cServiceLink link(context, status::kProtocol);
  vorn::cRecord request;
  request.AppendTextPar(status::kPrefix, m_prefix);
  const cLiveView::Rows values = RowsOf(link.Ask(status::eList, request));
  const auto rows = context.Rows(kColumns);
  for (const vorn::cRecord& value : values) rows->Write(value);
  rows->End();
  if (!values.empty()) return eExitDone;
  context.Note(m_prefix.empty() ? "there are no status values" : "no status value begins with '" + m_prefix + "'");
  return m_prefix.empty() ? eExitDone : eExitNegative;
}

eExit cStatusCommand::Watch(cContext& context) const {
  cFollowingLink link(context, m_prefix);
  cLiveView::cPlan plan;
  plan.columns = kColumns;
  plan.count = m_count;
  plan.title = "status";
  plan.key = NameOf;
  plan.ask = [&] { return link.Ask(); };
  plan.wait = [&] { link.Wait(); };
  cLiveView(context, plan).Run();
  return eExitDone;
}

}  // namespace tav::ctl
