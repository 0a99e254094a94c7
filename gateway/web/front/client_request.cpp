// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/client_request.h>

#include <microhttpd.h>

#include <algorithm>
#include <charconv>
#include <map>

#include <gateway/web/front/web_limits.h>
#include <tav/http/http_protocol.h>

namespace tav::gateway::web {

namespace {

// What a page process may be asked; of the others HTTP knows two.
constexpr std::string_view kMethods[] = {"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "OPTIONS"};
constexpr std::string_view kNeverServed[] = {"CONNECT", "TRACE"};

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

template <typename Texts>
bool IsAmong(std::string_view text, const Texts& texts) {
  return std::find(std::begin(texts), std::end(texts), text) != std::end(texts);
}

bool HasDotSegment(std::string_view path) {
  for (std::size_t at = 0; at < path.size();) {
    const std::size_t end = std::min(path.find('/', at + 1), path.size());
    const std::string_view segment = path.substr(at + 1, end - at - 1);
    if (segment == "." || segment == "..") return true;
    at = end;
  }
  return false;
}

// Calls take(name, value) for each value of a kind; false as soon as it does.
template <typename Take>
bool ForEach(MHD_Connection* connection, MHD_ValueKind kind, Take take) {
  struct cPass {
    Take& take;
    bool isSound = true;
  } pass{take};
  MHD_get_connection_values_n(
      connection, kind,
      [](void* self, MHD_ValueKind, const char* name, std::size_t nameSize, const char* value, std::size_t size) {
        auto& each = *static_cast<cPass*>(self);
        each.isSound = each.take(std::string_view(name, nameSize),
                                 value != nullptr ? std::string_view(value, size) : std::string_view());
        return each.isSound ? MHD_YES : MHD_NO;
      },
      &pass);
  return pass.isSound;
}

// False: a name is longer than a record's may be.
bool AppendQuery(MHD_Connection* connection, vorn::cRecord& record) {
  vorn::cRecord query;
  const bool isSound = ForEach(connection, MHD_GET_ARGUMENT_KIND, [&](std::string_view name, std::string_view value) {
    if (name.size() > kMaxNameBytes) return false;
    query.AppendTextPar(name, value);
    return true;
  });
  if (!query.IsEmpty()) record.AppendRecordPar(http::kQueryString, query);
  return isSound;
}

bool AppendCookies(MHD_Connection* connection, vorn::cRecord& record) {
  vorn::cRecord cookies;
  const bool isSound = ForEach(connection, MHD_COOKIE_KIND, [&](std::string_view name, std::string_view value) {
    if (name.size() > kMaxNameBytes) return false;
    vorn::cRecord cookie;
    cookie.AppendTextPar(http::kValue, value);
    cookies.AppendRecordPar(name, cookie);
    return true;
  });
  if (!cookies.IsEmpty()) record.AppendRecordPar(http::kCookies, cookies);
  return isSound;
}

bool AppendFields(MHD_Connection* connection, vorn::cRecord& record) {
  std::map<std::string, std::string> fields;
  const bool isSound = ForEach(connection, MHD_HEADER_KIND, [&](std::string_view name, std::string_view value) {
    if (name.size() > kMaxNameBytes) return false;
    const std::string lower = ToLower(name);
    if (lower == "cookie") return true;
    const auto [field, isNew] = fields.emplace(lower, value);
    if (!isNew) field->second.append(", ").append(value);
    return true;
  });
  vorn::cRecord all;
  for (const auto& [name, value] : fields) all.AppendTextPar(name, value);
  if (!all.IsEmpty()) record.AppendRecordPar(http::kHeaders, all);
  return isSound;
}

}  // namespace

cClientRequest::cClientRequest(MHD_Connection* connection, std::string_view target) : m_connection(connection) {
  if (target.size() > kMaxTargetBytes)
    Refuse(414, "The address has more than " + std::to_string(kMaxTargetBytes) + " bytes");
  if (target.find(' ') != std::string_view::npos) Refuse(400, "The address has a blank");
}

void cClientRequest::Refuse(unsigned int status, const std::string& text) {
  if (!m_fault) m_fault = {status, text};
}

std::size_t cClientRequest::Decode(char* text) {
  char* to = text;
  for (const char* from = text; *from != '\0'; ++from) {
    if (*from != '%') {
      *to++ = *from;
      continue;
    }
    const int high = HexDigit(from[1]);
    const int low = high >= 0 ? HexDigit(from[2]) : -1;
    if (low < 0 || high * 16 + low == 0) {
      Refuse(400, "The address has a % without the two digits of a character");
      break;
    }
    *to++ = static_cast<char>(high * 16 + low);
    from += 2;
  }
  *to = '\0';
  return static_cast<std::size_t>(to - text);
}

void cClientRequest::TakeHeader(std::string_view path, std::string_view method, std::string_view version,
                                cTempFiles* files, std::uint64_t maxBodyBytes) {
  m_path = path;
  m_method = method;
  m_version = version;
  m_maxBodyBytes = maxBodyBytes;
  CheckLine();
  CheckFields();
  m_body.emplace(m_connection, files, maxBodyBytes);
}

void cClientRequest::CheckLine() {
  if (m_version != "HTTP/1.1" && m_version != "HTTP/1.0") Refuse(400, "Only HTTP/1.1 and HTTP/1.0 are spoken here");
  if (IsAmong(m_method, kNeverServed))
    Refuse(405, "The method is not served");
  else if (!IsAmong(m_method, kMethods))
    Refuse(501, "The method is not known");
  if (!m_path.starts_with('/')) Refuse(400, "The address has no path");
  if (HasControlCharacter(m_path)) Refuse(400, "The path has a control character");
  if (HasDotSegment(m_path)) Refuse(400, "The path has a segment of dots");
}

void cClientRequest::CheckFields() {
  const auto* const size = MHD_get_connection_info(m_connection, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE);
  if (size != nullptr && size->header_size > kMaxHeaderBytes)
    Refuse(431, "The header has more than " + std::to_string(kMaxHeaderBytes) + " bytes");
  unsigned int hosts = 0, lengths = 0, codings = 0;
  ForEach(m_connection, MHD_HEADER_KIND, [&](std::string_view name, std::string_view value) {
    hosts += EqualsIgnoringCase(name, MHD_HTTP_HEADER_HOST) ? 1 : 0;
    codings += EqualsIgnoringCase(name, MHD_HTTP_HEADER_TRANSFER_ENCODING) ? 1 : 0;
    if (EqualsIgnoringCase(name, MHD_HTTP_HEADER_CONTENT_LENGTH)) {
      ++lengths;
      std::from_chars(value.data(), value.data() + value.size(), m_announced);
    }
    return true;
  });
  if (hosts > 1 || (hosts == 0 && !IsHttp10())) Refuse(400, "There has to be one field Host");
  if (lengths + codings > 1) Refuse(400, "The length of the body is told twice");
  if (m_announced > m_maxBodyBytes) Refuse(413, "The body has more than " + std::to_string(m_maxBodyBytes) + " bytes");
}

bool cClientRequest::MustAnswerNow() const {
  return m_fault && (m_announced > kMaxDiscardBytes || !Field(MHD_HTTP_HEADER_EXPECT).empty());
}

bool cClientRequest::HasOverrun() const { return m_body->GetSize() > std::max(kMaxDiscardBytes, m_maxBodyBytes); }

std::string_view cClientRequest::Field(const char* name) const {
  const char* const value = MHD_lookup_connection_value(m_connection, MHD_HEADER_KIND, name);
  return value != nullptr ? value : std::string_view();
}

bool cClientRequest::AcceptsGzip() const { return AcceptsCoding(Field(MHD_HTTP_HEADER_ACCEPT_ENCODING), "gzip"); }

cFileWish cClientRequest::MakeFileWish() const {
  return {IsHead(),
          Field(MHD_HTTP_HEADER_IF_NONE_MATCH),
          Field(MHD_HTTP_HEADER_IF_MODIFIED_SINCE),
          Field(MHD_HTTP_HEADER_RANGE),
          Field(MHD_HTTP_HEADER_IF_RANGE),
          Field(MHD_HTTP_HEADER_ACCEPT_ENCODING)};
}

cHttpFault cClientRequest::MakeMessage(const cRequestPlace& place, vorn::cRecord& record) const {
  record.AppendTextPar(http::kServerPort, place.serverPort);
  record.AppendTextPar(http::kTechnologyName, http::kProtocol.GetService());
  if (const std::string_view type = Field(MHD_HTTP_HEADER_CONTENT_TYPE); !type.empty())
    record.AppendTextPar(http::kContentType, type);
  if (GetBodySize() != 0) record.AppendUIntPar(http::kContentLength, static_cast<unsigned int>(GetBodySize()));
  record.AppendTextPar(http::kServerProtocol, m_version);
  record.AppendTextPar(http::kRequestMethod, m_method);
  record.AppendTextPar(http::kRequestScheme, place.isTls ? "https" : "http");
  record.AppendTextPar(http::kPathInfo, m_path);
  record.AppendTextPar(http::kRemoteAddr, place.remoteAddress);
  const bool isSound =
      AppendQuery(m_connection, record) && AppendCookies(m_connection, record) && AppendFields(m_connection, record);
  m_body->AppendTo(record);
  if (isSound) return {};
  return {400, "A name of a variable, a cookie or a field is longer than " + std::to_string(kMaxNameBytes) + " bytes"};
}

}  // namespace tav::gateway::web
