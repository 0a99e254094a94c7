// SPDX-License-Identifier: Apache-2.0
// Any file taken for XML: the reader walks what it parsed, and a record that was read from it comes back equal from a
// file that is written of it.
#include <tav/framework/xml.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include <tav/framework/trace.h>
#include <tests/support/temp_folder.h>

namespace {

std::size_t Walk(const XMLNode& node, int depth) {
  std::size_t seen = node.getText() != nullptr ? 1 : 0;
  for (int i = 0; depth < 32 && !node.getChildNode(i).isEmpty(); ++i) seen += Walk(node.getChildNode(i), depth + 1);
  return seen;
}

void Check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vorn::SetTraceSink([](const vorn::cUnit&, int, const std::string&) {});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  static const cTempFolder folder;
  const int file = memfd_create("xml", MFD_CLOEXEC);
  if (write(file, bytes, size) != static_cast<ssize_t>(size)) std::abort();
  const std::string name = std::to_string(file);
  XMLResults results;
  const XMLNode document = XMLNode::parseFile(("/proc/self/fd/" + name).c_str(), nullptr, &results);
  Check(document.isEmpty() || results.error == 0);
  Walk(document, 0);
  Walk(document.getChildNodeByPath("record/par"), 0);

  vorn::cRecord record, again;
  if (xml::RecordFromXmlFile(record, name, "/proc/self/fd", nullptr) == 0) {
    Check(xml::RecordToXmlFile(record, "again", folder.GetPath(), nullptr, true) == 0);
    Check(xml::RecordFromXmlFile(again, "again", folder.GetPath(), nullptr) == 0);
    Check(again == record);
  }
  close(file);
  return 0;
}
