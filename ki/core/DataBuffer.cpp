// DataBuffer.cpp - kiDataBuffer and kiGrowingBuffer over the kiMem_* heap wrappers.
#include "ki/core/DataBuffer.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiMem.h"

namespace {

constexpr unsigned long long kMaxBlock = 0xFFFFFFFFull;

unsigned char* Allocate(unsigned int size) {
  return size == 0 ? nullptr : static_cast<unsigned char*>(kiMem_Malloc(size));
}

}  // namespace

// ---- kiDataBuffer ------------------------------------------------------------

kiDataBuffer::kiDataBuffer(unsigned int size) : m_data(Allocate(size)), m_size(size) {}

kiDataBuffer::kiDataBuffer(const void* bytes, unsigned int size) : m_data(nullptr), m_size(0) {
  if (bytes == nullptr || size == 0) return;
  m_data = Allocate(size);
  m_size = size;
  std::memcpy(m_data, bytes, size);
}

kiDataBuffer::kiDataBuffer(const char* text) : m_data(nullptr), m_size(0) {
  const size_t length = text != nullptr ? std::strlen(text) : 0;
  if (length >= kMaxBlock) kiFatalError("memory:malloc", length);
  m_size = static_cast<unsigned int>(length + 1);
  m_data = Allocate(m_size);
  if (length != 0) std::memcpy(m_data, text, length);
  m_data[length] = 0;
}

kiDataBuffer::~kiDataBuffer() { kiMem_Free(m_data); }

void kiDataBuffer::Realloc(unsigned int size) {
  m_data = static_cast<unsigned char*>(kiMem_Realloc(m_data, size));
  m_size = m_data != nullptr ? size : 0;
}

void kiDataBuffer::Set(void* bytes, unsigned int size) {
  if (bytes != m_data) kiMem_Free(m_data);
  m_data = static_cast<unsigned char*>(bytes);
  m_size = bytes != nullptr ? size : 0;
}

unsigned char* kiDataBuffer::TakeOwnership() {
  unsigned char* block = m_data;
  m_data = nullptr;
  m_size = 0;
  return block;
}

void kiDataBuffer::TakeOwnership(kiDataBuffer& other) {
  if (&other == this) return;
  if (other.m_data != m_data) kiMem_Free(m_data);
  m_data = other.m_data;
  m_size = other.m_size;
  other.m_data = nullptr;
  other.m_size = 0;
}

// ---- kiGrowingBuffer ---------------------------------------------------------

kiGrowingBuffer::kiGrowingBuffer(unsigned int capacity)
    : m_data(Allocate(capacity)), m_capacity(capacity), m_length(0) {}

kiGrowingBuffer::~kiGrowingBuffer() { kiMem_Free(m_data); }

void kiGrowingBuffer::Resize(unsigned int capacity) {
  m_data = static_cast<unsigned char*>(kiMem_Realloc(m_data, capacity));
  m_capacity = capacity;
}

void kiGrowingBuffer::Append(const void* bytes, unsigned int n) {
  if (bytes == nullptr || n == 0) return;
  const unsigned long long end = static_cast<unsigned long long>(m_length) + n;
  if (end > kMaxBlock) kiFatalError("memory:malloc", static_cast<std::uintptr_t>(end));
  if (end >= m_capacity) {
    const unsigned long long grown = 2 * end;
    Resize(static_cast<unsigned int>(grown > kMaxBlock ? kMaxBlock : grown));
  }
  std::memcpy(m_data + m_length, bytes, n);
  m_length = static_cast<unsigned int>(end);
}

kiGrowingBuffer& kiGrowingBuffer::operator+=(const char* text) {
  if (text == nullptr) return *this;
  const size_t length = std::strlen(text);
  if (length > kMaxBlock) kiFatalError("memory:malloc", length);
  Append(text, static_cast<unsigned int>(length));
  return *this;
}

kiGrowingBuffer& kiGrowingBuffer::operator+=(unsigned int number) {
  char digits[12];
  const int n = std::snprintf(digits, sizeof digits, "%u", number);
  Append(digits, static_cast<unsigned int>(n));
  return *this;
}

void kiGrowingBuffer::SetPosition(unsigned int n) {
  if (n > m_capacity) Resize(n);
  m_length = n;
}

void kiGrowingBuffer::Reduce(unsigned int n) {
  Resize(n);
  m_length = n;
}

unsigned char* kiGrowingBuffer::TakeOwnership(bool shrink, unsigned int* size) {
  if (shrink && m_length != m_capacity) Resize(m_length);
  unsigned char* block = m_data;
  if (size != nullptr) *size = m_length;
  m_data = nullptr;
  m_capacity = 0;
  m_length = 0;
  return block;
}
