// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/answer.h>

#include <string_view>

#include <gateway/form/html_text.h>

namespace tav::gateway::web {

namespace {

struct cReason {
  unsigned int status;
  std::string_view text;
};

constexpr cReason kReasons[] = {
    {400, "Bad Request"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {408, "Request Timeout"},
    {413, "Content Too Large"},
    {414, "URI Too Long"},
    {416, "Range Not Satisfiable"},
    {417, "Expectation Failed"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
};

std::string_view ReasonOf(unsigned int status) {
  for (const cReason& reason : kReasons)
    if (reason.status == status) return reason.text;
  return "Error";
}

}  // namespace

cAnswer MakeErrorAnswer(const cHttpFault& fault) {
  const std::string title = std::to_string(fault.status) + " " + std::string(ReasonOf(fault.status));
  cAnswer answer;
  answer.status = fault.status;
  answer.fields = {{"Content-Type", "text/html; charset=utf-8"}, {"Cache-Control", "no-store"}};
  if (fault.status == 503) answer.fields.push_back({"Retry-After", "5"});
  answer.body = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>" + title +
                "</title></head>\n<body><h1>" + title + "</h1>\n<p>" + form::EscapeHtml(fault.text) +
                ".</p></body></html>\n";
  return answer;
}

std::vector<cHeaderField> GuardingFields(bool overTls) {
  std::vector<cHeaderField> fields = {
      {"X-Content-Type-Options", "nosniff"},
      {"Referrer-Policy", "same-origin"},
      {"Content-Security-Policy",
       "default-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'; object-src 'none'"},
      {"X-Frame-Options", "DENY"},
      {"Cross-Origin-Opener-Policy", "same-origin"},
  };
  if (overTls) fields.push_back({"Strict-Transport-Security", "max-age=31536000"});
  return fields;
}

std::string SerializeLast(const cAnswer& answer, bool overTls) {
  std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " " + std::string(ReasonOf(answer.status)) + "\r\n";
  for (const auto& fields : {answer.fields, GuardingFields(overTls)})
    for (const cHeaderField& field : fields) text += field.name + ": " + field.value + "\r\n";
  return text + "Connection: close\r\nContent-Length: " + std::to_string(answer.body.size()) + "\r\n\r\n" + answer.body;
}

}  // namespace tav::gateway::web
