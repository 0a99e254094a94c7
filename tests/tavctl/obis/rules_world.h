// SPDX-License-Identifier: Apache-2.0
// tavctl and a small OBIS service that keeps its rules in memory.
#pragma once

#include <fstream>
#include <memory>
#include <string>

#include <gateway/host/protocol_server.h>
#include <tav/obis/obis_map.h>
#include <tav/obis/obis_protocol.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {

class cRuleServer : public gateway::cProtocolServer {
 public:
  explicit cRuleServer(gateway::cServiceHost* host) : cProtocolServer(host, obis::kProtocol) {
    On(obis::eGetMap, [this](const vorn::cMsg& request) {
      vorn::cRecord answer;
      answer.AppendRecordPar(obis::kObisMap, map.ToRecord());
      Answer(request, answer);
    });
    On(obis::eSetRule, [this](const vorn::cMsg& request) {
      const cObisMapEntry rule = RuleOf(request);
      if (rule.GetObisID().empty() || refusing) return Refuse(request, "the rule is not taken");
      map.Set(rule);
      Answer(request);
    });
    On(obis::eRemoveRule, [this](const vorn::cMsg& request) {
      map.Remove(RuleOf(request));
      Answer(request);
    });
    On(obis::eApplyMap, [this](const vorn::cMsg& request) { Apply(request); });
  }

  cObisMap map;
  bool refusing = false;
  unsigned int applied = 0;

 private:
  static cObisMapEntry RuleOf(const vorn::cMsg& request) {
    vorn::cRecord form;
    cObisMapEntry rule;
    request.Record().GetPar(obis::kEntry).GetRecord(form);
    rule.FromRecord(form);
    return rule;
  }
  void Apply(const vorn::cMsg& request) {
    if (refusing) return Refuse(request, "the rules are not taken");
    ++applied;
    cObisMap taken;
    taken.FromRecord(request.Record());
    unsigned int changed = 0;
    const cObisMap before = map;
    for (const auto& [id, rule] : before.GetEntries())
      if (request.Record().GetBoolPar(obis::kReplace) && !taken.GetEntries().Contains(id)) changed += map.Remove(id);
    for (const auto& [id, rule] : taken.GetEntries()) {
      cObisMapEntry present;
      map.GetEntries().Get(id, present);
      if (!(present.ToRecord() == rule.ToRecord())) changed += map.Set(rule);
    }
    vorn::cRecord answer;
    answer.AppendUIntPar(obis::kChanged, changed);
    Answer(request, answer);
  }
};

class TavctlWithRules : public TavctlWorld {
 protected:
  void SetUp() override {
    m_rules = std::make_unique<cRuleServer>(&m_host);
    ASSERT_TRUE(m_rules->IsListening());
  }
  void Has(unsigned long long id, const char* name, const char* obis, const char* map) {
    ASSERT_TRUE(m_rules->map.Add({id, name, obis, map}));
  }
  std::string File(const std::string& text) const {
    std::ofstream(m_folder.File("rules.toml"), std::ios::binary) << text;
    return m_folder.File("rules.toml");
  }

  std::unique_ptr<cRuleServer> m_rules;
};

}  // namespace tav::ctl
