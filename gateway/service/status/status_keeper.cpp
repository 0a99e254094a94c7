// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/status/status_keeper.h>

#include <tav/framework/trace.h>

namespace tav::gateway {

namespace {

bool IsWritten(const cStatusSet::Values& written, const std::string& name, const cStatusValue& value) {
  const auto known = written.find(name);
  return known != written.end() && known->second.value == value.value && known->second.process == value.process &&
         known->second.pid == value.pid && known->second.changed == value.changed;
}

}  // namespace

cStatusKeeper::cStatusKeeper(cServiceHost* host, cStatusStore* store, cStatusSet* set)
    : m_host(host), m_store(store), m_set(set), m_task(host, [this] { Write(); }) {
  Restore();
}

cStatusKeeper::~cStatusKeeper() { Write(); }

void cStatusKeeper::Wake(bool soon) {
  if (m_task.IsStarted() && (!soon || m_soon)) return;
  m_soon = soon;
  if (soon)
    m_task.Start(kSoonMs);
  else
    m_task.Start(kDelayMs, kSlackMs);
}

void cStatusKeeper::Restore() {
  Note(m_store->Read([this](cStatusTable& table) {
    table.List([this](const std::string& name, const cStatusValue& value) {
      m_set->Restore(name, value, m_host->GetClock().Now());
      m_written[name] = value;
    });
  }));
}

void cStatusKeeper::Write() {
  const cStatusSet::Values& values = m_set->GetValues();
  const data::cFault fault = m_store->Change([&](cStatusTable& table) {
    for (const auto& [name, value] : m_written)
      if (values.count(name) == 0) table.Remove(name);
    for (const auto& [name, value] : values)
      if (!IsWritten(m_written, name, value)) table.Set(name, value);
    return true;
  });
  Note(fault);
  if (fault)
    Wake();
  else
    m_written = values;
}

void cStatusKeeper::Note(const data::cFault& fault) {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitStatus");
  if (fault && fault.text != m_fault) vorn::Trace(unit, 2, "the status values are not kept: ", fault.text);
  m_fault = fault.text;
}

}  // namespace tav::gateway
