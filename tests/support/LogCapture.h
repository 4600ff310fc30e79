// LogCapture.h - kiTest::LogCapture: collects the records the library logs
// while it lives, so that tests can assert the exact messages.
#ifndef KI_TESTS_SUPPORT_LOGCAPTURE_H
#define KI_TESTS_SUPPORT_LOGCAPTURE_H

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include <kiLog/Log.h>

namespace kiTest {

// One captured record; the source is empty when the writer set no tag.
struct LogRecord {
  unsigned level;
  unsigned category;
  std::string source;
  unsigned line;
  std::string text;
};

// Installs the capture hook and sets the threshold for its lifetime; the
// destructor restores the previous hook and threshold. Captured records are
// consumed, so nothing reaches standard error. Records may come from any
// thread. Captures nest: the innermost one sees the records.
class LogCapture {
 public:
  explicit LogCapture(unsigned short level = 2);
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<LogRecord> Records() const;
  std::vector<std::string> Texts() const;
  std::size_t Count() const;
  void Clear();

 private:
  static int Hook(void* context, const kiLog_Entry* entry);

  mutable std::mutex m_mutex;
  std::vector<LogRecord> m_records;  // guarded by m_mutex
  kiLog_CaptureHook m_previousHook;
  void* m_previousContext;
  unsigned short m_previousLevel;
};

}  // namespace kiTest

#endif  // KI_TESTS_SUPPORT_LOGCAPTURE_H
