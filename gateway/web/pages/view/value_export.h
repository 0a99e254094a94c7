// SPDX-License-Identifier: Apache-2.0
// Stored values as files to take away: the same rows as CSV (RFC 4180) and as a JSON array, exact to the digit.
#pragma once

#include <memory>
#include <string>

#include <tav/framework/record.h>

namespace tav::pages {

class cValueExport {
 public:
  virtual ~cValueExport() = default;
  virtual std::string ContentType() const = 0;
  virtual std::string Begin() = 0;
  virtual std::string Row(const vorn::cRecord& row) = 0;
  virtual std::string End() = 0;
};

// "csv" or "json"; null for anything else.
std::unique_ptr<cValueExport> MakeValueExport(const std::string& format);

// A value as JSON: a number with all its digits where it is one, else a text.
std::string JsonValue(const std::string& value);

}  // namespace tav::pages
