// TextFile.cpp - kiTextFile: line splitting over a fixed buffer refilled from
// a kiFile.
#include "ki/files/TextFile.h"

#include <cstring>

namespace {

// A kiCString takes counts up to kiNPos - 1; Read answers an int.
constexpr unsigned int kMaxCapacity = 0x7FFFFFFFu;

}  // namespace

kiTextFile::kiTextFile(const char* name, unsigned int bufferSize)
    : m_file(name, kiFileMode_Read),
      m_buffer(bufferSize < kMaxCapacity ? bufferSize : kMaxCapacity),
      m_capacity(m_buffer.size()),
      m_held(0),
      m_crPending(false),
      m_truncatedLine(false) {}

kiTextFile::~kiTextFile() {
  m_buffer.Realloc(0);
  m_file.Close();
}

void kiTextFile::Drop(unsigned int count) {
  unsigned char* bytes = m_buffer.data();
  std::memmove(bytes, bytes + count, m_held - count);
  m_held -= count;
}

bool kiTextFile::NextLine(kiCString& line) {
  if (!m_file.IsOpened()) return false;
  unsigned char* bytes = m_buffer.data();
  for (;;) {
    if (m_held < m_capacity) {
      const int n = m_file.Read(bytes + m_held, m_capacity - m_held);
      if (n < 0) return false;
      m_held += static_cast<unsigned int>(n);
    }
    if (m_held == 0) return false;

    if (m_crPending) {
      m_crPending = false;
      if (bytes[0] == '\n') {
        Drop(1);
        continue;
      }
    }

    unsigned int at = 0;
    while (at < m_held && bytes[at] != '\r' && bytes[at] != '\n') ++at;
    const bool found = at < m_held;
    unsigned int endLength = 0;
    if (found) {
      endLength = 1;
      if (bytes[at] == '\r') {
        if (at + 1 < m_held) {
          if (bytes[at + 1] == '\n') endLength = 2;
        } else {
          m_crPending = true;  // its LF, if any, comes with the next fill
        }
      }
    }

    if (m_truncatedLine) {
      if (found) {
        Drop(at + endLength);
        m_truncatedLine = false;
      } else {
        m_held = 0;  // still inside the overlong line
      }
      continue;
    }

    if (found) {
      line = kiCString(reinterpret_cast<const char*>(bytes), at);
      Drop(at + endLength);
      return true;
    }
    // A full buffer, or the last line without an end: cut here, skip the rest.
    line = kiCString(reinterpret_cast<const char*>(bytes), m_held);
    m_truncatedLine = true;
    m_held = 0;
    return true;
  }
}

void kiTextFile::Rewind() {
  if (!m_file.IsOpened()) return;
  m_file.Seek(0, 0);
  m_held = 0;
  m_crPending = false;
  m_truncatedLine = false;
}
