// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/api/openapi.h>

#include <nlohmann/json.hpp>

#include <gateway/form/json.h>
#include <gateway/web/pages/api/endpoints.h>

namespace tav::pages {

namespace {

using form::cJson;

// A value keeps all its digits: it is a text. What is not known is null.
cJson SchemaOf(const form::cColumn& column) {
  if (column.key == "connected") return {{"type", "boolean"}, {"nullable", true}};
  if (column.key == "values" || column.key == "ID") return {{"type", "integer"}, {"nullable", true}};
  cJson schema = {{"type", "string"}, {"nullable", true}};
  if (column.form == form::eForm::Time) schema["format"] = "date-time";
  if (column.form == form::eForm::Number) schema["description"] = "exact decimal number";
  return schema;
}

cJson RowSchema(const cEndpoint& endpoint) {
  cJson row = {{"type", "object"}, {"required", cJson::array()}, {"properties", cJson::object()}};
  for (const form::cColumn& column : endpoint.columns) {
    row["required"].push_back(column.key);
    row["properties"][std::string(column.key)] = SchemaOf(column);
  }
  return row;
}

cJson Text(std::string_view description) {
  return {{"description", description}, {"content", {{"text/plain", {{"schema", {{"type", "string"}}}}}}}};
}

cJson Operation(std::string_view summary, std::span<const cApiParameter> parameters, const std::string& contentType,
                const cJson& schema) {
  cJson operation = {{"summary", summary}, {"parameters", cJson::array()}};
  for (const cApiParameter& parameter : parameters)
    operation["parameters"].push_back({{"name", parameter.name},
                                       {"in", "query"},
                                       {"required", parameter.isRequired},
                                       {"description", parameter.meaning},
                                       {"schema", {{"type", "string"}}}});
  operation["responses"] = {
      {"200", {{"description", "the answer"}, {"content", {{contentType, {{"schema", schema}}}}}}},
      {"400", Text("a parameter is missing or wrong")},
      {"401", Text("neither a login nor a token was shown")},
      {"502", Text("a service of the gateway refused")},
      {"503", Text("a service of the gateway is away")},
      {"504", Text("a service of the gateway does not answer")},
  };
  return {{"get", operation}};
}

}  // namespace

std::string MakeOpenApi() {
  cJson document = {
      {"openapi", "3.0.3"},
      {"info",
       {{"title", "tav gateway"},
        {"version", TAV_VERSION},
        {"description", "Meters, values, status and OBIS rules of a smart-meter gateway, to be read by programs."}}},
      {"security", cJson::array({{{"token", cJson::array()}}, {{"login", cJson::array()}}})},
      {"paths", cJson::object()},
      {"components",
       {{"securitySchemes",
         {{"token", {{"type", "http"}, {"scheme", "bearer"}}},
          {"login", {{"type", "apiKey"}, {"in", "cookie"}, {"name", "sid"}}}}}}},
  };
  for (const cEndpoint* const endpoint : GetEndpoints())
    document["paths"][std::string(endpoint->path)] =
        Operation(endpoint->summary, endpoint->parameters, "application/json",
                  {{"type", "array"}, {"items", RowSchema(*endpoint)}});
  document["paths"]["/metrics"] = Operation("Last values and status as metrics (OpenMetrics text)", {},
                                            "application/openmetrics-text", {{"type", "string"}});
  return document.dump(1) + "\n";
}

}  // namespace tav::pages
