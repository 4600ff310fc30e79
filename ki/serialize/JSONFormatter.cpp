// JSONFormatter.cpp - the JSON writer (the text sink) and the JSON reader that
// replays a text as events.
#include "ki/serialize/JSONFormatter.h"

#include <charconv>
#include <cstring>

#include "ki/core/Convert.h"

namespace {

// ---- Writing ------------------------------------------------------------------

const char kFourSpaces[] = "    ";
constexpr unsigned int kNumberRoom = 352;  // "%lf" of -DBL_MAX: 309 digits, '.', 6 digits
const char kHexDigits[] = "0123456789abcdef";

// For every byte, the character written after a backslash, 'u' for \u00xx, or
// 0 when the byte passes unchanged. The zero byte is marked so that scans stop
// at the terminator without a second test.
struct EscapeTable {
  char code[256];
  constexpr explicit EscapeTable(bool strict) : code() {
    for (int c = 0; c < 0x20; ++c) code[c] = 'u';
    code[0x08] = 'b';
    code[0x09] = 't';
    code[0x0A] = 'n';
    code[0x0C] = 'f';
    code[0x0D] = 'r';
    code[0x22] = '"';
    code[0x5C] = '\\';
    if (strict) code[0x2F] = '/';
  }
};

constexpr EscapeTable kStrictEscapes(true);
constexpr EscapeTable kLooseEscapes(false);

// Grows text geometrically before an append of n bytes, so that writing a
// document costs amortised constant time per byte.
inline void MakeRoomFor(kiCString& text, unsigned int n) {
  const unsigned int length = text.length();
  const unsigned int capacity = text.capacity();
  if (n <= capacity - length) return;
  unsigned int want = capacity < 0x40000000u ? capacity * 2 : capacity;
  if (want < length + n) want = length + n;
  if (want < 256) want = 256;
  text.Reserve(want);
}

inline void Put(kiCString& text, const char* s, unsigned int n) {
  MakeRoomFor(text, n);
  text.Append(s, n);
}

inline void Put(kiCString& text, char c) {
  MakeRoomFor(text, 1);
  text += c;
}

// The escaped form of in appended to out; true when a byte was escaped. Runs
// that need no escape are copied in one piece.
bool EscapeInto(const char* in, kiCString& out, bool strict) {
  if (in == nullptr) return false;
  const char* table = strict ? kStrictEscapes.code : kLooseEscapes.code;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(in);
  bool escaped = false;
  for (;;) {
    const unsigned char* run = p;
    // Four bytes a step while none needs a look; the terminator is marked in
    // the table, so no byte after it is read.
    while (table[p[0]] == 0 && table[p[1]] == 0 && table[p[2]] == 0 && table[p[3]] == 0) p += 4;
    while (table[*p] == 0) ++p;
    if (p != run) Put(out, reinterpret_cast<const char*>(run), static_cast<unsigned int>(p - run));
    if (*p == 0) return escaped;
    const char code = table[*p];
    if (code == 'u') {
      const char unicode[6] = {'\\', 'u', '0', '0', kHexDigits[*p >> 4], kHexDigits[*p & 15]};
      Put(out, unicode, 6);
    } else {
      const char pair[2] = {'\\', code};
      Put(out, pair, 2);
    }
    escaped = true;
    ++p;
  }
}

}  // namespace

kiJSONFormatter::kiJSONFormatter()
    : m_cleared(false), m_strict(true), m_human(false), m_depth(0), m_indent(kFourSpaces),
      m_firstKey(false) {
  Reset();
}

kiJSONFormatter::kiJSONFormatter(const kiJSONFormatter& other)
    : kiISerialize(other),
      m_text(other.m_text),
      m_scratch(other.m_scratch),
      m_cleared(other.m_cleared),
      m_strict(other.m_strict),
      m_human(other.m_human),
      m_depth(other.m_depth),
      m_indent(other.m_indent),
      m_firstKey(other.m_firstKey) {}

kiJSONFormatter& kiJSONFormatter::operator=(const kiJSONFormatter& other) {
  if (this == &other) return *this;
  m_text = other.m_text;
  m_scratch = other.m_scratch;
  m_cleared = other.m_cleared;
  m_strict = other.m_strict;
  m_human = other.m_human;
  m_depth = other.m_depth;
  m_indent = other.m_indent;
  m_firstKey = other.m_firstKey;
  return *this;
}

kiJSONFormatter::~kiJSONFormatter() = default;

void kiJSONFormatter::Reset() {
  m_text.Empty();
  m_depth = 0;
  m_cleared = false;
  m_firstKey = false;
}

void kiJSONFormatter::SetHumanMode(bool on, const char* indent) {
  m_human = on;
  m_indent = indent != nullptr ? indent : kFourSpaces;
}

void kiJSONFormatter::NewLine() {
  if (!m_human) return;
  Put(m_text, '\n');
  // A negative depth (MapEnd without MapBegin) writes no indentation.
  for (int i = 0; i < m_depth; ++i) Put(m_text, m_indent.c_str(), m_indent.length());
}

bool kiJSONFormatter::Escape(const char* in, kiCString& out) { return EscapeInto(in, out, m_strict); }

int kiJSONFormatter::MapBegin() {
  // The line break comes before the brace, at the outer depth (intended: a
  // top-level map in human mode starts with a line feed).
  NewLine();
  ++m_depth;
  Put(m_text, '{');
  m_firstKey = true;
  return 0;
}

int kiJSONFormatter::MapKey(const char* key, bool raw) {
  if (m_firstKey) {
    m_firstKey = false;
  } else {
    Put(m_text, ',');
  }
  NewLine();
  ClearScratch();
  Escape(key, m_scratch);
  if (!raw) Put(m_text, '"');
  Put(m_text, m_scratch.c_str(), m_scratch.length());
  if (!raw) Put(m_text, '"');
  if (m_human) {
    Put(m_text, ": ", 2);
  } else {
    Put(m_text, ':');
  }
  return 0;
}

int kiJSONFormatter::MapEnd() {
  // A comma before every closing brace, even in an empty map: kept for
  // compatibility with the readers of these texts ({"a":1,} and {,}).
  Put(m_text, ',');
  --m_depth;
  NewLine();
  Put(m_text, '}');
  m_firstKey = false;
  return 0;
}

// Arrays never break lines and do not count as depth (intended).
int kiJSONFormatter::ArrayBegin() {
  Put(m_text, '[');
  return 0;
}

int kiJSONFormatter::ArrayItemSeparator() {
  if (m_human) {
    Put(m_text, ", ", 2);
  } else {
    Put(m_text, ',');
  }
  return 0;
}

int kiJSONFormatter::ArrayEnd() {
  Put(m_text, ']');
  return 0;
}

int kiJSONFormatter::String(const kiWChar* text, bool raw) {
  const kiCharBuffer utf8 = kiConvUTF8.ToUTF8(text);
  return String(utf8.data(), raw);  // through the virtual table: a derived sink sees it
}

int kiJSONFormatter::String(const char* text, bool raw) {
  if (!raw) Put(m_text, '"');
  Escape(text, m_text);
  if (!raw) Put(m_text, '"');
  return 0;
}

int kiJSONFormatter::Boolean(bool value) {
  if (value) {
    Put(m_text, "true", 4);
  } else {
    Put(m_text, "false", 5);
  }
  return 0;
}

int kiJSONFormatter::Null() {
  Put(m_text, "null", 4);
  return 0;
}

// Numbers are formatted into the scratch string and then appended. to_chars
// gives exactly the text of "%lu" "%ld" "%llu" "%lld" and "%lf" in the "C"
// locale, whatever the process locale is.
namespace {

template <typename T>
char* FormatNumber(char* out, T value) {
  return std::to_chars(out, out + kNumberRoom, value).ptr;
}

char* FormatFixed(char* out, double value) {
  return std::to_chars(out, out + kNumberRoom, value, std::chars_format::fixed, 6).ptr;
}
}  // namespace

// Empties the scratch string but keeps its block: Empty() would give the
// block back and every key and number would allocate a new one.
void kiJSONFormatter::ClearScratch() {
  m_scratch.GetWriteBuf(kNumberRoom);
  m_scratch.UngetWriteBuf(0);
}

void kiJSONFormatter::AppendScratch(char* end) {
  *end = '\0';
  m_scratch.UngetWriteBuf(static_cast<unsigned int>(end - m_scratch.c_str()));
  Put(m_text, m_scratch.c_str(), m_scratch.length());
}

int kiJSONFormatter::U32(unsigned int value) {
  AppendScratch(FormatNumber(m_scratch.GetWriteBuf(kNumberRoom), value));
  return 0;
}

int kiJSONFormatter::S32(int value) {
  AppendScratch(FormatNumber(m_scratch.GetWriteBuf(kNumberRoom), value));
  return 0;
}

int kiJSONFormatter::U64(unsigned long long value) {
  AppendScratch(FormatNumber(m_scratch.GetWriteBuf(kNumberRoom), value));
  return 0;
}

int kiJSONFormatter::S64(long long value) {
  AppendScratch(FormatNumber(m_scratch.GetWriteBuf(kNumberRoom), value));
  return 0;
}

int kiJSONFormatter::Float(double value) {
  AppendScratch(FormatFixed(m_scratch.GetWriteBuf(kNumberRoom), value));
  return 0;
}
