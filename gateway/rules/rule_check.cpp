// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rule_check.h>

#include <algorithm>
#include <charconv>
#include <map>

#include <gateway/rules/obis_groups.h>
#include <gateway/rules/option_check.h>
#include <tav/record/meter_tav.h>

namespace tav::rules {

namespace {

constexpr unsigned int kLargestGroup = 255;

// What lookups compare exactly; rules with another key never meet.
std::string KeyOf(const cObisMapEntry& rule) {
  switch (rule.GetProtocol()) {
    case cObisMapEntry::eMapProtoMbus:
      return "mbus:" + std::string(rule.GetKeys().dif) + "," + std::string(rule.GetKeys().vif);
    case cObisMapEntry::eMapProtoModbus:
      return "modbus:" + std::string(rule.GetKeys().reg);
    case cObisMapEntry::eMapProtoDlms:
      return "dlms:" + rule.GetObisID();
    default:
      return {};  // found by the identifier alone
  }
}

bool Covers(const std::string& option, const std::string& other) { return option.empty() || option == other; }

// Whether the first one fits whatever the second one fits, both having one key.
bool Covers(const cObisMapEntry& first, const cObisMapEntry& second) {
  if (first.GetProtocol() == cObisMapEntry::eMapProtoDlms) return true;
  return Covers(first.GetMapOption("meteraddr"), second.GetMapOption("meteraddr")) &&
         Covers(first.GetMapOption("medium"), second.GetMapOption("medium"));
}

bool SaySame(const cObisMapEntry& first, const cObisMapEntry& second) {
  return first.GetName() == second.GetName() && first.GetObisID() == second.GetObisID() &&
         first.GetMapOptions() == second.GetMapOptions();
}

std::string Named(const cObisMapEntry& rule) {
  return "rule " + std::to_string(rule.GetID()) + " (" + rule.GetName() + ")";
}

class cCheck {
 public:
  explicit cCheck(const std::vector<cRawRule>& rules) : m_rules(rules) {}

  std::vector<cFinding> Run() {
    CompareAll();
    std::map<unsigned long long, bool> seen;
    for (const cRawRule& rule : m_rules) {
      m_current = &rule;
      if (seen[rule.id]) {
        Add(eLevel::Error, eFinding::SecondId, "an earlier rule has this ID too; give one of them another ID", rule.id);
      }
      CheckItself(rule);
      if (!seen[rule.id]) TakeCompared(rule);
      seen[rule.id] = true;
    }
    return std::move(m_findings);
  }

 private:
  void Add(eLevel level, eFinding kind, const std::string& text, std::optional<unsigned long long> other = {}) {
    m_findings.push_back({level, kind, m_current->id, other, text, m_current->place});
  }

  // ---- one rule

  void CheckItself(const cRawRule& rule) {
    if (rule.name.empty()) Add(eLevel::Error, eFinding::Name, "the name is empty; give it one");
    CheckIdentifier(rule.obis);
    CheckMapping(rule.map, [this](eLevel level, eFinding kind, const std::string& text) { Add(level, kind, text); });
  }

  void CheckIdentifier(const std::string& obis) {
    if (!cMeterTav::ObisIsValid(obis))
      return Add(eLevel::Error, eFinding::Identifier,
                 "'" + obis + "' is no OBIS identifier; write A-B:C.D.E, such as 1-0:1.8.0");
    CheckGroups(obis);
    const std::string normal = cMeterTav::ObisNormalize(obis);
    if (normal != obis)
      Add(eLevel::Warning, eFinding::Identifier,
          "a lookup drops the neutral end of the identifier that it asks for, so that it names past values only; write "
          "'" +
              normal + "'");
  }

  void CheckGroups(const std::string& obis) {
    char name = 'A';
    for (const std::string& group : GroupsOf(obis)) CheckGroup(name++, group);
  }

  // A group may also have letters.
  void CheckGroup(char name, const std::string& group) {
    unsigned int number = 0;
    const char* const end = group.data() + group.size();
    const auto [last, fault] = std::from_chars(group.data(), end, number);
    const bool isNumber = !group.empty() && last == end;
    if (isNumber && (fault != std::errc() || number > kLargestGroup))
      Add(eLevel::Error, eFinding::Identifier,
          std::string("group ") + name + " of the identifier is " + group +
              ", and a group is one byte; write 0 to 255");
  }

  // ---- one rule and those before it

  struct cBefore {
    const cObisMapEntry* same = nullptr;
    const cObisMapEntry* covering = nullptr;
    const cObisMapEntry* naming = nullptr;  // another name
  };

  // In the order in which lookups go. Of rules with one ID the first one stands.
  void CompareAll() {
    for (const cRawRule& raw : m_rules) {
      cObisMapEntry rule;
      if (!m_entries.count(raw.id) && rule.Set(raw.id, raw.name, raw.obis, raw.map)) m_entries.emplace(raw.id, rule);
    }
    for (const auto& [id, rule] : m_entries) Compare(rule);
  }

  void Compare(const cObisMapEntry& rule) {
    cBefore before;
    const cObisMapEntry*& first = m_naming[rule.GetObisIDWithoutChannel()];
    const std::string key = KeyOf(rule);
    if (key.empty()) {
      before.covering = first;
    } else {
      for (const cObisMapEntry* other : m_byKey[key])
        if (before.covering == nullptr && Covers(*other, rule)) before.covering = other;
      m_byKey[key].push_back(&rule);
    }
    for (const cObisMapEntry* other : m_byIdentifier[rule.GetObisID()])
      if (before.same == nullptr && SaySame(*other, rule)) before.same = other;
    m_byIdentifier[rule.GetObisID()].push_back(&rule);
    if (first != nullptr && first->GetName() != rule.GetName()) before.naming = first;
    if (first == nullptr) first = &rule;
    m_before[rule.GetID()] = before;
  }

  void TakeCompared(const cRawRule& rule) {
    const auto found = m_before.find(rule.id);
    if (found == m_before.end()) return;
    const auto& [same, covering, naming] = found->second;
    if (same != nullptr)
      return Add(eLevel::Warning, eFinding::Duplicate, "the same as " + Named(*same) + "; delete one of them",
                 same->GetID());
    if (covering != nullptr)
      return Add(eLevel::Warning, eFinding::Unreachable,
                 "is never used, since " + Named(*covering) +
                     " fits whenever it does and has the smaller ID; delete it, or give it an ID below " +
                     std::to_string(covering->GetID()),
                 covering->GetID());
    if (naming != nullptr)
      Add(eLevel::Warning, eFinding::HiddenName,
          "its name is never shown, since " + Named(*naming) +
              " has the same identifier and the smaller ID; give both one name, or this one an ID below " +
              std::to_string(naming->GetID()),
          naming->GetID());
  }

  const std::vector<cRawRule>& m_rules;
  const cRawRule* m_current = nullptr;
  std::vector<cFinding> m_findings;
  std::map<unsigned long long, cObisMapEntry> m_entries;
  std::map<std::string, std::vector<const cObisMapEntry*>> m_byKey;
  std::map<std::string, std::vector<const cObisMapEntry*>> m_byIdentifier;
  std::map<std::string, const cObisMapEntry*> m_naming;  // channel-free identifier to the first rule
  std::map<unsigned long long, cBefore> m_before;
};

}  // namespace

std::vector<cFinding> Check(const std::vector<cRawRule>& rules) { return cCheck(rules).Run(); }

std::vector<cFinding> Check(const cObisMap& map) {
  std::vector<cRawRule> rules;
  for (const auto& [id, rule] : map.GetEntries())
    rules.push_back({id, rule.GetName(), rule.GetObisID(), rule.GetMap(), {}});
  return Check(rules);
}

bool HasError(const std::vector<cFinding>& findings) {
  return std::any_of(findings.begin(), findings.end(),
                     [](const cFinding& finding) { return finding.level == eLevel::Error; });
}

cObisMap MapOf(const std::vector<cRawRule>& rules) {
  cObisMap map;
  for (const cRawRule& rule : rules) map.Add({rule.id, rule.name, rule.obis, rule.map});
  return map;
}

}  // namespace tav::rules
