// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/form_parts.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr std::string_view kWords[] = {"on", "off<"};

TEST(FormParts, EveryFieldHasItsLabelAndHint) {
  const std::string field = TextField({"name", "Label", "\"value\"", "Hint <"}).GetText();
  EXPECT_THAT(field, HasSubstr("<label for=\"name\">Label</label><input id=\"name\" name=\"name\""));
  EXPECT_THAT(field, HasSubstr("value=\"&quot;value&quot;\""));
  EXPECT_THAT(field, HasSubstr("aria-describedby=\"name-hint\""));
  EXPECT_THAT(field, HasSubstr("<p class=\"hint\" id=\"name-hint\">Hint &lt;</p>"));
  EXPECT_THAT(TextField({"name", "Label"}).GetText(), Not(HasSubstr("hint")));
}

TEST(FormParts, TwoFieldsOfOneNameCanStandOnAPage) {
  EXPECT_THAT(TextField({"name", "Label", {}, {}, "other"}).GetText(),
              HasSubstr("<label for=\"other\">Label</label><input id=\"other\" name=\"name\""));
}

TEST(FormParts, ASecretIsNotSentBack) {
  EXPECT_THAT(PasswordField({"pin", "PIN", "4711"}, "off").GetText(), Not(HasSubstr("4711")));
}

TEST(FormParts, AChoiceShowsWhatIsChosen) {
  const std::string field = ChoiceField({"mode", "Mode", "off<"}, kWords).GetText();
  EXPECT_THAT(field, HasSubstr("<option>on</option><option selected>off&lt;</option>"));
  EXPECT_THAT(ChoiceField({"mode", "Mode", "other"}, kWords).GetText(), Not(HasSubstr("selected")));
}

TEST(FormParts, AFormCarriesItsToken) {
  EXPECT_EQ(PostForm("/p?a&b", HiddenField("csrf", "1"), {}, Button("save", "Save")).GetText(),
            "<form class=\"entry\" method=\"post\" action=\"/p?a&amp;b\"><input type=\"hidden\" name=\"csrf\" "
            "value=\"1\">\n\n<div class=\"actions\"><button name=\"do\" value=\"save\">Save</button> </div></form>\n");
}

TEST(FormParts, ATableSaysWhichColumnsAreNumbers) {
  EXPECT_THAT(Table({"Name", "#Count"}, {}).GetText(),
              HasSubstr("<th scope=\"col\">Name</th><th scope=\"col\" class=\"num\">Count</th>"));
}

TEST(FormParts, ANoteWithoutATextIsNone) {
  EXPECT_TRUE(ErrorNote("").IsEmpty());
  EXPECT_TRUE(DoneNote("").IsEmpty());
  EXPECT_THAT(ErrorNote("<").GetText(), HasSubstr("role=\"alert\">&lt;</p>"));
}

}  // namespace
}  // namespace tav::pages
