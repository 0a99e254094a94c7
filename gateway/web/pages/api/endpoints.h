// SPDX-License-Identifier: Apache-2.0
// The interface for programs, as a table: what can be asked, by which parameters, and what an object of the answer has.
// The answers are made by these columns, and the OpenAPI document (openapi.h) tells them: neither can differ.
#pragma once

#include <span>
#include <string_view>

#include <gateway/form/columns.h>

namespace tav::pages {

struct cApiParameter {
  std::string_view name;
  bool isRequired;
  std::string_view meaning;
};

struct cEndpoint {
  std::string_view path;
  std::string_view summary;
  std::span<const cApiParameter> parameters;
  form::Columns columns;  // of one object of the array that is the answer
};

extern const cEndpoint kMetersEndpoint;
extern const cEndpoint kLastValuesEndpoint;
extern const cEndpoint kValuesEndpoint;
extern const cEndpoint kStatusEndpoint;
extern const cEndpoint kRulesEndpoint;

// All of them, in the order of the document.
std::span<const cEndpoint* const> GetEndpoints();

}  // namespace tav::pages
