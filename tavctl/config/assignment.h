// SPDX-License-Identifier: Apache-2.0
// FIELD=VALUE as people write it behind "set". VALUE may be @FILE, the file's text without the line's end: so a secret
// need not stand in the command line, which others can see; @- is standard input, and @@ begins a value with one @.
#pragma once

#include <istream>
#include <string>

#include <gateway/form/config_fields.h>
#include <tavctl/failure.h>

namespace tav::ctl {

struct cAssignment {
  std::string field;
  std::string value;
};

// Throws a cFailure for a word that is none, and for a file that cannot be read.
cAssignment ReadAssignment(const std::string& word, std::istream& in);

// Throws a cFailure for a field that there is not, and for a value that does not fit.
template <typename Record, std::size_t N>
void Assign(Record& record, const form::cField<Record> (&fields)[N], const cAssignment& assignment) {
  std::string error;
  if (!form::SetByName(record, fields, assignment.field, assignment.value, error)) throw cFailure(eExitUsage, error);
}

}  // namespace tav::ctl
