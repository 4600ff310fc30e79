// PropertyList.h - the bridge between kivoPlugins property lists and the
// serialization interface: kiPropertyListSerializer walks a list into any
// sink, kiPropertyListFormatter is a sink that builds a list.
#ifndef KI_SERIALIZE_PROPERTYLIST_H
#define KI_SERIALIZE_PROPERTYLIST_H

#include <kiPlugins/PropertyList.h>

#include "ki/Export.h"
#include "ki/serialize/Serialize.h"

// Writes a property list as one map. Each step runs only while every earlier
// sink call answered 0; the first non-zero answer is passed on unchanged.
// Derived classes may override the protected steps.
//
// Shapes, kept for compatibility with the texts peers exchange:
// - a property is MapKey(name, false) followed by its values; two or more
//   values are wrapped in ArrayBegin/ArrayEnd, one value is written bare,
//   none leaves the key alone;
// - ArrayItemSeparator is never called (intended: JSON made this way writes
//   "k":[12] for the values 1 and 2);
// - packed data (tag 101) is skipped (intended: the key then stands alone,
//   {"k":,} in JSON); kiPropertyListFormatter::Serialize writes it as text;
// - a value of any other unknown tag (none included) is written as Null.
class KI_API kiPropertyListSerializer {
 public:
  kiPropertyListSerializer() {}
  virtual ~kiPropertyListSerializer();

  // MapBegin, each property from the head along the chain, MapEnd. The list
  // is held (kiPropertyList_Take) for the walk and released after it. A null
  // list is written as an empty map.
  virtual int Serialize(kiPropertyList* list, kiISerialize& sink);

 protected:
  // One property: its key and values. Null: nothing written, 0.
  virtual int SerializeProperty(kiProperty* property, kiISerialize& sink);
  // One value by its tag: 1 U32, 2 Float, 4 U64, 100 and 104 String(text,
  // false), 101 nothing, others Null. Null data: nothing written, 0.
  virtual int SerializeData(kiData* data, kiISerialize& sink);
};

// A sink that builds a property list from events, for flat maps whose values
// are scalars or arrays of scalars:
// - MapBegin starts a new list (the current one, if any, is saved on a stack);
// - MapKey opens a property named key, holding one value slot (raw is
//   ignored); the property open before it is linked at the head of the
//   current list. Members therefore end up in the reverse order of their
//   keys (intended: a list built from {"a":1,"b":2} is written b, a);
// - each scalar adds a value to the open property: narrow and wide texts
//   (null counts as ""), U32, U64 and Float as they are, S32 as the same 32
//   bits in U32, S64 likewise in U64, Boolean as U32 1 or 0; a scalar with no
//   open property is dropped;
// - ArrayBegin, ArrayItemSeparator, ArrayEnd and Null add nothing: the items
//   of an array become further values of the open property;
// - MapEnd links the open property and closes the property; an inner map's
//   list is then dropped and the saved list is current again, so nested maps
//   are not represented (intended): the property that introduced the inner
//   map ends up in the dropped list, together with the inner members.
// Every event answers 0.
//
// Ownership: Reset hands the built list to the caller. Lists the formatter
// drops are released by it at once (nothing else can reach them); a property
// that cannot be linked (a key with no map begun) is deleted. The destructor
// releases whatever the formatter still holds. Memory exhaustion ends the
// process ("memory:malloc"), as with kiMem_*. Not copyable; one thread.
class KI_API kiPropertyListFormatter : public kiISerialize {
 public:
  kiPropertyListFormatter();
  kiPropertyListFormatter(const kiPropertyListFormatter&) = delete;
  kiPropertyListFormatter& operator=(const kiPropertyListFormatter&) = delete;
  ~kiPropertyListFormatter() override;

  // The current list (the caller owns its reference; null when no map was
  // begun). Saved levels are popped and released, an open property that was
  // never linked is deleted, and the formatter is left as after
  // construction, ready for the next list.
  kiPropertyList* Reset();

  // Writes a whole list into the sink with the shapes of
  // kiPropertyListSerializer, except that packed data (tag 101) is written as
  // String(text, false), text being kiPackedData_ToText of its bytes. A null
  // list is an empty map. Answers the first non-zero sink answer, or 0.
  static int Serialize(kiPropertyList* list, kiISerialize& sink);
  // The first property named key, as Serialize writes a member: MapKey(key,
  // false) then its values, with no map around them, so that members of
  // several lists can be copied into one map the caller writes. An absent
  // key (or a null list or key) writes nothing and answers 0.
  static int SerializeKeyValue(kiPropertyList* list, const char* key, kiISerialize& sink);

  int MapBegin() override;
  int MapKey(const char* key, bool raw) override;
  int MapEnd() override;
  int ArrayBegin() override { return 0; }
  int ArrayItemSeparator() override { return 0; }
  int ArrayEnd() override { return 0; }
  int String(const kiWChar* text, bool raw) override;
  int String(const char* text, bool raw) override;
  int Boolean(bool value) override;
  int U32(unsigned int value) override;
  int S32(int value) override;
  int U64(unsigned long long value) override;
  int S64(long long value) override;
  int Float(double value) override;
  int Null() override { return 0; }

 private:
  // The slot for the next value of the open property (grown to hold it), or
  // -1 when no property is open.
  long long NextSlot();
  // Links the open property at the head of the current list (deleted when
  // there is none) and closes it.
  void LinkProperty();
  void ReleaseAll();

  kiProperty* m_property;    // the open property; null when none
  kiPropertyList** m_stack;  // saved lists (kiMem_* block)
  kiPropertyList* m_list;    // the current list
  unsigned int m_depth;      // saved lists in m_stack
  unsigned int m_index;      // slot of the next value of m_property
  unsigned int m_stackSize;  // entries m_stack has room for
};

#endif  // KI_SERIALIZE_PROPERTYLIST_H
