// UInt64Test.cpp - kiuint64: the two words, carries between them, mixed
// integer expressions, the defined results for zero divisors and wide shifts,
// doubles and decimal text.
#include <cmath>
#include <limits>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "ki/core/UInt64.h"

static void PrintTo(const kiuint64& v, std::ostream* os) { *os << v.GetValue(); }

namespace {

constexpr unsigned long long kMax = ~0ull;

std::u16string Widen(const std::string& s) { return std::u16string(s.begin(), s.end()); }

// Constant-initialised, so usable at compile time.
static_assert(kiuint64(1u, 2u).GetValue() == 0x100000002ull, "high word first");
static_assert(kiuint64(-1) == kMax && kiuint64(5) + 1 == 6, "mixed forms are constexpr");

TEST(UInt64Test, ConstructionKeepsLowWordFirst) {
  const kiULongLong record = {0x89ABCDEFu, 0x01234567u};
  const kiULongLong* null = nullptr;
  EXPECT_EQ(0x0123456789ABCDEFull, kiuint64(record).GetValue());
  EXPECT_EQ(0x0123456789ABCDEFull, kiuint64(&record).GetValue());
  EXPECT_EQ(0u, kiuint64(null).GetValue());
  const kiuint64 v(0x01234567u, 0x89ABCDEFu);
  EXPECT_EQ(0x89ABCDEFu, v.ToUInt32());
  EXPECT_EQ(0x89ABCDEFu, v.ToULongLong().low);
  EXPECT_EQ(0x01234567u, v.ToULongLong().high);
  EXPECT_EQ(kMax, kkiuint64_Max.GetValue());
  EXPECT_EQ(0u, kkiuint64_0.GetValue());
  EXPECT_EQ(-1, kkiuint64_Max.ToFileOffset());
  kiuint64 a;
  a = static_cast<short>(-2);
  EXPECT_EQ(kMax - 1, a.GetValue());
  a = &record;
  EXPECT_EQ(record.low, a.ToUInt32());
}

TEST(UInt64Test, DoublesAreTruncatedAndSaturated) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  // clang-format off
  const struct { double in; unsigned long long expected; } rows[] = {
      {0.99, 0}, {1.99, 1}, {-1.0, 0}, {-inf, 0}, {nan, 0}, {4294967296.5, 4294967296ull},
      {std::ldexp(1.0, 63), 1ull << 63}, {std::ldexp(1.0, 64), kMax}, {inf, kMax}, {1e300, kMax}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.in);
    EXPECT_EQ(r.expected, kiuint64(r.in).GetValue());
  }
}

TEST(UInt64Test, ArithmeticCarriesAcrossTheWordsAndWraps) {
  const kiuint64 lowFull(0u, 0xFFFFFFFFu);
  // clang-format off
  const struct { const char* what; kiuint64 got; unsigned long long expected; } rows[] = {
      {"carry", lowFull + 1, 0x100000000ull},  {"borrow", kiuint64(1u, 0u) - 1, 0xFFFFFFFFull},
      {"wrap up", kkiuint64_Max + 2, 1},       {"wrap down", kkiuint64_0 - 1, kMax},
      {"minus a negative", kiuint64(5) - (-1), 6}, {"int on the left", 10 - kiuint64(3), 7},
      {"multiply across", lowFull * lowFull, 0xFFFFFFFE00000001ull},
      {"divide", kiuint64(7u, 0u) / 7u, 0x100000000ull},
      {"modulo", kiuint64(1u, 5u) % 10, 0x100000005ull % 10},
      {"divide by zero", kiuint64(9) / 0, kMax}, {"modulo by zero", kiuint64(9) % kkiuint64_0, 9},
      {"shift into the high word", kiuint64(1) << 32, 0x100000000ull},
      {"shift out of the high word", kiuint64(1u, 0u) >> 1, 0x80000000ull},
      {"shift 63", kiuint64(1) << 63, 1ull << 63}, {"shift 64", kiuint64(1) << 64, 0},
      {"shift -1", kkiuint64_Max >> -1, 0},        {"double operand", kiuint64(3) + 2.7, 5}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.what);
    EXPECT_EQ(r.expected, r.got.GetValue());
  }
  kiuint64 x = 10;
  x += 5u;
  x -= kiuint64(3);
  x *= 2ll;
  x /= 0;
  EXPECT_EQ(kkiuint64_Max, x);
  x %= 1000;
  x <<= 1;
  x >>= 65;
  EXPECT_EQ(0, x);
}

// A comparison that looks at the low word first gets these wrong.
TEST(UInt64Test, ComparisonsOrderByTheHighWord) {
  const kiuint64 big(1u, 0u), small(0u, 0xFFFFFFFFu);
  EXPECT_TRUE(big > small && small < big && big >= small && small <= big && big != small);
  EXPECT_TRUE(big > 0xFFFFFFFFu && 5u < big && !(big == 0));
  EXPECT_TRUE(kkiuint64_Max == -1 && kiuint64(0) == 0 && kiuint64(4) <= 4u);
  EXPECT_FALSE(big < small || big <= small || big == small);
}

TEST(UInt64Test, DecimalTextBothWays) {
  EXPECT_STREQ("0", kiuint64().ToCString().c_str());
  EXPECT_STREQ("18446744073709551615", kkiuint64_Max.ToCString().c_str());
  EXPECT_EQ(u"4294967296", std::u16string(kiuint64(1u, 0u).ToString().c_str()));
  const kiuint64 def(77);
  const char* null = nullptr;
  // clang-format off
  const struct { const char* text; unsigned long long expected; } rows[] = {
      {"42", 42}, {" \t\n+42", 42}, {"42abc", 42}, {"007 8", 7}, {"4294967296", 0x100000000ull},
      {"", 77}, {"  ", 77}, {"+", 77}, {"-5", 77}, {"x1", 77}, {"++1", 77}, {null, 77},
      {"18446744073709551615", kMax}, {"18446744073709551616", kMax}, {"99999999999999999999", kMax}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text != nullptr ? r.text : "(null)");
    EXPECT_EQ(r.expected, kiuint64::FromString(r.text, def).GetValue());
    const std::u16string wide = r.text != nullptr ? Widen(r.text) : u"";
    const kiWChar* text = r.text != nullptr ? wide.c_str() : nullptr;
    EXPECT_EQ(r.expected, kiuint64::FromString(text, def).GetValue());
  }
  EXPECT_EQ(0, kiuint64::FromString("junk"));
  EXPECT_EQ(77, kiuint64::FromString(u"\u0661", def));  // only ASCII digits count
}

}  // namespace
