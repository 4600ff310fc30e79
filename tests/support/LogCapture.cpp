// LogCapture.cpp - kiTest::LogCapture: the capture hook that collects records.
#include "support/LogCapture.h"

#include <utility>

namespace kiTest {

LogCapture::LogCapture(unsigned short level)
    : m_previousHook(nullptr),
      m_previousContext(nullptr),
      m_previousLevel(_kiLog_Level.load(std::memory_order_relaxed)) {
  m_previousHook = kiLog_SetCaptureHook(&LogCapture::Hook, this, &m_previousContext);
  kiLog_SetLevel(level);
}

LogCapture::~LogCapture() {
  kiLog_SetLevel(m_previousLevel);
  kiLog_SetCaptureHook(m_previousHook, m_previousContext, nullptr);
}

int LogCapture::Hook(void* context, const kiLog_Entry* entry) {
  LogCapture* self = static_cast<LogCapture*>(context);
  LogRecord record{entry->level, entry->category,
                   entry->source != nullptr ? entry->source : std::string(), entry->line,
                   entry->text != nullptr ? entry->text : std::string()};
  std::lock_guard<std::mutex> lock(self->m_mutex);
  self->m_records.push_back(std::move(record));
  return 1;
}

std::vector<LogRecord> LogCapture::Records() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_records;
}

std::vector<std::string> LogCapture::Texts() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<std::string> texts;
  texts.reserve(m_records.size());
  for (const LogRecord& r : m_records) texts.push_back(r.text);
  return texts;
}

std::size_t LogCapture::Count() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_records.size();
}

void LogCapture::Clear() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_records.clear();
}

}  // namespace kiTest
