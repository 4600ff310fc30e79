// property_list_fuzzer.cpp - kiPropertyListFormatter fed an arbitrary stream
// of events (nested and unbalanced maps, stray keys and values, Reset at any
// point), then its lists written by both walks. Nothing may fault or leak, every
// property is written, and a list built twice from its own events comes
// back in its original order.
#include <cstring>
#include <string>

#include "ki/serialize/PropertyList.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;

// Every event as exact text: doubles by their bits, so NaN compares too.
class Recorder : public kiEmptySerialize {
 public:
  std::string text;
  unsigned int keys = 0;

  int MapBegin() override { return Note("{"); }
  int MapKey(const char* key, bool) override {
    ++keys;
    return Note(std::string("k") + key);
  }
  int MapEnd() override { return Note("}"); }
  int ArrayBegin() override { return Note("["); }
  int ArrayItemSeparator() override { return Note(","); }
  int ArrayEnd() override { return Note("]"); }
  int String(const kiWChar* text16, bool) override {
    std::string units;
    for (; *text16 != 0; ++text16) units += std::to_string(*text16) + ".";
    return Note("w" + units);
  }
  int String(const char* text8, bool) override { return Note(std::string("s") + text8); }
  int Boolean(bool v) override { return Note(v ? "t" : "f"); }
  int U32(unsigned int v) override { return Note("u" + std::to_string(v)); }
  int S32(int v) override { return Note("i" + std::to_string(v)); }
  int U64(unsigned long long v) override { return Note("U" + std::to_string(v)); }
  int S64(long long v) override { return Note("I" + std::to_string(v)); }
  int Float(double v) override {
    unsigned long long bits;
    std::memcpy(&bits, &v, sizeof bits);
    return Note("d" + std::to_string(bits));
  }
  int Null() override { return Note("n"); }

 private:
  int Note(const std::string& what) {
    text += what;
    text += '\x01';
    return 0;
  }
};

class Reader : public kiFuzz::Reader {
 public:
  using kiFuzz::Reader::Reader;
  template <typename T>
  T Number() {
    T value = 0;
    for (size_t i = 0; i < sizeof(T); ++i) value = static_cast<T>(value << 8 | Byte());
    return value;
  }
  std::u16string Wide() {
    std::u16string s;
    while (!AtEnd()) {
      const char16_t unit = Number<char16_t>();
      if (unit == 0) break;
      s += unit;
    }
    return s;
  }
};

unsigned int CountProperties(const kiPropertyList* list) {
  unsigned int n = 0;
  for (const kiProperty* p = list != nullptr ? list->head : nullptr; p != nullptr; p = p->next) ++n;
  return n;
}

// Writes the list both ways and checks what can be told about it.
void CheckList(kiPropertyList* list) {
  Recorder plain, walk;
  kiPropertyListSerializer().Serialize(list, plain);
  kiPropertyListFormatter::Serialize(list, walk);
  kiFuzz::Check(plain.keys == CountProperties(list), "one key per property");
  kiFuzz::Check(walk.keys == plain.keys, "both walks write every property");
  if (list != nullptr) kiFuzz::Check(list->refs == 1, "the walks give their reference back");
  if (list != nullptr && list->head != nullptr) {
    Recorder one;
    kiPropertyListFormatter::SerializeKeyValue(list, list->head->name, one);
    kiFuzz::Check(one.keys == 1, "the head's key is found");
  }
  // Built from its own events twice, a formatter's list (always flat) is
  // back in order.
  kiPropertyListFormatter first, second;
  kiPropertyListSerializer().Serialize(list, first);
  kiPropertyList* reversed = first.Reset();
  kiPropertyListSerializer().Serialize(reversed, second);
  kiPropertyList* again = second.Reset();
  Recorder back;
  kiPropertyListSerializer().Serialize(again, back);
  kiFuzz::Check(back.text == plain.text, "two rebuilds restore the list");
  kiPropertyList_Release(reversed);
  kiPropertyList_Release(again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  Reader in(data, size);
  kiPropertyListFormatter formatter;
  while (!in.AtEnd()) {
    switch (in.Byte() % 18) {
      case 0:
        formatter.MapBegin();
        break;
      case 1:
        formatter.MapKey(in.Until(0).c_str(), in.Flag());
        break;
      case 2:
        formatter.MapEnd();
        break;
      case 3:
        formatter.ArrayBegin();
        break;
      case 4:
        formatter.ArrayItemSeparator();
        break;
      case 5:
        formatter.ArrayEnd();
        break;
      case 6:
        formatter.String(in.Until(0).c_str(), in.Flag());
        break;
      case 7:
        formatter.String(in.Wide().c_str(), in.Flag());
        break;
      case 8:
        formatter.Boolean(in.Flag());
        break;
      case 9:
        formatter.U32(in.Number<unsigned int>());
        break;
      case 10:
        formatter.S32(in.Number<int>());
        break;
      case 11:
        formatter.U64(in.Number<unsigned long long>());
        break;
      case 12:
        formatter.S64(in.Number<long long>());
        break;
      case 13: {
        const unsigned long long bits = in.Number<unsigned long long>();
        double v;
        std::memcpy(&v, &bits, sizeof v);
        formatter.Float(v);
        break;
      }
      case 14:
        formatter.Null();
        break;
      case 15:
        formatter.Identifier(in.Until(0).c_str());
        break;
      case 16:
        formatter.String(static_cast<const char*>(nullptr), false);
        break;
      default: {  // a list taken mid-stream
        kiPropertyList* list = formatter.Reset();
        CheckList(list);
        kiPropertyList_Release(list);
      }
    }
  }
  kiPropertyList* list = formatter.Reset();
  CheckList(list);
  kiPropertyList_Release(list);
  return 0;
}
