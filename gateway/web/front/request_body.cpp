// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/request_body.h>

#include <microhttpd.h>

#include <gateway/web/front/web_limits.h>
#include <tav/http/http_protocol.h>

namespace tav::gateway::web {

namespace {

// Of the splitter: it has to hold a name, and the line that parts of a form are separated with.
constexpr std::size_t kSplitterBytes = 4096;
// What a field costs beside its name and value.
constexpr std::size_t kFieldCost = 16;

std::string Text(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

cRequestBody::cRequestBody(MHD_Connection* connection, cTempFiles* files, std::uint64_t maxBytes)
    : m_files(files), m_maxBytes(maxBytes) {
  m_form = MHD_create_post_processor(
      connection, kSplitterBytes,
      [](void* self, MHD_ValueKind, const char* name, const char* fileName, const char* type, const char*,
         const char* bytes, std::uint64_t offset, std::size_t size) {
        static_cast<cRequestBody*>(self)->TakePart(name, fileName, type, {bytes, size}, offset == 0);
        return MHD_YES;
      },
      this);
}

cRequestBody::~cRequestBody() {
  if (m_form != nullptr) MHD_destroy_post_processor(m_form);
}

void cRequestBody::Take(const char* bytes, std::size_t size) {
  m_size += size;
  if (m_size > m_maxBytes) Refuse(413, "The body has more than " + std::to_string(m_maxBytes) + " bytes");
  if (m_fault) return;
  if (m_form == nullptr)
    Store(m_content, {bytes, size});
  else if (MHD_post_process(m_form, bytes, size) != MHD_YES)
    Refuse(400, "The form cannot be read");
}

void cRequestBody::Finish() {
  // Ending the splitter gives the last field of a form.
  if (m_form != nullptr && m_size != 0 && MHD_destroy_post_processor(m_form) != MHD_YES)
    Refuse(400, "The form cannot be read to its end");
  if (m_size != 0) m_form = nullptr;
  if (m_content) m_content->Close();
  for (const cUpload& upload : m_uploads)
    if (upload.file) upload.file->Close();
}

void cRequestBody::Refuse(unsigned int status, const std::string& text) {
  if (m_fault) return;
  m_fault = {status, text};
  m_content.reset();
  m_fields.clear();
  m_uploads.clear();
}

void cRequestBody::TakePart(const char* name, const char* fileName, const char* type, std::string_view bytes,
                            bool isFirst) {
  const std::string field = Text(name);
  if (m_fault) return;
  if (field.size() > kMaxNameBytes) return Refuse(400, "A form's field has a name longer than 255 bytes");
  if (fileName != nullptr)
    TakeFile(field, fileName, type, bytes, isFirst);
  else
    TakeField(field, bytes, isFirst);
}

void cRequestBody::TakeField(const std::string& name, std::string_view bytes, bool isFirst) {
  if (!CountForm(bytes.size() + (isFirst ? name.size() + kFieldCost : 0))) return;
  if (isFirst || m_fields.empty()) m_fields.push_back({name, {}});
  m_fields.back().value.append(bytes);
}

void cRequestBody::TakeFile(const std::string& field, const char* fileName, const char* type, std::string_view bytes,
                            bool isFirst) {
  // Browsers send a part without a name and a byte where no file was chosen.
  if (*fileName == '\0' && bytes.empty()) return;
  if (isFirst || m_uploads.empty()) {
    if (m_uploads.size() == kMaxUploadFiles)
      return Refuse(413, "A form brings at most " + std::to_string(kMaxUploadFiles) + " files");
    if (!CountForm(field.size() + Text(fileName).size() + Text(type).size())) return;
    m_uploads.push_back({field, fileName, Text(type), nullptr});
  }
  Store(m_uploads.back().file, bytes);
}

void cRequestBody::Store(std::unique_ptr<cTempFile>& file, std::string_view bytes) {
  if (!file) file = m_files->Make();
  if (!file || !file->Append(bytes)) Refuse(503, "There is no room for what was sent");
}

bool cRequestBody::CountForm(std::size_t bytes) {
  m_formBytes += bytes;
  if (m_formBytes <= kMaxFormBytes) return true;
  Refuse(413, "The form's fields have more than " + std::to_string(kMaxFormBytes) + " bytes");
  return false;
}

void cRequestBody::AppendTo(vorn::cRecord& request) const {
  vorn::cRecord fields;
  for (const cField& field : m_fields) fields.AppendTextPar(field.name, field.value);
  if (!fields.IsEmpty()) request.AppendRecordPar(http::kPostData, fields);
  vorn::cRecord files;
  for (const cUpload& upload : m_uploads) {
    vorn::cRecord file;
    file.AppendTextPar(http::kFileType, upload.type);
    file.AppendTextPar(http::kFileName, upload.name);
    file.AppendTextPar(http::kTmpFileName, upload.file->GetPath());
    file.AppendUIntPar(http::kFileLength, static_cast<unsigned int>(upload.file->GetSize()));
    files.AppendRecordPar(upload.field, file);
  }
  if (!files.IsEmpty()) request.AppendRecordPar(http::kPostFiles, files);
  if (m_content) request.AppendTextPar(http::kPostContent, m_content->GetPath());
}

}  // namespace tav::gateway::web
