// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <tav/framework/xml.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/temp_folder.h"

namespace {

class Xml : public testing::Test {
 protected:
  int Store(const vorn::cRecord& record, bool pretty = true, const char* root = nullptr) {
    return xml::RecordToXmlFile(record, "42.mt", directory.GetPath(), root, pretty);
  }
  int Load(vorn::cRecord& record, const char* root = nullptr) {
    return xml::RecordFromXmlFile(record, "42.mt", directory.GetPath(), root);
  }
  void Write(const std::string& text) { std::ofstream(directory.File("42.mt")) << text; }
  std::string Text() {
    std::stringstream text;
    text << std::ifstream(directory.File("42.mt")).rdbuf();
    return text.str();
  }

  cTempFolder directory;
};

vorn::cRecord OneOfEach() {
  vorn::cRecord record;
  record.AppendTextPar("text", "plain <&> \"text\" \xC3\xA4");
  record.AppendTextPar("empty", "");
  record.AppendTextPar("none", nullptr);
  record.AppendTextPar("latin", "m\xB3");
  record.AppendTextPar("control", std::string_view("a\0b\x01\r\n", 6));
  record.AppendTextPar("blanks", "  two  ");
  record.AppendTextPar("lines", "one\ntwo");
  record.AppendTextPar("noncharacter", "\xEF\xBF\xBF");
  record.AppendTextPar("", "no name");
  record.AppendTextPar("odd\nname\x01", "x");
  record.AppendIntPar("int", -2147483647 - 1);
  record.AppendUIntPar("uint", 4294967295u);
  record.AppendUInt64Par("uint64", 18446744073709551615u);
  record.AppendUInt64Par("five", 5);
  record.AppendUIntPar("five", 5);
  record.AppendBoolPar("yes", true);
  record.AppendBoolPar("no", false);
  record.AppendTimePar("time", vorn::cTime::FromSeconds(1393675200, true));
  record.AppendUuidPar("nil", vorn::cUuid());
  vorn::cUuid uuid;
  uuid.Create();
  record.AppendUuidPar("uuid", uuid);
  record.AppendDataPar("data", vorn::cData("\0\xFF", 2));
  record.AppendDataPar("nodata", vorn::cData());
  record.AppendRecordPar("norecord", vorn::cRecord());
  vorn::cRecord nested = record;
  record.AppendRecordPar("nested", nested);
  return record;
}

TEST_F(Xml, ARecordComesBackEqualToWhatWasWritten) {
  for (const bool pretty : {false, true}) {
    ASSERT_EQ(Store(OneOfEach(), pretty), 0);
    vorn::cRecord read;
    const vorn::cRecord written = OneOfEach();
    ASSERT_EQ(Store(written, pretty), 0);
    ASSERT_EQ(Load(read), 0);
    EXPECT_EQ(read, written);
  }
}

TEST_F(Xml, AnEmptyRecordIsAFileToo) {
  ASSERT_EQ(Store({}), 0);
  vorn::cRecord read = OneOfEach();
  ASSERT_EQ(Load(read), 0);
  EXPECT_TRUE(read.IsEmpty());
}

TEST_F(Xml, IsReadableForPeople) {
  vorn::cRecord record;
  record.AppendTextPar("name", "house");
  record.AppendUIntPar("version", 1);
  ASSERT_EQ(Store(record), 0);
  EXPECT_EQ(Text(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<record>\n"
            "  <par name=\"name\" type=\"text\">house</par>\n"
            "  <par name=\"version\" type=\"uint\">1</par>\n</record>\n");
}

TEST_F(Xml, TheRootMayHaveAnotherName) {
  ASSERT_EQ(Store(OneOfEach(), true, "template"), 0);
  vorn::cRecord read;
  EXPECT_NE(Load(read), 0);
  EXPECT_EQ(Load(read, "template"), 0);
}

TEST_F(Xml, NoSuchFileIsTen) {
  vorn::cRecord read;
  read.AppendUIntPar("kept", 1);
  EXPECT_EQ(Load(read), 10);
  EXPECT_EQ(read.GetUIntPar("kept"), 1u);
}

TEST_F(Xml, TheDirectoryIsNeverMade) {
  EXPECT_NE(xml::RecordToXmlFile(OneOfEach(), "x", directory.File("missing"), nullptr, true), 0);
  EXPECT_FALSE(std::filesystem::exists(directory.File("missing")));
}

TEST_F(Xml, AnEmptyLocationIsTheCurrentDirectory) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(directory.GetPath());
  vorn::cRecord read;
  EXPECT_EQ(xml::RecordToXmlFile(OneOfEach(), "here.xml", "", nullptr, true), 0);
  EXPECT_EQ(xml::RecordFromXmlFile(read, "here.xml", "", nullptr), 0);
  std::filesystem::current_path(before);
}

TEST_F(Xml, AFailedWriteLeavesTheOldFileWhole) {
  vorn::cRecord old;
  old.AppendTextPar("old", "value");
  ASSERT_EQ(Store(old), 0);
  signal(SIGXFSZ, SIG_IGN);
  rlimit before{}, small{};
  getrlimit(RLIMIT_FSIZE, &before);
  small = before;
  small.rlim_cur = 100;  // a full disk
  setrlimit(RLIMIT_FSIZE, &small);
  const int code = Store(OneOfEach());
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_NE(code, 0);
  EXPECT_STRNE(XMLNode::getError(code), "");
  vorn::cRecord read;
  ASSERT_EQ(Load(read), 0);
  EXPECT_EQ(read, old);
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory.GetPath())) files += entry.exists();
  EXPECT_EQ(files, 1) << "no temporary file is left";
}

TEST_F(Xml, WhatIsNoRecordIsRefusedAndTheRecordLeftAlone) {
  for (const char* text : {"", "not xml", "<record>", "<record></other>", "<other/>", "<record><x/></record>",
                           "<record><par type=\"text\">x</par></record>", "<record><par name=\"a\">x</par></record>",
                           "<record><par name=\"a\" type=\"real\">1</par></record>",
                           "<record><par name=\"a\" type=\"uint\">-1</par></record>",
                           "<record><par name=\"a\" type=\"uint\">4294967296</par></record>",
                           "<record><par name=\"a\" type=\"uint64\">18446744073709551616</par></record>",
                           "<record><par name=\"a\" type=\"int\">2147483648</par></record>",
                           "<record><par name=\"a\" type=\"int\"></par></record>",
                           "<record><par name=\"a\" type=\"bool\">1</par></record>",
                           "<record><par name=\"a\" type=\"uuid\">1</par></record>",
                           "<record><par name=\"a\" type=\"data\">0</par></record>",
                           "<record><par name=\"a\" type=\"text\" encoding=\"base64\">0</par></record>",
                           "<record><par name=\"a\" type=\"record\"><par/></par></record>"}) {
    Write(text);
    vorn::cRecord read;
    read.AppendUIntPar("kept", 1);
    EXPECT_NE(Load(read), 0) << text;
    EXPECT_NE(Load(read), 10) << text;
    EXPECT_EQ(read.GetUIntPar("kept"), 1u);
  }
}

TEST_F(Xml, RecordsNestedDeeperThanAnyRecordAreRefused) {
  const auto nested = [](int levels) {
    std::string text;
    for (int i = 1; i < levels; ++i) text += "<par name=\"in\" type=\"record\">";
    text += "<par name=\"leaf\" type=\"uint\">1</par>";
    for (int i = 1; i < levels; ++i) text += "</par>";
    return "<record>" + text + "</record>";
  };
  vorn::cRecord record;
  Write(nested(16));
  EXPECT_EQ(Load(record), 0);
  EXPECT_EQ(record.GetDepth(), 16u);
  for (const int levels : {17, 200000}) {  // the second is deeper than the stack
    Write(nested(levels));
    EXPECT_NE(Load(record), 0) << levels;
  }
}

// ---- XMLNode

TEST_F(Xml, NodesAreFoundByPathAndNumber) {
  Write(
      "<?xml version=\"1.0\"?><!-- c --><Manifest><Version> 1.2 </Version>text<File n=\"1\"><Name>a</Name></File>"
      "<File><Name>b</Name></File><Empty/><Blank>  \n </Blank></Manifest>");
  XMLResults results;
  const XMLNode document = XMLNode::parseFile(directory.File("42.mt").c_str(), nullptr, &results);
  EXPECT_EQ(results.error, 0);
  EXPECT_FALSE(document.isEmpty());
  EXPECT_EQ(document.getName(), nullptr);
  const XMLNode manifest = document.getChildNodeByPath("Manifest");
  EXPECT_STREQ(manifest.getName(), "Manifest");
  EXPECT_STREQ(manifest.getText(), "text");
  EXPECT_STREQ(document.getChildNodeByPath("Manifest/File/Name").getText(), "a");
  EXPECT_STREQ(document.getChildNodeByPath("Manifest.File.Name", '.').getText(), "a");
  EXPECT_STREQ(manifest.getChildNode(2).getChildNode(0).getText(), "b") << "only elements are counted";
  EXPECT_EQ(manifest.getChildNodeByPath("Empty").getText(), nullptr);
  EXPECT_EQ(manifest.getChildNodeByPath("Blank").getText(), nullptr) << "blanks alone are no text";
  EXPECT_FALSE(manifest.getChildNodeByPath("Empty").isEmpty());
  EXPECT_TRUE(manifest.getChildNodeByPath("Missing").isEmpty());
  EXPECT_TRUE(manifest.getChildNode(5).isEmpty());
  EXPECT_TRUE(manifest.getChildNode(-1).isEmpty());
}

TEST_F(Xml, ATagAsksForTheDocumentElement) {
  Write("<Manifest><a/></Manifest>");
  XMLResults results;
  EXPECT_STREQ(XMLNode::parseFile(directory.File("42.mt").c_str(), "Manifest", &results).getName(), "Manifest");
  EXPECT_TRUE(XMLNode::parseFile(directory.File("42.mt").c_str(), "Other", &results).isEmpty());
}

TEST_F(Xml, ReadingAFileThatIsNoneOrBrokenTellsWhy) {
  XMLResults results;
  EXPECT_TRUE(XMLNode::parseFile(directory.File("none").c_str(), nullptr, &results).isEmpty());
  EXPECT_EQ(results.error, 10);
  EXPECT_TRUE(XMLNode::parseFile(nullptr, nullptr, &results).isEmpty());
  EXPECT_EQ(results.error, 10);
  Write("<a><b></a>");
  EXPECT_TRUE(XMLNode::parseFile(directory.File("42.mt").c_str(), nullptr, &results).isEmpty());
  EXPECT_NE(results.error, 0);
  EXPECT_NE(results.error, 10);
  EXPECT_STREQ(XMLNode::getError(results.error), "the file is not well-formed XML");
  XMLNode::parseFile(directory.File("42.mt").c_str(), nullptr, nullptr);
}

TEST_F(Xml, ReadingABrokenFileTellsTheLine) {
  const std::pair<std::string, int> cases[] = {
      {"<a/>", 0},
      {"<a><b></a>", 1},
      {"<a>\n<b></a>", 2},
      {"<a>\n\n<b>\n</c>\n</b>\n</a>\n", 4},
  };
  for (const auto& [text, line] : cases) {
    Write(text);
    XMLResults results;
    XMLNode::parseFile(directory.File("42.mt").c_str(), nullptr, &results);
    EXPECT_EQ(results.line, line) << text;
  }
  XMLResults results;
  XMLNode::parseFile(directory.File("none").c_str(), nullptr, &results);
  EXPECT_EQ(results.line, 0);
}

TEST(XmlNode, ANodeThatIsNoneAnswersEverything) {
  const XMLNode none;
  EXPECT_TRUE(none.isEmpty());
  EXPECT_EQ(none.getName(), nullptr);
  EXPECT_EQ(none.getText(), nullptr);
  EXPECT_TRUE(none.getChildNode(0).isEmpty());
  EXPECT_TRUE(none.getChildNodeByPath("a/b").isEmpty());
  EXPECT_TRUE(none.getChildNodeByPath(nullptr).isEmpty());
}

TEST(XmlNode, EveryCodeHasAText) {
  for (int code = -1; code < 30; ++code) EXPECT_STRNE(XMLNode::getError(code), "");
}

}  // namespace
