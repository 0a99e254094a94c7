// SPDX-License-Identifier: Apache-2.0
// cStaticFiles: the files below "/static/", of one directory and what lies in it. Nothing outside is reached: no
// segment of a path may be hidden, "." or "..", and no link is followed.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include <gateway/web/front/answer.h>
#include <gateway/web/front/descriptor.h>

namespace tav::gateway::web {

// What a request says of the file that it wants, as its header fields do.
struct cFileWish {
  bool isHead = false;
  std::string_view ifNoneMatch;
  std::string_view ifModifiedSince;
  std::string_view range;
  std::string_view ifRange;
  std::string_view acceptEncoding;
};

class cStaticFiles {
 public:
  // Larger files are sent as they are.
  static constexpr std::uint64_t kMaxPackedFile = std::uint64_t{2} << 20;
  // Smaller ones as well.
  static constexpr std::uint64_t kMinPackedFile = 512;

  // chart: the file that is "chart.js"; one of that name in the directory when there is none.
  cStaticFiles(const std::string& directory, std::string chart);

  // name: the path behind "/static/", decoded. 404 when there is no such file.
  cAnswer Answer(const std::string& name, const cFileWish& wish);

 private:
  struct cFile {
    cDescriptor descriptor;
    std::uint64_t size = 0;
    std::string version;  // what its ETag is made of
    std::string modified;
  };
  struct cPacked {
    std::string version;
    std::string bytes;
  };

  cDescriptor OpenBelow(std::string_view name) const;
  std::optional<cFile> Open(const std::string& name) const;
  // The compressed file; empty when it would gain nothing.
  const std::string& Pack(const std::string& name, const cFile& file);

  cDescriptor m_directory;
  std::string m_chart;
  std::map<std::string, cPacked> m_packed;  // no more than there are files
};

}  // namespace tav::gateway::web
