// BitString.h - kiBitString, a most-significant-bit-first reader over a byte
// buffer, and its static helpers for big- and little-endian values.
#ifndef KI_CORE_BITSTRING_H
#define KI_CORE_BITSTRING_H

#include "ki/Export.h"

// Reads bits from a caller's buffer (never copied, never written), most
// significant bit of each byte first. Bytes are loaded one at a time as a read
// crosses into them. The buffer is read as if zero bits followed it: a Get
// past the end answers the bits that remain, shifted left as if padded with
// zeros, and never reads beyond the buffer; the counts stop at 0.
class KI_API kiBitString {
 public:
  // An empty reader, or a reader over size bytes (see SetBuffer).
  kiBitString() { SetBuffer(nullptr, 0); }
  kiBitString(const void* bytes, unsigned int size) { SetBuffer(bytes, size); }

  // Starts over on size bytes; null bytes give an empty reader. Counts are
  // 32-bit: a buffer of 512 MB or more is read up to its first 536870911
  // bytes. The marker is cleared and its saved state set to the start.
  void SetBuffer(const void* bytes, unsigned int size);

  // The next n bits (1 to 32), right-aligned. Any other n answers 0 and reads
  // nothing.
  unsigned int Get(unsigned int n);
  // Get(n) between ToggleMarker(true) and ToggleMarker(false): the position
  // does not move. Intended: it uses the one marker, so a marker set before
  // is lost and the marker is off afterwards.
  unsigned int Peek(unsigned int n);
  // Consumes n bits, at most those that remain.
  void Skip(unsigned int n);
  // Discards the unread bits of the current byte, if any.
  void ByteAlign();

  // Bits not yet loaded plus the unread bits of the current byte.
  unsigned int GetRemainingBitCount() const { return m_bitsLeft + m_currentBitsLeft; }
  // Bytes loaded so far, the current byte included.
  unsigned int GetByteOffset() const { return (m_totalBits - m_bitsLeft) / 8; }

  // On: remembers the position and sets the marker. Off: goes back to the
  // position last remembered (the start when none was) and clears the marker.
  void ToggleMarker(bool on);
  bool IsMarkerSet() const { return m_marker; }

  // ---- Byte order (unaligned; a null pointer reads as 0) ------------------
  // 1 to 4 bytes, big-endian: Get3 = b0 * 65536 + b1 * 256 + b2. Bytes are
  // unsigned through either pointer type.
  static unsigned int Get1(const unsigned char* p);
  static unsigned int Get2(const unsigned char* p);
  static unsigned int Get3(const unsigned char* p);
  static unsigned int Get4(const unsigned char* p);
  static unsigned int Get1(const char* p);
  static unsigned int Get2(const char* p);
  static unsigned int Get3(const char* p);
  static unsigned int Get4(const char* p);

  static short BigEndianToint16(const void* p);
  static unsigned short BigEndianTouint16(const void* p);
  static int BigEndianToint32(const void* p);
  static unsigned int BigEndianTouint32(const void* p);
  static short LittleEndianToint16(const void* p);
  static unsigned short LittleEndianTouint16(const void* p);
  static int LittleEndianToint32(const void* p);
  static unsigned int LittleEndianTouint32(const void* p);
  static unsigned long long LittleEndianTouint64(const void* p);

  // The value with its bytes ordered so that storing it in memory gives the
  // little-endian form: itself on a little-endian platform, swapped otherwise.
  static unsigned short uint16ToLittleEndian(unsigned short value);
  static unsigned int uint32ToLittleEndian(unsigned int value);

  static bool IsBigEndianPlatform();

 private:
  void Load();

  const unsigned char* m_next;      // the next byte to load
  unsigned int m_bitsLeft;          // bits not yet loaded
  unsigned int m_totalBits;         // bits in the buffer
  unsigned char m_current;          // the byte loaded last
  unsigned char m_currentBitsLeft;  // its bits not yet read
  bool m_marker;
  // What ToggleMarker(false) restores.
  const unsigned char* m_savedNext;
  unsigned int m_savedBitsLeft;
  unsigned char m_savedCurrent;
  unsigned char m_savedCurrentBitsLeft;
};

#endif  // KI_CORE_BITSTRING_H
