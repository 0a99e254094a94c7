// SPDX-License-Identifier: Apache-2.0
// Any bytes taken for a page's output: the header block is read the same however it is cut into pieces, and nothing of
// it that goes on to a client could end a line.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <gateway/web/front/header_block.h>

using tav::gateway::web::cHeaderBlock;

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

void CheckSame(const cHeaderBlock& a, const cHeaderBlock& b) {
  Check(a.GetState() == b.GetState() && a.GetStatus() == b.GetStatus());
  Check(a.GetFields().size() == b.GetFields().size() && a.GetDropped() == b.GetDropped());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  cHeaderBlock whole, pieces;
  const std::size_t taken = whole.Take(text);
  Check(taken <= size);
  for (std::size_t at = 0; at < size && pieces.GetState() == cHeaderBlock::eState::Open; ++at)
    pieces.Take(text.substr(at, 1));
  // A block that is broken by its size is so at another byte.
  if (size <= 1024) CheckSame(whole, pieces);
  if (whole.GetState() != cHeaderBlock::eState::Done) return 0;
  Check(whole.GetStatus() >= 200 && whole.GetStatus() <= 599);
  for (const auto& field : whole.GetFields()) {
    Check(tav::gateway::web::IsToken(field.name) && !field.value.empty());
    Check(!tav::gateway::web::HasControlCharacter(field.value));
  }
  return 0;
}
