// SPDX-License-Identifier: Apache-2.0
// cDataQuery: lists of the database control service, page after page.
#pragma once

#include <cstdint>
#include <functional>

#include <tav/service/db_ctrl_request.h>
#include <tavctl/service_link.h>

namespace tav::ctl {

class cDataQuery {
 public:
  static constexpr unsigned int kPageRows = 1000;

  struct cOutcome {
    std::uint64_t rows = 0;
    bool more = false;  // the limit ended the list, not the service
  };
  using OnRow = std::function<void(const vorn::cRecord& row)>;

  // Throws a cFailure when the service cannot be reached.
  explicit cDataQuery(cContext& context);

  // The rows that a request of the protocol lists, at most so many (0: all). Throws a cFailure.
  cOutcome List(unsigned int type, const vorn::cRecord& request, std::uint64_t limit, const OnRow& onRow);
  // The rows that a request selects from what is stored, at most so many (0: all). Throws a cFailure.
  cOutcome Select(unsigned int type, cDbCtrlRequest request, std::uint64_t limit, const OnRow& onRow);
  // The rows of a statement, its columns told before them. The service ends it when there are more rows than it gives.
  cOutcome Execute(const std::string& statement, unsigned int options, std::uint64_t limit, const OnRow& onResult,
                   const OnRow& onRow);

 private:
  bool TakeRows(const vorn::cRecord& answer, std::string_view key, std::uint64_t limit, cOutcome& outcome,
                const OnRow& onRow);
  void FetchAll(unsigned int type, const vorn::cUuid& handle, std::uint64_t limit, cOutcome& outcome,
                const OnRow& onRow);

  cServiceLink m_link;
};

}  // namespace tav::ctl
