// SPDX-License-Identifier: Apache-2.0
#include <tavctl/manifest_command.h>

#include <fstream>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;

class ManifestCommand : public TavctlWorld {
 protected:
  std::string Write(const std::string& text) {
    std::ofstream(m_folder.File("manifest.xml")) << text;
    return m_folder.File("manifest.xml");
  }
};

TEST_F(ManifestCommand, ShowsWhatItSaysByName) {
  const std::string file = Write("<Manifest><Version>1.2</Version><Build>7</Build><Empty/></Manifest>");
  EXPECT_EQ(Run({"manifest", file}).out, "NAME     TEXT\nBuild    7\nVersion  1.2\n");
  EXPECT_EQ(Run({"--json", "manifest", file}).Json().size(), 2u);
}

TEST_F(ManifestCommand, SaysWhatIsWrongWithAFile) {
  const cOutput none = Run({"manifest", "/nowhere/manifest.xml"});
  EXPECT_EQ(none.exit, eExitFile);
  EXPECT_THAT(none.err, HasSubstr("XML-Error in '/nowhere/manifest.xml'"));
  EXPECT_THAT(Run({"manifest", Write("<Other/>")}).err, HasSubstr("(no section <Manifest>)"));
}

}  // namespace
}  // namespace tav::ctl
