// MediaInfo.cpp - kiMediaInfo (fields, the counted value table, the text form)
// and kiMediaInfoSerializer.
#include "ki/serialize/MediaInfo.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstring>

#include "ki/containers/Ref.h"
#include "ki/containers/StringHashMap.h"
#include "ki/core/Convert.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/serialize/JSONFormatter.h"
#include "ki/serialize/PropertyList.h"

KI_LOG_SOURCE("serialize/MediaInfo")

namespace {

void* CopyValue(const void* value) { return kiMem_Strdup(static_cast<const char*>(value)); }
void FreeValue(void* value) { kiMem_Free(value); }

constexpr kiCustomHashTable_HelperFunctions_Value kValueHelpers = {CopyValue, FreeValue};

constexpr const char* kFixedKeys[] = {"ti", "cr", "ge", "an"};

// value with every "==" read as '='.
void AppendUnescaped(kiCString& out, const char* value, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    out += value[i];
    if (value[i] == '=' && i + 1 < length && value[i + 1] == '=') ++i;
  }
}

// A 32-bit integer as decimal text, in every locale.
struct Decimal {
  template <typename T>
  explicit Decimal(T value) {
    *std::to_chars(text, text + sizeof text - 1, value).ptr = '\0';
  }
  char text[16];
};

kiCString Slice(const char* text, size_t start, size_t end) {
  return kiCString(text + start, static_cast<unsigned int>(end - start));
}

// A file name made from free text: characters that cannot stand in a name on
// common file systems, and a leading '.', become '_'.
kiCString SafeFileName(const kiCString& text) {
  static const char kBad[] = "/\\:*?\"<>|";
  kiCString name;
  for (unsigned int i = 0; i < text.length(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text.c_str()[i]);
    const bool bad = c < 0x20 || c == 0x7F || std::strchr(kBad, c) != nullptr ||
                     (i == 0 && c == '.');  // c == 0 is < 0x20: strchr never sees it
    name += bad ? '_' : static_cast<char>(c);
  }
  return name;
}

}  // namespace

// The value table one or more kiMediaInfo share; the last Release deletes it.
class kiMediaInfoTable : public kiRefCounted {
 public:
  kiMediaInfoTable() : m_map(kValueHelpers) {}
  kiMediaInfoTable(const kiMediaInfoTable&) = delete;
  kiMediaInfoTable& operator=(const kiMediaInfoTable&) = delete;
  ~kiMediaInfoTable() override = default;

  kiStringHashMap<const char*> m_map;  // values are kiMem_* copies, freed by the map
};

// ---- Life -------------------------------------------------------------------

kiMediaInfo::kiMediaInfo() : m_table(new kiMediaInfoTable) {
  m_table->Retain();
  kitm start = {};
  start.tm_mday = 1;  // 1 January 1900, 00:00:00.000
  start.tm_isdst = -1;
  m_date.Set(start);
}

kiMediaInfo::kiMediaInfo(const kiMediaInfo& other)
    : m_title(other.m_title),
      m_creator(other.m_creator),
      m_genre(other.m_genre),
      m_an(other.m_an),
      m_date(other.m_date),
      m_folder(other.m_folder),
      m_table(other.m_table) {
  m_table->Retain();
}

kiMediaInfo& kiMediaInfo::operator=(const kiMediaInfo& other) {
  if (this == &other) return *this;
  m_title = other.m_title;
  m_creator = other.m_creator;
  m_genre = other.m_genre;
  m_an = other.m_an;
  m_date = other.m_date;
  m_folder = other.m_folder;
  if (m_table != other.m_table) {
    other.m_table->Retain();
    m_table->Release();
    m_table = other.m_table;
  }
  return *this;
}

kiMediaInfo::~kiMediaInfo() { m_table->Release(); }

kiMediaInfo* kiMediaInfo::Duplicate() const {
  kiMediaInfo* copy = new kiMediaInfo;
  copy->m_title = m_title;
  copy->m_creator = m_creator;
  copy->m_genre = m_genre;
  copy->m_an = m_an;
  copy->m_date = m_date;
  copy->m_folder = m_folder;
  m_table->m_map.ForEach(
      [](const char* key, const char* value, void* target) {
        static_cast<kiMediaInfoTable*>(target)->m_map.Add(key, value);
      },
      copy->m_table);
  return copy;
}

// ---- Values -----------------------------------------------------------------

kiCString* kiMediaInfo::FixedField(const char* key) {
  kiCString* const fields[] = {&m_title, &m_creator, &m_genre, &m_an};
  if (key == nullptr) return nullptr;
  for (int i = 0; i < 4; ++i) {
    if (std::strcmp(key, kFixedKeys[i]) == 0) return fields[i];
  }
  return nullptr;
}

kiCString kiMediaInfo::GetFixedField(const char* key) const {
  const kiCString* field = const_cast<kiMediaInfo*>(this)->FixedField(key);
  return field != nullptr ? *field : kiCString();
}

void kiMediaInfo::StoreInTable(const char* key, const char* value) {
  m_table->m_map.Add(key, value);
}

void kiMediaInfo::Set(const char* key, const char* value, bool overwrite) {
  if (key == nullptr) return;
  if (!overwrite) {
    // Only the table is asked, so a fixed key is assigned below whatever the
    // flag (intended).
    const char* current = m_table->m_map[key];
    if (current != nullptr && *current != '\0') return;
  }
  kiCString* field = FixedField(key);
  if (field != nullptr) {
    *field = value;
  } else {
    StoreInTable(key, value);
  }
}

void kiMediaInfo::Set(const char* key, const kiCString& value, bool overwrite) {
  Set(key, value.c_str(), overwrite);
}

void kiMediaInfo::Set(const char* key, const kiString& value, bool overwrite) {
  const kiCharBuffer text = kiConvUTF8.ToUTF8(value.c_str());
  Set(key, text.data(), overwrite);
}

void kiMediaInfo::Set(const char* key, int value, bool overwrite) {
  Set(key, Decimal(value).text, overwrite);
}

void kiMediaInfo::Set(const char* key, unsigned int value, bool overwrite) {
  Set(key, Decimal(value).text, overwrite);
}

void kiMediaInfo::Set(const char* key, float value, bool overwrite) {
  char text[32];
  if (std::isnan(value)) {
    std::strcpy(text, "nan");
  } else if (std::isinf(value)) {
    std::strcpy(text, value < 0 ? "-inf" : "inf");
  } else {
    // Shortest form that reads back to the same float, '.' in every locale.
    *std::to_chars(text, text + sizeof text - 1, value).ptr = '\0';
  }
  Set(key, text, overwrite);
}

void kiMediaInfo::Set(const char* key, const kiuint64& value, bool overwrite) {
  Set(key, value.ToCString().c_str(), overwrite);
}

kiCString kiMediaInfo::GetCString(const char* key, const kiCString& defaultValue) const {
  const char* value = m_table->m_map[key];
  return value != nullptr ? kiCString(value) : defaultValue;
}

kiString kiMediaInfo::GetString(const char* key, const kiString& defaultValue) const {
  const char* value = m_table->m_map[key];
  if (value == nullptr) return defaultValue;
  const kiWCharBuffer text = kiConvUTF8.ToString(value);
  return text.data() != nullptr ? kiString(text) : defaultValue;
}

int kiMediaInfo::GetInt(const char* key, int defaultValue) const {
  const char* value = m_table->m_map[key];
  if (value == nullptr) return defaultValue;
  int number = 0;
  kiCString(value).ToInt32(&number);
  return number;
}

unsigned int kiMediaInfo::GetUInt32(const char* key, unsigned int defaultValue) const {
  const char* value = m_table->m_map[key];
  if (value == nullptr) return defaultValue;
  unsigned int number = 0;
  kiCString(value).ToUInt32(&number);
  return number;
}

float kiMediaInfo::GetFloat(const char* key, float defaultValue) const {
  const char* value = m_table->m_map[key];
  if (value == nullptr) return defaultValue;
  // The texts Set writes for values that are not finite.
  if (std::strcmp(value, "inf") == 0) return HUGE_VALF;
  if (std::strcmp(value, "-inf") == 0) return -HUGE_VALF;
  if (std::strcmp(value, "nan") == 0) return NAN;
  double number = 0;
  kiCString(value).ToDouble(&number);
  // Rounded to float as the hardware would, without a conversion out of
  // range: from FLT_MAX plus half its unit in the last place up is infinity.
  const double limit = static_cast<double>(FLT_MAX) + std::ldexp(1.0, 103);
  if (std::fabs(number) >= limit) return number < 0 ? -HUGE_VALF : HUGE_VALF;
  if (std::fabs(number) > static_cast<double>(FLT_MAX)) return number < 0 ? -FLT_MAX : FLT_MAX;
  return static_cast<float>(number);
}

kiuint64 kiMediaInfo::GetUInt64(const char* key, const kiuint64& defaultValue) const {
  const char* value = m_table->m_map[key];
  if (value == nullptr) return defaultValue;
  return kiuint64::FromString(value, defaultValue);
}

bool kiMediaInfo::Remove(const char* key) { return m_table->m_map.Remove(key); }

unsigned int kiMediaInfo::GetCount() const { return m_table->m_map.GetCount(); }

bool kiMediaInfo::HasInfo() const {
  return GetCount() > 0 || !m_title.IsEmpty() || !m_creator.IsEmpty() || !m_genre.IsEmpty() ||
         !m_an.IsEmpty();
}

// ---- Text form --------------------------------------------------------------

kiCString kiMediaInfo::GetSerializedInfo() const {
  kiCString text;
  m_table->m_map.ForEach(
      [](const char* key, const char* value, void* context) {
        kiCString& out = *static_cast<kiCString*>(context);
        if (!out.IsEmpty()) out += '\n';  // every line holds at least its '='
        out += key;
        out += '=';
        for (const char* p = value; p != nullptr && *p != '\0'; ++p) {
          out += *p;
          if (*p == '=') out += '=';
        }
      },
      &text);
  return text;
}

void kiMediaInfo::DeserializeInfo(const char* text) {
  if (text == nullptr) return;
  const size_t length = std::strlen(text);
  size_t lineStart = 0;   // where the key starts
  size_t valueStart = 0;  // after the key's '='
  bool inValue = false;
  bool escaped = false;
  auto store = [&](size_t valueEnd) {
    const kiCString key = Slice(text, lineStart, valueStart - 1);
    kiCString value;
    if (escaped) {
      AppendUnescaped(value, text + valueStart, valueEnd - valueStart);
    } else {
      value = Slice(text, valueStart, valueEnd);
    }
    StoreInTable(key.c_str(), value.c_str());
  };
  for (size_t i = 0; i < length; ++i) {
    const char c = text[i];
    if (!inValue) {
      // A CR or LF here ends nothing: it belongs to the next key (intended).
      if (c == '=') {
        inValue = true;
        escaped = false;
        valueStart = i + 1;
      }
    } else if (c == '=') {
      escaped = true;
    } else if (c == '\r' || c == '\n') {
      store(i);
      if (i + 1 < length && (text[i + 1] == '\r' || text[i + 1] == '\n')) ++i;
      inValue = false;
      lineStart = i + 1;
    }
  }
  if (inValue) store(length);
}

char* kiMediaInfo::Peek(const char* text, const char* key) {
  if (text == nullptr || key == nullptr) return nullptr;
  const size_t keyLength = std::strlen(key);
  for (const char* line = text; line != nullptr;) {
    if (std::strncmp(line, key, keyLength) == 0 && line[keyLength] == '=') {
      const char* value = line + keyLength + 1;
      const char* end = std::strchr(value, '\n');
      const size_t valueLength =
          end != nullptr ? static_cast<size_t>(end - value) : std::strlen(value);
      if (valueLength >= 0xFFFFFFFFu) return nullptr;  // no block that large
      char* result = static_cast<char*>(kiMem_Malloc(static_cast<unsigned int>(valueLength + 1)));
      size_t n = 0;
      for (size_t i = 0; i < valueLength; ++i) {
        result[n++] = value[i];
        if (value[i] == '=' && i + 1 < valueLength && value[i + 1] == '=') ++i;
      }
      result[n] = '\0';
      return result;
    }
    line = std::strchr(line, '\n');
    if (line != nullptr) ++line;
  }
  return nullptr;
}

// ---- Hooks ------------------------------------------------------------------

kiCString kiMediaInfo::GetMediaInfoAsString(const kiCString& separator) const {
  struct Out {
    kiCString text;
    const kiCString* separator;
    void Add(const char* key, const char* value) {
      if (!text.IsEmpty()) text += *separator;
      text += key;
      text += '=';
      text += value;
    }
  } out{kiCString(), &separator};
  const kiCString* const fields[] = {&m_title, &m_creator, &m_genre, &m_an};
  for (int i = 0; i < 4; ++i) {
    if (!fields[i]->IsEmpty()) out.Add(kFixedKeys[i], fields[i]->c_str());
  }
  if (m_date.IsValid()) out.Add("date", m_date.FormatISO().c_str());
  if (!m_folder.IsEmpty()) out.Add("folder", m_folder.c_str());
  m_table->m_map.ForEach([](const char* key, const char* value,
                            void* context) { static_cast<Out*>(context)->Add(key, value); },
                         &out);
  return out.text;
}

bool kiMediaInfo::Finalize(bool overwrite) {
  if (m_folder.IsEmpty() || m_title.IsEmpty()) return false;
  kiCString path = m_folder;
  if (path.Last() != '/') path += '/';
  path += SafeFileName(m_creator.IsEmpty() ? m_title : m_creator + " - " + m_title);
  Set("path", path, overwrite);
  return GetCString("path") == path;
}

bool kiMediaInfo::Validate() const { return HasInfo(); }

// ---- kiMediaInfoSerializer --------------------------------------------------

kiCString kiMediaInfoSerializer::Serialize(kiPropertyList* list) {
  kiJSONFormatter json;
  kiPropertyListSerializer serializer;
  const int result = serializer.Serialize(list, json);
  if (result != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_General, "Cannot serialize media info (error %d)\n", result);
  }
  return json.Result();
}

kiPropertyList* kiMediaInfoSerializer::Deserialize(const kiCString& text) {
  if (text.IsEmpty()) return nullptr;
  kiPropertyListFormatter formatter;
  if (kiJSONFormatter::Parse(text.c_str(), formatter) != 0) {
    KI_LOG(kiLogLevel_Error, kiLogCat_General, "Cannot deserialize media info '%s'\n",
           text.c_str());
  }
  return formatter.Reset();  // the formatter gives the list up; what it kept dies with it
}
