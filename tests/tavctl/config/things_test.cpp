// SPDX-License-Identifier: Apache-2.0
// interface, meter, collector, push-target, template and config against a real database control service.
#include <tavctl/config/things.h>

#include <filesystem>
#include <fstream>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Things : public TavctlWithGateway {
 protected:
  void Done(const std::vector<std::string>& arguments, const std::string& input = {}) {
    const cOutput output = Run(arguments, input);
    EXPECT_EQ(output.exit, eExitDone) << output.err;
  }
  std::string Refused(const std::vector<std::string>& arguments, eExit exit = eExitRefused) {
    const cOutput output = Run(arguments);
    EXPECT_EQ(output.exit, exit) << output.out;
    return output.err;
  }
  nlohmann::json Shown(const std::string& thing, const std::string& name) {
    return Run({"--json", thing, "show", name, "--secrets"}).Json();
  }
  void Configure() {
    Done({"interface", "set", "SIM", "enabled=true", "options=meters=2"});
    Done({"push-target", "set", "server", "protocoll=https", "host=example.org", "password=@-"}, "pass\n");
    Done({"meter", "set", "M1", "addr=5", "medium=E", "mfct=ABC", "interface-name=SIM", "interface-protocol=SML",
          "key=@-"},
         "0011\n");
    Done({"collector", "set", "M1/lp", "activation=true", "event-type=15min", "obis-ids=1-0:1.8.0", "countRP=96",
          "distanceRP=2", "push-target-name=server"});
    Done({"template", "set", "preset", "enable=true", "meter-config.medium=G", "meter-config.meterID=T",
          "push-config.name=p", "push-config.protocoll=https", "push-config.host=h", "meter-config.key=@-"},
         "secret\n");
  }
  std::string Exported(std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"config", "export"});
    return Run(options).out;
  }
};

TEST_F(Things, AreListedInTables) {
  EXPECT_EQ(Run({"interface", "list"}).err, "tavctl: there is no interface yet\n");
  EXPECT_EQ(Run({"--json", "meter", "list"}).out, "[]\n");
  Configure();
  EXPECT_EQ(Run({"interface", "list"}).out, "NAME  ENABLED  OPTIONS\nSIM   true     meters=2\n");
  EXPECT_EQ(Run({"meter", "list"}).out,
            "METER  ADDRESS  MEDIUM       MAKER  INTERFACE  PROTOCOL  OPTIONS  PUSH\n"
            "M1     5        Electricity  ABC    SIM        SML       -        false\n");
  EXPECT_EQ(Run({"collector", "list"}).out,
            "METER  COLLECTOR  ACTIVE  EVENT  KEPT  OBIS       PUSH TARGET\n"
            "M1     lp         true    15min    96  1-0:1.8.0  server\n");
  EXPECT_EQ(Run({"push-target", "list"}).out,
            "NAME    NUMBER  ENABLED  SCHEME  HOST         PATH\nserver       1  false    https   example.org  -\n");
  EXPECT_EQ(Run({"template", "list"}).out, "NAME    NUMBER  ENABLED\npreset       1  true\n");
  EXPECT_EQ(Run({"--json", "interface", "list"}).Json(),
            nlohmann::json::parse(R"([{"name":"SIM","enabled":true,"options":"meters=2"}])"));
}

TEST_F(Things, AreShownAsTheyStandInAnExport) {
  Configure();
  EXPECT_EQ(Run({"interface", "show", "SIM"}).out, "name = \"SIM\"\nenabled = true\noptions = \"meters=2\"\n");
  EXPECT_THAT(Run({"meter", "show", "M1"}).out, HasSubstr("[[collectors]]\naddr = \"lp\"\n"));
  EXPECT_THAT(Run({"meter", "show", "5"}).out, HasSubstr("meterID = \"M1\"")) << "by its address";
  EXPECT_EQ(Shown("collector", "M1/lp")["distanceRP"], 2) << "what is written is read back";
  EXPECT_EQ(Shown("template", "preset")["meter-config"]["medium"], "G");
}

TEST_F(Things, ShowSecretsOnlyWhenAsked) {
  Configure();
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
           {"meter", "show", "M1"}, {"push-target", "show", "server"}, {"template", "show", "preset"}}) {
    for (const bool json : {false, true}) {
      std::vector<std::string> arguments = words;
      if (json) arguments.insert(arguments.begin(), "--json");
      const std::string shown = Run(arguments).out;
      EXPECT_THAT(shown, Not(testing::ContainsRegex("0011|pass|secret|key")));
    }
  }
  EXPECT_EQ(Shown("meter", "M1")["key"], "0011");
  EXPECT_EQ(Shown("push-target", "server")["password"], "pass");
  EXPECT_EQ(Shown("template", "preset")["meter-config"]["key"], "secret");
  for (const char* thing : {"meter", "push-target", "template"})
    EXPECT_THAT(Run({"--json", thing, "list"}).out, Not(testing::ContainsRegex("0011|pass\"|secret")));
}

TEST_F(Things, KeepTheFieldsThatSetDoesNotName) {
  Configure();
  Done({"meter", "set", "M1", "vendor=V"});
  EXPECT_EQ(Shown("meter", "M1")["key"], "0011");
  EXPECT_EQ(Shown("meter", "M1")["vendor"], "V");
  EXPECT_EQ(Shown("meter", "M1")["collectors"][0]["distanceRP"], 2);
  Done({"interface", "set", "SIM", "enabled=false"});
  EXPECT_EQ(Shown("interface", "SIM")["options"], "meters=2");
  Done({"push-target", "set", "server", "uri=a"});
  EXPECT_EQ(Shown("push-target", "server")["password"], "pass");
  Done({"template", "set", "preset", "push-config.uri=u"});
  EXPECT_EQ(Shown("template", "preset")["push-config"]["host"], "h");
}

TEST_F(Things, SayWhatIsWrongWithAField) {
  Configure();
  EXPECT_EQ(Refused({"meter", "set", "M1", "color=red"}, eExitUsage),
            "tavctl: there is no field 'color'; there are meterID, addr, medium, mfct, key, vendor, interface-name, "
            "interface-protocol, interface-options, push-enabled, store-raw-enabled\n");
  EXPECT_EQ(Refused({"interface", "set", "SIM", "enabled"}, eExitUsage),
            "tavctl: expected FIELD=VALUE, found \"enabled\"\n");
  EXPECT_EQ(Refused({"interface", "set", "SIM", "enabled=1"}, eExitUsage),
            "tavctl: enabled: expected true or false, found \"1\"\n");
  EXPECT_EQ(Refused({"collector", "set", "lp", "activation=true"}, eExitUsage),
            "tavctl: expected METER/NAME, found \"lp\"\n");
  EXPECT_THAT(Refused({"meter", "set", "M2", "interface-name=NONE", "interface-protocol=SML"}), HasSubstr("NONE"));
  EXPECT_THAT(Refused({"collector", "set", "M1/x", "event-type=never", "obis-ids=1-0:1.8.0"}), HasSubstr("never"));
}

TEST_F(Things, RefuseAPushTargetOfATemplateThatCouldNotBeReadBack) {
  EXPECT_EQ(Refused({"template", "set", "preset", "push-config.host=h"}, eExitUsage),
            "tavctl: push-config: missing name\n");
  EXPECT_THAT(Run({"config", "import", "-"}, "[[templates]]\nname = 'x'\n[templates.push-config]\nname = 'p'\n").err,
              HasSubstr("tavctl: -: line 3: templates[0].push-config: missing protocoll\n"));
  Done({"template", "set", "preset", "enable=true"});
}

TEST_F(Things, AreDeletedAndSayWhatWent) {
  Configure();
  EXPECT_THAT(Refused({"interface", "delete", "SIM"}), HasSubstr("M1")) << "a meter hangs on it";
  EXPECT_THAT(Refused({"push-target", "delete", "server"}), HasSubstr("M1")) << "a collector pushes to it";
  EXPECT_EQ(Run({"collector", "delete", "M1/lp"}).err, "tavctl: deleted: collector 'lp' of meter 'M1'\n");
  EXPECT_THAT(Shown("meter", "M1")["collectors"], IsEmpty());
  Done({"push-target", "delete", "server"});
  EXPECT_THAT(Run({"meter", "delete", "M1"}).err, HasSubstr("deleted: "));
  Done({"interface", "delete", "SIM"});
  Done({"template", "delete", "preset"});
  EXPECT_EQ(Exported(), "");
}

TEST_F(Things, FailWhenThereIsNoneOfThatName) {
  Configure();
  for (const char* thing : {"interface", "meter", "push-target", "template"})
    for (const char* action : {"show", "delete"})
      EXPECT_EQ(Refused({thing, action, "nobody"}, eExitNegative),
                std::string("tavctl: there is no ") + thing + " 'nobody'; see tavctl " + thing + " list\n");
  EXPECT_EQ(Refused({"collector", "show", "M1/x"}, eExitNegative),
            "tavctl: there is no collector 'M1/x'; see tavctl collector list\n");
  EXPECT_EQ(Refused({"collector", "set", "X/x", "activation=true"}, eExitNegative),
            "tavctl: there is no meter 'X'; see tavctl meter list\n");
}

// ---- the whole configuration

TEST_F(Things, AnExportIsImportedIntoAnEmptyGatewayAsItWas) {
  Configure();
  const std::string toml = Exported({"--secrets"});
  const std::string json = Run({"--json", "config", "export", "--secrets"}).out;
  for (const std::string& text : {toml, json}) {
    Done({"config", "import", "-"}, "");
    EXPECT_EQ(Exported(), "") << "an empty document empties it";
    Done({"config", "import", "-"}, text);
    EXPECT_EQ(Exported({"--secrets"}), toml);
  }
}

TEST_F(Things, AnImportWithoutSecretsKeepsThoseOfTheGateway) {
  Configure();
  const std::string before = Exported({"--secrets"});
  Done({"config", "import", "-"}, Exported());
  EXPECT_EQ(Exported({"--secrets"}), before);
}

TEST_F(Things, AnImportDeletesWhatTheDocumentDoesNotHaveUnlessItMerges) {
  Configure();
  Done({"config", "import", "--merge", "-"}, "[[interfaces]]\nname = 'RS232'\n");
  EXPECT_EQ(Run({"--json", "interface", "list"}).Json().size(), 2u);
  EXPECT_EQ(Run({"--json", "meter", "list"}).Json().size(), 1u);
  Done({"config", "import", "-"}, "[[interfaces]]\nname = 'RS232'\n");
  EXPECT_EQ(Run({"--json", "interface", "list"}).Json().size(), 1u);
  EXPECT_EQ(Run({"--json", "meter", "list"}).Json().size(), 0u);
}

TEST_F(Things, AWrongDocumentChangesNothingAndEveryFaultIsNamed) {
  Configure();
  const std::string before = Exported({"--secrets"});
  const cOutput unreadable = Run({"config", "import", "-"}, "[[meters]]\nmeterID = 1\ncolor = 'red'\n");
  EXPECT_EQ(unreadable.exit, eExitNegative);
  EXPECT_THAT(unreadable.err, HasSubstr("tavctl: -: line 2: meters[0].meterID: expected a text, found 1\n"));
  EXPECT_THAT(unreadable.err, HasSubstr("tavctl: -: line 3: meters[0].color: there is no such field"));
  EXPECT_THAT(unreadable.err, HasSubstr("tavctl: nothing was changed\n"));
  const cOutput refused = Run({"config", "import", "-"},
                              "[[interfaces]]\nname = 'X'\n[[meters]]\nmeterID = 'A'\ninterface-name = 'NONE'\n"
                              "[[meters]]\nmeterID = 'B'\ninterface-name = 'NONE'\n");
  EXPECT_EQ(refused.exit, eExitRefused);
  EXPECT_THAT(refused.err, HasSubstr("'A'"));
  EXPECT_THAT(refused.err, HasSubstr("'B'"));
  EXPECT_EQ(Exported({"--secrets"}), before);
}

TEST_F(Things, ADocumentIsCheckedWithoutAGateway) {
  m_server.reset();
  EXPECT_EQ(Run({"config", "import", "--check", "-"}, "[[interfaces]]\nname = 'X'\n").err,
            "tavctl: nothing is wrong in -: 1 interface(s), 0 meter(s), 0 push target(s), 0 template(s)\n");
  EXPECT_EQ(Run({"config", "import", "--check", "-"}, "x").exit, eExitNegative);
}

TEST_F(Things, AnExportedFileIsForItsOwnerOnly) {
  Configure();
  Done({"config", "export", "--secrets", m_folder.File("all.toml")});
  std::ifstream in(m_folder.File("all.toml"));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), Exported({"--secrets"}));
  EXPECT_EQ(std::filesystem::status(m_folder.File("all.toml")).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_THAT(Refused({"config", "export", "/nowhere/all.toml"}, eExitFile),
              HasSubstr("/nowhere/all.toml.new: cannot be written: No such file or directory"));
}

// ---- templates as files

TEST_F(Things, TemplatesGoOutAndInAsFiles) {
  Configure();
  const std::string file = m_folder.File("1.mt");
  EXPECT_EQ(Run({"template", "export", m_folder.GetPath()}).err, "tavctl: wrote " + file + ", template 'preset'\n");
  Done({"template", "delete", "preset"});
  EXPECT_EQ(Run({"template", "import", file}).err, "tavctl: template 'preset' has number 2\n")
      << "the service numbers them, and never gives a number twice";
  EXPECT_EQ(Shown("template", "preset")["meter-config"]["medium"], "G");
  EXPECT_EQ(Shown("template", "preset")["meter-config"]["key"], "") << "secrets were not written";
  Done({"template", "set", "preset", "meter-config.key=K"});
  Done({"template", "export", m_folder.GetPath(), "--secrets"});
  Done({"template", "delete", "preset"});
  Done({"template", "import", m_folder.File("2.mt")});
  EXPECT_EQ(Shown("template", "preset")["meter-config"]["key"], "K");
}

TEST_F(Things, ATemplateFileThatIsNoneIsRefused) {
  EXPECT_THAT(Refused({"template", "import", "preset.mt"}, eExitUsage),
              HasSubstr("preset.mt: a template's file is named after its number, such as 42.mt"));
  EXPECT_THAT(Refused({"template", "import", "/nowhere/42.mt"}, eExitFile),
              HasSubstr("/nowhere/42.mt: there is no such file"));
  std::ofstream(m_folder.File("7.mt")) << "<broken";
  EXPECT_THAT(Refused({"template", "import", m_folder.File("7.mt")}, eExitFile), HasSubstr("7.mt: "));
  EXPECT_THAT(Refused({"template", "export", "/nowhere"}, eExitDone), IsEmpty()) << "there is no template";
}

}  // namespace
}  // namespace tav::ctl
