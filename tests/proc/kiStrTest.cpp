// kiStrTest.cpp - the number parsers: result codes, clamping, bases and prefixes,
// exact doubles, and pointer-sized values.
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "ki/proc/kiStr.h"

namespace {

constexpr unsigned int kMax32 = 4294967295u;

std::string Name(const char* text) {
  return text != nullptr ? '"' + std::string(text) + '"' : "null";
}

// A code of 1 or more is the count of bytes read, leading white space included.
TEST(kiStrTest, ParseUInt32ReadsHexOnlyAfterPrefixAndDigit) {
  // clang-format off
  const struct {
    const char* text;
    int code;
    unsigned int value;
  } rows[] = {
      {"12345", 0, 12345},          {"0x1A", 0, 26},               {"0X1a", 0, 26},
      {"0xZ", 1, 0},                {"0x", 1, 0},                  {"017", 0, 17},
      {"  +7", 0, 7},               {"\t\n\v\f\r7", 0, 7},         {"12 ", 2, 12},
      {"  12abc", 4, 12},           {"4294967295", 0, kMax32},     {"4294967296", -1, kMax32},
      {"0x100000000", -1, kMax32},  {"99999999999x", -1, kMax32},  {nullptr, -3, 0},
      {"", -3, 0},                  {" ", -3, 0},                  {"++5", -3, 0},
      {"-5", -3, 0}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(Name(r.text));
    unsigned int value = 99;
    EXPECT_EQ(r.code, kiStr_ParseUInt32(r.text, &value));
    EXPECT_EQ(r.value, value);
  }
  EXPECT_EQ(0, kiStr_ParseUInt32("5", nullptr));
}

TEST(kiStrTest, ParseUInt32BaseFollowsTheBaseRules) {
  // clang-format off
  const struct {
    const char* text;
    int base;
    int code;
    unsigned int value;
  } rows[] = {
      {"017", 0, 0, 15},     {"0x1F", 0, 0, 31},           {"08", 0, 1, 0},
      {"19", 0, 0, 19},      {"0x1F", 16, 0, 31},          {" +ff", 16, 0, 255},
      {"0xG", 16, 1, 0},     {"0x1F", 10, 1, 0},           {"102", 2, 2, 2},
      {"z", 36, 0, 35},      {"Zz", 36, 0, 1295},          {"5", 1, -3, 0},
      {"5", 37, -3, 0},      {"5", -1, -3, 0},             {"-5", 10, -3, 0},
      {nullptr, 10, -3, 0},  {"ffffffff", 16, 0, kMax32},  {"100000000", 16, -1, kMax32}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(Name(r.text) + " base " + std::to_string(r.base));
    unsigned int value = 99;
    EXPECT_EQ(r.code, kiStr_ParseUInt32Base(r.text, r.base, &value));
    EXPECT_EQ(r.value, value);
  }
}

// Kept for compatibility: -2147483647 reads as -2147483648 without error.
TEST(kiStrTest, ParseInt32BaseClampsWithSignedCodes) {
  // clang-format off
  const struct {
    const char* text;
    int base;
    int code;
    int value;
  } rows[] = {
      {"2147483647", 10, 0, INT_MAX},      {"2147483648", 10, -1, INT_MAX},
      {"4294967296", 10, -1, INT_MAX},     {"2147483648x", 10, -1, INT_MAX},
      {"-2147483646", 10, 0, -2147483646}, {"-2147483647", 10, 0, INT_MIN},
      {"-2147483648", 10, 0, INT_MIN},     {"-2147483649", 10, -2, INT_MIN},
      {"-99999999999", 10, -2, INT_MIN},   {"-7fffffff", 16, 0, INT_MIN},
      {"  -5", 10, 0, -5},    {"-5x", 10, 2, -5},   {"-0x10", 0, 0, -16},  {"-ff", 16, 0, -255},
      {"- 5", 10, -3, 0},     {"-", 10, -3, 0},     {"-+5", 10, -3, 0},    {"-x", 10, -3, 0},
      {nullptr, 10, -3, 0},   {"5", 37, -3, 0}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(Name(r.text) + " base " + std::to_string(r.base));
    int value = 99;
    EXPECT_EQ(r.code, kiStr_ParseInt32Base(r.text, r.base, &value));
    EXPECT_EQ(r.value, value);
  }
}

TEST(kiStrTest, ParseDoubleIsCorrectlyRounded) {
  const double inf = std::numeric_limits<double>::infinity();
  // clang-format off
  const struct {
    const char* text;
    int code;
    double value;
  } rows[] = {
      {"0.3", 0, 0.3},     {"123.456e-2", 0, 1.23456},  {"1e400", 0, inf},  {"-1e400", 0, -inf},
      {"1e-400", 0, 0.0},  {"  +2.5", 0, 2.5},          {".5", 0, 0.5},     {"5.", 0, 5.0},
      {"5.e1", 0, 50.0},   {"1E-2", 0, 0.01},           {"1e", 1, 1.0},     {"1e+", 1, 1.0},
      {"1,5", 1, 1.0},     {"2.5 ", 3, 2.5},            {"0x10", 1, 0.0},   {"abc", -3, 0.0},
      {"inf", -3, 0.0},    {".", -3, 0.0},              {"-", -3, 0.0},     {"e5", -3, 0.0},
      {"", -3, 0.0},       {nullptr, -3, 0.0},
      // ties to even, the smallest and largest doubles, the first value past the largest
      {"9007199254740993", 0, 9007199254740992.0}, {"2.2250738585072014e-308", 0, DBL_MIN},
      {"4.9406564584124654e-324", 0, std::numeric_limits<double>::denorm_min()},
      {"1.7976931348623157e308", 0, DBL_MAX},      {"1.7976931348623159e308", 0, inf}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(Name(r.text));
    double value = 99;
    EXPECT_EQ(r.code, kiStr_ParseDouble(r.text, &value));
    EXPECT_EQ(r.value, value);
  }
  double zero = 99;
  EXPECT_EQ(0, kiStr_ParseDouble("-0", &zero));
  EXPECT_TRUE(zero == 0.0 && std::signbit(zero));
  EXPECT_EQ(0, kiStr_ParseDouble("1", nullptr));
}

TEST(kiStrTest, ParseUIntPtrReadsPointerSizedValues) {
  static_assert(sizeof(std::uintptr_t) == 8, "the rows assume 64-bit pointers");
  constexpr std::uintptr_t kMax = std::numeric_limits<std::uintptr_t>::max();
  // clang-format off
  const struct {
    const char* text;
    int code;
    std::uintptr_t value;
  } rows[] = {
      {"0xffffffffffffffff", 0, kMax},   {"18446744073709551615", 0, kMax},
      {"0x10000000000000000", -1, kMax}, {"4294967296", 0, 4294967296u},
      {"0xZ", 1, 0},                     {nullptr, -3, 0}};
  // clang-format on
  for (const auto& r : rows) {
    SCOPED_TRACE(Name(r.text));
    std::uintptr_t value = 99;
    EXPECT_EQ(r.code, kiStr_ParseUIntPtr(r.text, &value));
    EXPECT_EQ(r.value, value);
  }
  // An address written with "%p" reads back.
  int local = 0;
  char text[40];
  std::snprintf(text, sizeof text, "%p", static_cast<void*>(&local));
  std::uintptr_t address = 0;
  EXPECT_EQ(0, kiStr_ParseUIntPtr(text, &address));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&local), address);
}

}  // namespace
