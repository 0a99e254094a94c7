// SPDX-License-Identifier: Apache-2.0
// cHttpRequest: a request of a client of the web front end, as the page that answers it sees it.
//
// The front end has split and decoded it: query variables, form fields, cookies and uploaded files are parameters of
// the message's record (tav/http/http_protocol.h). Nothing is decoded here.
#pragma once

#include <memory>
#include <string>

#include <tav/export.h>
#include <tav/framework/msg.h>

namespace tav {

class TAV_API cHttpCookie {
 public:
  cHttpCookie() = default;
  cHttpCookie(const std::string& cookieName, const std::string& cookieValue) : name(cookieName), value(cookieValue) {}

  std::string name;
  std::string value;
};

// A file that came with a request. The front end removes it when the request has ended; move it away to keep it.
class TAV_API cHttpUploadFile {
 public:
  std::string contentType;
  std::string fileName;     // as the client called it: never a path to write to
  std::string tmpFileName;  // where the data are
  unsigned int length = 0;  // bytes
};

class TAV_API cHttpRequest {
 public:
  cHttpRequest() = default;
  explicit cHttpRequest(vorn::cMsg& msg);
  cHttpRequest(const cHttpRequest&) = default;
  cHttpRequest& operator=(const cHttpRequest&) = default;

  // ---- what the client sent
  // Empty when there is no such text; one that is there and empty reads the same.
  std::string GetFromQueryString(const char* name) const;
  std::string GetFromPostData(const char* name) const;
  // False, and cookie untouched, when it is not there or has no value.
  bool GetCookie(const char* name, cHttpCookie& cookie) const;
  // What the front end did not tell of a file stays as it is in file.
  bool GetPostFile(const char* name, cHttpUploadFile& file);
  // A body that is no form, with the request's own type and length; file.fileName stays as it is.
  bool GetPostContent(cHttpUploadFile& file);

  // ---- what it is
  // At least one of the parameters that every front end tells was there.
  bool IsValid() const { return m_valid; }
  std::string GetServerPort() const { return m_serverPort; }
  // Of the front end that the request came through.
  std::string GetTechnologyName() const { return m_technologyName; }
  std::string GetContentType() const { return m_contentType; }
  unsigned int GetContentLength() const { return m_contentLength; }  // bytes
  std::string GetServerProtocol() const { return m_serverProtocol; }
  const vorn::cRecord& GetQuery() const { return m_query; }
  const vorn::cRecord& GetCookies() const { return m_cookies; }
  const vorn::cRecord& GetPostData() const { return m_postData; }
  const vorn::cRecord& GetPostFiles() const { return m_postFiles; }
  // All of the message's record: method, path and address of the client among it.
  const vorn::cRecord& GetRecord() const { return m_record; }
  // Under which every answer goes back, and where; the channel is null for a request that came over none.
  const vorn::cUuid& GetRequestId() const { return m_requestId; }
  const std::shared_ptr<vorn::cScmChannel>& GetReplyChannel() const { return m_replyChannel; }

  // The header line that forbids caching, with its line break; empty for any protocol but HTTP/1.1 and HTTP/1.0.
  std::string GetCacheControlOFF() const;
  // "HTTP-Request[front end]: " and the record, binary values cut after 32 bytes.
  std::string ToString();

 private:
  vorn::cRecord m_record;
  vorn::cUuid m_requestId;
  std::shared_ptr<vorn::cScmChannel> m_replyChannel;
  bool m_valid = false;
  std::string m_serverPort;
  std::string m_technologyName;
  vorn::cRecord m_query;
  vorn::cRecord m_cookies;
  vorn::cRecord m_postData;
  vorn::cRecord m_postFiles;
  std::string m_contentType;
  unsigned int m_contentLength = 0;
  std::string m_serverProtocol;
};

}  // namespace tav
