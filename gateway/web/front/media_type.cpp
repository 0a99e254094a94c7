// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/media_type.h>

#include <gateway/web/front/http_text.h>

namespace tav::gateway::web {

namespace {

struct cMediaType {
  std::string_view extension;
  std::string_view type;
};

constexpr cMediaType kTypes[] = {
    {".css", "text/css; charset=utf-8"},
    {".csv", "text/csv; charset=utf-8"},
    {".gif", "image/gif"},
    {".htm", "text/html; charset=utf-8"},
    {".html", "text/html; charset=utf-8"},
    {".ico", "image/vnd.microsoft.icon"},
    {".jpeg", "image/jpeg"},
    {".jpg", "image/jpeg"},
    {".js", "text/javascript; charset=utf-8"},
    {".json", "application/json"},
    {".map", "application/json"},
    {".mjs", "text/javascript; charset=utf-8"},
    {".pdf", "application/pdf"},
    {".png", "image/png"},
    {".svg", "image/svg+xml"},
    {".txt", "text/plain; charset=utf-8"},
    {".webmanifest", "application/manifest+json"},
    {".webp", "image/webp"},
    {".woff2", "font/woff2"},
    {".xml", "application/xml"},
};

constexpr std::string_view kTextLike[] = {"application/json", "application/javascript",
                                          "application/xml",  "application/x-ndjson",
                                          "image/svg+xml",    "application/manifest+json"};

}  // namespace

std::string_view MediaTypeOf(std::string_view fileName) {
  const std::string lower = ToLower(fileName);
  for (const cMediaType& known : kTypes)
    if (lower.ends_with(known.extension)) return known.type;
  return "application/octet-stream";
}

bool IsCompressible(std::string_view contentType) {
  const std::string type = ToLower(Trim(contentType.substr(0, contentType.find(';'))));
  if (type == "text/event-stream") return false;
  if (type.starts_with("text/")) return true;
  for (const std::string_view textLike : kTextLike)
    if (type == textLike) return true;
  return false;
}

}  // namespace tav::gateway::web
