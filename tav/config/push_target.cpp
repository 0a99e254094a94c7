// SPDX-License-Identifier: Apache-2.0
#include <tav/config/push_target.h>

#include <algorithm>

#include <tav/config/config_fields.h>
#include <tav/record/record_fields.h>

namespace tav {

cPushTarget& cPushTarget::operator=(const cPushTarget& other) {
  idx = other.idx;
  enabled = other.enabled;
  logEnabled = other.logEnabled;
  postEnabled = other.postEnabled;
  name = other.name;
  protocoll = other.protocoll;
  host = other.host;
  username = other.username;
  password = other.password;
  uri = other.uri;
  collect = other.collect;
  maxruntime = other.maxruntime;
  return *this;
}

void cPushTarget::Init() {
  *this = cPushTarget();
  version = kConfigVersion;
  error.clear();
}

bool cPushTarget::configure(unsigned long long newIdx, const std::string& newName, const std::string& newProtocoll,
                            const std::string& newHost, const std::string& newUsername, const std::string& newPassword,
                            const std::string& newUri, unsigned int newCollect, unsigned int newMaxruntime,
                            bool newEnabled, bool newLogEnabled, bool newPostEnabled) {
  cPushTarget fresh;  // the texts may be this target's own
  fresh.idx = newIdx;
  fresh.name = newName;
  fresh.protocoll = newProtocoll;
  fresh.host = newHost;
  fresh.username = newUsername;
  fresh.password = newPassword;
  fresh.uri = newUri;
  fresh.collect = newCollect;
  fresh.maxruntime = newMaxruntime;
  fresh.enabled = newEnabled;
  fresh.logEnabled = newLogEnabled;
  fresh.postEnabled = newPostEnabled;
  Init();
  *this = fresh;
  return isValid();
}

bool cPushTarget::isValid() {
  const char* fault = name.empty()                                     ? "missing name"
                      : protocoll.empty()                              ? "missing protocoll"
                      : host.empty()                                   ? "missing host"
                      : collect < kMinCollect || collect > kMaxCollect ? "collection not in range from 1 to 50"
                                                                       : nullptr;
  if (fault != nullptr) error = fault;
  return fault == nullptr;
}

vorn::cRecord cPushTarget::ToRecord() const {
  vorn::cRecord record;
  record.AppendUIntPar("version", version);
  record.AppendUInt64Par("idx", idx);
  record.AppendTextPar("name", name);
  record.AppendTextPar("protocoll", protocoll);
  record.AppendTextPar("username", username);
  record.AppendTextPar("password", password);
  record.AppendTextPar("host", host);
  record.AppendTextPar("uri", uri);
  record.AppendUIntPar("collect", collect);
  record.AppendUIntPar("maxruntime", maxruntime);
  record.AppendBoolPar("enabled", enabled);
  record.AppendBoolPar("log-enabled", logEnabled);
  record.AppendBoolPar("post-enabled", postEnabled);
  return record;
}

bool cPushTarget::FromRecord(const vorn::cRecord& rec) {
  Init();
  if (rec.IsEmpty() || !ReadConfigVersion(rec, "PushTargetRecord", version, error)) return false;
  if (ReadIdentity(rec)) ReadRest(rec);
  return isValid();  // says what stayed empty
}

bool cPushTarget::ReadIdentity(const vorn::cRecord& rec) {
  if (!TakeText(rec, "name", name)) return false;
  const vorn::cRecordPar idxPar = rec.GetPar("idx");
  if (!IsFilled(idxPar, vorn::eParUInt64)) return false;
  idx = idxPar.GetUInt64();
  return TakeText(rec, "protocoll", protocoll) && TakeText(rec, "host", host);
}

void cPushTarget::ReadRest(const vorn::cRecord& rec) {
  username = rec.GetTextPar("username");
  password = rec.GetTextPar("password");
  uri = rec.GetTextPar("uri");
  collect = std::max(rec.GetUIntPar("collect"), kMinCollect);
  maxruntime = std::max(rec.GetUIntPar("maxruntime"), kMinRuntime);
  enabled = rec.GetBoolPar("enabled");
  logEnabled = rec.GetBoolPar("log-enabled");
  postEnabled = rec.GetBoolPar("post-enabled");
}

std::string cPushTarget::ToString() const {
  return "name=" + name + ", host=" + host + ", uri=" + uri + ", enable=" + (enabled ? "TRUE" : "FALSE") +
         ", log=" + (logEnabled ? "ON" : "OFF") + ", post=" + (postEnabled ? "ON" : "OFF");
}

std::string cPushTarget::GetURL() const {
  const std::string credentials = username.empty() ? std::string() : username + ":" + password + "@";
  const std::string path = uri.empty() ? std::string() : "/" + uri;
  return protocoll + "://" + credentials + host + path;
}

}  // namespace tav
