// PropertyListTest.cpp - property lists through the serialization interface:
// the serializer's shapes and stops, the formatter's event mapping and member
// order, nested maps, ownership, and the static walk that writes packed data.
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "ki/serialize/JSONFormatter.h"
#include "ki/serialize/PropertyList.h"

namespace {

// Records events as words; answers `code` from event number failAt on.
class Recorder : public kiEmptySerialize {
 public:
  std::string events;
  int failAt = 0, code = 0, count = 0, refsSeen = 0;
  const kiPropertyList* watched = nullptr;  // its count is noted at MapBegin

  int MapBegin() override {
    refsSeen = watched != nullptr ? watched->refs : 0;
    return Note("{");
  }
  int MapKey(const char* key, bool) override { return Note(std::string("k:") + key); }
  int MapEnd() override { return Note("}"); }
  int ArrayBegin() override { return Note("["); }
  int ArrayEnd() override { return Note("]"); }
  int String(const kiWChar* text, bool) override {
    return Note("w:" + std::string(text, text + std::char_traits<char16_t>::length(text)));
  }
  int String(const char* text, bool) override { return Note(std::string("s:") + text); }
  int U32(unsigned int v) override { return Note("u32:" + std::to_string(v)); }
  int U64(unsigned long long v) override { return Note("u64:" + std::to_string(v)); }
  int Float(double v) override { return Note("f:" + std::to_string(v)); }
  int Null() override { return Note("null"); }

 private:
  int Note(const std::string& what) {
    events += (events.empty() ? "" : " ") + what;
    return ++count >= failAt && failAt != 0 ? code : 0;
  }
};

kiPropertyList* OneProperty(unsigned int count, const std::function<void(kiProperty*)>& fill) {
  kiPropertyList* list = kiPropertyList_New();
  kiProperty* p = kiProperty_New("k", count);
  fill(p);
  kiPropertyList_Add(list, p);
  return list;
}

std::string Json(kiPropertyList* list) {
  kiJSONFormatter json;
  kiPropertyListSerializer().Serialize(list, json);
  kiPropertyList_Release(list);
  return json.Result().c_str();
}

kiPropertyList* Build(const char* text) {
  kiPropertyListFormatter formatter;
  kiJSONFormatter::Parse(text, formatter);
  return formatter.Reset();
}

TEST(PropertyListTest, ValuesAreWrittenByTagWithAnArrayOnlyForTwoOrMore) {
  const struct {
    const char* what;
    unsigned int count;
    std::function<void(kiProperty*)> fill;
    const char* serializer;  // kiPropertyListSerializer
    const char* walk;        // kiPropertyListFormatter::Serialize
  } rows[] = {
      {"one value bare", 1, [](kiProperty* p) { kiProperty_Set_uint32(p, 0, 1); }, "{ k:k u32:1 }",
       "{ k:k u32:1 }"},
      {"no values", 0, [](kiProperty*) {}, "{ k:k }", "{ k:k }"},
      {"packed data", 1, [](kiProperty* p) { kiProperty_Set_data(p, 0, "a\0%", 3); }, "{ k:k }",
       "{ k:k s:a%00%25 }"},
      {"every kind", 6,
       [](kiProperty* p) {
         kiProperty_Set_double(p, 0, 0.5);
         kiProperty_Set_uint64(p, 1, 1ull << 33);
         kiProperty_Set_charPtr(p, 2, "n", 1);
         kiProperty_Set_wcharPtr(p, 3, u"w", 1);
         kiProperty_Set_data(p, 4, nullptr, 0);
         p->values[5].type = 77;  // unknown tags, and no value, are null
       },
       "{ k:k [ f:0.500000 u64:8589934592 s:n w:w null ] }",
       "{ k:k [ f:0.500000 u64:8589934592 s:n w:w s: null ] }"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.what);
    kiPropertyList* list = OneProperty(r.count, r.fill);
    Recorder serializer, walk;
    EXPECT_EQ(0, kiPropertyListSerializer().Serialize(list, serializer));
    EXPECT_EQ(0, kiPropertyListFormatter::Serialize(list, walk));
    EXPECT_EQ(r.serializer, serializer.events);
    EXPECT_EQ(r.walk, walk.events);
    EXPECT_EQ(0, kiPropertyList_Release(list));
  }
}

TEST(PropertyListTest, JsonTextKeepsItsShapesAndBuiltMembersAreReversed) {
  EXPECT_EQ("{\"k\":1,}",
            Json(OneProperty(1, [](kiProperty* p) { kiProperty_Set_uint32(p, 0, 1); })));
  EXPECT_EQ("{\"k\":[12],}", Json(OneProperty(2, [](kiProperty* p) {
              kiProperty_Set_uint32(p, 0, 1);
              kiProperty_Set_uint32(p, 1, 2);
            })));
  EXPECT_EQ("{\"k\":,}",
            Json(OneProperty(1, [](kiProperty* p) { kiProperty_Set_data(p, 0, "x", 1); })));
  EXPECT_EQ("{,}", Json(nullptr));
  EXPECT_EQ("{\"b\":2,\"a\":1,}", Json(Build("{\"a\":1,\"b\":2}")));
}

// Each event in turn answers non-zero: that answer comes back, nothing is
// sent after it, and the reference held for the walk is given back.
TEST(PropertyListTest, SerializerStopsAtTheFirstNonZeroAnswer) {
  kiPropertyList* list = Build("{\"a\":[1,2],\"b\":\"t\"}");
  const std::string all = "{ k:b s:t k:a [ u32:1 u32:2 ] }";
  for (int failAt = 1; failAt <= 9; ++failAt) {
    SCOPED_TRACE(failAt);
    Recorder sink;
    sink.failAt = failAt;
    sink.code = -40 - failAt;
    sink.watched = list;
    EXPECT_EQ(sink.code, kiPropertyListSerializer().Serialize(list, sink));
    EXPECT_EQ(all.substr(0, sink.events.size()), sink.events);
    EXPECT_EQ(failAt, sink.count);
    EXPECT_EQ(2, sink.refsSeen);
    EXPECT_EQ(1, list->refs);
  }
  kiPropertyList_Release(list);
}

TEST(PropertyListTest, FormatterMapsEveryScalarOntoTheOpenProperty) {
  kiPropertyListFormatter f;
  f.U32(9);  // no property open: dropped
  f.MapBegin();
  f.MapKey("n", true);
  f.S32(-1);
  f.ArrayBegin();
  f.S64(-2);
  f.Boolean(true);
  f.ArrayItemSeparator();
  f.Boolean(false);
  f.Null();
  f.Float(0.5);
  f.String(static_cast<const char*>(nullptr), false);
  f.String(u"w", true);
  f.ArrayEnd();
  f.MapEnd();
  f.U32(9);  // the property was closed by MapEnd
  Recorder sink;
  kiPropertyList* list = f.Reset();
  kiPropertyListSerializer().Serialize(list, sink);
  EXPECT_EQ("{ k:n [ u32:4294967295 u64:18446744073709551614 u32:1 u32:0 f:0.500000 s: w:w ] }",
            sink.events);
  kiPropertyList_Release(list);
}

// Only flat maps are represented: the inner map's list is dropped together
// with the property that introduced it. Run under ASan: nothing leaks.
TEST(PropertyListTest, NestedMapsAreDropped) {
  const struct {
    const char* text;
    const char* json;
  } rows[] = {
      {"{\"a\":{\"x\":1},\"b\":2}", "{\"b\":2,}"},
      {"{\"c\":[{\"y\":3},{\"z\":{\"q\":1}}],\"d\":4}", "{\"d\":4,}"},
      {"[{\"a\":1},{\"b\":2}]", "{\"a\":1,}"},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(r.json, Json(Build(r.text)));
  }
}

TEST(PropertyListTest, ResetHandsOverTheListAndStartsAfresh) {
  kiPropertyListFormatter f;
  EXPECT_EQ(nullptr, f.Reset());
  kiJSONFormatter::Parse("{\"a\":1", f);  // cut short: "a" is never linked
  kiPropertyList* first = f.Reset();
  kiJSONFormatter::Parse("{\"b\":2}", f);
  EXPECT_EQ("{\"b\":2,}", Json(f.Reset()));
  EXPECT_EQ(1, first->refs);
  EXPECT_EQ("{,}", Json(first));  // untouched by the second list
  f.MapBegin();                   // left to the destructor: lists, saved levels, the open property
  f.MapBegin();
  f.MapKey("open", false);
}

TEST(PropertyListTest, KeyValueWritesOneMemberWithoutAMap) {
  kiPropertyList* list = OneProperty(1, [](kiProperty* p) { kiProperty_Set_data(p, 0, "\1", 1); });
  kiPropertyList_Add(list, kiProperty_New("m", 0));
  Recorder sink, none, failing;
  EXPECT_EQ(0, kiPropertyListFormatter::SerializeKeyValue(list, "k", sink));
  EXPECT_EQ("k:k s:%01", sink.events);
  EXPECT_EQ(0, kiPropertyListFormatter::SerializeKeyValue(list, "absent", none));
  EXPECT_EQ(0, kiPropertyListFormatter::SerializeKeyValue(nullptr, "k", none));
  EXPECT_EQ("", none.events);
  failing.failAt = 1;
  failing.code = 5;
  EXPECT_EQ(5, kiPropertyListFormatter::SerializeKeyValue(list, "k", failing));
  EXPECT_EQ("k:k", failing.events);
  EXPECT_EQ(0, kiPropertyList_Release(list));
}

}  // namespace
