// SPDX-License-Identifier: Apache-2.0
// cClientRequest: one request of a client, from its request line to the end of its body. The HTTP library has split it;
// here it is judged, and made a message of. What is wrong with it is kept until it has been read to its end, so that
// the client is there to see the answer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <gateway/web/front/answer.h>
#include <gateway/web/front/request_body.h>
#include <gateway/web/front/static_files.h>
#include <tav/framework/record.h>

namespace tav::gateway::web {

// Where a request came in.
struct cRequestPlace {
  std::string serverPort;
  std::string remoteAddress;
  bool isTls = false;
};

class cClientRequest {
 public:
  // target: of the request line, as it was sent. The connection outlives it.
  cClientRequest(MHD_Connection* connection, std::string_view target);

  // Decodes "%HH" of path and query in place; the length of what is left. What is malformed becomes a fault.
  std::size_t Decode(char* text);

  // ---- what comes, in this order
  void TakeHeader(std::string_view path, std::string_view method, std::string_view version, cTempFiles* files,
                  std::uint64_t maxBodyBytes);
  void TakeBody(const char* bytes, std::size_t size) { m_body->Take(bytes, size); }
  void Finish() { m_body->Finish(); }

  // ---- what it is
  bool HasHeader() const { return m_body.has_value(); }
  const cHttpFault& GetFault() const { return m_fault ? m_fault : m_body->GetFault(); }
  // Whether it is to be answered before its body has come: it would be too much, or the client waits for leave.
  bool MustAnswerNow() const;
  // So much came that was not wanted that the connection has to end.
  bool HasOverrun() const;
  const std::string& GetPath() const { return m_path; }
  bool IsHead() const { return m_method == "HEAD"; }
  bool IsReading() const { return m_method == "GET" || m_method == "HEAD"; }
  bool IsHttp10() const { return m_version == "HTTP/1.0"; }
  std::uint64_t GetBodySize() const { return m_body ? m_body->GetSize() : 0; }
  bool AcceptsGzip() const;
  cFileWish MakeFileWish() const;
  // The message's record; a fault when it has what no record can hold.
  cHttpFault MakeMessage(const cRequestPlace& place, vorn::cRecord& record) const;

 private:
  void Refuse(unsigned int status, const std::string& text);
  void CheckLine();
  void CheckFields();
  std::string_view Field(const char* name) const;

  MHD_Connection* m_connection;
  cHttpFault m_fault;
  std::string m_path;
  std::string m_method;
  std::string m_version;
  std::uint64_t m_maxBodyBytes = 0;
  std::uint64_t m_announced = 0;  // of the body, as the client tells
  std::optional<cRequestBody> m_body;
};

}  // namespace tav::gateway::web
