// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rule_match.h>

#include <algorithm>

#include <gateway/rules/obis_groups.h>
#include <tav/record/meter_tav.h>

namespace tav::rules {

namespace {

// How far a rule is when a condition fails: what says most about a value weighs most, and a protocol more than all.
constexpr unsigned int kOtherProtocol = 64;
constexpr unsigned int kOtherVif = 8;
constexpr unsigned int kOtherDif = 4;
constexpr unsigned int kOtherRegister = 8;
constexpr unsigned int kOtherMedium = 2;
constexpr unsigned int kOtherMeter = 1;

// By group, A to F.
constexpr unsigned int kOtherGroup[] = {4, 1, 32, 16, 8, 2};

const char* ProtocolText(cObisMapEntry::eMapProtocol protocol) {
  switch (protocol) {
    case cObisMapEntry::eMapProtoMbus:
      return "mbus";
    case cObisMapEntry::eMapProtoDlms:
      return "dlms";
    case cObisMapEntry::eMapProtoModbus:
      return "modbus";
    default:
      return "no protocol";
  }
}

std::string Shown(const std::string& text) { return text.empty() ? "none" : text; }

// One rule against one query; the conditions are asked in the order of the look-up.
class cConditions {
 public:
  cConditions(const cObisMapEntry& rule, const cQuery& query) : m_rule(rule), m_query(query) {}

  cVerdict Ask() {
    switch (m_query.road) {
      case eRoad::Identifier:
        ByIdentifier();
        break;
      case eRoad::Dlms:
        Protocol(cObisMapEntry::eMapProtoDlms);
        Identifier(m_rule.GetObisID(), m_query.obis);
        break;
      case eRoad::Mbus:
        Protocol(cObisMapEntry::eMapProtoMbus);
        Device();
        Equal("dif", std::string(m_rule.GetKeys().dif), m_query.dib.ToString(0), kOtherDif);
        Equal("vif", std::string(m_rule.GetKeys().vif), m_query.vib.ToString(0), kOtherVif);
        break;
      case eRoad::Modbus:
        Protocol(cObisMapEntry::eMapProtoModbus);
        Device();
        Equal("register", std::string(m_rule.GetKeys().reg), m_query.reg, kOtherRegister);
        break;
    }
    return {&m_rule, m_reason.empty() ? eFit::Names : eFit::No, m_reason, m_distance};
  }

 private:
  // The first one that fails is the reason, all of them make the distance.
  void Fail(const std::string& what, const std::string& wanted, const std::string& found, unsigned int distance) {
    m_distance += distance;
    if (m_reason.empty()) m_reason = what + ": the rule is for " + Shown(wanted) + ", the value is " + Shown(found);
  }
  void Protocol(cObisMapEntry::eMapProtocol wanted) {
    if (m_rule.GetProtocol() != wanted)
      Fail("protocol", ProtocolText(m_rule.GetProtocol()), ProtocolText(wanted), kOtherProtocol);
  }
  void Equal(const char* what, const std::string& wanted, const std::string& found, unsigned int distance) {
    if (wanted != found) Fail(what, wanted, found, distance);
  }
  void Device() {
    if (!m_rule.IsMeterAddr(m_query.meterAddr))
      Fail("meteraddr", m_rule.GetMapOption("meteraddr"), m_query.meterAddr, kOtherMeter);
    if (!m_rule.IsMedium(m_query.medium)) Fail("medium", m_rule.GetMapOption("medium"), m_query.medium, kOtherMedium);
  }

  void ByIdentifier() {
    Identifier(m_rule.GetObisIDWithoutChannel(), ObisWithoutChannel(cMeterTav::ObisNormalize(m_query.obis)));
  }
  void Identifier(const std::string& wanted, const std::string& found) {
    if (wanted == found) return;
    const Groups ours = GroupsOf(wanted), theirs = GroupsOf(found);
    unsigned int distance = 0;
    for (std::size_t i = 0; i < ours.size(); ++i) distance += ours[i] != theirs[i] ? kOtherGroup[i] : 0;
    const bool only = m_reason.empty();
    Fail("identifier", wanted, found, std::max(distance, 1U));
    if (only && distance < kOtherGroup[4]) m_reason += Likeness(ours, theirs);
  }
  // Of identifiers with the same C.D.E.
  static std::string Likeness(const Groups& ours, const Groups& theirs) {
    std::string other;
    for (const auto& [group, text] : {std::pair(0, "medium"), std::pair(1, "channel"), std::pair(5, "group F")})
      if (ours[static_cast<std::size_t>(group)] != theirs[static_cast<std::size_t>(group)])
        other += std::string(other.empty() ? "" : " and ") + text;
    return "; the same C.D.E, other " + other;
  }

  const cObisMapEntry& m_rule;
  const cQuery& m_query;
  std::string m_reason;
  unsigned int m_distance = 0;
};

}  // namespace

std::vector<cVerdict> Match(const cObisMap& map, const cQuery& query) {
  std::vector<cVerdict> verdicts;
  const cObisMapEntry* winner = nullptr;
  for (const auto& [id, rule] : map.GetEntries()) {
    cVerdict verdict = cConditions(rule, query).Ask();
    if (verdict.fit == eFit::Names && winner != nullptr) {
      verdict.fit = eFit::Behind;
      verdict.text = "would fit, but rule " + std::to_string(winner->GetID()) + " has the smaller ID";
    } else if (verdict.fit == eFit::Names) {
      winner = &rule;
      verdict.text = "names it";
    }
    verdicts.push_back(std::move(verdict));
  }
  return verdicts;
}

std::vector<cVerdict> Nearest(std::vector<cVerdict> verdicts, std::size_t others) {
  std::stable_sort(verdicts.begin(), verdicts.end(),
                   [](const cVerdict& a, const cVerdict& b) { return a.distance < b.distance; });
  const auto fitting = static_cast<std::size_t>(
      std::count_if(verdicts.begin(), verdicts.end(), [](const cVerdict& verdict) { return verdict.fit != eFit::No; }));
  verdicts.resize(std::min(verdicts.size(), fitting + others));
  return verdicts;
}

}  // namespace tav::rules
