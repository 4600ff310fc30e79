// FuzzInput.h - what the fuzz targets share: the failure report and a reader
// that takes bytes off the fuzzer's input.
//
// Reads past the end of the input give zeros and never move past it, so every
// input, however short, drives some run. Targets with input-specific readers
// derive from Reader (using kiFuzz::Reader::Reader;).
#ifndef KI_FUZZ_FUZZINPUT_H
#define KI_FUZZ_FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace kiFuzz {

// Reports a broken property on stderr and stops, so libFuzzer keeps the input.
[[noreturn]] inline void Fail(const char* what) {
  std::fprintf(stderr, "broken: %s\n", what);
  std::abort();
}

inline void Check(bool ok, const char* what) {
  if (!ok) Fail(what);
}

// A scratch file for targets that go through the file system: made once per
// process under /tmp and removed when the process exits.
inline const std::string& TempPath() {
  static const std::string* path = [] {
    char name[] = "/tmp/ki-fuzz-XXXXXX";
    const int fd = mkstemp(name);
    if (fd < 0) Fail("no temporary file");
    close(fd);
    std::atexit([] { unlink(TempPath().c_str()); });
    return new std::string(name);
  }();
  return *path;
}

// Bytes off the front of (data, size).
class Reader {
 public:
  // A run of bytes of the input: where it starts and how long it is.
  struct Bytes {
    const uint8_t* data;
    size_t size;
  };

  Reader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}

  bool AtEnd() const { return m_at >= m_size; }
  size_t Left() const { return m_at < m_size ? m_size - m_at : 0; }
  uint8_t Byte() { return m_at < m_size ? m_data[m_at++] : 0; }
  bool Flag() { return (Byte() & 1) != 0; }

  // The next n bytes, fewer where the input ends first.
  Bytes Take(size_t n) {
    const size_t left = Left();
    const Bytes taken = {m_data + m_at, n < left ? n : left};
    m_at += taken.size;
    return taken;
  }

  // The bytes up to the next stop byte or the end; the stop byte is taken too.
  std::string Until(uint8_t stop) {
    std::string s;
    while (!AtEnd()) {
      const uint8_t b = Byte();
      if (b == stop) break;
      s += static_cast<char>(b);
    }
    return s;
  }

 private:
  const uint8_t* m_data;
  size_t m_size;
  size_t m_at = 0;
};

}  // namespace kiFuzz

#endif  // KI_FUZZ_FUZZINPUT_H
