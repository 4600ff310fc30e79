// DataBuffer.h - kiDataBuffer, a single-owner block of bytes of known size, and
// kiGrowingBuffer, an append-only byte accumulator.
#ifndef KI_CORE_DATABUFFER_H
#define KI_CORE_DATABUFFER_H

#include "ki/Export.h"

// A heap block (kiMem_*) and its size in bytes; the buffer frees the block
// when destroyed. Sizes are 32-bit; a request past 4 GB is fatal
// ("memory:malloc"), as is heap exhaustion. A null source counts as no
// bytes: the buffer is then empty (null block, size 0).
class KI_API kiDataBuffer {
 public:
  kiDataBuffer() : m_data(nullptr), m_size(0) {}
  // size bytes, contents undefined; 0 gives an empty buffer.
  explicit kiDataBuffer(unsigned int size);
  // A copy of size bytes; null bytes or size 0 give an empty buffer.
  kiDataBuffer(const void* bytes, unsigned int size);
  // A copy of the text with its terminator: "abc" gives size 4. Null counts as
  // "" (one zero byte).
  explicit kiDataBuffer(const char* text);
  // Takes the other's block; the other is left empty.
  kiDataBuffer(kiDataBuffer&& other) noexcept : m_data(other.m_data), m_size(other.m_size) {
    other.m_data = nullptr;
    other.m_size = 0;
  }
  // Not copyable by construction: a copy would free the block twice.
  kiDataBuffer(const kiDataBuffer&) = delete;
  ~kiDataBuffer();

  // Intended: copies the pointer and the size only (the target's previous
  // block is neither freed nor copied), so both buffers hold the same block
  // and one of them must give it up with TakeOwnership before both are
  // destroyed.
  kiDataBuffer& operator=(const kiDataBuffer& other) {
    m_data = other.m_data;
    m_size = other.m_size;
    return *this;
  }
  // From a temporary: TakeOwnership(other).
  kiDataBuffer& operator=(kiDataBuffer&& other) noexcept {
    TakeOwnership(other);
    return *this;
  }

  unsigned char* data() const { return m_data; }  // null when empty
  unsigned int size() const { return m_size; }

  // Resizes the block to size bytes, keeping the contents up to the smaller
  // size; 0 frees it (null, size 0).
  void Realloc(unsigned int size);
  // Frees the current block (unless it is bytes itself) and adopts bytes,
  // which must come from kiMem_* or malloc, without copying. Null bytes give
  // an empty buffer whatever the size.
  void Set(void* bytes, unsigned int size);
  // Hands the block to the caller (who frees it with kiMem_Free); the buffer
  // is left empty. Null when it was empty.
  unsigned char* TakeOwnership();
  // Frees the current block (unless the other holds the same one) and takes
  // the other's block and size; the other is left empty. Itself: nothing.
  void TakeOwnership(kiDataBuffer& other);

 private:
  unsigned char* m_data;
  unsigned int m_size;
};

// Bytes appended at the end of a heap block that doubles as it fills. Sizes
// are 32-bit: a length past 4 GB is fatal ("memory:malloc"), as is heap
// exhaustion. Not copyable.
class KI_API kiGrowingBuffer {
 public:
  // The capacity as given, length 0; a block is allocated only for a
  // capacity above 0.
  explicit kiGrowingBuffer(unsigned int capacity = 0);
  kiGrowingBuffer(const kiGrowingBuffer&) = delete;
  kiGrowingBuffer& operator=(const kiGrowingBuffer&) = delete;
  ~kiGrowingBuffer();

  // Copies n bytes at the position. When length + n reaches the capacity
  // (length + n >= capacity) the block first grows to 2 x (length + n), cut
  // to 4 GB - 1. Null bytes or n 0: nothing.
  void Append(const void* bytes, unsigned int n);
  // The text without its terminator; null: nothing.
  kiGrowingBuffer& operator+=(const char* text);
  // The number in decimal digits.
  kiGrowingBuffer& operator+=(unsigned int number);

  // The length becomes n; a block smaller than n is resized to exactly n.
  // Bytes between the old and the new length are left as they are.
  void SetPosition(unsigned int n);
  // The block is resized to exactly n bytes (0 frees it) and the length
  // becomes n.
  void Reduce(unsigned int n);

  unsigned char* buffer() const { return m_data; }  // null when nothing is allocated
  unsigned int length() const { return m_length; }
  unsigned int capacity() const { return m_capacity; }

  // Hands the block to the caller (who frees it with kiMem_Free) and clears
  // the buffer. With shrink the block is first cut to the length (a length of
  // 0 then answers null). The length is stored through size unless it is
  // null.
  unsigned char* TakeOwnership(bool shrink, unsigned int* size);

 private:
  void Resize(unsigned int capacity);

  unsigned char* m_data;
  unsigned int m_capacity;
  unsigned int m_length;
};

#endif  // KI_CORE_DATABUFFER_H
