// SPDX-License-Identifier: Apache-2.0
// cDataQuery: lists of the database control service, page after page.
#pragma once

#include <cstdint>
#include <functional>

#include <tavctl/service_link.h>

namespace tav::ctl {

class cDataQuery {
 public:
  static constexpr unsigned int kPageRows = 1000;

  struct cOutcome {
    std::uint64_t rows = 0;
    bool more = false;  // the limit ended the list, not the service
  };

  // Throws a cFailure when the service cannot be reached.
  explicit cDataQuery(cContext& context);

  // The rows that a request of the protocol lists, at most so many (0: all). Throws a cFailure.
  cOutcome List(unsigned int type, const vorn::cRecord& request, std::uint64_t limit,
                const std::function<void(const vorn::cRecord& row)>& onRow);

 private:
  cServiceLink m_link;
};

}  // namespace tav::ctl
