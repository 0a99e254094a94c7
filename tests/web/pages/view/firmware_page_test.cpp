// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/firmware_page.h>

#include <filesystem>
#include <fstream>

#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

class FirmwarePage : public cPagesWorld {
 protected:
  // Sends a file as a front end hands it over.
  cAnswer Upload(const std::string& content, const std::string& name = "fw <1>.xml") {
    std::ofstream(Place(), std::ios::binary) << content;
    return SendFile(Place(), name);
  }
  cAnswer SendFile(const std::string& place, const std::string& name) {
    vorn::cRecord file;
    file.AppendTextPar(http::kFileType, "text/xml");
    file.AppendTextPar(http::kFileName, name);
    file.AppendTextPar(http::kTmpFileName, place);
    file.AppendUIntPar(http::kFileLength, 0);
    vorn::cRecord files;
    files.AppendRecordPar("manifest", file);
    vorn::cMsg request = MakeRequest("POST", "/firmware", {}, {{"csrf", m_csrf}});
    request.Record().AppendRecordPar(http::kPostFiles, files);
    return Ask(request);
  }
  std::string Place() const { return m_folder.File("upload"); }
};

TEST_F(FirmwarePage, ShowsWhatAManifestSays) {
  Enter();
  const cAnswer answer =
      Upload("<?xml version=\"1.0\"?>\n<Manifest><Version>3.1</Version><Note>a &lt;b&gt;</Note></Manifest>");
  EXPECT_EQ(answer.Status(), 200u);
  EXPECT_THAT(answer.body, HasSubstr("<h2>fw &lt;1&gt;.xml</h2>"));
  EXPECT_THAT(answer.body, HasSubstr("<th scope=\"row\">Version</th><td>3.1</td>"));
  EXPECT_THAT(answer.body, HasSubstr("<td>a &lt;b&gt;</td>"));
  EXPECT_TRUE(std::filesystem::exists(Place())) << "the file is the front end's";
}

TEST_F(FirmwarePage, SaysWhatIsWrongAndWhere) {
  Enter();
  const cAnswer broken = Upload("<Manifest>\n<Version>3.1\n</Manifest>");
  EXPECT_EQ(broken.Status(), 400u);
  EXPECT_THAT(broken.body, HasSubstr("&quot;fw &lt;1&gt;.xml&quot;, line "));
  EXPECT_THAT(Upload("<Other/>").body, HasSubstr("expected a document &lt;Manifest&gt;"));
  EXPECT_EQ(Upload("").Status(), 400u);
  EXPECT_EQ(Upload(std::string("\0\xFF<", 3)).Status(), 400u);
  EXPECT_THAT(Upload("<Manifest/>").body, HasSubstr("The manifest says nothing."));
}

TEST_F(FirmwarePage, AManifestHasALimit) {
  Enter();
  const std::string begin = "<Manifest><A>";
  const std::string end = "</A></Manifest>";
  const std::string filling(cFirmwarePage::kMaxManifest - begin.size() - end.size(), 'x');
  EXPECT_EQ(Upload(begin + filling + end).Status(), 200u);
  EXPECT_EQ(Upload(begin + filling.substr(1) + end).Status(), 200u);
  EXPECT_EQ(Upload(begin + filling + "x" + end).Status(), 413u);
}

TEST_F(FirmwarePage, WithoutAFileNothingIsRead) {
  Enter();
  EXPECT_EQ(Post("/firmware", {}).Status(), 400u);
  EXPECT_EQ(Upload("<Manifest/>", "").Status(), 400u);
  const cAnswer gone = SendFile(m_folder.File("gone"), "a.xml");
  EXPECT_EQ(gone.Status(), 500u);
  EXPECT_THAT(gone.body, HasSubstr("&quot;a.xml&quot; cannot be read"));
  EXPECT_THAT(gone.body, Not(HasSubstr(m_folder.GetPath()))) << "where files are is nobody's business";
}

TEST_F(FirmwarePage, AViewerUploadsNothing) {
  Enter(eRole::Viewer);
  EXPECT_THAT(Get("/firmware").body, Not(HasSubstr("type=\"file\"")));
  EXPECT_EQ(Upload("<Manifest/>").Status(), 403u);
}

}  // namespace
}  // namespace tav::pages
