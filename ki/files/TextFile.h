// TextFile.h - kiTextFile, a buffered reader that hands out the lines of a
// file one at a time.
#ifndef KI_FILES_TEXTFILE_H
#define KI_FILES_TEXTFILE_H

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/core/DataBuffer.h"
#include "ki/files/File.h"

// Opens name read-only and reads it through a buffer of bufferSize bytes
// (at most 2^31 - 1; 0 gives no lines), allocated whole at construction.
// Lines end at LF, CR or CR LF, also when the CR and the LF arrive in two
// fills of the buffer. Lines are raw bytes (zero bytes kept, no character
// conversion). A line longer than the buffer comes back cut to exactly
// bufferSize bytes and the rest of it is skipped; so does a last line
// without an end that is cut by a short read of a pipe or a growing file.
// Not copyable; not locked.
class KI_API kiTextFile {
 public:
  // A file that cannot be opened is logged by kiFile and gives no lines.
  explicit kiTextFile(const char* name, unsigned int bufferSize = 4096);
  ~kiTextFile();  // the buffer goes, then the file is closed
  kiTextFile(const kiTextFile&) = delete;
  kiTextFile& operator=(const kiTextFile&) = delete;

  // The next line, without its end, into line (possibly empty): true. False
  // at the end of the file, on a read error, or when the file is not open;
  // line is then left as it was.
  bool NextLine(kiCString& line);
  // Back to the first line: seek to the start, empty the buffer, clear the
  // pending CR and the cut line. Nothing when the file is not open.
  void Rewind();
  bool IsOpened() const { return m_file.IsOpened(); }

 private:
  void Drop(unsigned int count);  // the first count bytes of the buffer

  kiFile m_file;
  kiDataBuffer m_buffer;
  unsigned int m_capacity;
  unsigned int m_held;   // bytes in the buffer
  bool m_crPending;      // the last end seen was a CR at the end of the bytes held
  bool m_truncatedLine;  // the rest of the line last returned is to be skipped
};

#endif  // KI_FILES_TEXTFILE_H
