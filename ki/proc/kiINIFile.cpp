// kiINIFile.cpp - the INI table: records in insertion order with a hash index
// beside them, the line parser, and the writer.
#include "ki/proc/kiINIFile.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

#include "ki/proc/kiFile.h"
#include "ki/proc/kiINIFile_p.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiStr.h"

KI_LOG_SOURCE("proc/kiINIFile")

namespace {

constexpr unsigned kMinCapacity = 128;
constexpr unsigned kNameSize = 256;     // composed names: 255 bytes and the terminator
constexpr unsigned kFileNameMax = 127;  // section names and keys read from a file
constexpr unsigned kLineMax = 1023;     // bytes of a line, read or written
constexpr unsigned kNumberSize = 128;

struct Record {
  char* name;  // lower case, never empty
  char* value;
  std::uint32_t hash;
  unsigned length;  // of name
  bool section;     // added as a section (a name without '/' when set through the API)
};

}  // namespace

struct kiINIFile {
  Record* records;
  unsigned count;
  unsigned capacity;
  // Open addressing on the name hash: record index + 1, 0 for a free slot.
  // Names are unique in the table, so the one match is also the first.
  unsigned* slots;
  unsigned slotMask;  // slot count - 1 (a power of two, at least twice count)
};

namespace {

// One-at-a-time hash; each byte is taken as a signed byte (intended: bytes
// above 127 add negative values).
std::uint32_t Hash(const char* name, unsigned length) {
  std::uint32_t h = 0;
  for (unsigned i = 0; i < length; ++i) {
    h += static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(name[i])));
    h += h << 10;
    h ^= h >> 6;
  }
  h += h << 3;
  h ^= h >> 11;
  h += h << 15;
  return h;
}

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// A name being built: at most 255 bytes.
struct Name {
  char text[kNameSize];
  unsigned length = 0;

  void AppendLower(const char* s, unsigned n) {
    for (unsigned i = 0; i < n && length < kNameSize - 1; ++i) text[length++] = Lower(s[i]);
    text[length] = '\0';
  }
};

// The section name that starts a composed name: "default" for null or empty.
void SectionName(Name* name, const char* section, unsigned length) {
  name->length = 0;
  if (section == nullptr || length == 0) {
    name->AppendLower("default", 7);
  } else {
    name->AppendLower(section, length);
  }
}

unsigned Length(const char* s) { return s != nullptr ? static_cast<unsigned>(std::strlen(s)) : 0; }

void PlaceInIndex(kiINIFile* ini, unsigned index) {
  unsigned slot = ini->records[index].hash & ini->slotMask;
  while (ini->slots[slot] != 0) slot = (slot + 1) & ini->slotMask;
  ini->slots[slot] = index + 1;
}

void RebuildIndex(kiINIFile* ini, unsigned slotCount) {
  kiMem_Free(ini->slots);
  ini->slots = static_cast<unsigned*>(kiMem_CallocArray(slotCount, sizeof(unsigned)));
  ini->slotMask = slotCount - 1;
  for (unsigned i = 0; i < ini->count; ++i) PlaceInIndex(ini, i);
}

// The index of the record named name, or -1.
long Find(const kiINIFile* ini, const char* name, unsigned length, std::uint32_t hash) {
  for (unsigned slot = hash & ini->slotMask; ini->slots[slot] != 0;
       slot = (slot + 1) & ini->slotMask) {
    const unsigned index = ini->slots[slot] - 1;
    const Record& r = ini->records[index];
    if (r.hash == hash && r.length == length && std::memcmp(r.name, name, length) == 0) {
      return static_cast<long>(index);
    }
  }
  return -1;
}

long Find(const kiINIFile* ini, const Name& name) {
  return Find(ini, name.text, name.length, Hash(name.text, name.length));
}

char* CopyText(const char* text, unsigned length) {
  char* copy = static_cast<char*>(kiMem_Malloc(length + 1));
  if (length > 0) std::memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

// Replaces the value of the record named name, or appends a record.
void Store(kiINIFile* ini, const Name& name, const char* value, unsigned valueLength,
           bool section) {
  const std::uint32_t hash = Hash(name.text, name.length);
  const long found = Find(ini, name.text, name.length, hash);
  if (found >= 0) {
    Record& r = ini->records[found];
    if (section) return;  // a section record that exists keeps its value
    kiMem_Free(r.value);
    r.value = CopyText(value, valueLength);
    return;
  }
  if (ini->count == ini->capacity) {
    // Steps of 128 records, larger ones once the table is large, so that a
    // load stays linear.
    unsigned step = ini->capacity / 2;
    step = step < kMinCapacity ? kMinCapacity : step - step % kMinCapacity;
    // Past what a block holds the growth is fatal, long before the count wraps.
    const unsigned long long capacity = static_cast<unsigned long long>(ini->capacity) + step;
    ini->records = static_cast<Record*>(kiMem_ReallocArray(ini->records, capacity, sizeof(Record)));
    ini->capacity = static_cast<unsigned>(capacity);
  }
  Record& r = ini->records[ini->count];
  r.name = CopyText(name.text, name.length);
  r.value = CopyText(value, valueLength);
  r.hash = hash;
  r.length = name.length;
  r.section = section;
  ++ini->count;
  if (ini->count * 2 > ini->slotMask + 1) {
    RebuildIndex(ini, (ini->slotMask + 1) * 2);
  } else {
    PlaceInIndex(ini, ini->count - 1);
  }
}

// Makes sure the section exists; name holds its folded name.
void EnsureSection(kiINIFile* ini, const Name& name) { Store(ini, name, "", 0, true); }

// Set with lengths: the section (folded here), then the entry when a key is
// given.
void SetEntry(kiINIFile* ini, const char* section, unsigned sectionLength, const char* key,
              unsigned keyLength, const char* value, unsigned valueLength) {
  Name name;
  SectionName(&name, section, sectionLength);
  EnsureSection(ini, name);
  if (keyLength == 0) return;
  name.AppendLower("/", 1);
  name.AppendLower(key, keyLength);
  Store(ini, name, value, valueLength, false);
}

// The composed name of section/key; false without a key.
bool EntryName(Name* name, const char* section, const char* key) {
  const unsigned keyLength = Length(key);
  if (keyLength == 0) return false;
  SectionName(name, section, Length(section));
  name->AppendLower("/", 1);
  name->AppendLower(key, keyLength);
  return true;
}

const Record* FindEntry(const kiINIFile* ini, const char* section, const char* key) {
  Name name;
  if (ini == nullptr || !EntryName(&name, section, key)) return nullptr;
  const long found = Find(ini, name);
  return found >= 0 ? &ini->records[found] : nullptr;
}

// Whether record r belongs to the section named by prefix (its name is the
// section's, '/', then the key).
// An empty key is not one ("a/b/" holds key "b/" of "a", nothing of "a/b").
bool InSection(const Record& r, const Name& prefix) {
  return r.length > prefix.length + 1 && r.name[prefix.length] == '/' &&
         std::memcmp(r.name, prefix.text, prefix.length) == 0;
}

// Removes the records marked in drop (record indexes), keeping the order, and
// rebuilds the index.
void Compact(kiINIFile* ini, const bool* drop) {
  unsigned kept = 0;
  for (unsigned i = 0; i < ini->count; ++i) {
    if (drop[i]) {
      kiMem_Free(ini->records[i].name);
      kiMem_Free(ini->records[i].value);
    } else {
      ini->records[kept++] = ini->records[i];
    }
  }
  ini->count = kept;
  RebuildIndex(ini, ini->slotMask + 1);
}

// ---- parsing

const char* TrimStart(const char* begin, const char* end) {
  while (begin < end && IsSpace(*begin)) ++begin;
  return begin;
}

const char* TrimEnd(const char* begin, const char* end) {
  while (end > begin && IsSpace(end[-1])) --end;
  return end;
}

unsigned Cut(const char* begin, const char* end, unsigned max) {
  const unsigned length = static_cast<unsigned>(end - begin);
  return length < max ? length : max;
}

struct Parser {
  kiINIFile* ini;
  Name section;  // the current section, folded
  char value[kLineMax + 1];

  void Line(const char* begin, const char* end) {
    begin = TrimStart(begin, end);
    end = TrimEnd(begin, end);
    if (begin == end || *begin == ';' || *begin == '#') return;
    if (*begin == '[') {
      const char* close = static_cast<const char*>(std::memchr(begin, ']', end - begin));
      if (close != nullptr) {
        const char* nameBegin = TrimStart(begin + 1, close);
        const char* nameEnd = TrimEnd(nameBegin, close);
        SectionName(&section, nameBegin, Cut(nameBegin, nameEnd, kFileNameMax));
        EnsureSection(ini, section);
        return;
      }
    }
    const char* equals = static_cast<const char*>(std::memchr(begin, '=', end - begin));
    if (equals == begin) return;
    const char* keyEnd = equals != nullptr ? TrimEnd(begin, equals) : end;
    const unsigned keyLength = Cut(begin, keyEnd, kFileNameMax);
    unsigned valueLength = 0;
    if (equals != nullptr) valueLength = Value(TrimStart(equals + 1, end), end);
    Name name = section;
    name.AppendLower("/", 1);
    name.AppendLower(begin, keyLength);
    Store(ini, name, value, valueLength, false);
  }

  // The value of the raw text [begin, end) into value; its length.
  unsigned Value(const char* begin, const char* end) {
    unsigned n = 0;
    if (begin < end && (*begin == '"' || *begin == '\'')) {
      const char quote = *begin;
      for (const char* p = begin + 1; p < end && *p != quote; ++p) {
        if (*p == '\\') {
          if (++p == end) break;  // a lone backslash at the end is dropped
        }
        value[n++] = *p;
      }
      return n;
    }
    const char* stop = begin;
    while (stop < end && *stop != '#' && *stop != ';') ++stop;
    stop = TrimEnd(begin, stop);
    n = static_cast<unsigned>(stop - begin);
    std::memcpy(value, begin, n);
    return n;
  }
};

// ---- writing

// The whole file as it is written, in one block.
struct Output {
  char* data = nullptr;
  unsigned size = 0;
  unsigned capacity = 0;

  ~Output() { kiMem_Free(data); }

  void Append(const char* s, unsigned n) {
    if (size + n > capacity) {
      capacity = capacity * 2 > size + n ? capacity * 2 : size + n + 4096;
      data = static_cast<char*>(kiMem_Realloc(data, capacity));
    }
    std::memcpy(data + size, s, n);
    size += n;
  }
};

// One line formatted as into a 1024-byte buffer: cut at 1023 bytes.
struct Line {
  char text[kLineMax];
  unsigned length = 0;

  void Append(const char* s, unsigned n) {
    for (unsigned i = 0; i < n && length < kLineMax; ++i) text[length++] = s[i];
  }
  void Append(char c) { Append(&c, 1); }
};

bool NeedsQuotes(const char* value) { return std::strpbrk(value, " \"'#;\\") != nullptr; }

void WriteEntry(Output* out, const Record& r, unsigned prefixLength) {
  Line line;
  line.Append(r.name + prefixLength + 1, r.length - prefixLength - 1);
  line.Append('=');
  const char* value = r.value;
  if (NeedsQuotes(value)) {
    line.Append('"');
    for (const char* p = value; *p != '\0'; ++p) {
      if (*p == '"' || *p == '\'' || *p == '\\') line.Append('\\');
      line.Append(*p);
    }
    line.Append('"');
  } else {
    line.Append(value, Length(value));
  }
  line.Append("\r\n", 2);
  out->Append(line.text, line.length);
}

// Pairs of (section record, entry record), bucketed by section so that the
// writer needs one pass over the table per name, not one per section.
void Format(const kiINIFile* ini, Output* out) {
  const unsigned n = ini->count;
  unsigned* sectionOf = nullptr;  // for each pair: its section record
  unsigned* entryOf = nullptr;    // for each pair: its entry record, in table order
  unsigned pairs = 0, pairCapacity = 0;
  for (unsigned i = 0; i < n; ++i) {
    const Record& r = ini->records[i];
    // Every '/' splits off a possible section name; it counts when a section
    // record has that name.
    for (unsigned at = 1; at + 1 < r.length; ++at) {
      if (r.name[at] != '/') continue;
      const long s = Find(ini, r.name, at, Hash(r.name, at));
      if (s < 0 || !ini->records[s].section) continue;
      if (pairs == pairCapacity) {
        const unsigned long long grown = pairCapacity == 0 ? 256 : pairCapacity * 2ull;
        sectionOf = static_cast<unsigned*>(kiMem_ReallocArray(sectionOf, grown, sizeof(unsigned)));
        entryOf = static_cast<unsigned*>(kiMem_ReallocArray(entryOf, grown, sizeof(unsigned)));
        pairCapacity = static_cast<unsigned>(grown);
      }
      sectionOf[pairs] = static_cast<unsigned>(s);
      entryOf[pairs] = i;
      ++pairs;
    }
  }
  // Stable counting sort of the pairs by section record.
  unsigned* start = static_cast<unsigned*>(kiMem_CallocArray(n + 1ull, sizeof(unsigned)));
  unsigned* sorted = static_cast<unsigned*>(kiMem_MallocArray(pairs + 1ull, sizeof(unsigned)));
  for (unsigned p = 0; p < pairs; ++p) ++start[sectionOf[p] + 1];
  for (unsigned i = 0; i < n; ++i) start[i + 1] += start[i];
  for (unsigned p = 0; p < pairs; ++p) sorted[start[sectionOf[p]]++] = entryOf[p];
  // start[i] is now the end of section i's run; its beginning is start[i - 1].
  for (unsigned i = 0; i < n; ++i) {
    const Record& s = ini->records[i];
    if (!s.section) continue;
    if (std::strcmp(s.name, "default") != 0) {
      if (out->size > 0) out->Append("\r\n", 2);
      Line line;
      line.Append('[');
      line.Append(s.name, s.length);
      line.Append("]\r\n", 3);
      out->Append(line.text, line.length);
    }
    for (unsigned p = i == 0 ? 0 : start[i - 1]; p < start[i]; ++p) {
      WriteEntry(out, ini->records[sorted[p]], s.length);
    }
  }
  kiMem_Free(sorted);
  kiMem_Free(start);
  kiMem_Free(entryOf);
  kiMem_Free(sectionOf);
}

int SaveFile(const char* path, const kiINIFile* ini, bool durably) {
  if (path == nullptr || ini == nullptr) return 0;
  void* fd = kiFile_NoFD();
  if (kiFile_Open(path, kiFileMode_Write | kiFileMode_Create | kiFileMode_Truncate, 0, &fd) != 0) {
    return 0;
  }
  Output out;
  Format(ini, &out);
  const int written = out.size > 0 ? kiFile_Write(fd, out.data, out.size) : 0;
  bool ok = true;
  if (durably) ok = written == static_cast<int>(out.size) && kiFile_Sync(fd) == 0;
  if (kiFile_Close(fd) != 0 && durably) ok = false;
  return ok ? 1 : 0;
}

bool StartsWithNoCase(const char* text, const char* word) {
  for (; *word != '\0'; ++text, ++word) {
    if (Lower(*text) != *word) return false;
  }
  return true;
}

// atof's special values, which kiStr_ParseDouble leaves alone.
bool ParseSpecial(const char* text, double* value) {
  while (IsSpace(*text)) ++text;
  bool negative = false;
  if (*text == '+' || *text == '-') negative = *text++ == '-';
  double v;
  if (StartsWithNoCase(text, "inf")) {
    v = std::numeric_limits<double>::infinity();
  } else if (StartsWithNoCase(text, "nan")) {
    v = std::numeric_limits<double>::quiet_NaN();
  } else {
    return false;
  }
  *value = negative ? -v : v;
  return true;
}

template <typename T>
int SetNumber(kiINIFile* ini, const char* section, const char* key, T value) {
  char text[kNumberSize];
  const std::to_chars_result r = std::to_chars(text, text + sizeof text - 1, value);
  *r.ptr = '\0';
  return kiINIFile_Set(ini, section, key, text);
}

}  // namespace

kiINIFile* kiINIFile_New(unsigned int capacity) {
  kiINIFile* ini = static_cast<kiINIFile*>(kiMem_Calloc(sizeof(kiINIFile)));
  ini->capacity = capacity < kMinCapacity ? kMinCapacity : capacity;
  // Room for every record asked for: a count no block can hold is fatal here,
  // before the slot count below could overflow.
  ini->records = static_cast<Record*>(kiMem_MallocArray(ini->capacity, sizeof(Record)));
  unsigned slots = 256;
  while (slots < ini->capacity * 2) slots *= 2;
  RebuildIndex(ini, slots);
  return ini;
}

void kiINIFile_Delete(kiINIFile* ini) {
  if (ini == nullptr) return;
  for (unsigned i = 0; i < ini->count; ++i) {
    kiMem_Free(ini->records[i].name);
    kiMem_Free(ini->records[i].value);
  }
  kiMem_Free(ini->records);
  kiMem_Free(ini->slots);
  kiMem_Free(ini);
}

int kiINIFile_Load(const char* path, kiINIFile* ini) {
  if (path == nullptr || ini == nullptr) return 0;
  void* fd = kiFile_NoFD();
  if (kiFile_Open(path, kiFileMode_Read, 0, &fd) != 0) return 0;
  // Read until a read answers fewer bytes than asked, in pieces that grow
  // with the buffer.
  char* text = nullptr;
  unsigned size = 0, capacity = 0;
  int result = 1;
  for (;;) {
    if (capacity - size < 4096) {
      if (capacity >= (1u << 30)) {  // 1 GiB: not a configuration file
        result = 0;
        break;
      }
      capacity = capacity < 32768 ? 65536 : capacity * 2;
      text = static_cast<char*>(kiMem_Realloc(text, capacity));
    }
    const unsigned asked = capacity - size;
    const int n = kiFile_Read(fd, text + size, asked);
    if (n < 0) {
      result = 0;
      break;
    }
    size += static_cast<unsigned>(n);
    if (static_cast<unsigned>(n) < asked) break;
  }
  kiFile_Close(fd);
  if (result == 1) kiINIFile_Parse(text, size, ini);
  kiMem_Free(text);
  return result;
}

int kiINIFile_Parse(const char* text, unsigned int size, kiINIFile* ini) {
  if (ini == nullptr || (text == nullptr && size > 0)) return 0;
  Parser parser;
  parser.ini = ini;
  SectionName(&parser.section, nullptr, 0);
  EnsureSection(ini, parser.section);
  const char* const end = text + size;
  for (const char* begin = text; begin < end;) {
    // The first byte always belongs to the line, even a CR or LF: the line
    // end of one line is taken into the next and trimmed there (intended).
    const char* stop = begin + 1;
    const char* limit = end - begin > static_cast<long>(kLineMax) ? begin + kLineMax : end;
    while (stop < limit && *stop != '\r' && *stop != '\n') ++stop;
    const char* lineBegin = begin;
    if (begin == text && stop - begin >= 3 && std::memcmp(begin, "\xEF\xBB\xBF", 3) == 0) {
      lineBegin += 3;
    }
    const char* zero = static_cast<const char*>(std::memchr(lineBegin, '\0', stop - lineBegin));
    parser.Line(lineBegin, zero != nullptr ? zero : stop);
    begin = stop;
  }
  return 1;
}

int kiINIFile_Save(const char* path, const kiINIFile* ini) { return SaveFile(path, ini, false); }

int kiINIFile_SaveDurably(const char* path, const kiINIFile* ini) {
  return SaveFile(path, ini, true);
}

int kiINIFile_Set(kiINIFile* ini, const char* section, const char* key, const char* value) {
  if (ini == nullptr) return 0;
  SetEntry(ini, section, Length(section), key, Length(key), value != nullptr ? value : "",
           Length(value));
  return 1;
}

int kiINIFile_SetInt32(kiINIFile* ini, const char* section, const char* key, long value) {
  return SetNumber(ini, section, key, value);
}

int kiINIFile_SetUInt32(kiINIFile* ini, const char* section, const char* key, unsigned long value) {
  return SetNumber(ini, section, key, value);
}

int kiINIFile_SetDouble(kiINIFile* ini, const char* section, const char* key, double value) {
  char text[kNumberSize];
  // "%g": six significant digits, the shorter of fixed and exponent forms.
  const std::to_chars_result r =
      std::to_chars(text, text + sizeof text - 1, value, std::chars_format::general, 6);
  *r.ptr = '\0';
  return kiINIFile_Set(ini, section, key, text);
}

const char* kiINIFile_Get(const kiINIFile* ini, const char* section, const char* key,
                          const char* def, int* found) {
  const Record* r = FindEntry(ini, section, key);
  if (found != nullptr) *found = r != nullptr ? 1 : 0;
  return r != nullptr ? r->value : def;
}

long kiINIFile_GetInt32(const kiINIFile* ini, const char* section, const char* key, long def) {
  const Record* r = FindEntry(ini, section, key);
  int value = 0;
  if (r == nullptr || kiStr_ParseInt32Base(r->value, 10, &value) != 0) return def;
  return value;
}

unsigned long kiINIFile_GetUInt32(const kiINIFile* ini, const char* section, const char* key,
                                  unsigned long def) {
  const Record* r = FindEntry(ini, section, key);
  unsigned int value = 0;
  if (r == nullptr || kiStr_ParseUInt32Base(r->value, 10, &value) != 0) return def;
  return value;
}

double kiINIFile_GetDouble(const kiINIFile* ini, const char* section, const char* key, double def) {
  const Record* r = FindEntry(ini, section, key);
  if (r == nullptr) return def;
  double value = 0;
  if (kiStr_ParseDouble(r->value, &value) == kiStr_NoNumber) ParseSpecial(r->value, &value);
  return value;
}

int kiINIFile_GetBool(const kiINIFile* ini, const char* section, const char* key, int def) {
  const Record* r = FindEntry(ini, section, key);
  if (r == nullptr) return def;
  int number = 0;
  const int parsed = kiStr_ParseInt32Base(r->value, 10, &number);
  if (parsed == 0 || parsed == kiStr_Overflow || parsed == kiStr_NegativeOverflow) {
    return number != 0 ? 1 : 0;
  }
  switch (r->value[0]) {
    case 't':
    case 'T':
    case 'y':
    case 'Y':
      return 1;
    case 'f':
    case 'F':
    case 'n':
    case 'N':
      return 0;
    default:
      break;
  }
  const char* slash = std::strchr(r->name, '/');
  KI_LOG(kiLogLevel_Error, kiLogCat_INIFile,
         "kiINIFile: invalid value '%s' for a boolean for entry '%.*s/%s' (returning %d) \n",
         r->value, static_cast<int>(slash - r->name), r->name, slash + 1, def);
  return def;
}

unsigned int kiINIFile_GetSectionCount(const kiINIFile* ini) {
  if (ini == nullptr) return 0;
  unsigned n = 0;
  for (unsigned i = 0; i < ini->count; ++i) n += ini->records[i].section ? 1 : 0;
  return n;
}

const char* kiINIFile_GetSectionName(const kiINIFile* ini, unsigned int index) {
  if (ini == nullptr) return "";
  for (unsigned i = 0; i < ini->count; ++i) {
    const Record& r = ini->records[i];
    if (!r.section || index-- != 0) continue;
    return std::strcmp(r.name, "default") == 0 ? "" : r.name;
  }
  return "";
}

unsigned int kiINIFile_GetKeyCount(const kiINIFile* ini, const char* section) {
  if (ini == nullptr) return 0;
  Name prefix;
  SectionName(&prefix, section, Length(section));
  unsigned n = 0;
  for (unsigned i = 0; i < ini->count; ++i) n += InSection(ini->records[i], prefix) ? 1 : 0;
  return n;
}

const char* kiINIFile_GetKeyName(const kiINIFile* ini, const char* section, unsigned int index) {
  if (ini == nullptr) return "";
  Name prefix;
  SectionName(&prefix, section, Length(section));
  for (unsigned i = 0; i < ini->count; ++i) {
    const Record& r = ini->records[i];
    if (InSection(r, prefix) && index-- == 0) return r.name + prefix.length + 1;
  }
  return "";
}

int kiINIFile_DeleteKey(kiINIFile* ini, const char* section, const char* key) {
  Name name;
  if (ini == nullptr || !EntryName(&name, section, key)) return 0;
  const long found = Find(ini, name);
  if (found < 0) return 0;
  bool* drop = static_cast<bool*>(kiMem_CallocArray(ini->count, sizeof(bool)));
  drop[found] = true;
  Compact(ini, drop);
  kiMem_Free(drop);
  return 1;
}

int kiINIFile_DeleteSection(kiINIFile* ini, const char* section) {
  if (ini == nullptr) return 0;
  Name prefix;
  SectionName(&prefix, section, Length(section));
  bool* drop = static_cast<bool*>(kiMem_CallocArray(ini->count + 1ull, sizeof(bool)));
  bool any = false;
  for (unsigned i = 0; i < ini->count; ++i) {
    const Record& r = ini->records[i];
    drop[i] = InSection(r, prefix) ||
              (r.length == prefix.length && std::memcmp(r.name, prefix.text, r.length) == 0);
    any = any || drop[i];
  }
  if (any) Compact(ini, drop);
  kiMem_Free(drop);
  return any ? 1 : 0;
}
