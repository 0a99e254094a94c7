// SPDX-License-Identifier: Apache-2.0
// The state of a record as a short text: the same for equal records, another one for others. A form carries the state
// that it was made from, so that it does not overwrite what somebody else has changed meanwhile.
//
// It is keyed (SipHash-2-4) with a number that each process draws for itself: nobody can try out on a state what the
// secrets of the record are. After a restart no older state fits any more.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include <tav/framework/record.h>

namespace tav::pages {

using cStateKey = std::array<std::uint64_t, 2>;

std::uint64_t KeyedHash(std::string_view bytes, const cStateKey& key);
std::string RecordState(const vorn::cRecord& record);

}  // namespace tav::pages
