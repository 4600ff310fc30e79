// RelExpressionMatch.cpp - the matching primitives of kiRelExpression: the
// classification of the criterion's value and the operator rules per type.
// Once the value is classified nothing here allocates: the comparisons fold
// ASCII case byte by byte and read numbers and dates in place.
#include <cstring>

#include "ki/proc/kiDateText.h"
#include "ki/proc/kiStr.h"
#include "ki/search/Like_p.h"
#include "ki/search/SearchExpression.h"

namespace {

// ASCII folding only, whatever the process locale.
unsigned char Fold(char c) {
  const unsigned char u = static_cast<unsigned char>(c);
  return u >= 'A' && u <= 'Z' ? static_cast<unsigned char>(u + ('a' - 'A')) : u;
}

bool EqualsIgnoringCase(const char* a, const char* b) {
  for (; *a != 0 && *b != 0; ++a, ++b) {
    if (Fold(*a) != Fold(*b)) return false;
  }
  return *a == *b;
}

// Whether needle occurs in haystack, ASCII case folded; an empty needle
// occurs everywhere.
bool ContainsIgnoringCase(const char* haystack, const char* needle) {
  if (*needle == 0) return true;
  const unsigned char first = Fold(*needle);
  for (; *haystack != 0; ++haystack) {
    if (Fold(*haystack) != first) continue;
    const char* h = haystack + 1;
    const char* n = needle + 1;
    while (*n != 0 && *h != 0 && Fold(*h) == Fold(*n)) {
      ++h;
      ++n;
    }
    if (*n == 0) return true;
    if (*h == 0) return false;  // the rest of the text is shorter than the needle
  }
  return false;
}

// prefixLength is the prefix's known length, so no strlen per candidate.
bool BeginsWith(const char* text, const char* prefix, unsigned int prefixLength) {
  return std::strncmp(text, prefix, prefixLength) == 0;
}

// The six ordering operators over any ordered type; others give false.
template <typename T>
bool Compare(int op, const T& candidate, const T& value) {
  switch (op) {
    case kiSearchOp_Equal:
      return candidate == value;
    case kiSearchOp_NotEqual:
      return candidate != value;
    case kiSearchOp_LessOrEqual:
      return candidate <= value;
    case kiSearchOp_GreaterOrEqual:
      return candidate >= value;
    case kiSearchOp_Greater:
      return candidate > value;
    case kiSearchOp_Less:
      return candidate < value;
    default:
      return false;
  }
}

}  // namespace

void kiRelExpression::Classify() {
  if (m_operatorID == kiSearchOp_Exists) {
    m_valueType = kiSearchValue_String;
  } else if (m_value.ToInt32(&m_integer)) {
    m_valueType = kiSearchValue_Integer;
  } else if (m_value.ToDouble(&m_double)) {
    m_valueType = kiSearchValue_Float;
  } else if (ConvertToDateTime(m_value.c_str(), m_date)) {
    m_valueType = kiSearchValue_Date;
  } else {
    m_valueType = kiSearchValue_String;
  }
}

int kiRelExpression::GetValueType() {
  if (m_valueType == kiSearchValue_Unknown) Classify();
  return m_valueType;
}

// Intended: the value of exists is classified as a string, so exists is
// answered only through MatchString; the other primitives refuse it here.
bool kiRelExpression::ValidateValue(int type, const char* text) {
  if (GetValueType() != type && type != kiSearchValue_String) return false;
  if (m_operatorID != kiSearchOp_Exists) return true;
  const bool present = text != nullptr && *text != 0;
  // Anything but exactly "true" (normally "false") asks for absence.
  return std::strcmp(m_value.c_str(), "true") == 0 ? present : !present;
}

bool kiRelExpression::ConvertToDateTime(const char* text, kiDateTime& out) {
  int f[kiDateText_FieldCount];
  if (kiDateText_Parse(text, f) != 0) {
    out = kiDateTime();
    return false;
  }
  // The zone fields were checked by the reader and are not applied (intended).
  out.Set(static_cast<unsigned short>(f[kiDateText_Day]),
          static_cast<kiDateTime::Month>(f[kiDateText_Month] - 1), f[kiDateText_Year],
          static_cast<unsigned short>(f[kiDateText_Hour]),
          static_cast<unsigned short>(f[kiDateText_Minute]),
          static_cast<unsigned short>(f[kiDateText_Second]),
          static_cast<unsigned short>(f[kiDateText_Millisecond]));
  return out.IsValid();
}

bool kiRelExpression::MatchString(const char* text) {
  if (!ValidateValue(kiSearchValue_String, text)) return false;
  const char* s = text != nullptr ? text : "";
  const char* v = m_value.c_str();
  switch (m_operatorID) {
    case kiSearchOp_Exists:
      return true;
    case kiSearchOp_Equal:
      return EqualsIgnoringCase(s, v);
    case kiSearchOp_NotEqual:
      return !EqualsIgnoringCase(s, v);
    case kiSearchOp_Contains:
      return ContainsIgnoringCase(s, v);
    case kiSearchOp_DoesNotContain:
      return !ContainsIgnoringCase(s, v);
    case kiSearchOp_DerivedFrom:
      return BeginsWith(s, v, m_value.length());
    case kiSearchOp_Like:
      return kiSearch_Like(v, s);
    default:  // the ordering operators never hold for strings (intended)
      return false;
  }
}

bool kiRelExpression::MatchInt(const kiCString& text) {
  if (!ValidateValue(kiSearchValue_Integer, text.c_str())) return false;
  if (m_operatorID == kiSearchOp_Exists) return true;
  int candidate = 0;
  if (kiStr_ParseInt32Base(text.c_str(), 10, &candidate) != 0) return false;
  return Compare(m_operatorID, candidate, m_integer);
}

bool kiRelExpression::MatchDouble(const kiCString& text) {
  if (!ValidateValue(kiSearchValue_Float, text.c_str())) return false;
  if (m_operatorID == kiSearchOp_Exists) return true;
  double candidate = 0;
  if (kiStr_ParseDouble(text.c_str(), &candidate) != 0) return false;
  return Compare(m_operatorID, candidate, m_double);
}

bool kiRelExpression::MatchDate(const kiCString& text) {
  if (!ValidateValue(kiSearchValue_Date, text.c_str())) return false;
  if (m_operatorID == kiSearchOp_Exists) return true;
  kiDateTime candidate;
  if (!ConvertToDateTime(text.c_str(), candidate)) return false;
  return Compare(m_operatorID, candidate, m_date);
}

bool kiRelExpression::MatchDate(const kiDateTime& date) {
  if (!ValidateValue(kiSearchValue_Date, date.IsValid() ? "1" : nullptr)) return false;
  if (m_operatorID == kiSearchOp_Exists) return true;
  // An invalid date does not read as a date: no comparison holds, as for a
  // text that does not convert.
  if (!date.IsValid()) return false;
  return Compare(m_operatorID, date, m_date);
}
