// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/events_page.h>

#include <algorithm>

#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

class EventsPage : public cPagesWorld {
 protected:
  void StoreEvents(std::size_t count, const std::string& kind = "tick") {
    cRecordingClient client(m_gateway.get(), "data");
    std::size_t stored = 0;
    client.onMessage = [&](const vorn::cMsg& answer) { stored += answer.GetType() == db_ctrl::eEventStored ? 1 : 0; };
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return client.IsConnected(); }));
    for (std::size_t i = 0; i < count; ++i) {
      vorn::cMsg msg(db_ctrl::eStoreEvent);
      msg.Record().AppendTextPar("kind", kind + std::to_string(i));
      ASSERT_EQ(client.Send(msg), 1);
    }
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return stored == count; }));
  }
  void StoreEvent(const vorn::cRecord& event) {
    cRecordingClient client(m_gateway.get(), "data");
    bool isStored = false;
    client.onMessage = [&](const vorn::cMsg& answer) { isStored |= answer.GetType() == db_ctrl::eEventStored; };
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return client.IsConnected(); }));
    vorn::cMsg msg(db_ctrl::eStoreEvent);
    msg.Record() = event;
    ASSERT_EQ(client.Send(msg), 1);
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return isStored; }));
  }
  // Moves the events that have come so far to earlier times.
  void MoveBack(const std::string& seconds) {
    cRecordingClient client(m_gateway.get(), "data");
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return client.IsConnected(); }));
    vorn::cMsg msg(db_ctrl::eSqlExec);
    msg.Record().AppendTextPar(db_ctrl::kDb, "");
    msg.Record().AppendTextPar(db_ctrl::kSql, "UPDATE event SET time = time - " + seconds);
    msg.Record().AppendUIntPar(db_ctrl::kOptions, kWrite);
    ASSERT_EQ(client.Send(msg), 1);
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return !client.messages.empty(); }));
    ASSERT_EQ(client.messages[0].GetType(), db_ctrl::eSqlExec + 1) << client.messages[0].ToString();
  }
  static constexpr unsigned int kWrite = 1;  // of the options of an SQL statement
  // The kinds that a page shows, from the top.
  static std::vector<std::string> Kinds(const std::string& body) {
    std::vector<std::string> kinds;
    const std::string before = "<summary>kind ";
    for (std::size_t at = body.find(before); at != std::string::npos; at = body.find(before, at + 1))
      kinds.push_back(body.substr(at + before.size(), body.find('<', at + before.size()) - at - before.size()));
    return kinds;
  }
  // What the link to older events asks for; empty when there is none.
  static cFields OlderQuery(const std::string& body) {
    const std::string before = "href=\"/events?from=";
    std::size_t at = body.find(before);
    if (at == std::string::npos) return {};
    at += before.size();
    const auto value = [&](const std::string& name) {
      const std::size_t begin = body.find("&amp;" + name + "=", at) + name.size() + 6;
      return body.substr(begin, body.find_first_of("&\"", begin) - begin);
    };
    return {{"from", body.substr(at, body.find('&', at) - at)}, {"to", value("to")}, {"before", value("before")}};
  }
};

TEST_F(EventsPage, ShowsTheNewestFirst) {
  Enter();
  StoreEvents(3);
  EXPECT_THAT(Kinds(Get("/events").body), testing::ElementsAre("tick2", "tick1", "tick0"));
}

TEST_F(EventsPage, SaysThatThereAreNone) {
  Enter();
  EXPECT_THAT(Get("/events").body, HasSubstr("No event is stored in that time."));
}

TEST_F(EventsPage, APageHasSoManyEventsAndALinkToOlderOnes) {
  Enter();
  StoreEvents(cEventsPage::kEvents - 1);
  EXPECT_TRUE(OlderQuery(Get("/events").body).empty());
  StoreEvents(1, "last");
  const std::string full = Get("/events").body;
  EXPECT_EQ(Kinds(full).size(), cEventsPage::kEvents);
  EXPECT_TRUE(OlderQuery(full).empty()) << "there is nothing behind a full page";
  StoreEvents(1, "more");
  const std::string first = Get("/events").body;
  EXPECT_EQ(Kinds(first).size(), cEventsPage::kEvents);
  const std::string second = Get("/events", OlderQuery(first)).body;
  EXPECT_THAT(Kinds(second), testing::ElementsAre("tick0"));
}

TEST_F(EventsPage, TheLinksLeadToEveryEventOnce) {
  Enter();
  constexpr std::size_t kCount = 2 * cEventsPage::kEvents + 7;
  StoreEvents(kCount);
  std::vector<std::string> all;
  cFields query;
  do {
    const std::string body = Get("/events", query).body;
    for (const std::string& kind : Kinds(body)) all.push_back(kind);
    query = OlderQuery(body);
    StoreEvents(1, "meanwhile");  // what comes meanwhile moves nothing
  } while (!query.empty() && all.size() <= kCount);
  ASSERT_EQ(all.size(), kCount);
  for (std::size_t i = 0; i < kCount; ++i) EXPECT_EQ(all[i], "tick" + std::to_string(kCount - 1 - i));
}

TEST_F(EventsPage, FindsWhatIsLongAgo) {
  Enter();
  StoreEvents(1, "decades");
  MoveBack("1000000000");
  StoreEvents(1, "month");
  MoveBack("2600000");
  StoreEvents(1, "hours");
  MoveBack("7200");
  StoreEvents(1, "now");
  EXPECT_THAT(Kinds(Get("/events").body), testing::ElementsAre("now0", "hours0", "month0", "decades0"));
  EXPECT_THAT(Kinds(Get("/events", {{"to", "-1h"}}).body), testing::ElementsAre("hours0", "month0", "decades0"));
  EXPECT_THAT(Kinds(Get("/events", {{"from", "-60d"}, {"to", "-1d"}}).body), testing::ElementsAre("month0"));
}

TEST_F(EventsPage, TheLinksGoOnWhereEventsAreFarApart) {
  Enter();
  StoreEvents(cEventsPage::kEvents, "old");
  MoveBack("100000");
  StoreEvents(3, "new");
  const std::string first = Get("/events").body;
  EXPECT_EQ(Kinds(first).size(), cEventsPage::kEvents);
  EXPECT_EQ(Kinds(first).back(), "old3");
  EXPECT_THAT(Kinds(Get("/events", OlderQuery(first)).body), testing::ElementsAre("old2", "old1", "old0"));
}

TEST_F(EventsPage, ShowsARangeOfTime) {
  Enter();
  StoreEvents(1);
  EXPECT_THAT(Kinds(Get("/events", {{"from", "-1h"}, {"to", "+1h"}}).body), testing::ElementsAre("tick0"));
  EXPECT_THAT(Kinds(Get("/events", {{"from", "-2d"}, {"to", "-1d"}}).body), testing::IsEmpty());
}

TEST_F(EventsPage, SaysWhatIsNoRange) {
  Enter();
  for (const cFields& query : {cFields{{"from", "long ago<"}}, cFields{{"to", "never"}},
                               cFields{{"from", "now"}, {"to", "-1h"}}, cFields{{"before", "-1"}}}) {
    const cAnswer answer = Get("/events", query);
    EXPECT_EQ(answer.Status(), 400u) << query[0].first;
    EXPECT_THAT(answer.body, HasSubstr(query[0].first + ": ")) << query[0].first;
  }
}

TEST_F(EventsPage, AnEventIsALineWithItsDetailsBehindIt) {
  Enter();
  vorn::cRecord inner;
  inner.AppendTextPar("deep", "<i>");
  vorn::cRecord event;
  event.AppendTextPar("name", "<b>door</b>");
  event.AppendUIntPar("count", 7);
  event.AppendRecordPar("inner", inner);
  event.AppendTextPar("password", "hunter2");
  StoreEvent(event);
  const std::string body = Get("/events").body;
  EXPECT_THAT(body, HasSubstr("<summary>name &lt;b&gt;door&lt;/b&gt;, count 7, inner, password ***</summary>"));
  EXPECT_THAT(body, HasSubstr("&quot;deep&quot;: &quot;&lt;i&gt;&quot;"));
  EXPECT_THAT(body, Not(HasSubstr("hunter2")));
}

TEST_F(EventsPage, ALongEventIsCutInItsLineOnly) {
  Enter();
  vorn::cRecord event;
  event.AppendTextPar("text", std::string(5000, 'x'));
  StoreEvent(event);
  EXPECT_LE(EventLine(event).size(), 123u);
  EXPECT_THAT(EventLine(event), testing::EndsWith("xxx..."));
  EXPECT_THAT(Get("/events").body, HasSubstr(std::string(5000, 'x')));
}

TEST_F(EventsPage, AnEmptyEventAndOneOfForeignBytesAreShown) {
  Enter();
  EXPECT_EQ(EventLine({}), "nothing");
  vorn::cRecord event;
  event.AppendTextPar("text", "caf\xE9");
  StoreEvent(event);
  EXPECT_THAT(Get("/events").body, HasSubstr("<summary>text caf\xC3\xA9</summary>"));
}

}  // namespace
}  // namespace tav::pages
