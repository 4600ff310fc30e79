// PackedData.cpp - packed data as text: the '%'-escaping writer and its reader.
#include "ki/serialize/PackedData.h"

#include <cstring>

#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"

KI_LOG_SOURCE("serialize/PackedData")

namespace {

const char kHexDigits[] = "0123456789ABCDEF";

bool StandsForItself(unsigned char byte) {
  return byte >= 0x20 && byte <= 0x7E && byte != '%' && byte != '"' && byte != '\\';
}

// The value of a hexadecimal digit of either case, or -1.
int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

kiCString kiPackedData_ToText(const void* bytes, unsigned int size) {
  kiCString text;
  if (bytes == nullptr || size == 0) return text;
  const unsigned char* in = static_cast<const unsigned char*>(bytes);
  unsigned long long length = 0;
  for (unsigned int i = 0; i < size; ++i) length += StandsForItself(in[i]) ? 1 : 3;
  // The block also holds a terminator and the string header.
  if (length > 0xFFFFFFFFull - 64) kiFatalError("memory:malloc", static_cast<uintptr_t>(length));
  char* out = text.GetWriteBuf(static_cast<unsigned int>(length));
  unsigned int at = 0;
  for (unsigned int i = 0; i < size; ++i) {
    const unsigned char byte = in[i];
    if (StandsForItself(byte)) {
      out[at++] = static_cast<char>(byte);
    } else {
      out[at++] = '%';
      out[at++] = kHexDigits[byte >> 4];
      out[at++] = kHexDigits[byte & 0x0F];
    }
  }
  out[at] = '\0';
  text.UngetWriteBuf(at);
  return text;
}

bool kiPackedData_FromText(const char* text, kiDataBuffer& out) {
  const size_t length = text != nullptr ? std::strlen(text) : 0;
  if (length == 0) {
    out.Set(nullptr, 0);
    return true;
  }
  if (length > 0xFFFFFFFFu) kiFatalError("memory:malloc", length);
  unsigned char* bytes =
      static_cast<unsigned char*>(kiMem_Malloc(static_cast<unsigned int>(length)));
  unsigned int count = 0;
  bool clean = true;
  for (size_t i = 0; i < length; ++i) {
    if (text[i] == '%') {
      // The terminator is not a digit, so a '%' near the end never reads past it.
      const int high = HexValue(text[i + 1]);
      const int low = high >= 0 ? HexValue(text[i + 2]) : -1;
      if (low >= 0) {
        bytes[count++] = static_cast<unsigned char>(high << 4 | low);
        i += 2;
        continue;
      }
      if (clean) {
        KI_LOG(kiLogLevel_Error, kiLogCat_PackedData, "kiPackedData: bad escape at %u in '%s'\n",
               static_cast<unsigned int>(i), text);
      }
      clean = false;
    }
    bytes[count++] = static_cast<unsigned char>(text[i]);
  }
  if (count < length) bytes = static_cast<unsigned char*>(kiMem_Realloc(bytes, count));
  out.Set(bytes, count);  // a block shrunk to 0 bytes is null, so out is empty
  return clean;
}
