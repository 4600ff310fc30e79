// Error.cpp - kiError and its cause chain. Every walk along the chain is a
// loop, so a chain of any length costs no stack.
#include "ki/core/Error.h"

#include <cstdio>

#include "ki/core/DataBuffer.h"

namespace {

using kiErrorInfo = kiError::kiErrorInfo;

// A new record holding code, message (shared block) and context of source, and
// no cause.
kiErrorInfo* CopyLink(const kiErrorInfo& source) {
  kiErrorInfo* link = new kiErrorInfo();
  link->code = source.code;
  kiCString shared(source.message);
  link->message.Swap(shared);
  link->context = source.context;
  return link;
}

// A copy of the chain that starts at first, one new record a link.
kiErrorInfo* CopyChain(const kiErrorInfo* first) {
  kiErrorInfo* head = nullptr;
  kiErrorInfo** tail = &head;
  for (const kiErrorInfo* link = first; link != nullptr; link = link->cause) {
    *tail = CopyLink(*link);
    tail = &(*tail)->cause;
  }
  return head;
}

// Deletes the chain that starts at first, last link first: each record goes
// after its cause, as a recursive destructor would order it, without the
// recursion.
void DeleteChain(kiErrorInfo* first) {
  kiErrorInfo* reversed = nullptr;
  while (first != nullptr) {
    kiErrorInfo* next = first->cause;
    first->cause = reversed;
    reversed = first;
    first = next;
  }
  while (reversed != nullptr) {
    kiErrorInfo* next = reversed->cause;
    reversed->cause = nullptr;
    delete reversed;
    reversed = next;
  }
}

// The code in decimal ("%d" has no locale-dependent form).
const char* FormatCode(char (&digits)[16], int code) {
  std::snprintf(digits, sizeof digits, "%d", code);
  return digits;
}

}  // namespace

kiErrorInfo::kiErrorInfo(const kiErrorInfo& other)
    : code(other.code),
      message(other.message),
      context(other.context),
      cause(CopyChain(other.cause)) {}

kiErrorInfo& kiErrorInfo::operator=(const kiErrorInfo& other) {
  if (this == &other) return *this;
  // The copy is made before the old chain goes, since other may be a link of it.
  kiErrorInfo* newCause = other.cause != nullptr ? CopyChain(other.cause) : nullptr;
  code = other.code;
  message = other.message;
  context = other.context;
  if (newCause != nullptr) {
    DeleteChain(cause);
    cause = newCause;
  }
  // Otherwise the chain stays (intended, see the header).
  return *this;
}

kiErrorInfo::~kiErrorInfo() { DeleteChain(cause); }

kiCString kiErrorInfo::ToString() const {
  // Gathered in a doubling buffer, then copied once: appending to a string
  // link by link would reallocate at every step of a long chain.
  kiGrowingBuffer text;
  char digits[16];
  for (const kiErrorInfo* link = this; link != nullptr && link->code != 0; link = link->cause) {
    // " (error: %ld%s)", the %s being " [context]" and " 'message'" when present;
    // built by appending so that a message with a zero byte is kept whole.
    text += " (error: ";
    text += FormatCode(digits, link->code);
    if (link->context != nullptr && link->context[0] != '\0') {
      text += " [";
      text += link->context;
      text += "]";
    }
    if (!link->message.IsEmpty()) {
      text += " '";
      text.Append(link->message.c_str(), link->message.length());
      text += "'";
    }
    text += ")";
  }
  return kiCString(reinterpret_cast<const char*>(text.buffer()), text.length());
}

kiError& kiError::operator=(int code) {
  m_info.code = code;
  m_info.message.Empty();
  return *this;
}

kiError& kiError::operator=(const char* message) {
  m_info.message = message;
  return *this;
}

void kiError::ConvertTo(int code, const char* message) {
  // The chain moves into the wrapped copy rather than being copied and freed:
  // the result is the same.
  kiErrorInfo* wrapped = CopyLink(m_info);
  wrapped->cause = m_info.cause;
  m_info.cause = wrapped;
  m_info.code = code;
  m_info.message = message;
}

kiCString kiError::ToShortString() const {
  kiCString text;
  if (m_info.code == 0) return text;
  char digits[16];
  text = FormatCode(digits, m_info.code);
  if (!m_info.message.IsEmpty()) {
    text += ": ";
    text += m_info.message;
  }
  return text;
}
