// SPDX-License-Identifier: Apache-2.0
// The document that every page stands in: head, navigation for what the visitor may see, and the way out.
#pragma once

#include <string>

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

cHtml MakeDocument(const cPageContext& context, const std::string& title, const cHtml& body);

}  // namespace tav::pages
