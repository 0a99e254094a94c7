// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/config_document.h>

#include <algorithm>

#include <gateway/form/toml_text.h>

namespace tav::form {

namespace {

constexpr const char* kInterfaces = "interfaces";
constexpr const char* kMeters = "meters";
constexpr const char* kPushTargets = "push-targets";
constexpr const char* kTemplates = "templates";

// ---- out

cJson ToDocument(const cConfigDocument& config, eSecrets secrets) {
  cJson document = cJson::object();
  document[kInterfaces] =
      ListToJson(config.interfaces, [&](const auto& each) { return ToJson(each, kInterfaceFields, secrets); });
  document[kMeters] = ListToJson(config.meters, [&](const auto& each) { return MeterToJson(each, secrets); });
  document[kPushTargets] =
      ListToJson(config.pushTargets, [&](const auto& each) { return ToJson(each, kPushTargetFields, secrets); });
  document[kTemplates] = ListToJson(config.templates, [&](const auto& each) { return TemplateToJson(each, secrets); });
  return document;
}

// ---- in

void OnlyKnown(const cJson& document, std::initializer_list<std::string_view> names, Faults& faults) {
  for (const auto& [name, value] : document.items())
    if (std::find(names.begin(), names.end(), name) == names.end())
      faults.push_back({name, "there is no such part; there are interfaces, meters, push-targets, templates"});
}

cConfigDocument FromDocument(const cJson& document, Faults& faults) {
  cConfigDocument config;
  if (!document.is_object()) {
    faults.push_back({"document", "expected interfaces, meters, push-targets, templates"});
    return config;
  }
  OnlyKnown(document, {kInterfaces, kMeters, kPushTargets, kTemplates}, faults);
  const auto list = [&](const char* name, const TakeItem& take) { ListFromJson(document, name, {}, faults, take); };
  list(kInterfaces, [&](const cJson& item, const std::string& place) {
    FromJson(item, kInterfaceFields, config.interfaces.emplace_back(), place, faults);
  });
  list(kMeters, [&](const cJson& item, const std::string& place) {
    MeterFromJson(item, config.meters.emplace_back(), place, faults);
  });
  list(kPushTargets, [&](const cJson& item, const std::string& place) {
    FromJson(item, kPushTargetFields, config.pushTargets.emplace_back(), place, faults);
  });
  list(kTemplates, [&](const cJson& item, const std::string& place) {
    TemplateFromJson(item, config.templates.emplace_back(), place, faults);
  });
  return config;
}

// ---- secrets

// Copies a secret that an item leaves out from the present one that has the same values under the keys.
void Borrow(cJson& item, const cJson& present, const char* secret, std::initializer_list<const char*> keys) {
  if (!item.is_object() || item.contains(secret) || !present.is_array()) return;
  for (const cJson& other : present) {
    const bool same = std::all_of(keys.begin(), keys.end(), [&](const char* key) {
      return item.value(key, cJson("")) == other.value(key, cJson(""));
    });
    if (!same || !other.contains(secret)) continue;
    item[secret] = other[secret];
    return;
  }
}

void BorrowAll(cJson& document, const char* list, const cJson& present, const char* secret,
               std::initializer_list<const char*> keys) {
  if (!document.is_object() || !document.contains(list) || !document[list].is_array()) return;
  for (cJson& item : document[list]) Borrow(item, present[list], secret, keys);
}

// A template's two are found by the template's name.
void BorrowNested(cJson& document, const cJson& present, const char* nested, const char* secret) {
  if (!document.is_object() || !document.contains(kTemplates) || !document[kTemplates].is_array()) return;
  for (cJson& item : document[kTemplates]) {
    if (!item.is_object() || !item.contains(nested)) continue;
    for (const cJson& other : present[kTemplates])
      if (item.value("name", cJson("")) == other.value("name", cJson("")))
        Borrow(item[nested], cJson::array({other[nested]}), secret, {});
  }
}

void BorrowSecrets(cJson& document, const cConfigDocument& config) {
  const cJson present = ToDocument(config, eSecrets::Show);
  BorrowAll(document, kMeters, present, "key", {"meterID", "medium", "mfct"});
  BorrowAll(document, kPushTargets, present, "password", {"name"});
  BorrowNested(document, present, kMeterConfig, "key");
  BorrowNested(document, present, kPushConfig, "password");
}

// ---- texts

bool IsJson(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != std::string::npos && text[first] == '{';
}

bool Parse(const std::string& text, cJson& document, Lines& lines, std::string& error) {
  return IsJson(text) ? ParseJson(text, document, error) : FromToml(text, document, lines, error);
}

// "line 7: " where the place stands, or what holds it.
std::string LineOf(std::string place, const Lines& lines) {
  for (;;) {
    const auto found = lines.find(place);
    if (found != lines.end()) return "line " + std::to_string(found->second) + ": ";
    const std::size_t last = place.find_last_of(".[");
    if (last == std::string::npos) return {};
    place.erase(last);
  }
}

}  // namespace

std::string cConfigDocument::ToText(eDocument form, eSecrets secrets) const {
  const cJson document = ToDocument(*this, secrets);
  return form == eDocument::Toml ? ToToml(document)
                                 : document.dump(2, ' ', false, cJson::error_handler_t::replace) + "\n";
}

cConfigDocument cConfigDocument::FromText(const std::string& text, const cConfigDocument& present, Faults& faults) {
  cJson document;
  Lines lines;
  std::string error;
  if (!Parse(text, document, lines, error)) {
    faults.push_back({"document", error});
    return {};
  }
  BorrowSecrets(document, present);
  cConfigDocument config = FromDocument(document, faults);
  for (cFault& fault : faults) fault.place = LineOf(fault.place, lines) + fault.place;
  return faults.empty() ? config : cConfigDocument();
}

}  // namespace tav::form
