// SPDX-License-Identifier: Apache-2.0
// The protocol between the web front end and the processes that serve pages, channel "web".
//
// A page process registers for the paths that it serves and is handed every request to one of them. It accepts the
// request, then answers with outputs under the request's identifier: first a header block of the CGI form (RFC 3875,
// 6.2), then the body, piece by piece, then the end. The front end passes each output on as it comes.
#pragma once

#include <tav/protocol.h>

namespace tav::http {

// ---- record keys

// clang-format off
inline constexpr cProtocolKey kContent        {"content",         vorn::eParText,   "the next piece of header block and body; absent: nothing"};
inline constexpr cProtocolKey kContentLength  {"Content-Length",  vorn::eParUInt,   "length of the request's body, bytes"};
inline constexpr cProtocolKey kContentType    {"Content-Type",    vorn::eParText,   "media type of the request's body"};
inline constexpr cProtocolKey kCookies        {"Cookies",         vorn::eParRecord, "one record a cookie, named like it: text value"};
inline constexpr cProtocolKey kFinish         {"finish",          vorn::eParBool,   "there is no more output"};
inline constexpr cProtocolKey kFlow           {"flow",            vorn::eParBool,   "wants to be told what becomes of each output"};
inline constexpr cProtocolKey kHeaders        {"Headers",         vorn::eParRecord, "header fields of the request as texts, their names in lower case"};
inline constexpr cProtocolKey kIdx            {"idx",             vorn::eParUInt,   "the page's own number of the output; outputs are passed on as they come"};
inline constexpr cProtocolKey kPathInfo       {"Path-Info",       vorn::eParText,   "path that is asked for, decoded, without the query"};
inline constexpr cProtocolKey kPostContent    {"PostContent",     vorn::eParText,   "name of the file with a body that is no form"};
inline constexpr cProtocolKey kPostData       {"PostData",        vorn::eParRecord, "one text a form field, named like it"};
inline constexpr cProtocolKey kPostFiles      {"PostFiles",       vorn::eParRecord, "one record an uploaded file, named like its field: texts Type, Filename, tmpFilename; uint Length"};
inline constexpr cProtocolKey kPrefix         {"prefix",          vorn::eParText,   "path that is served, with all below it; none: all paths"};
inline constexpr cProtocolKey kQueryString    {"QueryString",     vorn::eParRecord, "one text a query variable, named like it"};
inline constexpr cProtocolKey kReason         {"reason",          vorn::eParText,   "why it was refused"};
inline constexpr cProtocolKey kRemoteAddr     {"Remote-Addr",     vorn::eParText,   "address of the client"};
inline constexpr cProtocolKey kRequestMethod  {"Request-Method",  vorn::eParText,   "GET, HEAD, POST, ..."};
inline constexpr cProtocolKey kRequestScheme  {"Request-Scheme",  vorn::eParText,   "http, or https where the connection is encrypted"};
inline constexpr cProtocolKey kServerPort     {"Server-Port",     vorn::eParText,   "port that the request came to"};
inline constexpr cProtocolKey kServerProtocol {"Server-Protocol", vorn::eParText,   "HTTP/1.0 or HTTP/1.1"};
inline constexpr cProtocolKey kSuccess        {"success",         vorn::eParBool,   "the output is whole"};
inline constexpr cProtocolKey kTechnologyName {"Technology-Name", vorn::eParText,   "name of the front end; an output repeats its request's"};

// What the records of the request hold: of a cookie, and of an uploaded file.
inline constexpr cProtocolKey kValue          {"value",           vorn::eParText,   "value of the cookie"};
inline constexpr cProtocolKey kFileType       {"Type",            vorn::eParText,   "media type that the client tells"};
inline constexpr cProtocolKey kFileLength     {"Length",          vorn::eParUInt,   "bytes"};
inline constexpr cProtocolKey kFileName       {"Filename",        vorn::eParText,   "name that the client gave"};
inline constexpr cProtocolKey kTmpFileName    {"tmpFilename",     vorn::eParText,   "file with the data; it goes when the request has ended"};

// Of the message that the session timer posts.
inline constexpr cProtocolKey kSid            {"SID",             vorn::eParUuid,   "the session whose time is over"};

// ---- message numbers; never reused

enum eMessage : unsigned int {
  eRegister       = 0x10019,
  eRegistered     = 0x1001a,
  eRegisterFailed = 0x1001b,
  eRequest        = 0x55005,
  eRequestTaken   = 0x55006,
  eRequestRefused = 0x55007,
  eOutput         = 0x5500a,
  eOutputPassed   = 0x5500b,
  eOutputLost     = 0x5500c,
};

// Posted by timers to the page process itself; they travel on no channel.
enum eTimeout : unsigned int {
  eSessionTimeout = 0x52014,
  ePageTimeout    = 0x5201e,
};

// ---- messages

inline constexpr cProtocolMessage kMessages[] = {
  {eRegister, "register", eToService, {{kPrefix, eRepeated}, {kFlow, eOptional}}, eRegistered, eRegisterFailed, "serve the requests to these paths, until the channel closes"},
  {eRequest,  "request",  eToClient,  {{kServerPort}, {kTechnologyName}, {kContentType, eOptional}, {kContentLength, eOptional}, {kServerProtocol}, {kQueryString, eOptional}, {kCookies, eOptional}, {kPostData, eOptional}, {kPostFiles, eOptional}, {kPostContent, eOptional}, {kRequestMethod}, {kRequestScheme}, {kPathInfo}, {kRemoteAddr}, {kHeaders, eOptional}}, eRequestTaken, eRequestRefused, "a request of a client, to be answered with outputs"},
  {eRequestTaken, "request-taken", eToService, {}, 0, 0, "the page process has started on the request"},
  {eRequestRefused, "request-refused", eToService, {{kReason}}, 0, 0, "the page process does not take the request"},
  {eOutput,   "output",   eToService, {{kTechnologyName, eOptional}, {kIdx, eOptional}, {kFinish}, {kSuccess, eOptional}, {kContent, eOptional}}, eOutputPassed, eOutputLost, "the next piece of the answer, or its end; answered only where the registration asked for it"},
  {eOutputLost, "output-lost", eToClient, {{kReason}}, 0, 0, "nobody waits for the answer any more; further outputs of this request are dropped"},
};
// clang-format on

inline constexpr cProtocol kProtocol("web", kMessages);

static_assert(kProtocol.HasAscendingIds());
static_assert(kProtocol.HasNoEmptyText());
static_assert(kProtocol.AnswersGoBack());

}  // namespace tav::http
