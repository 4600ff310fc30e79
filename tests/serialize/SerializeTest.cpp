// Tests of the serialization interface: the Value forwards, the default
// Identifier, and the sink that swallows everything.
#include "ki/serialize/Serialize.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Records which slot each call reached, with its argument.
class SlotRecorder : public kiISerialize {
 public:
  std::string log;
  int MapBegin() override { return Note("MapBegin"); }
  int MapKey(const char* key, bool raw) override {
    return Note(std::string("MapKey:") + key + (raw ? ":raw" : ""));
  }
  int MapEnd() override { return Note("MapEnd"); }
  int ArrayBegin() override { return Note("ArrayBegin"); }
  int ArrayItemSeparator() override { return Note("Sep"); }
  int ArrayEnd() override { return Note("ArrayEnd"); }
  int String(const kiWChar* text, bool raw) override {
    return Note(std::string("WString:") + std::to_string(text[0]) + (raw ? ":raw" : ""));
  }
  int String(const char* text, bool raw) override {
    return Note(std::string("String:") + text + (raw ? ":raw" : ""));
  }
  int Boolean(bool v) override { return Note(v ? "Boolean:1" : "Boolean:0"); }
  int U32(unsigned int v) override { return Note("U32:" + std::to_string(v)); }
  int S32(int v) override { return Note("S32:" + std::to_string(v)); }
  int U64(unsigned long long v) override { return Note("U64:" + std::to_string(v)); }
  int S64(long long v) override { return Note("S64:" + std::to_string(v)); }
  int Float(double v) override { return Note("Float:" + std::to_string(v)); }
  int Null() override { return Note("Null"); }

 private:
  int Note(const std::string& what) {
    log += what + ";";
    return 7;  // a non-zero answer must come back through the forwards
  }
};

TEST(SerializeTest, ValueOverloadsReachTheirSlotsAndPassTheAnswerOn) {
  SlotRecorder r;
  const kiWChar wide[] = {u'W', 0};
  EXPECT_EQ(7, r.Value("n"));
  EXPECT_EQ(7, r.Value(wide));
  EXPECT_EQ(7, r.Value(true));
  EXPECT_EQ(7, r.Value(4294967295ul));        // 32-bit meaning kept
  EXPECT_EQ(7, r.Value(-2l));
  EXPECT_EQ(7, r.Value(1u));
  EXPECT_EQ(7, r.Value(-1));
  EXPECT_EQ(7, r.Value(18446744073709551615ull));
  EXPECT_EQ(7, r.Value(-9000000000ll));
  EXPECT_EQ(7, r.Value(0.5));
  EXPECT_EQ(7, r.Identifier("id"));  // the default: a narrow, quoted string
  EXPECT_EQ(
      "String:n;WString:87;Boolean:1;U32:4294967295;S32:-2;U32:1;S32:-1;"
      "U64:18446744073709551615;S64:-9000000000;Float:0.500000;String:id;",
      r.log);
}

TEST(SerializeTest, EmptySinkAcceptsEverythingIncludingNulls) {
  kiEmptySerialize sink;
  kiISerialize& s = sink;
  const char* nothing = nullptr;
  const kiWChar* wideNothing = nullptr;
  const int answers[] = {s.MapBegin(), s.MapKey(nothing, true), s.MapEnd(), s.ArrayBegin(),
                         s.ArrayItemSeparator(), s.ArrayEnd(), s.Identifier(nothing),
                         s.String(wideNothing, false), s.String(nothing, true), s.Boolean(false),
                         s.U32(1), s.S32(-1), s.U64(2), s.S64(-2), s.Float(1e300), s.Null()};
  for (int a : answers) EXPECT_EQ(0, a);
  kiEmptySerialize copy(sink);
  copy = sink;
  EXPECT_EQ(0, copy.Value("x"));
}

}  // namespace
