// SPDX-License-Identifier: Apache-2.0
// cAnswer: an answer that is whole before its header goes out: a text, or a part of a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gateway/web/front/descriptor.h>
#include <gateway/web/front/http_text.h>

namespace tav::gateway::web {

struct cAnswer {
  unsigned int status = 200;
  std::vector<cHeaderField> fields;
  std::string body;
  // Instead of the body, when it is open.
  cDescriptor file;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

// Why a request is not served; status 0: nothing is wrong with it.
struct cHttpFault {
  unsigned int status = 0;
  std::string text;  // for people: a sentence without its end

  explicit operator bool() const { return status != 0; }
};

// The page of an error of the front end itself.
cAnswer MakeErrorAnswer(const cHttpFault& fault);
// What every answer has in its header besides: how browsers have to guard it. overTls: the connection is encrypted.
std::vector<cHeaderField> GuardingFields(bool overTls);
// A whole message for a connection that the HTTP library cannot answer on any more; it says that the connection ends.
std::string SerializeLast(const cAnswer& answer, bool overTls);

}  // namespace tav::gateway::web
