// PackedDataTest.cpp - the text form of packed data: what is escaped, the way
// back for every byte, and what a bad escape gives and logs.
#include <string>

#include <gtest/gtest.h>

#include "ki/proc/kiLog.h"
#include "ki/serialize/PackedData.h"
#include "support/LogCapture.h"

namespace {

std::string Bytes(const kiDataBuffer& buffer) {
  return std::string(reinterpret_cast<const char*>(buffer.data()), buffer.size());
}

TEST(PackedDataTest, OnlyPrintableAsciiOtherThanQuotesAndPercentStaysAsItIs) {
  const struct {
    std::string bytes;
    const char* text;
  } rows[] = {
      {"", ""},
      {" azAZ09~!/'{}", " azAZ09~!/'{}"},
      {std::string("\0", 1), "%00"},
      {"%", "%25"},
      {"\"", "%22"},
      {"\\", "%5C"},
      {"\x1f\x7f\x80\xff", "%1F%7F%80%FF"},
      {"a\nb", "a%0Ab"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(kiCString(r.text),
              kiPackedData_ToText(r.bytes.data(), static_cast<unsigned int>(r.bytes.size())));
  }
  EXPECT_EQ(kiCString(""), kiPackedData_ToText(nullptr, 5));
}

TEST(PackedDataTest, EveryByteComesBackAndTheReaderIsLenient) {
  std::string all;
  for (int i = 0; i < 512; ++i) all += static_cast<char>(i);
  kiDataBuffer out(8);  // the old block is replaced
  EXPECT_TRUE(kiPackedData_FromText(kiPackedData_ToText(all.data(), 512), out));
  EXPECT_EQ(all, Bytes(out));
  EXPECT_TRUE(kiPackedData_FromText("%ff%0a\"\x80", out));  // lower case, bytes as they are
  EXPECT_EQ("\xff\n\"\x80", Bytes(out));
  EXPECT_TRUE(kiPackedData_FromText(nullptr, out));
  EXPECT_EQ(nullptr, out.data());
  EXPECT_EQ(0u, out.size());
}

TEST(PackedDataTest, BadEscapesAreKeptAsPercentAndOnlyTheFirstIsLogged) {
  const struct {
    const char* text;
    const char* bytes;
    unsigned offset;
  } rows[] = {
      {"%", "%", 0},     {"ab%4", "ab%4", 2},       {"%G1", "%G1", 0},
      {"%%41", "%A", 0}, {"x%4g%zz", "x%4g%zz", 1}, {"%41%", "A%", 3},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    kiTest::LogCapture log;
    kiDataBuffer out;
    EXPECT_FALSE(kiPackedData_FromText(r.text, out));
    EXPECT_EQ(r.bytes, Bytes(out));
    const auto records = log.Records();
    ASSERT_EQ(1u, records.size());
    EXPECT_EQ(1u, records[0].level);
    EXPECT_EQ(99u, records[0].category);
    EXPECT_EQ("serialize/PackedData", records[0].source);
    EXPECT_EQ("kiPackedData: bad escape at " + std::to_string(r.offset) + " in '" + r.text + "'\n",
              records[0].text);
  }
}

}  // namespace
