// SPDX-License-Identifier: Apache-2.0
// Any bytes taken for a record: they are refused, or read whole without a fault and give the same bytes when every
// parameter is written anew.
#include <tav/framework/record.h>

#include <cstdlib>

#include <tav/framework/trace.h>
#include <tests/support/record_copy.h>

namespace {

void Check(bool holds) {
  if (!holds) std::abort();
}

// Every getter of every type, on every parameter.
std::size_t ReadAll(const vorn::cRecord& record) {
  std::size_t seen = 0;
  for (vorn::cRecordPar par = record.First(); par.IsValid(); par = par.Next()) {
    seen += par.GetText().size() + par.GetData().GetSize() + (par.IsEmpty() ? 1 : 0) + (par.GetBool() ? 1 : 0);
    seen += par.GetUInt() + par.GetUInt64() + static_cast<unsigned int>(par.GetInt());
    seen += par.GetTime().GetSeconds() + (par.GetUuid().IsValid() ? 1 : 0);
    Check(record.GetPar(par.GetNameView()).IsValid());
    vorn::cRecord nested;
    if (par.GetRecord(nested)) seen += ReadAll(nested);
  }
  return seen;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vorn::SetTraceSink([](const vorn::cUnit&, int, const std::string&) {});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  vorn::cRecord record;
  std::string error;
  if (!vorn::cRecord::FromBytes(bytes, size, record, &error)) {
    Check(!error.empty() && record.IsEmpty());
    return 0;
  }
  Check(record.GetBytes() == std::string_view(reinterpret_cast<const char*>(bytes), size));
  Check(record.GetDepth() <= vorn::detail::kMaxRecordDepth);
  ReadAll(record);
  record.ToString(4);
  Check(CopyByParameter(record) == record);

  vorn::cRecord outer;
  outer.AppendRecordPar("in", record);
  Check(outer.GetRecordPar("in") == record || record.GetDepth() == vorn::detail::kMaxRecordDepth);
  return 0;
}
