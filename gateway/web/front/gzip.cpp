// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/gzip.h>

#include <zlib.h>

namespace tav::gateway::web {

namespace {

// Small ones: a stream takes 64 KiB so, a quarter of the usual, and texts lose little.
constexpr int kWindowBits = 13;
constexpr int kMemoryLevel = 6;
constexpr int kLevel = 5;
constexpr int kGzipHeader = 16;
constexpr std::size_t kStep = 16384;

int FlushOf(cGzip::eEnd end) {
  return end == cGzip::eEnd::Whole ? Z_FINISH : end == cGzip::eEnd::Flush ? Z_SYNC_FLUSH : Z_NO_FLUSH;
}

}  // namespace

struct cGzip::cState {
  z_stream stream{};
  bool isSound = false;
};

cGzip::cGzip() : m_state(std::make_unique<cState>()) {
  m_state->isSound = deflateInit2(&m_state->stream, kLevel, Z_DEFLATED, kWindowBits + kGzipHeader, kMemoryLevel,
                                  Z_DEFAULT_STRATEGY) == Z_OK;
}

cGzip::~cGzip() {
  if (m_state->isSound) deflateEnd(&m_state->stream);
}

bool cGzip::Append(std::string_view bytes, eEnd end, std::string& out) {
  if (!m_state->isSound) return false;
  z_stream& stream = m_state->stream;
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  do {
    const std::size_t before = out.size();
    out.resize(before + kStep);
    stream.next_out = reinterpret_cast<Bytef*>(out.data() + before);
    stream.avail_out = kStep;
    const int result = deflate(&stream, FlushOf(end));
    out.resize(out.size() - stream.avail_out);
    if (result == Z_STREAM_ERROR) return false;
  } while (stream.avail_out == 0);
  return true;
}

std::string GzipWhole(std::string_view bytes) {
  cGzip gzip;
  std::string out;
  return gzip.Append(bytes, cGzip::eEnd::Whole, out) ? out : std::string();
}

}  // namespace tav::gateway::web
