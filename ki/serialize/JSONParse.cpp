// JSONParse.cpp - kiJSONFormatter::Parse: one pass over a JSON text that
// replays it as events into a sink, with a fixed stack of twenty levels.
#include <climits>
#include <cstring>

#include "ki/proc/kiMem.h"
#include "ki/proc/kiStr.h"
#include "ki/serialize/JSONFormatter.h"

namespace {

constexpr int kLevels = 20;  // the top-level value is level 0

// White space of the "C" locale: 9 to 13 and space; nothing from 0x80 up.
inline bool IsSpace(unsigned char c) { return c == ' ' || (c >= 9 && c <= 13); }
inline bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }
// The bytes a number is collected from. 'E' is not one of them (intended:
// "1E5" ends at the 'E').
inline bool IsNumberByte(unsigned char c) {
  return IsDigit(c) || c == '.' || c == '+' || c == '-' || c == 'e';
}

// The collected text of the current string, key or number: a stack buffer that
// moves to the heap when a token outgrows it. Always zero-terminated.
class Token {
 public:
  Token() : m_data(m_local), m_length(0), m_capacity(sizeof m_local - 1) { m_local[0] = 0; }
  ~Token() {
    if (m_data != m_local) kiMem_Free(m_data);
  }
  Token(const Token&) = delete;
  Token& operator=(const Token&) = delete;

  void Clear() { m_length = 0; }
  void Append(const char* text, size_t n) {
    if (n > m_capacity - m_length) Grow(n);
    std::memcpy(m_data + m_length, text, n);
    m_length += n;
  }
  void Append(char c) {
    if (m_length == m_capacity) Grow(1);
    m_data[m_length++] = c;
  }
  const char* Text() {
    m_data[m_length] = 0;
    return m_data;
  }

 private:
  void Grow(size_t n) {
    size_t want = m_capacity * 2;
    if (want < m_length + n) want = m_length + n;
    // want characters and the terminator; a token no block can hold is fatal.
    if (m_data == m_local) {
      char* block = static_cast<char*>(kiMem_MallocArray(want, sizeof(char), 1));
      std::memcpy(block, m_local, m_length);
      m_data = block;
    } else {
      m_data = static_cast<char*>(kiMem_ReallocArray(m_data, want, sizeof(char), 1));
    }
    m_capacity = want;
  }

  char m_local[256];
  char* m_data;
  size_t m_length;
  size_t m_capacity;
};

// The bytes that stop a run of string text: the terminator, both quotes and
// the backslash.
struct StringStopTable {
  bool stop[256];
  constexpr StringStopTable() : stop() {
    stop[0] = true;
    stop[0x22] = true;
    stop[0x27] = true;
    stop[0x5C] = true;
  }
  constexpr bool operator[](unsigned char c) const { return stop[c]; }
};
constexpr StringStopTable kStringStop;

inline int HexValue(unsigned char c) {
  // Lower-case digits only (intended: an upper-case digit is a bad escape).
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

void AppendUTF8(Token& token, unsigned int v) {
  // Each \u escape is encoded by itself: surrogate pairs are not combined.
  if (v < 0x80) {
    token.Append(static_cast<char>(v));
  } else if (v < 0x800) {
    token.Append(static_cast<char>(0xC0 | (v >> 6)));
    token.Append(static_cast<char>(0x80 | (v & 0x3F)));
  } else {
    token.Append(static_cast<char>(0xE0 | (v >> 12)));
    token.Append(static_cast<char>(0x80 | ((v >> 6) & 0x3F)));
    token.Append(static_cast<char>(0x80 | (v & 0x3F)));
  }
}

// Skips white space and comments. Answers 0 with p at the next byte (the
// terminator when the text ends there), or 1 for a comment the text ends in,
// or 13 for a '/' that starts no comment.
int SkipSpaceSlow(const unsigned char*& p) {
  for (;;) {
    while (IsSpace(*p)) ++p;
    if (*p != '/') return 0;
    if (p[1] == '*') {
      // Ends at a '*' followed by '/'; after a '*' any other byte, a second
      // '*' too, goes back to the comment, so "**/" does not close it
      // (intended).
      p += 2;
      for (;;) {
        while (*p != 0 && *p != '*') ++p;
        if (*p == 0) return kiJSON_Truncated;
        ++p;
        if (*p == '/') break;
        if (*p == 0) return kiJSON_Truncated;
        ++p;  // the byte after the star is never the start of a closing "*/"
      }
      ++p;
    } else if (p[1] == '/') {
      p += 2;
      while (*p != 0 && *p != '\n') ++p;
      // A line comment still open at the end of the text is unterminated.
      if (*p == 0) return kiJSON_Truncated;
      ++p;
    } else {
      return p[1] == 0 ? kiJSON_Truncated : kiJSON_BadComment;
    }
  }
}

inline int SkipSpace(const unsigned char*& p) {
  if (!IsSpace(*p) && *p != '/') return 0;  // the common case: a token starts here
  return SkipSpaceSlow(p);
}

// Reads a quoted string from p (at the quote) into token; p ends after the
// closing quote. Answers 0, 1 (the text ended) or 12 (a bad escape).
int ReadString(const unsigned char*& p, Token& token) {
  const unsigned char quote = *p++;
  token.Clear();
  for (;;) {
    const unsigned char* run = p;
    // Four bytes a step while none is a quote, a backslash or the terminator;
    // the terminator stops the step, so no byte after it is read.
    for (;;) {
      while (!kStringStop[p[0]] && !kStringStop[p[1]] && !kStringStop[p[2]] && !kStringStop[p[3]]) {
        p += 4;
      }
      while (!kStringStop[*p]) ++p;
      if (*p == quote || *p == '\\' || *p == 0) break;
      ++p;  // the other quote character is text
    }
    if (p != run) token.Append(reinterpret_cast<const char*>(run), static_cast<size_t>(p - run));
    if (*p == 0) return kiJSON_Truncated;
    if (*p == quote) {
      ++p;
      return 0;
    }
    const unsigned char e = *++p;
    switch (e) {
      case '"':
      case '/':
      case '\\':
        token.Append(static_cast<char>(e));
        break;
      case 'b':
        token.Append('\b');
        break;
      case 'n':
        token.Append('\n');
        break;
      case 'r':
        token.Append('\r');
        break;
      case 't':
        token.Append('\t');
        break;
      case 'u': {
        unsigned int v = 0;
        for (int i = 1; i <= 4; ++i) {
          if (p[i] == 0) return kiJSON_Truncated;
          const int digit = HexValue(p[i]);
          if (digit < 0) return kiJSON_BadEscape;
          v = v * 16 + static_cast<unsigned int>(digit);
        }
        AppendUTF8(token, v);
        p += 4;
        break;
      }
      case 0:
        return kiJSON_Truncated;
      default:
        // \f and \' too (intended: the writer's \f is not read back).
        return kiJSON_BadEscape;
    }
    ++p;
  }
}

// "%d" of the collected text: an optional sign and decimal digits; the value
// is read as a 64-bit long, saturated, then cut to 32 bits, which is what the
// C library's conversion gives for texts out of range. False when no digit.
bool ReadInt(const char* text, int* value) {
  // The magnitude is kept while it is at most 2^63, the largest one a sign
  // can still bring in range: magnitude * 10 + digit <= 2^63 exactly when
  // magnitude < kCut, or magnitude == kCut and digit <= kCutDigit.
  constexpr unsigned long long kLimit = static_cast<unsigned long long>(LLONG_MAX) + 1;
  constexpr unsigned long long kCut = kLimit / 10;
  constexpr unsigned int kCutDigit = static_cast<unsigned int>(kLimit % 10);
  const char* p = text;
  const bool negative = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  if (!IsDigit(static_cast<unsigned char>(*p))) return false;
  unsigned long long magnitude = 0;
  bool overflow = false;
  for (; IsDigit(static_cast<unsigned char>(*p)); ++p) {
    const unsigned int digit = static_cast<unsigned int>(*p - '0');
    if (magnitude >= kCut && (magnitude > kCut || digit > kCutDigit)) {
      overflow = true;  // saturated whatever digits follow
      break;
    }
    magnitude = magnitude * 10 + digit;
  }
  // Without overflow the magnitude is at most kLimit, which only a '-' keeps.
  long long wide;
  if (negative) {
    wide = overflow || magnitude == kLimit ? LLONG_MIN : -static_cast<long long>(magnitude);
  } else {
    wide = overflow || magnitude == kLimit ? LLONG_MAX : static_cast<long long>(magnitude);
  }
  *value = static_cast<int>(static_cast<unsigned int>(static_cast<unsigned long long>(wide)));
  return true;
}

// Reads the number at p (its first byte is '-' or a digit) and reports it.
// Answers 0, 1 (the number is the last thing in the text) or 7.
// Exact powers of ten: every one up to 1e22 is a double without rounding.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The common short decimal, -?digits[.digits] with at most 15 significant
// digits and no exponent, read exactly: both the digits and the power of ten
// are exact doubles, so one division rounds correctly, as the full reader
// would. False when the text needs the full reader.
bool ReadSimpleDecimal(const unsigned char* p, double* value) {
  const bool negative = *p == '-';
  if (negative) ++p;
  unsigned long long digits = 0;
  int count = 0;
  int fraction = 0;
  const unsigned char* first = p;
  for (; IsDigit(*p); ++p, ++count) digits = digits * 10 + (*p - '0');
  if (*p == '.') {
    for (++p; IsDigit(*p); ++p, ++count, ++fraction) digits = digits * 10 + (*p - '0');
  }
  if (count == 0 || count > 15 || *p == 'e' || p == first) return false;
  const double v = static_cast<double>(digits) / kPowersOfTen[fraction];
  *value = negative ? -v : v;
  return true;
}

int ReadNumber(const unsigned char*& p, Token& token, kiISerialize& sink) {
  const unsigned char* start = p;
  bool isFloat = false;
  for (; IsNumberByte(*p); ++p) isFloat = isFloat || *p == '.' || *p == 'e';
  // The number is reported only when the byte after it arrives.
  if (*p == 0) return kiJSON_Truncated;
  if (isFloat) {
    // "%lf" reads the longest number prefix; what follows it is ignored.
    double value = 0;
    if (!ReadSimpleDecimal(start, &value)) {
      // The full reader works on the collected text alone: an 'E' after it
      // must not count as an exponent.
      token.Clear();
      token.Append(reinterpret_cast<const char*>(start), static_cast<size_t>(p - start));
      if (kiStr_ParseDouble(token.Text(), &value) == kiStr_NoNumber) return kiJSON_BadNumber;
    }
    sink.Float(value);
  } else {
    // Reading stops at the first byte that is not a digit, inside the number
    // or right after it, so the text is read in place.
    int value = 0;
    if (!ReadInt(reinterpret_cast<const char*>(start), &value)) return kiJSON_BadNumber;
    sink.S32(value);
  }
  return 0;
}

// Matches a literal case-insensitively from p (at its first letter). Answers
// 0 with p after it, 1 when the text ends in it or right after it (a literal
// is reported only when the next byte arrives), or error.
int ReadLiteral(const unsigned char*& p, const char* word, int error) {
  for (const char* w = word; *w != 0; ++w, ++p) {
    if (*p == 0) return kiJSON_Truncated;
    const unsigned char c = *p;
    const unsigned char folded = c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + 32) : c;
    if (folded != static_cast<unsigned char>(*w)) return error;
  }
  // Whatever follows is the next token, separator or not (intended).
  return *p == 0 ? kiJSON_Truncated : 0;
}

enum State { kValue, kAfterValue, kArrayStart, kMapFirstKey, kMapKey };

int ParseText(const unsigned char* p, kiISerialize& sink) {
  Token token;
  bool isMap[kLevels + 1];
  int depth = 0;  // open containers; the level of the next value
  State state = kValue;
  for (;;) {
    int rc = SkipSpace(p);
    if (state == kAfterValue && depth == 0) {
      // After the top-level value only a broken comment is still an error;
      // the rest of the text is ignored.
      return rc;
    }
    if (rc != 0) return rc;
    if (*p == 0) return kiJSON_Truncated;
    switch (state) {
      case kValue:
        switch (*p) {
          case '"':
          case '\'':
            rc = ReadString(p, token);
            if (rc != 0) return rc;
            sink.String(token.Text(), false);
            break;
          case '[':
            ++p;
            sink.ArrayBegin();
            isMap[depth++] = false;
            state = kArrayStart;
            continue;
          case '{':
            ++p;
            sink.MapBegin();
            isMap[depth++] = true;
            state = kMapFirstKey;
            continue;
          case 't':
          case 'T':
            rc = ReadLiteral(p, "true", kiJSON_BadBoolean);
            if (rc != 0) return rc;
            sink.Boolean(true);
            break;
          case 'f':
          case 'F':
            rc = ReadLiteral(p, "false", kiJSON_BadBoolean);
            if (rc != 0) return rc;
            sink.Boolean(false);
            break;
          case 'n':
          case 'N':
            rc = ReadLiteral(p, "null", kiJSON_BadNull);
            if (rc != 0) return rc;
            sink.Null();
            break;
          default:
            if (*p != '-' && !IsDigit(*p)) return kiJSON_BadValue;  // '+' too
            rc = ReadNumber(p, token, sink);
            if (rc != 0) return rc;
            break;
        }
        state = kAfterValue;
        break;

      case kAfterValue:
        if (isMap[depth - 1]) {
          if (*p == ',') {
            state = kMapKey;
          } else if (*p == '}') {
            sink.MapEnd();
            --depth;
          } else {
            return kiJSON_BadMap;
          }
        } else {
          if (*p == ',') {
            state = kArrayStart;  // so a comma right before ']' is accepted
          } else if (*p == ']') {
            sink.ArrayEnd();
            --depth;
          } else {
            return kiJSON_BadArray;
          }
        }
        ++p;
        break;

      case kArrayStart:
        if (*p == ']') {
          ++p;
          sink.ArrayEnd();
          --depth;
          state = kAfterValue;
        } else {
          if (depth >= kLevels) return kiJSON_TooDeep;
          state = kValue;
        }
        break;

      case kMapFirstKey:
        // "{,}" is what the writer makes of an empty map: a comma right after
        // the brace is read when the closing brace follows it.
        if (*p == ',') {
          ++p;
          rc = SkipSpace(p);
          if (rc != 0) return rc;
          if (*p == 0) return kiJSON_Truncated;
          if (*p != '}') return kiJSON_BadKey;
        }
        state = kMapKey;
        continue;

      case kMapKey:
        if (*p == '}') {
          ++p;
          sink.MapEnd();
          --depth;
          state = kAfterValue;
          break;
        }
        if (*p != '"' && *p != '\'') return kiJSON_BadKey;
        rc = ReadString(p, token);
        if (rc != 0) return rc;
        sink.MapKey(token.Text(), true);
        rc = SkipSpace(p);
        if (rc != 0) return rc;
        if (*p == 0) return kiJSON_Truncated;
        if (*p != ':') return kiJSON_MissingColon;
        ++p;
        if (depth >= kLevels) return kiJSON_TooDeep;
        state = kValue;
        break;
    }
  }
}

}  // namespace

int kiJSONFormatter::Parse(const char* text, kiISerialize& sink) {
  if (text == nullptr) return kiJSON_Truncated;
  return ParseText(reinterpret_cast<const unsigned char*>(text), sink);
}

int kiJSONFormatter::Parse(const char* text, kiISerialize& sink, int& unused1, int& unused2) {
  (void)unused1;
  (void)unused2;
  return Parse(text, sink);
}
