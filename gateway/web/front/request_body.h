// SPDX-License-Identifier: Apache-2.0
// cRequestBody: what a client sends behind the header of its request. A form is split into fields and files, any other
// body becomes one file; it goes with the object.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gateway/web/front/answer.h>
#include <gateway/web/front/temp_files.h>
#include <tav/framework/record.h>

struct MHD_Connection;
struct MHD_PostProcessor;

namespace tav::gateway::web {

class cRequestBody {
 public:
  // files outlives it. maxBytes: of the whole body.
  cRequestBody(MHD_Connection* connection, cTempFiles* files, std::uint64_t maxBytes);
  ~cRequestBody();
  cRequestBody(const cRequestBody&) = delete;
  cRequestBody& operator=(const cRequestBody&) = delete;

  // The next bytes. After a fault they are dropped.
  void Take(const char* bytes, std::size_t size);
  // That was all.
  void Finish();
  // Adds what there is as parameters of the request: "PostData", "PostFiles", "PostContent".
  void AppendTo(vorn::cRecord& request) const;

  const cHttpFault& GetFault() const { return m_fault; }
  std::uint64_t GetSize() const { return m_size; }

 private:
  struct cField {
    std::string name;
    std::string value;
  };
  struct cUpload {
    std::string field;
    std::string name;
    std::string type;
    std::unique_ptr<cTempFile> file;
  };

  void Refuse(unsigned int status, const std::string& text);
  void TakePart(const char* name, const char* fileName, const char* type, std::string_view bytes, bool isFirst);
  void TakeField(const std::string& name, std::string_view bytes, bool isFirst);
  void TakeFile(const std::string& field, const char* fileName, const char* type, std::string_view bytes, bool isFirst);
  void Store(std::unique_ptr<cTempFile>& file, std::string_view bytes);
  bool CountForm(std::size_t bytes);

  cTempFiles* m_files;
  std::uint64_t m_maxBytes;
  MHD_PostProcessor* m_form;  // null: it is none
  std::uint64_t m_size = 0;
  std::size_t m_formBytes = 0;
  cHttpFault m_fault;
  std::vector<cField> m_fields;
  std::vector<cUpload> m_uploads;
  std::unique_ptr<cTempFile> m_content;
};

}  // namespace tav::gateway::web
