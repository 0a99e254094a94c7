// SPDX-License-Identifier: Apache-2.0
#include <tavctl/obis/rule_service.h>

#include <tav/obis/obis_protocol.h>

namespace tav::ctl {

namespace {

vorn::cRecord EntryRecord(const cObisMapEntry& rule) {
  vorn::cRecord record;
  record.AppendRecordPar(obis::kEntry, rule.ToRecord());
  return record;
}

}  // namespace

cRuleService::cRuleService(cContext& context) : m_link(context, obis::kProtocol) {}

cObisMap cRuleService::GetMap() {
  cObisMap map;
  map.FromRecord(m_link.Ask(obis::eGetMap, {}));
  return map;
}

void cRuleService::Set(const cObisMapEntry& rule) { m_link.Ask(obis::eSetRule, EntryRecord(rule)); }

void cRuleService::Remove(const cObisMapEntry& rule) { m_link.Ask(obis::eRemoveRule, EntryRecord(rule)); }

unsigned int cRuleService::Apply(const cObisMap& map, bool replace) {
  vorn::cRecord request;
  request.AppendRecordPar(obis::kObisMap, map.ToRecord());
  request.AppendBoolPar(obis::kReplace, replace);
  return m_link.Ask(obis::eApplyMap, request).GetUIntPar(obis::kChanged);
}

}  // namespace tav::ctl
