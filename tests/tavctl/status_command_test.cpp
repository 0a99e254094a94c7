// SPDX-License-Identifier: Apache-2.0
#include <tavctl/status_command.h>

#include <csignal>
#include <optional>

#include <gateway/host/task.h>
#include <gateway/service/status/status_server.h>
#include <tav/service/status_proxy.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

// What publishes values. The kernel says which process that is: this one.
struct cPublisher {
  explicit cPublisher(const std::string& directory) : service("publisher", directory), proxy(&service) {}

  vorn::cScmService service;
  cStatusProxy proxy;
};

// The real status service on tavctl's loop, and processes on loops of their own.
class StatusCommand : public TavctlWorld {
 protected:
  // When this was shown, that happens.
  struct cStep {
    std::string shown;
    std::function<void()> then;
  };

  void SetUp() override { Serve(); }
  void TearDown() override {
    m_publishers.clear();
    m_server.reset();
    m_store.reset();
  }
  void Serve() {
    data::cDataOptions options;
    options.file = m_folder.File("status.db");
    options.durability = data::eDurability::Normal;
    m_store = std::make_unique<gateway::cStatusStore>(options);
    const data::cFault fault = m_store->Open();
    ASSERT_FALSE(fault) << fault.text;
    m_server = std::make_unique<gateway::cStatusServer>(&m_host, m_store.get());
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
  }
  void Die() {
    m_server.reset();
    m_store.reset();
  }
  cStatusProxy& Publish(const vorn::cMap<std::string, std::string>& values) {
    m_publishers.push_back(std::make_unique<cPublisher>(Directory()));
    cStatusProxy& proxy = m_publishers.back()->proxy;
    proxy.MultiSet(values);
    EXPECT_TRUE(PollUntil(m_host, [&] {
      Turn();
      return m_server->GetSet().GetValues().count(values.begin()->first) != 0;
    }));
    return proxy;
  }
  void Turn() {
    for (const auto& publisher : m_publishers)
      while (publisher->service.Poll(0)) {
      }
  }
  // Blanks in a row are one.
  static std::string Squeezed(const std::string& text) {
    std::string squeezed;
    for (const char c : text)
      if (c != ' ' || squeezed.empty() || squeezed.back() != ' ') squeezed += c;
    return squeezed;
  }
  // Until the last step, which ends it.
  cOutput Watch(std::vector<std::string> arguments, std::vector<cStep> steps, bool terminal = false) {
    arguments.insert(arguments.begin(), "status");
    arguments.push_back("--watch");
    std::istringstream in;
    std::ostringstream out, err;
    std::optional<gateway::cTask> look;
    std::size_t next = 0, looks = 0;
    look.emplace(&m_host, [&] {
      Turn();
      if (next < steps.size() && Squeezed(out.str() + err.str()).find(steps[next].shown) != std::string::npos) {
        const auto step = steps[next].then;
        if (++next == steps.size()) raise(SIGINT);
        if (step) step();
      } else if (++looks > kMostLooks) {
        ADD_FAILURE() << "not shown: " << steps[next].shown << "\n" << out.str();
        raise(SIGINT);
      }
      look->Start(5);
    });
    look->Start(5);
    cApplication application({in, out, err, terminal, terminal}, &m_host);
    const eExit exit = application.Run(arguments);
    return {exit, out.str(), err.str()};
  }
  static unsigned int CountOf(const std::string& word, const std::string& text) {
    unsigned int count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
    return count;
  }

  static constexpr std::size_t kMostLooks = 4'000;

  std::unique_ptr<gateway::cStatusStore> m_store;
  std::unique_ptr<gateway::cStatusServer> m_server;
  std::vector<std::unique_ptr<cPublisher>> m_publishers;
};

TEST_F(StatusCommand, ListsTheValuesWithTheirProcess) {
  Publish({{"ehzif.queue", "0"}, {"ehzif.SIM.input", "open"}});
  Publish({{"data.readings", "17"}, {"data.reason", ""}});
  const cOutput output = Run({"status"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_THAT(Squeezed(output.out), MatchesRegex("NAME VALUE FROM STATE CHANGED\n"
                                                 "data.readings 17 tavctl_test connected 20[^\n]*\n"
                                                 "data.reason [^\n]*tavctl_test connected 20[^\n]*\n"
                                                 "ehzif.SIM.input open tavctl_test connected 20[^\n]*\n"
                                                 "ehzif.queue 0 tavctl_test connected 20[^\n]*\n"));
}

TEST_F(StatusCommand, ListsThoseOfAPrefix) {
  Publish({{"ehzif.queue", "0"}, {"ehzif.SIM.input", "open"}, {"ehzif2.queue", "1"}});
  const auto names = [this](const std::string& prefix) {
    std::vector<std::string> found;
    for (const auto& row : Run({"--json", "status", prefix}).Json()) found.push_back(row["name"]);
    return found;
  };
  EXPECT_THAT(names("ehzif"), testing::ElementsAre("ehzif.SIM.input", "ehzif.queue", "ehzif2.queue"));
  EXPECT_THAT(names("ehzif."), testing::ElementsAre("ehzif.SIM.input", "ehzif.queue"));
  EXPECT_THAT(names("ehzif.queue"), testing::ElementsAre("ehzif.queue"));
}

TEST_F(StatusCommand, HasAllKeysForPrograms) {
  Publish({{"ehzif.queue", "0"}});
  const nlohmann::json rows = Run({"--json", "status"}).Json();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_THAT(rows[0]["changed"].get<std::string>(), MatchesRegex("20.*T.*"));
  nlohmann::json row = rows[0];
  row.erase("changed");
  EXPECT_EQ(row.dump(), R"({"name":"ehzif.queue","process":"tavctl_test","state":"connected","value":"0"})");
}

TEST_F(StatusCommand, MarksTheValuesOfAProcessThatIsGone) {
  Publish({{"ehzif.queue", "3"}});
  m_publishers.clear();
  EXPECT_THAT(Squeezed(Run({"status"}).out), HasSubstr("ehzif.queue 3 tavctl_test gone 20"));
}

TEST_F(StatusCommand, FailsForAPrefixThatNothingBeginsWith) {
  EXPECT_EQ(Run({"status"}).exit, eExitDone);
  EXPECT_EQ(Run({"status"}).err, "tavctl: there are no status values\n");
  Publish({{"ehzif.queue", "0"}});
  const cOutput output = Run({"status", "mbus"});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.err, "tavctl: no status value begins with 'mbus'\n");
  EXPECT_EQ(Run({"--json", "status", "mbus"}).Json().size(), 0u);
}

TEST_F(StatusCommand, FailsWithoutTheService) {
  Die();
  EXPECT_EQ(Run({"status"}).exit, eExitUnreachable);
  EXPECT_EQ(Run({"status", "--watch"}).exit, eExitUnreachable);
}

// ---- as they change

TEST_F(StatusCommand, WritesALineForEachChange) {
  cStatusProxy& driver = Publish({{"ehzif.queue", "0"}, {"ehzif.SIM.input", "open"}});
  const cOutput output =
      Watch({"ehzif"}, {{"ehzif.queue 0 tavctl_test connected", [&] { driver.SingleSet("ehzif.queue", "1"); }},
                        {"ehzif.queue 1 tavctl_test connected", [&] { driver.SingleSet("other", "1"); }},
                        {"ehzif.queue 1", [&] { driver.SingleSet("ehzif.SIM.input", "lost"); }},
                        {"ehzif.SIM.input lost tavctl_test connected", {}}});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(CountOf("ehzif.queue", output.out), 2u) << output.out;
  EXPECT_EQ(CountOf("ehzif.SIM.input", output.out), 2u);
  EXPECT_THAT(output.out, Not(HasSubstr("other")));
  EXPECT_EQ(output.err, "");
}

TEST_F(StatusCommand, ShowsARemovedValueOnceAsRemoved) {
  cStatusProxy& driver = Publish({{"ehzif.a", "0"}, {"ehzif.b", "0"}});
  const cOutput output = Watch({}, {{"ehzif.a 0 tavctl_test connected", [&] { driver.SingleRemove("ehzif.a"); }},
                                    {"ehzif.a 0 tavctl_test removed", [&] { driver.SingleSet("ehzif.b", "1"); }},
                                    {"ehzif.b 1 tavctl_test connected", [&] { driver.SingleSet("ehzif.b", "2"); }},
                                    {"ehzif.b 2 tavctl_test connected", [&] { driver.SingleSet("ehzif.a", "0"); }},
                                    {"ehzif.b 2", {}}});
  EXPECT_EQ(CountOf("removed", output.out), 1u) << output.out;
}

TEST_F(StatusCommand, ShowsAValueThatComesBackAsItWas) {
  cStatusProxy& driver = Publish({{"ehzif.a", "7"}});
  const cOutput output = Watch({}, {{"ehzif.a 7 tavctl_test connected", [&] { driver.SingleRemove("ehzif.a"); }},
                                    {"removed",
                                     [&] {
                                       driver.MultiSet({{"ehzif.a", "7"}, {"ehzif.b", "1"}});
                                     }},
                                    {"ehzif.b 1", {}}});
  EXPECT_EQ(CountOf("ehzif.a", output.out), 3u) << output.out;
}

TEST_F(StatusCommand, ShowsThatAProcessHasGone) {
  Publish({{"ehzif.a", "0"}});
  const cOutput output = Watch(
      {}, {{"ehzif.a 0 tavctl_test connected", [&] { m_publishers.clear(); }}, {"ehzif.a 0 tavctl_test gone", {}}});
  EXPECT_EQ(output.exit, eExitDone);
}

TEST_F(StatusCommand, IsOneArrayWhileItWatches) {
  cStatusProxy& driver = Publish({{"ehzif.a", "0"}});
  const cOutput output = Watch({"--json"},
                               {{R"("ehzif.a","value":"0")", [&] { driver.SingleSet("ehzif.a", "1"); }},
                                {R"("ehzif.a","value":"1")", [&] { driver.SingleRemove("ehzif.a"); }},
                                {R"("state":"removed")", {}}},
                               true);
  const nlohmann::json rows = output.Json();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[2]["value"], "1");
  EXPECT_EQ(rows[2]["state"], "removed");
}

TEST_F(StatusCommand, ReplacesThePictureOnATerminal) {
  cStatusProxy& driver = Publish({{"ehzif.a", "0"}, {"ehzif.b", "0"}});
  const cOutput output = Watch({"ehzif"},
                               {{"ehzif.a 0 tavctl_test connected", [&] { driver.SingleRemove("ehzif.a"); }},
                                {"ehzif.a 0 tavctl_test removed", [&] { driver.SingleSet("ehzif.b", "1"); }},
                                {"ehzif.b 1 tavctl_test connected", {}}},
                               true);
  const std::string last = Squeezed(output.out.substr(output.out.rfind("\x1b[H")));
  EXPECT_THAT(last, HasSubstr("status, Ctrl-C ends"));
  EXPECT_THAT(last, HasSubstr("ehzif.b 1 tavctl_test connected"));
  EXPECT_THAT(last, Not(HasSubstr("ehzif.a"))) << "it was shown as removed, once";
}

TEST_F(StatusCommand, WatchesAPrefixThatNothingBeginsWithYet) {
  cStatusProxy& driver = Publish({{"ehzif.a", "0"}});
  const cOutput output = Watch({"mbus"}, {{"", [&] { driver.SingleSet("mbus.a", "1"); }}, {"mbus.a 1", {}}});
  EXPECT_EQ(CountOf("ehzif.a", output.out), 0u);
}

TEST_F(StatusCommand, GoesOnWhenTheServiceIsBack) {
  cStatusProxy& driver = Publish({{"ehzif.a", "0"}});
  const cOutput output = Watch({}, {{"ehzif.a 0 tavctl_test connected", [&] { Die(); }},
                                    {"service 'status' is not connected",
                                     [&] {
                                       driver.SingleSet("ehzif.a", "1");
                                       Serve();
                                     }},
                                    {"ehzif.a 1 tavctl_test connected", [&] { driver.SingleSet("ehzif.a", "2"); }},
                                    {"ehzif.a 2 tavctl_test connected", {}}});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(CountOf("not connected", output.err), 1u) << output.err;
}

TEST_F(StatusCommand, EndsAfterSoManyLooks) {
  Publish({{"ehzif.a", "0"}});
  EXPECT_EQ(Run({"--json", "status", "--watch", "--count", "1"}).Json().size(), 1u);
}

}  // namespace
}  // namespace tav::ctl
