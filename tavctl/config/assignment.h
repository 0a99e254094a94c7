// SPDX-License-Identifier: Apache-2.0
// FIELD=VALUE as people write it behind "set". VALUE may be @FILE, the file's text without the line's end: so a secret
// need not stand in the command line, which others can see; @- is standard input, and @@ begins a value with one @.
#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include <tavctl/config/fields.h>
#include <tavctl/failure.h>

namespace tav::ctl {

struct cAssignment {
  std::string field;
  std::string value;
};

// Throws a cFailure for a word that is none, and for a file that cannot be read.
cAssignment ReadAssignment(const std::string& word, std::istream& in);

[[noreturn]] void RefuseField(const std::string& field, const std::string& names);
[[noreturn]] void RefuseValue(const cAssignment& assignment, const std::string& expected);

template <typename Record, std::size_t N>
void Assign(Record& record, const cField<Record> (&fields)[N], const cAssignment& assignment) {
  const std::span<const cField<Record>> all(fields);
  const cField<Record>* const field = FindField(all, assignment.field);
  if (field == nullptr) RefuseField(assignment.field, FieldNames(all));
  std::string expected;
  if (!SetField(record, *field, assignment.value, expected)) RefuseValue(assignment, expected);
}

}  // namespace tav::ctl
