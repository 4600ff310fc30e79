// StringList.h - kiStringList, a narrow text split at one separator into an
// indexed list held in a single block, and kiCSVStringList, the same list
// split at commas.
#ifndef KI_CORE_STRINGLIST_H
#define KI_CORE_STRINGLIST_H

#include <cstdint>

#include "ki/Export.h"
#include "ki/core/CString.h"

// Items live in one heap block, each ended by a zero byte, and are reached
// through a table of offsets into it. An escape character written just before
// a separator keeps that separator inside the item (the escape itself is
// dropped); escape 0 means no escaping, and an escape equal to the separator
// is ignored. There is no escape for the escape character. Separator 0 makes
// the whole text one item. Indexes at or beyond the count give the default;
// texts count as null-terminated. Nothing here logs; a text whose block would
// pass 4 GiB ends the process through kiFatalError("memory:malloc").
class KI_API kiStringList {
 public:
  kiStringList();  // empty, separator ','
  // Set(text, separator, escape).
  kiStringList(const char* text, char separator, char escape = 0);
  // Deep copies of the block and of the offsets.
  kiStringList(const kiStringList& other);
  kiStringList& operator=(const kiStringList& other);
  virtual ~kiStringList();
  void AssignCopy(const kiStringList& other);  // what operator= does

  // Replaces the list with the items of text (null or empty: no item; ","
  // gives two empty items). text may be an item of this very list.
  void Set(const char* text, char separator, char escape = 0);
  void Reset();  // frees the block and the offsets; the separator stays

  unsigned int GetCount() const { return m_count; }
  // The item, valid until the next change of the list; null past the count.
  const char* GetAt(unsigned int index) const { return GetAt(index, nullptr); }
  const char* GetAt(unsigned int index, const char* defaultValue) const {
    return index < m_count ? m_block + m_offsets[index] : defaultValue;
  }
  // The item when the whole of it is one signed base-10 number in 32 bits
  // (leading white space allowed), else defaultValue.
  int GetAtInt32(unsigned int index, int defaultValue) const;

  // The first index whose item equals text exactly, case-sensitive; -1 when
  // absent, and for null text.
  int IndexOf(const char* text) const;
  bool Has(const char* text) const { return IndexOf(text) != -1; }

  // Appends a copy of text as one item, separators and all (null: an empty
  // item). text may be an item of this very list.
  void Add(const char* text);
  // Drops the first item equal to text from the table (the block keeps its
  // bytes until the next Set or Reset); true if one was dropped.
  bool Remove(const char* text);
  // Drops empty items in one walk that steps past the item moving into a
  // freed place, so of adjacent empty items every second one stays
  // (intended); answers the number dropped.
  unsigned int RemoveEmpty();

  // The items joined with the separator (separator 0: zero bytes, which the
  // string keeps). With escape not 0, each separator inside an item gets the
  // escape before it, so Set with that escape gives the items back, unless an
  // item other than the last ends with the escape or the list is one empty
  // item.
  kiCString GetString(char escape = 0) const;

 private:
  char* m_block;  // the items, each ended by a zero byte; kiMem_* block
  char m_separator;
  std::uint32_t* m_offsets;  // where each item starts in m_block; kiMem_* block
  unsigned int m_count;
  unsigned int m_blockSize;  // bytes of m_block
};

// A kiStringList whose constructors split at ','. The escape is 0 (none)
// unless given.
class KI_API kiCSVStringList : public kiStringList {
 public:
  // An empty list. Kept for compatibility: the escape has nothing to apply
  // to, as a list keeps no escape (give it to Set).
  explicit kiCSVStringList(char escape = 0);
  explicit kiCSVStringList(const char* text, char escape = 0);
};

#endif  // KI_CORE_STRINGLIST_H
