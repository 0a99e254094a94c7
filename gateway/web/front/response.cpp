// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/response.h>

#include <microhttpd.h>

#include <memory>
#include <utility>

namespace tav::gateway::web {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{32} << 10;

MHD_Response* WithFields(MHD_Response* response, const cAnswer& answer, bool isTls) {
  if (response == nullptr) return nullptr;
  for (const auto& fields : {answer.fields, GuardingFields(isTls)})
    for (const cHeaderField& field : fields) {
      if (MHD_add_response_header(response, field.name.c_str(), field.value.c_str()) == MHD_YES) continue;
      MHD_destroy_response(response);
      return nullptr;
    }
  return response;
}

MHD_Response* FromBody(std::string body) {
  auto kept = std::make_unique<std::string>(std::move(body));
  MHD_Response* const response = MHD_create_response_from_buffer_with_free_callback_cls(
      kept->size(), kept->data(), [](void* text) { delete static_cast<std::string*>(text); }, kept.get());
  if (response != nullptr) kept.release();  // NOLINT(bugprone-unused-return-value): the response frees it
  return response;
}

MHD_Response* FromFile(cAnswer& answer) {
  MHD_Response* const response = MHD_create_response_from_fd_at_offset64(answer.size, answer.file.Get(), answer.offset);
  if (response != nullptr) answer.file.Release();
  return response;
}

}  // namespace

MHD_Response* MakeResponse(cAnswer answer, bool isTls) {
  MHD_Response* const response = answer.file.IsOpen() ? FromFile(answer) : FromBody(std::move(answer.body));
  return WithFields(response, answer, isTls);
}

MHD_Response* MakeStreamResponse(const cAnswer& beginning, bool isTls, bool isHead, ReadBody read, void* self) {
  MHD_Response* const response = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBlockBytes, read, self, nullptr);
  // The library would send the end of a body in chunks even where there is no body: without chunks it does not.
  if (response != nullptr && isHead) MHD_set_response_options(response, MHD_RF_HTTP_1_0_COMPATIBLE_STRICT, MHD_RO_END);
  return WithFields(response, beginning, isTls);
}

}  // namespace tav::gateway::web
