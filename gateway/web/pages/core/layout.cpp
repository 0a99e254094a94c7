// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/layout.h>

#include <gateway/web/pages/core/routes.h>

namespace tav::pages {

namespace {

cHtml Link(const cRoute& route, bool isHere) {
  if (isHere) return cHtml().Put("<li><a href=\"{}\" aria-current=\"page\">{}</a></li>", route.path, route.name);
  return cHtml().Put("<li><a href=\"{}\">{}</a></li>", route.path, route.name);
}

cHtml Navigation(const cPageContext& context) {
  cHtml links;
  for (const cRoute& route : GetRoutes())
    if (!route.name.empty() && route.least <= context.visitor.role && route.least != eRole::Nobody)
      links.Put(Link(route, &route == &context.route));
  return cHtml().Put("<nav aria-label=\"Pages\"><ul>{}</ul></nav>", links);
}

cHtml WayOut(const cVisitor& visitor) {
  return cHtml().Put(
      "<form class=\"logout\" method=\"post\" action=\"/logout\"><input type=\"hidden\" name=\"csrf\" "
      "value=\"{}\"><span class=\"who\">{}</span> <button>Log out</button></form>",
      visitor.csrfToken, visitor.name);
}

}  // namespace

cHtml MakeDocument(const cPageContext& context, const std::string& title, const cHtml& body) {
  const bool isIn = context.visitor.role != eRole::Nobody;
  cHtml html;
  html.Put(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>{} - tav gateway</title>\n"
      "<link rel=\"stylesheet\" href=\"/static/style.css\">\n<link rel=\"icon\" href=\"/static/icon.svg\">\n"
      "<script src=\"/static/live.js\" defer></script>\n<script src=\"/static/form.js\" defer></script>\n</head>\n",
      title);
  if (isIn)
    html.Put("<body data-live=\"/live\">\n");
  else
    html.Put("<body>\n");
  html.Put(
      "<a class=\"skip\" href=\"#main\">Skip to content</a>\n<header class=\"site\">"
      "<a class=\"brand\" href=\"/\">tav gateway</a>\n");
  if (isIn) html.Put(Navigation(context)).Put(WayOut(context.visitor));
  html.Put("</header>\n<main id=\"main\">\n<h1>{}</h1>\n{}</main>\n</body>\n</html>\n", title, body);
  return html;
}

}  // namespace tav::pages
