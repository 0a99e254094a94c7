// SPDX-License-Identifier: Apache-2.0
// Fields of a request's header as the front end has passed them on.
#pragma once

#include <string>
#include <string_view>

#include <tav/http/http_protocol.h>
#include <tav/http/http_request.h>

namespace tav::pages {

// Names are in lower case. Empty when there is none.
inline std::string HeaderOf(const cHttpRequest& request, std::string_view name) {
  vorn::cRecord headers;
  request.GetRecord().GetPar(http::kHeaders).GetRecord(headers);
  return headers.GetTextPar(name);
}

}  // namespace tav::pages
