// SPDX-License-Identifier: Apache-2.0
// A JSON document of objects, arrays of objects and simple values as TOML, and TOML as JSON.
#pragma once

#include <map>
#include <string>

#include <gateway/form/config_json.h>

namespace tav::form {

// In the order of the document.
std::string ToToml(const cJson& document);

// The lines of a TOML text on which its values stand, by their place: "meters[0].medium".
using Lines = std::map<std::string, unsigned int>;

// False, and in error where and what, for a text that is no TOML. Dates and times become texts.
bool FromToml(const std::string& text, cJson& document, Lines& lines, std::string& error);

}  // namespace tav::form
