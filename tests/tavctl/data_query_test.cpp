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
  static vorn::cRecord Row(const std::string& value) {
    vorn::cRecord row;
    row.AppendRecordPar("event", Text("value", value));
    return row;
  }
  void Offer(unsigned int values, unsigned int mostAtOnce) {
    Answer([this, values, mostAtOnce](const vorn::cMsg& request) {
      const unsigned int wanted = request.Record().GetUIntPar("maxlen");
      const std::string after = request.Record().GetDataPar("after").AsText();
      m_asked.push_back(wanted);
      unsigned int next = after.empty() ? 0 : static_cast<unsigned int>(std::stoul(after));
      vorn::cRecord page;
      for (unsigned int i = 0; i < std::min(wanted, mostAtOnce) && next < values; ++i, ++next)
        page.AppendRecordPar("row", Row(std::to_string(next)));
      if (next < values) page.AppendDataPar("next", vorn::cData(std::to_string(next)));
      return Message(request.GetType() + 1, page);
    });
  }
  std::vector<unsigned int> m_asked;
};

TEST_F(DataQuery, FollowsTheCursorToTheEnd) {
  Offer(2500, 10'000);
  const cOutput output = Run({"--json", "events", "--limit", "0"});
  EXPECT_EQ(output.Json().size(), 2500u);
  EXPECT_EQ(output.Json()[2499]["event"]["value"], "2499");
  EXPECT_EQ(output.err, "");
  EXPECT_THAT(m_asked, ElementsAre(1000, 1000, 1000));
}

TEST_F(DataQuery, EndsAtTheLimitAndSaysThatThereIsMore) {
  for (const unsigned int limit : {1u, 999u, 1000u, 1001u, 2499u}) {
    Offer(2500, 10'000);
    const cOutput output = Run({"--json", "events", "--limit", std::to_string(limit)});
    EXPECT_EQ(output.Json().size(), limit);
    EXPECT_THAT(output.err, HasSubstr("there are more events")) << limit;
  }
  EXPECT_EQ(m_asked.back(), 499u) << "no more than are left";
}

TEST_F(DataQuery, SaysNothingOfMoreWhenTheLimitIsTheEnd) {
  Offer(5, 10'000);
  EXPECT_EQ(Run({"events", "--limit", "5"}).err, "");
  EXPECT_EQ(Run({"events", "--limit", "6"}).err, "");
}

TEST_F(DataQuery, TakesPagesShorterThanAskedFor) {
  Offer(25, 7);
  EXPECT_EQ(Run({"--json", "events"}).Json().size(), 25u);
}

TEST_F(DataQuery, TakesPagesWithoutRowsWhileTheCursorMoves) {
  Answer([](const vorn::cMsg& request) {
    const std::string after = request.Record().GetDataPar("after").AsText();
    vorn::cRecord page;
    if (after.size() < 3)
      page.AppendDataPar("next", vorn::cData(after + "x"));
    else
      page.AppendRecordPar("row", Row("found"));
    return Message(request.GetType() + 1, page);
  });
  EXPECT_EQ(Run({"--json", "events"}).Json().at(0).at("event").at("value"), "found");
}

TEST_F(DataQuery, DoesNotFollowACursorThatStandsStill) {
  Answer([](const vorn::cMsg& request) {
    vorn::cRecord page;
    page.AppendRecordPar("row", Row("1"));
    page.AppendDataPar("next", vorn::cData("x", 1));
    return Message(request.GetType() + 1, page);
  });
  const cOutput output = Run({"--json", "events", "--limit", "0"});
  EXPECT_EQ(output.exit, eExitRefused);
  EXPECT_THAT(output.err, HasSubstr("answers with the cursor it was asked with"));
  EXPECT_EQ(output.Json().size(), 2u) << "what was written is well-formed";
}

TEST_F(DataQuery, TakesNoMoreThanTheLimitFromAServiceThatGivesMore) {
  Answer([](const vorn::cMsg& request) {
    vorn::cRecord page;
    for (int i = 0; i < 5; ++i) page.AppendRecordPar("row", Row("1"));
    return Message(request.GetType() + 1, page);
  });
  const cOutput output = Run({"--json", "events", "--limit", "3"});
  EXPECT_EQ(output.Json().size(), 3u);
  EXPECT_THAT(output.err, HasSubstr("there are more events"));
}

// ---- selections, which the service hands out by handle

class DataSelection : public TavctlWithAnswers {
 protected:
  // So many values behind a handle, in pages of so many.
  void Offer(unsigned int values, unsigned int mostAtOnce) {
    m_next = 0;
    m_handle.Create();
    Answer([this, values, mostAtOnce](const vorn::cMsg& request) {
      vorn::cRecord answer;
      if (request.GetType() == db_ctrl::eGetStoredValues) {
        m_selection = request.Record().GetRecordPar("meter-request");
        answer.AppendUuidPar("handle", m_handle);
        return Message(request.GetType() + 1, answer);
      }
      EXPECT_EQ(request.Record().GetUuidPar("handle"), m_handle);
      if (request.GetType() == db_ctrl::eCloseResult) {
        m_closed = true;
        return Message(request.GetType() + 1, {});
      }
      for (unsigned int i = 0; i < std::min(request.Record().GetUIntPar("count"), mostAtOnce) && m_next < values; ++i)
        answer.AppendRecordPar("row", Text("value", std::to_string(m_next++)));
      answer.AppendBoolPar("end", m_next == values);
      return Message(request.GetType() + 1, answer);
    });
  }

  vorn::cUuid m_handle;
  vorn::cRecord m_selection;
  unsigned int m_next = 0;
  bool m_closed = false;
};

TEST_F(DataSelection, IsFetchedToItsEnd) {
  Offer(2500, 700);
  const cOutput output = Run({"--json", "values", "M", "--limit", "0"});
  EXPECT_EQ(output.Json().size(), 2500u);
  EXPECT_EQ(output.Json()[2499]["value"], "2499");
  EXPECT_EQ(output.err, "");
  EXPECT_FALSE(m_closed) << "the last row has released it";
  EXPECT_EQ(m_selection.GetUIntPar("maxlen"), 0u);
}

TEST_F(DataSelection, TellsWhatIsAskedFor) {
  Offer(1, 10);
  Run({"values", "M", "--obis", "1-0:1.8.0,1-0:2.8.0", "--from", "100", "--to", "200", "--profile", "lp"});
  cDbCtrlRequest request;
  ASSERT_TRUE(request.FromRecord(m_selection));
  EXPECT_EQ(request.m_meterID, "M");
  EXPECT_THAT(request.m_obisIds, ElementsAre("1-0:1.8.0", "1-0:2.8.0"));
  EXPECT_EQ(request.m_fromUTC, 100u);
  EXPECT_EQ(request.m_toUTC, 200u);
  EXPECT_EQ(request.m_profile, "lp");
  EXPECT_EQ(request.m_maxLen, 1001u) << "one more than the limit tells whether there are more";
}

TEST_F(DataSelection, EndsAtTheLimitAndReleasesTheRest) {
  Offer(25, 10);
  const cOutput output = Run({"--json", "values", "M", "--limit", "5"});
  EXPECT_EQ(output.Json().size(), 5u);
  EXPECT_THAT(output.err, HasSubstr("there are more values"));
  EXPECT_TRUE(m_closed);
  Offer(5, 10);
  EXPECT_EQ(Run({"values", "M", "--limit", "5"}).err, "");
}

}  // namespace
}  // namespace tav::ctl
