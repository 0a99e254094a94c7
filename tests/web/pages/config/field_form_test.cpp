// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/field_form.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

cFieldForm Typed(std::map<std::string, std::string> fields) {
  return cFieldForm([fields = std::move(fields)](const char* name) {
    const auto found = fields.find(name);
    return found != fields.end() ? found->second : std::string();
  });
}

TEST(FieldForm, NamesFieldsForPeople) {
  const std::pair<const char*, const char*> cases[] = {{"name", "Name"},         {"interface-name", "Interface name"},
                                                       {"meterID", "Meter ID"},  {"countRP", "Count RP"},
                                                       {"obis-ids", "Obis ids"}, {"", ""},
                                                       {"addr", "Address"},      {"protocoll", "Protocol"}};
  for (const auto& [name, label] : cases) EXPECT_EQ(FieldLabel(name), label);
}

TEST(FieldForm, HasAnInputForEveryFieldOfATable) {
  cCollectorConfig collector;
  cFieldForm form;
  form.Edit(collector, form::kCollectorFields, {});
  const std::string html = form.Inputs().GetText();
  for (const auto& field : form::kCollectorFields) {
    EXPECT_THAT(html, HasSubstr("name=\"" + std::string(field.name) + "\"")) << field.name;
    EXPECT_THAT(html, HasSubstr("<label for=\"f-" + std::string(field.name) + "\"")) << field.name;
  }
}

TEST(FieldForm, GivesEachKindOfFieldItsInput) {
  cPushTarget target;
  target.configure(7, "n", "https", "h", "", "hidden", "", 20, 120, true, false, false);
  cFieldForm form;
  form.Edit(target, form::kPushTargetFields, {.fixed = {"idx"}});
  const std::string html = form.Inputs().GetText();
  EXPECT_THAT(html, HasSubstr("<input type=\"number\" value=\"7\" id=\"f-idx\" name=\"idx\" "
                              "aria-describedby=\"h-idx\" readonly>"));
  EXPECT_THAT(html, HasSubstr("<input type=\"text\" value=\"https\" id=\"f-protocoll\""));
  EXPECT_THAT(html, HasSubstr("<input type=\"checkbox\" value=\"true\" id=\"f-enabled\" name=\"enabled\" "
                              "aria-describedby=\"h-enabled\" checked>"));
  EXPECT_THAT(html, HasSubstr("<input type=\"password\" autocomplete=\"new-password\" id=\"f-password\""));
  EXPECT_THAT(html, HasSubstr("Collections sent together, 1 to 50."));
  EXPECT_THAT(html, Not(HasSubstr("hidden")));
}

TEST(FieldForm, TellsAFaultBesideItsField) {
  const std::pair<const char*, const char*> cases[] = {{"65535", ""},
                                                       {"65536", "from 0 to 65535"},
                                                       {"-1", "from 0 to 65535"},
                                                       {"", "from 0 to 65535"},
                                                       {"1e3", "whole"}};
  for (const auto& [text, fault] : cases) {
    cCollectorConfig collector;
    cFieldForm form =
        Typed({{"countRP", "1"}, {"distanceRP", "1"}, {"push-target-idx", "1"}, {"push-random-offset", text}});
    form.Edit(collector, form::kCollectorFields, {});
    EXPECT_EQ(form.HasFault(), fault[0] != '\0') << text;
    EXPECT_THAT(form.Inputs().GetText(), HasSubstr("value=\"" + std::string(text) + "\" id=\"f-push-random-offset\""));
    if (form.HasFault()) {
      EXPECT_THAT(form.Inputs().GetText(), HasSubstr(fault));
    }
  }
}

TEST(FieldForm, KeepsASecretThatIsNotTyped) {
  cMeterConfig meter;
  meter.key = "old";
  cFieldForm nothing = Typed({{"meterID", "1"}});
  nothing.Edit(meter, form::kMeterFields, {});
  EXPECT_EQ(meter.key, "old");
  cFieldForm other = Typed({{"meterID", "1"}, {"key", "new"}});
  other.Edit(meter, form::kMeterFields, {});
  EXPECT_EQ(meter.key, "new");
  EXPECT_THAT(other.Inputs().GetText(), Not(HasSubstr("\"new\"")));
  cFieldForm removal = Typed({{"meterID", "1"}, {"key.remove", "true"}});
  removal.Edit(meter, form::kMeterFields, {});
  EXPECT_EQ(meter.key, "");
}

TEST(FieldForm, LeavesWhatCannotBeChanged) {
  cInterfaceRecord interface("SIM", "a=1", true);
  cFieldForm form = Typed({{"name", "other"}, {"options", "b=2"}});
  form.Edit(interface, form::kInterfaceFields, {.fixed = {"name"}});
  EXPECT_EQ(interface.name, "SIM");
  EXPECT_THAT(form.Inputs().GetText(), HasSubstr("or SIM. It cannot be changed.</p>"));
  EXPECT_EQ(interface.options, "b=2");
  EXPECT_FALSE(interface.enabled) << "a box that is not ticked is not sent";
}

// An input shows a line of UTF-8: nothing else may become of a text that nobody has touched.
TEST(FieldForm, KeepsTextsThatAnInputCannotShowAsTheyAre) {
  const std::pair<const char*, const char*> cases[] = {
      {"K\xFChler", "K\xC3\xBChler"}, {"a\x01z", "a\xEF\xBF\xBDz"}, {"two\nlines", "twolines"}};
  for (const auto& [stored, comesBack] : cases) {
    cInterfaceRecord interface("SIM", stored, true);
    cFieldForm form = Typed({{"options", comesBack}});
    form.Edit(interface, form::kInterfaceFields, {.fixed = {"name"}});
    EXPECT_EQ(interface.options, stored);
  }
}

TEST(FieldForm, SaysWhatIsStoredWhereThatDiffers) {
  cInterfaceRecord interface("SIM", "a=1", true);
  cFieldForm present;
  present.Edit(interface, form::kInterfaceFields, {});
  cFieldForm form = Typed({{"name", "SIM"}, {"options", "b=2"}});
  form.Edit(interface, form::kInterfaceFields, {});
  form.Compare(present);
  const std::string html = form.Inputs().GetText();
  EXPECT_THAT(html, HasSubstr("Stored now: a=1"));
  EXPECT_THAT(html, HasSubstr("Stored now: yes"));
  EXPECT_THAT(html, Not(HasSubstr("Stored now: SIM")));
}

TEST(FieldForm, ShowsFactsWithoutSecrets) {
  cMeterConfig meter;
  meter.key = "hidden";
  meter.vendor = "<b>";
  cFieldForm form;
  form.Edit(meter, form::kMeterFields, {.legend = "Meter"});
  const std::string html = form.Facts().GetText();
  EXPECT_THAT(html, HasSubstr("<dt>Vendor</dt><dd>&lt;b&gt;</dd>"));
  EXPECT_THAT(html, HasSubstr("<dt>Store raw enabled</dt><dd>yes</dd>"));
  EXPECT_THAT(html, HasSubstr("<h2>Meter</h2>"));
  EXPECT_THAT(html, Not(HasSubstr("hidden")));
  EXPECT_THAT(html, Not(HasSubstr("<input")));
}

TEST(FieldForm, PutsPartsIntoFieldsetsOfTheirOwn) {
  cMeterTemplate preset;
  cFieldForm form = Typed({{"part.vendor", "v"}, {"vendor", "not this"}});
  form.Edit(preset, form::kTemplateFields, {.fixed = {"idx"}});
  form.Edit(preset.meterConfig, form::kMeterFields, {.prefix = "part.", .legend = "Meter"});
  EXPECT_EQ(preset.meterConfig.vendor, "v");
  EXPECT_THAT(form.Inputs().GetText(), HasSubstr("<fieldset><legend>Meter</legend>"));
  EXPECT_TRUE(form.Inputs().GetText().ends_with("</fieldset>\n"));
}

}  // namespace
}  // namespace tav::pages
