// Error.h - kiError, the result of fallible operations: a signed code (0 is
// success), a message, and an owned chain of the errors that caused it.
#ifndef KI_CORE_ERROR_H
#define KI_CORE_ERROR_H

#include "ki/Export.h"
#include "ki/core/CString.h"

// Returned by value. Test it against 0 (`if (err != 0)`) or read
// GetErrorCode(); the code's meaning belongs to the operation that produced it
// (system error numbers where there are some, -1 otherwise).
//
// ConvertTo wraps an error in a new one: the old error, with its own chain,
// becomes the cause, so a chain reads newest first. Chains of any length are
// copied, rendered and destroyed without recursion.
class KI_API kiError {
 public:
  // The record kiError is made of (a kiError holds exactly one), and each link
  // of the cause chain (a heap record owned by the link before it).
  struct KI_API kiErrorInfo {
    int code;             // 0 for success
    kiCString message;    // may be empty
    const char* context;  // static label, never null; empty unless set by the library
    kiErrorInfo* cause;   // owned; null ends the chain

    kiErrorInfo() : code(0), context(""), cause(nullptr) {}
    kiErrorInfo(int errorCode, const char* text)  // null text: empty message
        : code(errorCode), message(text), context(""), cause(nullptr) {}
    // Shares the message block and copies the whole chain, a new record a link.
    kiErrorInfo(const kiErrorInfo& other);
    // Copies code, message and context. When other has a cause, a copy of its
    // chain replaces this record's; when it has none, this record keeps its
    // own chain (intended: assigning a plain error does not clear the causes).
    kiErrorInfo& operator=(const kiErrorInfo& other);
    ~kiErrorInfo();  // the chain goes first, then the record

    // See kiError::ToString.
    kiCString ToString() const;
  };

  kiError() = default;  // code 0, empty message, no cause
  kiError(int code, const char* message) : m_info(code, message) {}  // null: empty message
  kiError(const kiError& other) = default;                           // deep copy of the chain
  // Asymmetric on purpose, see kiErrorInfo::operator=.
  kiError& operator=(const kiError& other) = default;
  // Sets the code and empties the message; the chain is kept.
  kiError& operator=(int code);
  // Sets the message only (null: empty); the code is kept.
  kiError& operator=(const char* message);

  bool operator==(long code) const { return m_info.code == code; }
  bool operator!=(long code) const { return m_info.code != code; }

  int GetErrorCode() const { return m_info.code; }
  const kiCString& GetErrorStr() const { return m_info.message; }
  // The first cause, or null. The chain stays owned by this error.
  const kiErrorInfo* GetCause() const { return m_info.cause; }

  // This error, with its chain, becomes the cause (replacing the previous
  // chain), and this error takes code and message (null: empty). A success
  // value is pushed like any other and renders as nothing.
  void ConvertTo(int code, const char* message);

  // "" when the code is 0, else the code ("%ld"), then ": " and the message
  // when there is one. Causes are not included.
  kiCString ToShortString() const;
  // "" when the code is 0. Otherwise " (error: <code>[ [<context>]][ '<message>'])"
  // followed by the cause's ToString, so code 5 "x" caused by code 3 reads
  // " (error: 5 'x') (error: 3)". A cause with code 0 ends the text.
  kiCString ToString() const { return m_info.ToString(); }

 private:
  kiErrorInfo m_info;
};

#endif  // KI_CORE_ERROR_H
