// SPDX-License-Identifier: Apache-2.0
#include <tavctl/config/assignment.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace tav::ctl {

namespace {

std::string TextOf(std::istream& in) {
  std::string text{std::istreambuf_iterator<char>(in), {}};
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

std::string FileText(const std::string& name) {
  std::ifstream in(name, std::ios::binary);
  if (!in) throw cFailure(eExitFile, name + ": cannot be read: " + std::strerror(errno));
  return TextOf(in);
}

}  // namespace

cAssignment ReadAssignment(const std::string& word, std::istream& in) {
  const std::size_t equals = word.find('=');
  if (equals == std::string::npos || equals == 0)
    throw cFailure(eExitUsage, "expected FIELD=VALUE, found \"" + word + "\"");
  cAssignment assignment{word.substr(0, equals), word.substr(equals + 1)};
  std::string& value = assignment.value;
  if (value.rfind("@@", 0) == 0)
    value.erase(0, 1);
  else if (value == "@-")
    value = TextOf(in);
  else if (value.rfind('@', 0) == 0)
    value = FileText(value.substr(1));
  return assignment;
}

void RefuseField(const std::string& field, const std::string& names) {
  throw cFailure(eExitUsage, "there is no field '" + field + "'; there are " + names);
}

void RefuseValue(const cAssignment& assignment, const std::string& expected) {
  throw cFailure(eExitUsage, assignment.field + ": expected " + expected + ", found \"" + assignment.value + "\"");
}

}  // namespace tav::ctl
