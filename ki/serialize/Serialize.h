// Serialize.h - kiISerialize, the event sink every structured value of ki is
// written through, and kiEmptySerialize, the sink that accepts everything.
#ifndef KI_SERIALIZE_SERIALIZE_H
#define KI_SERIALIZE_SERIALIZE_H

#include "ki/Export.h"
#include "ki/core/StringData.h"

// A value is described as a stream of calls:
//   value  = scalar | map | array
//   map    = MapBegin (MapKey value)* MapEnd
//   array  = ArrayBegin value (ArrayItemSeparator? value)* ArrayEnd
// A producer that wants separators in text output calls ArrayItemSeparator
// between two items; it is never folded into the item calls.
//
// Every operation answers 0 when the sink accepted the event, or an error code
// of the sink; a producer stops at the first non-zero answer and passes it on
// unchanged. Keys and narrow texts are UTF-8; wide texts are UTF-16. raw asks
// a text sink to leave out the quotation marks (the text is still escaped);
// other sinks ignore it. Sinks do not check the call order.
//
// The virtual functions keep this order; derived sinks keep it too.
class KI_API kiISerialize {
 public:
  kiISerialize() {}
  kiISerialize(const kiISerialize&) {}
  kiISerialize& operator=(const kiISerialize&) { return *this; }
  virtual ~kiISerialize();

  virtual int MapBegin() = 0;
  virtual int MapKey(const char* key, bool raw) = 0;
  virtual int MapEnd() = 0;
  virtual int ArrayBegin() = 0;
  virtual int ArrayItemSeparator() = 0;
  virtual int ArrayEnd() = 0;
  // A symbolic name used as a value; by default the same as String(name, false).
  virtual int Identifier(const char* name);
  virtual int String(const kiWChar* text, bool raw) = 0;
  virtual int String(const char* text, bool raw) = 0;
  virtual int Boolean(bool value) = 0;
  virtual int U32(unsigned int value) = 0;
  virtual int S32(int value) = 0;
  virtual int U64(unsigned long long value) = 0;
  virtual int S64(long long value) = 0;
  virtual int Float(double value) = 0;
  virtual int Null() = 0;

  // One-line forwards. long and unsigned long keep their 32-bit meaning on
  // every platform (they reach S32/U32, cut to 32 bits); the 64-bit values
  // are long long and unsigned long long. int and unsigned int are added so
  // that a plain literal (Value(1)) is not ambiguous.
  int Value(const kiWChar* text) { return String(text, false); }
  int Value(const char* text) { return String(text, false); }
  int Value(bool value) { return Boolean(value); }
  int Value(unsigned long value) { return U32(static_cast<unsigned int>(value)); }
  int Value(long value) { return S32(static_cast<int>(value)); }
  int Value(unsigned int value) { return U32(value); }
  int Value(int value) { return S32(value); }
  int Value(unsigned long long value) { return U64(value); }
  int Value(long long value) { return S64(value); }
  int Value(double value) { return Float(value); }
};

// Swallows every event and answers 0, for any argument, null pointers
// included. A base for sinks that want only some events, and a validator:
// kiJSONFormatter::Parse(text, sink) with this sink only checks the text.
class KI_API kiEmptySerialize : public kiISerialize {
 public:
  kiEmptySerialize() {}
  kiEmptySerialize(const kiEmptySerialize& other) : kiISerialize(other) {}
  kiEmptySerialize& operator=(const kiEmptySerialize&) { return *this; }
  ~kiEmptySerialize() override;

  int MapBegin() override { return 0; }
  int MapKey(const char*, bool) override { return 0; }
  int MapEnd() override { return 0; }
  int ArrayBegin() override { return 0; }
  int ArrayItemSeparator() override { return 0; }
  int ArrayEnd() override { return 0; }
  int String(const kiWChar*, bool) override { return 0; }
  int String(const char*, bool) override { return 0; }
  int Boolean(bool) override { return 0; }
  int U32(unsigned int) override { return 0; }
  int S32(int) override { return 0; }
  int U64(unsigned long long) override { return 0; }
  int S64(long long) override { return 0; }
  int Float(double) override { return 0; }
  int Null() override { return 0; }
};

#endif  // KI_SERIALIZE_SERIALIZE_H
