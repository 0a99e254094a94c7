// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/driver/driver_commands.h>

#include <algorithm>

#include <gateway/service/data/config/config_limits.h>
#include <gateway/service/data/driver/driver_views.h>
#include <tav/framework/trace.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

namespace {

using vorn::cMsg;
using vorn::cRecord;

constexpr cProtocolKey kTexts[] = {db_ctrl::kVendor, db_ctrl::kKey, db_ctrl::kValve};

// What is wrong with the texts of a request; empty when nothing is. They are kept as long as those of a meter.
std::string CheckTexts(const cRecord& request) {
  for (const cProtocolKey& key : kTexts)
    if (const std::size_t bytes = request.GetTextView(key).size(); bytes > kMaxText)
      return "parameter \"" + std::string(key.name) + "\" has " + std::to_string(bytes) + " bytes, at most " +
             std::to_string(kMaxText) + " are taken";
  return {};
}

// The meter by its full name, and of the request's other parameters those that it has.
cRecord ContentOf(const cRecord& request, const cMeterConfig& meter) {
  cRecord content;
  content.AppendTextPar(db_ctrl::kMeterId, meter.meterID);
  content.AppendTextPar(db_ctrl::kManufactor, meter.mfct);
  content.AppendTextPar(db_ctrl::kMedium, meter.medium);
  for (const cProtocolKey& key : kTexts)
    if (const vorn::cRecordPar found = request.GetPar(key); found.IsValid())
      content.AppendTextPar(key, found.GetBytesView());
  if (const vorn::cRecordPar time = request.GetPar(db_ctrl::kTimestamp); time.IsValid())
    content.AppendUIntPar(db_ctrl::kTimestamp, time.GetUInt());
  return content;
}

}  // namespace

cDriverCommands::cDriverCommands(gateway::cServiceHost* host, gateway::cProtocolServer* server, cDataStore* store,
                                 const cDriverRegistry* drivers)
    : m_host(host), m_server(server), m_store(store), m_drivers(drivers), m_timer(host, [this] { OnTime(); }) {}

cDriverCommands::Handlers cDriverCommands::GetHandlers() {
  return {
      {db_ctrl::eActivateMeter, [this](const cMsg& request) { Command(request, "activate-meter"); }},
      {db_ctrl::eSetValve, [this](const cMsg& request) { Command(request, "set-valve"); }},
      {db_ctrl::eSetTimeDate, [this](const cMsg& request) { Command(request, "set-time-date"); }},
      {db_ctrl::eDriverDone, [this](const cMsg& answer) { OnDone(answer); }},
      {db_ctrl::eDriverFailed, [this](const cMsg& answer) { OnFailed(answer); }},
  };
}

void cDriverCommands::Command(const cMsg& request, const char* command) {
  const cRecord& record = request.Record();
  if (const std::string fault = CheckTexts(record); !fault.empty()) return m_server->Refuse(request, fault);
  const cMeterKey key{record.GetTextPar(db_ctrl::kMeterId), record.GetTextPar(db_ctrl::kMedium),
                      record.GetTextPar(db_ctrl::kManufactor)};
  cConfigFaults faults;
  std::optional<cStoredMeter> meter;
  const cFault fault = m_store->Read([&](cTables& tables) { meter = tables.config.FindMeter(key, cPlace(faults)); });
  if (fault)
    m_server->Refuse(request, fault.text);
  else if (!meter)
    m_server->Refuse(request, faults.GetText());
  else
    Send(request, meter->config, command);
}

void cDriverCommands::Send(const cMsg& request, const cMeterConfig& meter, const char* command) {
  const std::string driver = "driver '" + meter.interfaceDriver + "'";
  if (meter.interfaceDriver == "unknown")
    return m_server->Refuse(request, "no driver serves protocol " + QuotedName(meter.interfaceProtocol) +
                                         " on interface " + QuotedName(meter.interfaceName));
  const cDriverRegistry::Channel channel = m_drivers->Find(meter.interfaceDriver);
  if (channel == nullptr) return m_server->Refuse(request, driver + " is not registered");
  if (m_waiting.size() >= kMaxWaiting) return m_server->Refuse(request, "too many commands wait for drivers");
  cMsg message(db_ctrl::eNotifyDriver);
  vorn::cUuid id;
  id.Create();
  message.SetId(id);
  message.Record() = NoticeRecord(meter.interfaceName, command, ContentOf(request.Record(), meter));
  if (channel->Send(message) != 1) return m_server->Refuse(request, driver + " does not take messages");
  m_waiting.push_back({request, id, channel, driver, m_host->GetClock().Now() + kPatience});
  StartTimer();
}

void cDriverCommands::OnDone(const cMsg& answer) {
  cWaiting waiting;
  if (!Take(answer, waiting)) return;
  cRecord record;
  if (const vorn::cRecordPar content = answer.Record().GetPar(db_ctrl::kContent); content.IsValid())
    record.AppendRecordPar(db_ctrl::kContent, answer.Record().GetRecordPar(db_ctrl::kContent));
  m_server->Answer(waiting.request, record);
}

// One that nobody waits for is about a changed interface, or comes too late.
void cDriverCommands::OnFailed(const cMsg& answer) {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitData");
  const std::string reason = answer.Record().GetTextPar(db_ctrl::kReason);
  cWaiting waiting;
  if (Take(answer, waiting))
    m_server->Refuse(waiting.request, waiting.driver + ": " + (reason.empty() ? "failed" : reason));
  else
    vorn::Trace(unit, 4, "driver '", m_drivers->NameOf(answer.GetReplyChannel().get()), "' failed: ", reason);
}

// Only the driver that was asked may answer.
bool cDriverCommands::Take(const cMsg& answer, cWaiting& waiting) {
  const auto found = std::find_if(m_waiting.begin(), m_waiting.end(), [&](const cWaiting& asked) {
    return asked.id == answer.GetId() && asked.channel == answer.GetReplyChannel();
  });
  if (found == m_waiting.end()) return false;
  waiting = std::move(*found);
  m_waiting.erase(found);
  StartTimer();
  return true;
}

void cDriverCommands::OnClose(const vorn::cScmChannel& channel) {
  std::vector<cWaiting> lost;
  for (const cWaiting& waiting : m_waiting)
    if (waiting.channel.get() == &channel) lost.push_back(waiting);
  std::erase_if(m_waiting, [&](const cWaiting& waiting) { return waiting.channel.get() == &channel; });
  for (const cWaiting& waiting : lost) m_server->Refuse(waiting.request, waiting.driver + " ended before it answered");
  StartTimer();
}

void cDriverCommands::OnTime() {
  while (!m_waiting.empty() && m_waiting.front().deadline <= m_host->GetClock().Now()) {
    const cWaiting late = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_server->Refuse(late.request,
                     late.driver + " did not answer within " + std::to_string(kPatience / 1000) + " seconds");
  }
  StartTimer();
}

void cDriverCommands::StartTimer() {
  if (m_waiting.empty()) return m_timer.Stop();
  const std::int64_t left = m_waiting.front().deadline - m_host->GetClock().Now();
  m_timer.Start(static_cast<unsigned int>(std::max<std::int64_t>(left, 0)));
}

}  // namespace tav::data
