// kiStrTest.cpp - the number parsers: result codes, clamping, bases and prefixes,
// exact doubles, and pointer-sized values.
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "ki/proc/kiStr.h"

namespace {

constexpr unsigned int kMax32 = 4294967295u;

// A code of 1 or more is the count of bytes read, leading white space included.
template <typename T>
struct Case {
  const char* text;
  int code;
  T value;
  int base = 0;  // read only by the *Base parsers
};

// Runs parse(text, base, &value) over the rows; the value starts at 99, so a
// row expecting 0 shows that 0 was stored.
template <typename T, typename Parse>
void Check(std::initializer_list<Case<T>> rows, Parse parse) {
  for (const Case<T>& r : rows) {
    SCOPED_TRACE((r.text != nullptr ? '"' + std::string(r.text) + '"' : std::string("null")) +
                 " base " + std::to_string(r.base));
    T value = 99;
    EXPECT_EQ(r.code, parse(r.text, r.base, &value));
    EXPECT_EQ(r.value, value);
  }
}

TEST(kiStrTest, ParseUInt32ReadsHexOnlyAfterPrefixAndDigit) {
  // clang-format off
  Check<unsigned int>({
      {"12345", 0, 12345},          {"0x1A", 0, 26},               {"0X1a", 0, 26},
      {"0xZ", 1, 0},                {"0x", 1, 0},                  {"017", 0, 17},
      {"  +7", 0, 7},               {"\t\n\v\f\r7", 0, 7},         {"12 ", 2, 12},
      {"  12abc", 4, 12},           {"4294967295", 0, kMax32},     {"4294967296", -1, kMax32},
      {"0x100000000", -1, kMax32},  {"99999999999x", -1, kMax32},  {nullptr, -3, 0},
      {"", -3, 0},                  {" ", -3, 0},                  {"++5", -3, 0},
      {"-5", -3, 0}},
      [](const char* text, int, unsigned int* value) { return kiStr_ParseUInt32(text, value); });
  // clang-format on
  EXPECT_EQ(0, kiStr_ParseUInt32("5", nullptr));
}

TEST(kiStrTest, ParseUInt32BaseFollowsTheBaseRules) {
  // clang-format off
  Check<unsigned int>({
      {"017", 0, 15, 0},     {"0x1F", 0, 31, 0},           {"08", 1, 0, 0},
      {"19", 0, 19, 0},      {"0x1F", 0, 31, 16},          {" +ff", 0, 255, 16},
      {"0xG", 1, 0, 16},     {"0x1F", 1, 0, 10},           {"102", 2, 2, 2},
      {"z", 0, 35, 36},      {"Zz", 0, 1295, 36},          {"5", -3, 0, 1},
      {"5", -3, 0, 37},      {"5", -3, 0, -1},             {"-5", -3, 0, 10},
      {nullptr, -3, 0, 10},  {"ffffffff", 0, kMax32, 16},  {"100000000", -1, kMax32, 16}},
      kiStr_ParseUInt32Base);
  // clang-format on
}

// Kept for compatibility: -2147483647 reads as -2147483648 without error.
TEST(kiStrTest, ParseInt32BaseClampsWithSignedCodes) {
  // clang-format off
  Check<int>({
      {"2147483647", 0, INT_MAX, 10},      {"2147483648", -1, INT_MAX, 10},
      {"4294967296", -1, INT_MAX, 10},     {"2147483648x", -1, INT_MAX, 10},
      {"-2147483646", 0, -2147483646, 10}, {"-2147483647", 0, INT_MIN, 10},
      {"-2147483648", 0, INT_MIN, 10},     {"-2147483649", -2, INT_MIN, 10},
      {"-99999999999", -2, INT_MIN, 10},   {"-7fffffff", 0, INT_MIN, 16},
      {"  -5", 0, -5, 10},    {"-5x", 2, -5, 10},   {"-0x10", 0, -16, 0},  {"-ff", 0, -255, 16},
      {"- 5", -3, 0, 10},     {"-", -3, 0, 10},     {"-+5", -3, 0, 10},    {"-x", -3, 0, 10},
      {nullptr, -3, 0, 10},   {"5", -3, 0, 37}},
      kiStr_ParseInt32Base);
  // clang-format on
}

TEST(kiStrTest, ParseDoubleIsCorrectlyRounded) {
  const double inf = std::numeric_limits<double>::infinity();
  // clang-format off
  Check<double>({
      {"0.3", 0, 0.3},     {"123.456e-2", 0, 1.23456},  {"1e400", 0, inf},  {"-1e400", 0, -inf},
      {"1e-400", 0, 0.0},  {"  +2.5", 0, 2.5},          {".5", 0, 0.5},     {"5.", 0, 5.0},
      {"5.e1", 0, 50.0},   {"1E-2", 0, 0.01},           {"1e", 1, 1.0},     {"1e+", 1, 1.0},
      {"1,5", 1, 1.0},     {"2.5 ", 3, 2.5},            {"0x10", 1, 0.0},   {"abc", -3, 0.0},
      {"inf", -3, 0.0},    {".", -3, 0.0},              {"-", -3, 0.0},     {"e5", -3, 0.0},
      {"", -3, 0.0},       {nullptr, -3, 0.0},
      // ties to even, the smallest and largest doubles, the first value past the largest
      {"9007199254740993", 0, 9007199254740992.0}, {"2.2250738585072014e-308", 0, DBL_MIN},
      {"4.9406564584124654e-324", 0, std::numeric_limits<double>::denorm_min()},
      {"1.7976931348623157e308", 0, DBL_MAX},      {"1.7976931348623159e308", 0, inf}},
      [](const char* text, int, double* value) { return kiStr_ParseDouble(text, value); });
  // clang-format on
  double zero = 99;
  EXPECT_EQ(0, kiStr_ParseDouble("-0", &zero));
  EXPECT_TRUE(zero == 0.0 && std::signbit(zero));
  EXPECT_EQ(0, kiStr_ParseDouble("1", nullptr));
}

TEST(kiStrTest, ParseUIntPtrReadsPointerSizedValues) {
  static_assert(sizeof(std::uintptr_t) == 8, "the rows assume 64-bit pointers");
  constexpr std::uintptr_t kMax = std::numeric_limits<std::uintptr_t>::max();
  int local = 0;
  char address[40];  // an address written with "%p" reads back
  std::snprintf(address, sizeof address, "%p", static_cast<void*>(&local));
  // clang-format off
  Check<std::uintptr_t>({
      {"0xffffffffffffffff", 0, kMax},   {"18446744073709551615", 0, kMax},
      {"0x10000000000000000", -1, kMax}, {"4294967296", 0, 4294967296u},
      {"0xZ", 1, 0},                     {nullptr, -3, 0},
      {address, 0, reinterpret_cast<std::uintptr_t>(&local)}},
      [](const char* text, int, std::uintptr_t* value) { return kiStr_ParseUIntPtr(text, value); });
  // clang-format on
}

}  // namespace
