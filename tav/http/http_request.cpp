// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_request.h>

#include <tav/http/http_protocol.h>
#include <tav/record/record_fields.h>

namespace tav {

namespace {

constexpr std::size_t kShownData = 32;

// Each takes the parameter when it is there, not empty and of its type; false and target untouched when not.
bool Take(const vorn::cRecord& record, std::string_view name, std::string& target) {
  return TakeText(record, name, target);
}

bool Take(const vorn::cRecord& record, std::string_view name, unsigned int& target) {
  const vorn::cRecordPar par = record.GetPar(name);
  if (!IsFilled(par, vorn::eParUInt)) return false;
  target = par.GetUInt();
  return true;
}

bool Take(const vorn::cRecord& record, std::string_view name, vorn::cRecord& target) {
  const vorn::cRecordPar par = record.GetPar(name);
  return IsFilled(par, vorn::eParRecord) && par.GetRecord(target);
}

// Names come from pages, as C strings: without one nothing is named.
std::string_view NameOf(const char* name) { return name != nullptr ? name : std::string_view(); }

// The text of a variable of any type.
std::string TextOf(const vorn::cRecord& variables, const char* name) {
  const vorn::cRecordPar par = variables.GetPar(NameOf(name));
  return par.IsEmpty() ? std::string() : par.GetText();
}

}  // namespace

cHttpRequest::cHttpRequest(vorn::cMsg& msg)
    : m_record(msg.Record()), m_requestId(msg.GetId()), m_replyChannel(msg.GetReplyChannel()) {
  const auto take = [this](std::string_view name, auto& target) { m_valid |= Take(m_record, name, target); };
  take(http::kServerPort, m_serverPort);
  take(http::kTechnologyName, m_technologyName);
  take(http::kContentType, m_contentType);
  take(http::kContentLength, m_contentLength);
  take(http::kServerProtocol, m_serverProtocol);
  take(http::kQueryString, m_query);
  take(http::kCookies, m_cookies);
  take(http::kPostData, m_postData);
  take(http::kPostFiles, m_postFiles);
}

std::string cHttpRequest::GetFromQueryString(const char* name) const { return TextOf(m_query, name); }

std::string cHttpRequest::GetFromPostData(const char* name) const { return TextOf(m_postData, name); }

bool cHttpRequest::GetCookie(const char* name, cHttpCookie& cookie) const {
  vorn::cRecord inner;
  std::string value;
  if (!Take(m_cookies, NameOf(name), inner) || !Take(inner, http::kValue, value)) return false;
  cookie = cHttpCookie(name, value);
  return true;
}

bool cHttpRequest::GetPostFile(const char* name, cHttpUploadFile& file) {
  vorn::cRecord inner;
  if (!Take(m_postFiles, NameOf(name), inner)) return false;
  Take(inner, http::kFileType, file.contentType);
  Take(inner, http::kFileLength, file.length);
  Take(inner, http::kFileName, file.fileName);
  Take(inner, http::kTmpFileName, file.tmpFileName);
  return true;
}

bool cHttpRequest::GetPostContent(cHttpUploadFile& file) {
  if (!Take(m_record, http::kPostContent, file.tmpFileName)) return false;
  file.contentType = m_contentType;
  file.length = m_contentLength;
  return true;
}

std::string cHttpRequest::GetCacheControlOFF() const {
  if (m_serverProtocol == "HTTP/1.1") return "Cache-Control: no-cache,no-store\r\n";
  if (m_serverProtocol == "HTTP/1.0") return "Pragma: no-cache\r\n";
  return {};
}

std::string cHttpRequest::ToString() {
  return "HTTP-Request[" + m_technologyName + "]: " + m_record.ToString(kShownData, 0);
}

}  // namespace tav
