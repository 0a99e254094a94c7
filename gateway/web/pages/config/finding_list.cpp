// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/finding_list.h>

#include <algorithm>
#include <iterator>

#include <gateway/form/rule_rows.h>

namespace tav::pages {

namespace {

std::vector<rules::cRawRule> RawRules(const cObisMap& map, unsigned long long but) {
  std::vector<rules::cRawRule> raw;
  for (const auto& [id, rule] : map.GetEntries())
    if (id != but) raw.push_back({id, rule.GetName(), rule.GetObisID(), rule.GetMap(), {}});
  return raw;
}

cHtml LevelMark(rules::eLevel level) {
  if (level == rules::eLevel::Error) return cHtml().Put("<span class=\"state bad\">{}</span>", form::LevelText(level));
  return cHtml().Put("<span class=\"state warn\">{}</span>", form::LevelText(level));
}

template <typename Takes>
Findings Some(const Findings& all, const Takes& takes) {
  Findings some;
  std::copy_if(all.begin(), all.end(), std::back_inserter(some), takes);
  return some;
}

}  // namespace

Findings Concerning(const Findings& all, unsigned long long id) {
  return Some(all, [id](const rules::cFinding& finding) { return finding.id == id || finding.other == id; });
}

Findings About(const Findings& all, unsigned long long id) {
  return Some(all, [id](const rules::cFinding& finding) { return finding.id == id; });
}

Findings CheckWith(const cObisMap& map, const rules::cRawRule& rule) {
  std::vector<rules::cRawRule> raw = RawRules(map, rule.id);
  const auto behind = std::find_if(raw.begin(), raw.end(), [&](const rules::cRawRule& at) { return at.id > rule.id; });
  raw.insert(behind, rule);
  return rules::Check(raw);
}

Findings CheckWithout(const cObisMap& map, unsigned long long id) { return rules::Check(RawRules(map, id)); }

cHtml FindingList(const Findings& findings) {
  if (findings.empty()) return {};
  cHtml items;
  for (const rules::cFinding& finding : findings) {
    const std::string id = std::to_string(finding.id);
    items.Put("<li>{} <a href=\"{}\">rule {}</a>: {}</li>\n", LevelMark(finding.level), MakeUrl("/rule", {{"id", id}}),
              id, finding.text);
  }
  return cHtml().Put("<ul class=\"findings\">\n{}</ul>\n", items);
}

cHtml WorstMark(const Findings& findings) {
  if (findings.empty()) return {};
  return LevelMark(rules::HasError(findings) ? rules::eLevel::Error : rules::eLevel::Warning);
}

}  // namespace tav::pages
