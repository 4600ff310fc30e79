// UInt64.h - kiuint64, an unsigned 64-bit value class kept as a kiULongLong
// record of two 32-bit words, and its constants kkiuint64_0 and kkiuint64_Max.
#ifndef KI_CORE_UINT64_H
#define KI_CORE_UINT64_H

#include <type_traits>

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/core/String.h"

// A 64-bit value as two unsigned 32-bit words, the low word first.
struct kiULongLong {
  unsigned int low;
  unsigned int high;
};

// An unsigned 64-bit value. Arithmetic wraps modulo 2^64 like unsigned long
// long. Mixed with an integer of any type (x + 1, x == 0, x < 5u), the integer
// converts as C++ converts it to unsigned long long, so -1 stands for
// kkiuint64_Max. Nothing here can fault:
//   x / 0 gives kkiuint64_Max and x % 0 gives x (x == q * 0 + r);
//   a shift by a count below 0 or above 63 gives 0.
class KI_API kiuint64 {
  // Enables the mixed forms for integer types only.
  template <typename T>
  using Integer = std::enable_if_t<std::is_integral<T>::value>;

 public:
  // ---- Construction ------------------------------------------------------
  constexpr kiuint64() : m_value{0u, 0u} {}
  // Integers as C++ converts them: a negative value wraps (-1 is all ones).
  // long is 64-bit here and converts whole.
  constexpr kiuint64(short v) : kiuint64(static_cast<unsigned long long>(v)) {}           // NOLINT
  constexpr kiuint64(unsigned short v) : kiuint64(static_cast<unsigned long long>(v)) {}  // NOLINT
  constexpr kiuint64(int v) : kiuint64(static_cast<unsigned long long>(v)) {}             // NOLINT
  constexpr kiuint64(unsigned int v) : kiuint64(static_cast<unsigned long long>(v)) {}    // NOLINT
  constexpr kiuint64(long v) : kiuint64(static_cast<unsigned long long>(v)) {}            // NOLINT
  constexpr kiuint64(unsigned long v) : kiuint64(static_cast<unsigned long long>(v)) {}   // NOLINT
  constexpr kiuint64(long long v) : kiuint64(static_cast<unsigned long long>(v)) {}       // NOLINT
  constexpr kiuint64(unsigned long long v)  // NOLINT(google-explicit-constructor)
      : m_value{static_cast<unsigned int>(v), static_cast<unsigned int>(v >> 32)} {}
  // Truncated toward zero; NaN and values below 1 give 0, 2^64 and above
  // (infinity too) give kkiuint64_Max.
  constexpr kiuint64(double v) : kiuint64(FromDouble(v)) {}  // NOLINT
  // From the two words, the high word first.
  constexpr kiuint64(unsigned int high, unsigned int low) : m_value{low, high} {}
  constexpr kiuint64(const kiULongLong& v) : m_value(v) {}  // NOLINT
  // Null gives 0.
  constexpr kiuint64(const kiULongLong* v)  // NOLINT(google-explicit-constructor)
      : m_value(v != nullptr ? *v : kiULongLong{0u, 0u}) {}

  // Assignment from the same kinds as the constructors, with their rules.
  template <typename T, typename = Integer<T>>
  kiuint64& operator=(T v) {
    return *this = kiuint64(static_cast<unsigned long long>(v));
  }
  kiuint64& operator=(double v) { return *this = kiuint64(v); }
  kiuint64& operator=(const kiULongLong& v) { return *this = kiuint64(v); }
  kiuint64& operator=(const kiULongLong* v) { return *this = kiuint64(v); }

  // ---- Conversions -------------------------------------------------------
  constexpr unsigned long long GetValue() const {
    return static_cast<unsigned long long>(m_value.high) << 32 | m_value.low;
  }
  constexpr unsigned int ToUInt32() const { return m_value.low; }  // the low 32 bits
  constexpr kiULongLong ToULongLong() const { return m_value; }
  // The same 64 bits as a signed file offset: values from 2^63 up are negative.
  constexpr long long ToFileOffset() const { return static_cast<long long>(GetValue()); }
  kiCString ToCString() const;  // decimal digits
  kiString ToString() const;

  // The decimal number at the start of text: white space (9-13, space), an
  // optional '+', then digits up to the first non-digit; what follows is
  // ignored. A value past kkiuint64_Max gives kkiuint64_Max. Null text, no
  // digit or a '-' sign give defaultValue. Wide text follows the same rules
  // with ASCII digits only.
  static kiuint64 FromString(const char* text, const kiuint64& defaultValue = kiuint64());
  static kiuint64 FromString(const kiWChar* text, const kiuint64& defaultValue = kiuint64());

  // ---- Arithmetic --------------------------------------------------------
  kiuint64& operator+=(const kiuint64& o) { return *this = GetValue() + o.GetValue(); }
  kiuint64& operator-=(const kiuint64& o) { return *this = GetValue() - o.GetValue(); }
  kiuint64& operator*=(const kiuint64& o) { return *this = GetValue() * o.GetValue(); }
  kiuint64& operator/=(const kiuint64& o) { return *this = ApplyDiv(GetValue(), o.GetValue()); }
  kiuint64& operator%=(const kiuint64& o) { return *this = ApplyMod(GetValue(), o.GetValue()); }
  template <typename T, typename = Integer<T>>
  kiuint64& operator+=(T o) {
    return *this += kiuint64(static_cast<unsigned long long>(o));
  }
  template <typename T, typename = Integer<T>>
  kiuint64& operator-=(T o) {
    return *this -= kiuint64(static_cast<unsigned long long>(o));
  }
  template <typename T, typename = Integer<T>>
  kiuint64& operator*=(T o) {
    return *this *= kiuint64(static_cast<unsigned long long>(o));
  }
  template <typename T, typename = Integer<T>>
  kiuint64& operator/=(T o) {
    return *this /= kiuint64(static_cast<unsigned long long>(o));
  }
  template <typename T, typename = Integer<T>>
  kiuint64& operator%=(T o) {
    return *this %= kiuint64(static_cast<unsigned long long>(o));
  }
  kiuint64& operator<<=(int n) { return *this = Shl(GetValue(), n); }
  kiuint64& operator>>=(int n) { return *this = Shr(GetValue(), n); }

  // The binary forms: kiuint64 with kiuint64, with an integer on either side,
  // or with anything a constructor takes (a double, a record).
#define KI_UINT64_BINARY(op, expr)                                              \
  friend constexpr kiuint64 operator op(const kiuint64& a, const kiuint64& b) { \
    return Apply##expr(a.GetValue(), b.GetValue());                             \
  }                                                                             \
  template <typename T, typename = Integer<T>>                                  \
  friend constexpr kiuint64 operator op(const kiuint64& a, T b) {               \
    return Apply##expr(a.GetValue(), static_cast<unsigned long long>(b));       \
  }                                                                             \
  template <typename T, typename = Integer<T>>                                  \
  friend constexpr kiuint64 operator op(T a, const kiuint64& b) {               \
    return Apply##expr(static_cast<unsigned long long>(a), b.GetValue());       \
  }
  KI_UINT64_BINARY(+, Add)
  KI_UINT64_BINARY(-, Sub)
  KI_UINT64_BINARY(*, Mul)
  KI_UINT64_BINARY(/, Div)
  KI_UINT64_BINARY(%, Mod)
#undef KI_UINT64_BINARY

  friend constexpr kiuint64 operator<<(const kiuint64& a, int n) { return Shl(a.GetValue(), n); }
  friend constexpr kiuint64 operator>>(const kiuint64& a, int n) { return Shr(a.GetValue(), n); }

  // ---- Comparison --------------------------------------------------------
#define KI_UINT64_COMPARE(op)                                               \
  friend constexpr bool operator op(const kiuint64& a, const kiuint64& b) { \
    return a.GetValue() op b.GetValue();                                    \
  }                                                                         \
  template <typename T, typename = Integer<T>>                              \
  friend constexpr bool operator op(const kiuint64& a, T b) {               \
    return a.GetValue() op static_cast<unsigned long long>(b);              \
  }                                                                         \
  template <typename T, typename = Integer<T>>                              \
  friend constexpr bool operator op(T a, const kiuint64& b) {               \
    return static_cast<unsigned long long>(a) op b.GetValue();              \
  }
  KI_UINT64_COMPARE(==)
  KI_UINT64_COMPARE(!=)
  KI_UINT64_COMPARE(<)
  KI_UINT64_COMPARE(<=)
  KI_UINT64_COMPARE(>)
  KI_UINT64_COMPARE(>=)
#undef KI_UINT64_COMPARE

 private:
  static constexpr unsigned long long FromDouble(double v) {
    // !(v >= 1) also holds for NaN.
    return !(v >= 1.0)                   ? 0ull
           : v >= 18446744073709551616.0 ? ~0ull
                                         : static_cast<unsigned long long>(v);
  }
  static constexpr unsigned long long ApplyAdd(unsigned long long a, unsigned long long b) {
    return a + b;
  }
  static constexpr unsigned long long ApplySub(unsigned long long a, unsigned long long b) {
    return a - b;
  }
  static constexpr unsigned long long ApplyMul(unsigned long long a, unsigned long long b) {
    return a * b;
  }
  static constexpr unsigned long long ApplyDiv(unsigned long long a, unsigned long long b) {
    return b == 0 ? ~0ull : a / b;
  }
  static constexpr unsigned long long ApplyMod(unsigned long long a, unsigned long long b) {
    return b == 0 ? a : a % b;
  }
  static constexpr unsigned long long Shl(unsigned long long a, int n) {
    return n < 0 || n > 63 ? 0ull : a << n;
  }
  static constexpr unsigned long long Shr(unsigned long long a, int n) {
    return n < 0 || n > 63 ? 0ull : a >> n;
  }

  kiULongLong m_value;
};

// Zero and all bits set; constant-initialised.
extern KI_API const kiuint64 kkiuint64_0;
extern KI_API const kiuint64 kkiuint64_Max;

#endif  // KI_CORE_UINT64_H
