// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/static_files.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <utility>

#include <gateway/web/front/byte_range.h>
#include <gateway/web/front/gzip.h>
#include <gateway/web/front/media_type.h>
#include <tav/framework/helper.h>

namespace tav::gateway::web {

namespace {

constexpr std::string_view kChart = "chart.js";
constexpr int kReadFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

// Whether a list of ETags names this one; weak ones count as well (RFC 9110, 13.1.2).
bool Matches(std::string_view list, std::string_view etag) {
  for (std::string_view element : SplitList(list)) {
    if (element.starts_with("W/")) element.remove_prefix(2);
    if (element == "*" || element == etag) return true;
  }
  return false;
}

std::string ReadWhole(int file, std::uint64_t size) {
  std::string bytes(size, '\0');
  std::size_t at = 0;
  while (at < bytes.size()) {
    const ssize_t got = pread(file, bytes.data() + at, bytes.size() - at, static_cast<off_t>(at));
    if (got <= 0) break;
    at += static_cast<std::size_t>(got);
  }
  bytes.resize(at);
  return bytes;
}

}  // namespace

cStaticFiles::cStaticFiles(const std::string& directory, std::string chart)
    : m_directory(open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)), m_chart(std::move(chart)) {}

cAnswer cStaticFiles::Answer(const std::string& name, const cFileWish& wish) {
  std::optional<cFile> file = Open(name);
  if (!file) return MakeErrorAnswer({404, "There is no file /static/" + name});
  const std::string_view type = MediaTypeOf(name);
  cAnswer answer;
  const bool mayPack = IsCompressible(type) && file->size >= kMinPackedFile && file->size <= kMaxPackedFile;
  const bool isPacked =
      mayPack && wish.range.empty() && AcceptsCoding(wish.acceptEncoding, "gzip") && !Pack(name, *file).empty();
  const std::string etag = "\"" + file->version + (isPacked ? "-gz\"" : "\"");
  answer.fields = {{"ETag", etag}, {"Last-Modified", file->modified}, {"Cache-Control", "no-cache"}};
  if (mayPack) answer.fields.push_back({"Vary", "Accept-Encoding"});
  const bool isKnown =
      !wish.ifNoneMatch.empty() ? Matches(wish.ifNoneMatch, etag) : wish.ifModifiedSince == file->modified;
  if (isKnown) {
    answer.status = 304;
    return answer;
  }
  answer.fields.push_back({"Content-Type", std::string(type)});
  answer.fields.push_back({"Accept-Ranges", "bytes"});
  if (isPacked) {
    answer.fields.push_back({"Content-Encoding", "gzip"});
    answer.body = Pack(name, *file);
    return answer;
  }
  answer.size = file->size;
  cByteRange part;
  const bool isWanted = wish.ifRange.empty() || wish.ifRange == etag || wish.ifRange == file->modified;
  const eRange range = isWanted && !wish.isHead ? ReadRange(wish.range, file->size, part) : eRange::Whole;
  if (range == eRange::Impossible) {
    cAnswer refusal = MakeErrorAnswer({416, "The file has " + std::to_string(file->size) + " bytes"});
    refusal.fields.push_back({"Content-Range", "bytes */" + std::to_string(file->size)});
    return refusal;
  }
  if (range == eRange::Part) {
    answer.status = 206;
    answer.offset = part.first;
    answer.size = part.size;
    answer.fields.push_back({"Content-Range", "bytes " + std::to_string(part.first) + "-" +
                                                  std::to_string(part.first + part.size - 1) + "/" +
                                                  std::to_string(file->size)});
  }
  answer.file = std::move(file->descriptor);
  return answer;
}

std::optional<cStaticFiles::cFile> cStaticFiles::Open(const std::string& name) const {
  cFile file;
  if (name == kChart && !m_chart.empty()) file.descriptor = cDescriptor(open(m_chart.c_str(), kReadFlags));
  if (!file.descriptor.IsOpen()) file.descriptor = OpenBelow(name);
  struct stat found {};
  if (!file.descriptor.IsOpen() || fstat(file.descriptor.Get(), &found) != 0 || !S_ISREG(found.st_mode))
    return std::nullopt;
  file.size = static_cast<std::uint64_t>(found.st_size);
  file.version = vorn::FormatString("%llx-%lx-%llx", static_cast<unsigned long long>(found.st_mtim.tv_sec),
                                    static_cast<unsigned long>(found.st_mtim.tv_nsec),
                                    static_cast<unsigned long long>(found.st_size));
  file.modified = HttpDate(found.st_mtim.tv_sec);
  return file;
}

cDescriptor cStaticFiles::OpenBelow(std::string_view name) const {
  if (!m_directory.IsOpen()) return cDescriptor();
  cDescriptor folder(dup(m_directory.Get()));
  while (true) {
    const std::size_t slash = name.find('/');
    const std::string segment(name.substr(0, slash));
    if (segment.empty() || segment.front() == '.' || segment.find('\0') != std::string::npos) return cDescriptor();
    const bool isLast = slash == std::string_view::npos;
    const int flags = isLast ? kReadFlags | O_NOFOLLOW : O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    cDescriptor next(openat(folder.Get(), segment.c_str(), flags));
    if (isLast || !next.IsOpen()) return next;
    folder = std::move(next);
    name.remove_prefix(slash + 1);
  }
}

const std::string& cStaticFiles::Pack(const std::string& name, const cFile& file) {
  cPacked& packed = m_packed[name];
  if (packed.version != file.version) {
    packed.version = file.version;
    packed.bytes = GzipWhole(ReadWhole(file.descriptor.Get(), file.size));
    if (packed.bytes.size() >= file.size) packed.bytes.clear();
  }
  return packed.bytes;
}

}  // namespace tav::gateway::web
