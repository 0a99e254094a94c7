// SPDX-License-Identifier: Apache-2.0
#include <tav/config/firmware_manifest.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include <tav/framework/xml.h>
#include <tests/support/captured_trace.h>
#include <tests/support/temp_folder.h>
#include <tests/support/trace_level.h>

using tav::cFirmwareManifest;
using tav::CheckFirmwareManifest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

class FirmwareManifest : public testing::Test {
 protected:
  // The path of a file with that content.
  std::string File(const std::string& content) {
    const std::string path = m_folder.GetPath() + "/" + std::to_string(++m_files) + ".xml";
    std::ofstream(path) << content;
    return path;
  }
  bool Read(const std::string& content) { return m_manifest.initFromFile(File(content)); }

  cTempFolder m_folder;
  int m_files = 0;
  cCapturedTrace m_trace;
  cFirmwareManifest m_manifest;
};

}  // namespace

TEST_F(FirmwareManifest, StartsEmptyAndInvalid) {
  EXPECT_FALSE(m_manifest.valid);
  EXPECT_THAT(m_manifest.info, IsEmpty());
  EXPECT_EQ(m_manifest.fileName, "");
}

TEST_F(FirmwareManifest, ReadsItsFacts) {
  const std::string path = File("<?xml version=\"1.0\"?><Manifest><version>1.2</version><size>4096</size></Manifest>");
  EXPECT_TRUE(m_manifest.initFromFile(path));
  EXPECT_TRUE(m_manifest.valid);
  EXPECT_EQ(m_manifest.fileName, path);
  EXPECT_THAT(m_manifest.info, ElementsAre(Pair("size", "4096"), Pair("version", "1.2")));
  EXPECT_THAT(m_trace.GetLines(), IsEmpty());
}

TEST_F(FirmwareManifest, AManifestWithoutFactsIsOne) {
  EXPECT_TRUE(Read("<Manifest/>"));
  EXPECT_TRUE(m_manifest.valid);
  EXPECT_THAT(m_manifest.info, IsEmpty());
}

TEST_F(FirmwareManifest, TheLaterOfTwoFactsOfOneNameHolds) {
  EXPECT_TRUE(Read("<Manifest><version>1</version><other>x</other><version>2</version></Manifest>"));
  EXPECT_THAT(m_manifest.info, ElementsAre(Pair("other", "x"), Pair("version", "2")));
}

TEST_F(FirmwareManifest, ElementsWithoutATextOfTheirOwnAreSkipped) {
  EXPECT_TRUE(
      Read("<Manifest><a/><b> </b><c><d>inner</d></c><e>kept</e><!-- <f>no</f> --><g><h>inner</h>own</g></Manifest>"));
  EXPECT_THAT(m_manifest.info, ElementsAre(Pair("e", "kept"), Pair("g", "own")));
}

TEST_F(FirmwareManifest, AFactWithoutATextKeepsTheEarlierOne) {
  EXPECT_TRUE(Read("<Manifest><version>1</version><version/></Manifest>"));
  EXPECT_THAT(m_manifest.info, ElementsAre(Pair("version", "1")));
}

TEST_F(FirmwareManifest, AFurtherFileAddsToTheFactsAndReplacesThem) {
  EXPECT_TRUE(Read("<Manifest><version>1</version><size>4096</size></Manifest>"));
  EXPECT_TRUE(Read("<Manifest><version>2</version></Manifest>"));
  EXPECT_THAT(m_manifest.info, ElementsAre(Pair("size", "4096"), Pair("version", "2")));
}

TEST_F(FirmwareManifest, AFileWithoutTheSectionIsRefusedAndNamed) {
  for (const char* content : {"<manifest><version>1</version></manifest>", "<Other><Manifest/></Other>"}) {
    const cCapturedTrace trace;
    const std::string path = File(content);
    EXPECT_FALSE(m_manifest.initFromFile(path));
    EXPECT_FALSE(m_manifest.valid);
    EXPECT_THAT(m_manifest.info, IsEmpty());
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 Error in '" + path + "' (no section <Manifest>)"));
  }
}

TEST_F(FirmwareManifest, AFileThatIsNotThereIsRefusedWithTheReadersWords) {
  const std::string path = m_folder.GetPath() + "/missing.xml";
  EXPECT_FALSE(m_manifest.initFromFile(path));
  EXPECT_EQ(m_manifest.fileName, path);
  EXPECT_THAT(m_trace.GetLines(), ElementsAre("UnitTAV 2 XML-Error in '" + path + "' (" + XMLNode::getError(10) + ")"));
}

TEST_F(FirmwareManifest, AFileThatIsNoXmlIsRefusedWithTheReadersWords) {
  for (const char* content : {"", "<Manifest>", "<Manifest><a></b></Manifest>", "no xml"}) {
    const cCapturedTrace trace;
    const std::string path = File(content);
    XMLResults results;
    XMLNode::parseFile(path.c_str(), nullptr, &results);
    ASSERT_NE(results.error, 0);
    EXPECT_FALSE(m_manifest.initFromFile(path));
    EXPECT_THAT(trace.GetLines(),
                ElementsAre("UnitTAV 2 XML-Error in '" + path + "' (" + XMLNode::getError(results.error) + ")"));
  }
}

TEST_F(FirmwareManifest, FactsAreFoundAfterAFailedReadToo) {
  EXPECT_TRUE(Read("<Manifest><version>1</version></Manifest>"));
  EXPECT_FALSE(Read("<Other/>"));
  EXPECT_FALSE(m_manifest.valid);
  std::string value = "untouched";
  EXPECT_TRUE(m_manifest.GetInfo("version", value));
  EXPECT_EQ(value, "1");
  EXPECT_FALSE(m_manifest.GetInfo("size", value));
  EXPECT_EQ(value, "1");
}

TEST_F(FirmwareManifest, SaysNothingBelowTheLevelOfFailures) {
  const cTraceLevel level("UnitTAV", 1);
  EXPECT_FALSE(m_manifest.initFromFile("/nowhere"));
  EXPECT_FALSE(Read("<Other/>"));
  EXPECT_THAT(m_trace.GetLines(), IsEmpty());
}

TEST_F(FirmwareManifest, TheCheckAcceptsEveryManifest) {
  std::string errorText = "old";
  EXPECT_TRUE(CheckFirmwareManifest(m_folder.GetPath() + "/missing.xml", errorText, m_manifest));
  EXPECT_EQ(errorText, "");
  EXPECT_FALSE(m_manifest.valid) << "it is not read";
  EXPECT_EQ(m_manifest.fileName, "");
  EXPECT_THAT(m_trace.GetLines(), IsEmpty());
}
