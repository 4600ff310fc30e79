// json_parse_fuzzer.cpp - kiJSONFormatter::Parse on any text: no crash, the
// answer is one of its codes, the four-argument form agrees, and every accepted
// text survives parse -> format -> parse with the same events.
//
// The input, cut at its first zero, is the text, in a heap block of exactly its
// size so that a read past the terminator is caught. For an accepted text the
// recorded events are replayed into two formatters (compact and strict; human
// and loose) and each result is parsed again. What the round trip cannot carry,
// by design of the two sides, and is left out of the comparison:
// - a Float that is not finite ("1e999" gives inf): the writer's "inf" or "nan"
//   is not a value the reader takes;
// - a string or key holding byte 0x0C: the writer escapes it as \f, which the
//   reader rejects (intended asymmetry);
// - Float values beyond six decimals: the writer's "%lf" keeps six, so Floats
//   compare by their six-decimal text.
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ki/serialize/JSONFormatter.h"
#include "ki/serialize/Serialize.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 65536;

using kiFuzz::Check;

enum EventKind {
  kMapBegin,
  kMapKey,
  kMapEnd,
  kArrayBegin,
  kArrayEnd,
  kString,
  kBoolean,
  kS32,
  kFloat,
  kNull,
  kUnexpected  // an event the reader never sends
};

struct Event {
  EventKind kind;
  std::string text;  // key or string; for a Float, its six-decimal text
  long long number;  // S32 value, Boolean, raw flag of a key or string
  double value;      // Float
};

std::string SixDecimals(double value) {
  char out[400];
  const std::to_chars_result r =
      std::to_chars(out, out + sizeof(out), value, std::chars_format::fixed, 6);
  return std::string(out, r.ptr);
}

bool operator==(const Event& a, const Event& b) {
  return a.kind == b.kind && a.text == b.text && a.number == b.number;
}

// Records every event the reader sends.
class Recorder : public kiEmptySerialize {
 public:
  std::vector<Event> events;

  int MapBegin() override { return Add(kMapBegin); }
  int MapKey(const char* key, bool raw) override { return Add(kMapKey, key, raw); }
  int MapEnd() override { return Add(kMapEnd); }
  int ArrayBegin() override { return Add(kArrayBegin); }
  int ArrayItemSeparator() override { return Add(kUnexpected); }
  int ArrayEnd() override { return Add(kArrayEnd); }
  int Identifier(const char*) override { return Add(kUnexpected); }
  int String(const kiWChar*, bool) override { return Add(kUnexpected); }
  int String(const char* text, bool raw) override { return Add(kString, text, raw); }
  int Boolean(bool value) override { return Add(kBoolean, "", value); }
  int U32(unsigned int) override { return Add(kUnexpected); }
  int S32(int value) override { return Add(kS32, "", value); }
  int U64(unsigned long long) override { return Add(kUnexpected); }
  int S64(long long) override { return Add(kUnexpected); }
  int Float(double value) override {
    events.push_back({kFloat, SixDecimals(value), 0, value});
    return 0;
  }
  int Null() override { return Add(kNull); }

 private:
  // A non-zero answer now and then: the reader must ignore it.
  int Add(EventKind kind, const char* text = "", long long number = 0) {
    events.push_back({kind, text != nullptr ? text : "(null)", number, 0});
    return static_cast<int>(events.size() % 3);
  }
};

// Replays the events of one accepted text into out, with ArrayItemSeparator
// between array items (the reader never sends it), and checks on the way that
// they form exactly one value. Keys go out as MapKey(key, false): the reader
// reports them raw, and a raw key would be written without its quotes.
void Replay(const std::vector<Event>& events, kiISerialize& out) {
  struct Level {
    bool array;
    bool items;       // an array item was written
    bool keyPending;  // a key waits for its value
  };
  std::vector<Level> levels;
  bool done = false;
  for (const Event& e : events) {
    Check(!done, "an event after the top-level value");
    const bool value = e.kind != kMapKey && e.kind != kMapEnd && e.kind != kArrayEnd;
    if (value && !levels.empty()) {
      Level& top = levels.back();
      if (top.array) {
        if (top.items) out.ArrayItemSeparator();
        top.items = true;
      } else {
        Check(top.keyPending, "a map member without a key");
        top.keyPending = false;
      }
    }
    switch (e.kind) {
      case kMapBegin:
        out.MapBegin();
        levels.push_back({false, false, false});
        break;
      case kMapKey:
        Check(!levels.empty() && !levels.back().array && !levels.back().keyPending,
              "a key outside a map");
        Check(e.number == 1, "a key not reported raw");
        levels.back().keyPending = true;
        out.MapKey(e.text.c_str(), false);
        break;
      case kMapEnd:
      case kArrayEnd:
        Check(!levels.empty() && levels.back().array == (e.kind == kArrayEnd) &&
                  !levels.back().keyPending,
              "an unbalanced end");
        levels.pop_back();
        if (e.kind == kMapEnd) {
          out.MapEnd();
        } else {
          out.ArrayEnd();
        }
        break;
      case kArrayBegin:
        out.ArrayBegin();
        levels.push_back({true, false, false});
        break;
      case kString:
        Check(e.number == 0, "a string reported raw");
        out.String(e.text.c_str(), false);
        break;
      case kBoolean:
        out.Boolean(e.number != 0);
        break;
      case kS32:
        out.S32(static_cast<int>(e.number));
        break;
      case kFloat:
        out.Float(e.value);
        break;
      case kNull:
        out.Null();
        break;
      case kUnexpected:
        kiFuzz::Fail("the reader sent an event it never sends");
    }
    done = levels.empty() && (value || e.kind == kMapEnd || e.kind == kArrayEnd);
  }
  Check(done, "an accepted text without a complete value");
}

// Whether the events can come back through text at all (see the top).
bool Carried(const std::vector<Event>& events) {
  for (const Event& e : events) {
    if (e.kind == kFloat && !(e.value - e.value == 0)) return false;  // inf or nan
    if ((e.kind == kString || e.kind == kMapKey) && e.text.find('\f') != std::string::npos) {
      return false;
    }
  }
  return true;
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

void RoundTrip(const std::vector<Event>& events, kiJSONFormatter& formatter) {
  Replay(events, formatter);
  // A top-level number or literal needs a byte after it to be complete.
  const std::string text = std::string(formatter.Result().c_str()) + " ";
  Recorder again;
  Check(kiJSONFormatter::Parse(text.c_str(), again) == 0, "the reader rejects the writer's text");
  Check(again.events == events, "the events changed through the writer's text");
  // The writer's six-decimal texts are read back exactly: the nearest double.
  for (const Event& e : again.events) {
    if (e.kind != kFloat) continue;
    double nearest = 0;
    std::from_chars(e.text.data(), e.text.data() + e.text.size(), nearest);
    Check(SameBits(e.value, nearest), "a six-decimal text is not read as its nearest double");
  }
}

bool IsNumberByte(char c) { return (c >= '0' && c <= '9') || std::strchr(".+-e", c) != nullptr; }

// The input's leading number bytes as a text of their own, beside the standard
// conversion: a float (a '.' or an 'e' in it) is the nearest double of its
// longest numeric prefix, an integer is what glibc's sscanf "%d" makes of it
// (out-of-range ones included), no numeric prefix is error 7.
void CheckNumber(const char* text) {
  if (!(*text == '-' || (*text >= '0' && *text <= '9'))) return;
  size_t n = 0;
  while (text[n] != 0 && IsNumberByte(text[n])) ++n;
  const std::string number(text, n);
  Recorder got;
  const int result = kiJSONFormatter::Parse((number + " ").c_str(), got);
  const char* end = number.data() + n;
  if (number.find_first_of(".e") != std::string::npos) {
    double expected = 0;
    const std::errc ec = std::from_chars(number.data(), end, expected).ec;
    if (ec == std::errc::invalid_argument) {
      Check(result == kiJSON_BadNumber, "a float text without digits is not error 7");
      return;
    }
    Check(result == 0 && got.events.size() == 1 && got.events[0].kind == kFloat,
          "a float text does not give one Float");
    Check(ec != std::errc() || SameBits(got.events[0].value, expected),
          "a float text is not read as its nearest double");
  } else {
    int expected = 0;
    if (std::sscanf(number.c_str(), "%d", &expected) != 1) {
      Check(result == kiJSON_BadNumber, "an integer text without digits is not error 7");
      return;
    }
    Check(result == 0 && got.events.size() == 1 && got.events[0].kind == kS32,
          "an integer text does not give one S32");
    Check(got.events[0].number == expected, "an integer is not read as \"%d\" reads it");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  static const bool nullIsTruncated = [] {
    kiEmptySerialize sink;
    return kiJSONFormatter::Parse(nullptr, sink) == kiJSON_Truncated;
  }();
  Check(nullIsTruncated, "a null text is not error 1");

  const size_t n = strnlen(reinterpret_cast<const char*>(data), size);
  std::unique_ptr<char[]> text(new char[n + 1]);
  std::memcpy(text.get(), data, n);
  text[n] = '\0';

  Recorder first;
  const int result = kiJSONFormatter::Parse(text.get(), first);
  Check(result >= 0 && result <= 13 && result != 3, "an unknown result code");

  Recorder second;
  int unused1 = 0x5A5A;
  int unused2 = -77;
  Check(kiJSONFormatter::Parse(text.get(), second, unused1, unused2) == result,
        "the four-argument form answers differently");
  Check(unused1 == 0x5A5A && unused2 == -77, "the four-argument form wrote its integers");
  Check(second.events == first.events, "the four-argument form sends other events");
  for (const Event& e : first.events) {
    Check(e.kind != kUnexpected, "the reader sent an event it never sends");
  }

  CheckNumber(text.get());

  if (result != kiJSON_Ok || !Carried(first.events)) return 0;
  kiJSONFormatter compact;
  RoundTrip(first.events, compact);
  kiJSONFormatter human;
  human.SetStrictMode(false);
  human.SetHumanMode(true, size % 2 == 0 ? nullptr : "\t");
  RoundTrip(first.events, human);
  return 0;
}
