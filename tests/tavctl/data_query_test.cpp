// SPDX-License-Identifier: Apache-2.0
#include <tavctl/data_query.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// A list of so many values, in pages as they are asked for.
class DataQuery : public TavctlWithAnswers {
 protected:
  void Offer(unsigned int values, unsigned int mostAtOnce) {
    Answer([this, values, mostAtOnce](const vorn::cMsg& request) {
      const unsigned int wanted = request.Record().GetUIntPar("maxlen");
      const std::string after = request.Record().GetDataPar("after").AsText();
      m_asked.push_back(wanted);
      unsigned int next = after.empty() ? 0 : static_cast<unsigned int>(std::stoul(after));
      vorn::cRecord page;
      for (unsigned int i = 0; i < std::min(wanted, mostAtOnce) && next < values; ++i, ++next)
        page.AppendRecordPar("row", Text("value", std::to_string(next)));
      if (next < values) page.AppendDataPar("next", vorn::cData(std::to_string(next)));
      return Message(request.GetType() + 1, page);
    });
  }
  std::vector<unsigned int> m_asked;
};

TEST_F(DataQuery, FollowsTheCursorToTheEnd) {
  Offer(2500, 10'000);
  const cOutput output = Run({"--json", "values", "M", "--limit", "0"});
  EXPECT_EQ(output.Json().size(), 2500u);
  EXPECT_EQ(output.Json()[2499]["value"], "2499");
  EXPECT_EQ(output.err, "");
  EXPECT_THAT(m_asked, ElementsAre(1000, 1000, 1000));
}

TEST_F(DataQuery, EndsAtTheLimitAndSaysThatThereIsMore) {
  for (const unsigned int limit : {1u, 999u, 1000u, 1001u, 2499u}) {
    Offer(2500, 10'000);
    const cOutput output = Run({"--json", "values", "M", "--limit", std::to_string(limit)});
    EXPECT_EQ(output.Json().size(), limit);
    EXPECT_THAT(output.err, HasSubstr("there are more values")) << limit;
  }
  EXPECT_EQ(m_asked.back(), 499u) << "no more than are left";
}

TEST_F(DataQuery, SaysNothingOfMoreWhenTheLimitIsTheEnd) {
  Offer(5, 10'000);
  EXPECT_EQ(Run({"values", "M", "--limit", "5"}).err, "");
  EXPECT_EQ(Run({"values", "M", "--limit", "6"}).err, "");
}

TEST_F(DataQuery, TakesPagesShorterThanAskedFor) {
  Offer(25, 7);
  EXPECT_EQ(Run({"--json", "values", "M"}).Json().size(), 25u);
}

TEST_F(DataQuery, TakesPagesWithoutRowsWhileTheCursorMoves) {
  Answer([](const vorn::cMsg& request) {
    const std::string after = request.Record().GetDataPar("after").AsText();
    vorn::cRecord page;
    if (after.size() < 3)
      page.AppendDataPar("next", vorn::cData(after + "x"));
    else
      page.AppendRecordPar("row", Text("value", "found"));
    return Message(request.GetType() + 1, page);
  });
  EXPECT_EQ(Run({"--json", "values", "M"}).Json().at(0).at("value"), "found");
}

TEST_F(DataQuery, DoesNotFollowACursorThatStandsStill) {
  Answer([](const vorn::cMsg& request) {
    vorn::cRecord page;
    page.AppendRecordPar("row", Text("value", "1"));
    page.AppendDataPar("next", vorn::cData("x", 1));
    return Message(request.GetType() + 1, page);
  });
  const cOutput output = Run({"--json", "values", "M", "--limit", "0"});
  EXPECT_EQ(output.exit, eExitRefused);
  EXPECT_THAT(output.err, HasSubstr("answers with the cursor it was asked with"));
  EXPECT_EQ(output.Json().size(), 2u) << "what was written is well-formed";
}

TEST_F(DataQuery, TakesNoMoreThanTheLimitFromAServiceThatGivesMore) {
  Answer([](const vorn::cMsg& request) {
    vorn::cRecord page;
    for (int i = 0; i < 5; ++i) page.AppendRecordPar("row", Text("value", "1"));
    return Message(request.GetType() + 1, page);
  });
  const cOutput output = Run({"--json", "values", "M", "--limit", "3"});
  EXPECT_EQ(output.Json().size(), 3u);
  EXPECT_THAT(output.err, HasSubstr("there are more values"));
}

}  // namespace
}  // namespace tav::ctl
