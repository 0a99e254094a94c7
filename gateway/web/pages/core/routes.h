// SPDX-License-Identifier: Apache-2.0
// The pages that there are, as a table: the path of each, who may see it, who may send a form to it, and what makes it.
// The table itself stands above all of them, in gateway/web/pages/routes.cpp.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

enum class eSender {
  None,    // the page takes no form
  Anyone,  // before a login: the request's origin is looked at instead of a token
  Viewer,  // of everybody who is logged in
  Admin,
};

struct cRoute {
  std::string_view path;
  std::string_view name;  // in the navigation; empty: it does not stand there
  eRole least;            // who may see it
  eSender sender;         // who may change something with it
  std::unique_ptr<cWebPage> (*make)(const cPageContext& context);
  // Errors and requests for a login are told in plain text, and a token stands for a login.
  bool isForPrograms = false;
};

// In the order of the navigation.
std::span<const cRoute> GetRoutes();
// Null when there is no such page.
const cRoute* FindRoute(std::string_view path);
// What stands for it then: anybody may hear that there is none.
const cRoute& GetNoRoute();

}  // namespace tav::pages
