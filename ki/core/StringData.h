// StringData.h - the header of a shared string block, common to the narrow
// and the wide string, and the position type both use.
#ifndef KI_CORE_STRINGDATA_H
#define KI_CORE_STRINGDATA_H

#include "ki/Export.h"
#include "ki/proc/kiMem.h"

// "Not found" for positions, and "up to the terminator" / "to the end" for
// counts and positions given as arguments.
constexpr unsigned int kiNPos = 0xFFFFFFFFu;

// The block header; the characters (capacity + 1 of them) follow it directly,
// so a string is one pointer to its characters and the header lies just
// before them.
//
// refs: -1 static (never counted nor freed), 0 lent out for writing through
// GetWriteBuf, 1 one owner, above 1 shared. Counts are plain integers: a block
// may be shared between threads only under the caller's lock.
template <typename C>
struct kiStringDataT {
  int refs;
  unsigned int length;    // characters, terminator excluded
  unsigned int capacity;  // characters the block holds, terminator excluded

  void Lock() {
    if (refs != -1) ++refs;
  }
  // A block lent out for writing belongs to its one string, so releasing it
  // frees it too.
  void Unlock() {
    if (refs == -1) return;
    if (refs <= 1) {
      kiMem_Free(this);
    } else {
      --refs;
    }
  }
  bool IsEmpty() const { return refs == -1; }
  bool IsShared() const { return refs > 1; }
  bool IsValid() const { return refs != 0; }
  void Validate(bool valid) { refs = valid ? 1 : 0; }
  C* data() { return reinterpret_cast<C*>(this + 1); }
  const C* data() const { return reinterpret_cast<const C*>(this + 1); }
};

// The character of kiString: a UTF-16 code unit on every platform.
typedef char16_t kiWChar;

typedef kiStringDataT<char> kiCStringData;
typedef kiStringDataT<kiWChar> kiStringData;

static_assert(sizeof(kiCStringData) == 12, "the block header is three 32-bit fields");

#endif  // KI_CORE_STRINGDATA_H
