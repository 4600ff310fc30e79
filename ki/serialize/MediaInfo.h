// MediaInfo.h - kiMediaInfo, the metadata of one media item (four fixed texts,
// a date and an open table of values) with its line-oriented text form, and
// kiMediaInfoSerializer, which turns a property list into JSON text and back.
#ifndef KI_SERIALIZE_MEDIAINFO_H
#define KI_SERIALIZE_MEDIAINFO_H

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/core/String.h"
#include "ki/core/UInt64.h"
#include "ki/os/DateTime.h"

struct kiPropertyList;
class kiMediaInfoTable;  // the counted table; defined in MediaInfo.cpp

// Four fixed texts known only by their keys - "ti" (title), "cr" (creator),
// "ge" (genre) and "an" - a date, a folder used by Finalize, and a table of
// narrow (UTF-8) text values under every other key. Keys are compared byte for
// byte, case-sensitive; a null key is never stored or found.
//
// Intended asymmetries, kept for compatibility:
//   - The overwrite test of Set looks only in the table, never at a fixed
//     field, so a fixed key is assigned whatever the flag (unless
//     DeserializeInfo put a non-empty value for that key in the table).
//   - The getters read only the table: GetCString("ti", d) is d even when the
//     title is set. GetTitle and GetFixedField read the fixed fields.
//   - DeserializeInfo stores every key in the table, the fixed keys too, so a
//     text holding "ti=x" fills the table's "ti", not the title.
//
// Copies share the table: the copy constructor and the assignment copy the
// five texts and the date and then use the source's table, so a Set through
// either object is seen by both. The table is counted and freed by the last
// object that uses it. Duplicate makes an independent object.
//
// The text form (GetSerializedInfo, DeserializeInfo, Peek): one entry a line,
// the key, '=', and the value with every '=' doubled; lines separated by "\n"
// with none after the last. Keys are written as they are, so a key holding
// '=', CR or LF, and a value holding CR or LF, do not read back the same.
//
// Not thread-safe: one thread at a time, and objects sharing a table count as
// one object.
class KI_API kiMediaInfo {
 public:
  // Fixed fields and folder empty, the date set to 1 January 1900
  // 00:00:00.000 local time, a new empty table. That date lies before the
  // range kiDateTime can hold (1901-2038), so the date starts invalid.
  kiMediaInfo();
  kiMediaInfo(const kiMediaInfo& other);             // shares other's table
  kiMediaInfo& operator=(const kiMediaInfo& other);  // shares other's table
  virtual ~kiMediaInfo();

  // A new object (delete it) with the same fields and date and a table of
  // its own holding copies of the entries.
  kiMediaInfo* Duplicate() const;

  // ---- Values ------------------------------------------------------------
  // Stores value under key:
  //   1. overwrite false and a non-empty value for key in the table: nothing;
  //   2. key "ti", "cr", "ge" or "an": the fixed field is assigned;
  //   3. any other key: the table holds value, replacing an earlier one.
  // A null text clears a fixed field and is stored in the table as a null
  // value (the getters then answer their default). A null key: nothing.
  void Set(const char* key, const char* value, bool overwrite = true);
  void Set(const char* key, const kiCString& value, bool overwrite = true);
  void Set(const char* key, const kiString& value, bool overwrite = true);  // as UTF-8
  // Numbers are stored as text and always read back the same (locale-free):
  // integers in decimal ("-12", "4294967295"); a float in the shortest text
  // that reads back to the same float ("0.1", "1e+10", "-0"), with "inf",
  // "-inf" and "nan" for the values that are not finite.
  void Set(const char* key, int value, bool overwrite = true);
  void Set(const char* key, unsigned int value, bool overwrite = true);
  void Set(const char* key, float value, bool overwrite = true);
  void Set(const char* key, const kiuint64& value, bool overwrite = true);

  // The table's value for key, or defaultValue when key is absent, null or
  // holds a null value. A present value that is not a number converts as the
  // readers convert it: GetInt and GetUInt32 read a leading decimal number
  // (clamped to 32 bits; 0 when there is none); GetFloat reads a leading
  // decimal number ("1,5" gives 1; 0 when there is none) or one of "inf",
  // "-inf", "nan"; GetUInt64 reads leading decimal digits and answers
  // defaultValue when there is none. GetString answers defaultValue for a
  // value that is not valid UTF-8. Numbers ignore the process locale.
  kiCString GetCString(const char* key, const kiCString& defaultValue = kiCString()) const;
  kiString GetString(const char* key, const kiString& defaultValue = kiString()) const;
  int GetInt(const char* key, int defaultValue = 0) const;
  unsigned int GetUInt32(const char* key, unsigned int defaultValue = 0) const;
  float GetFloat(const char* key, float defaultValue = 0.0f) const;
  kiuint64 GetUInt64(const char* key, const kiuint64& defaultValue = kiuint64()) const;

  // Removes key from the table (fixed fields are untouched); false when it
  // was not there.
  bool Remove(const char* key);
  // The number of table entries.
  unsigned int GetCount() const;
  // True when the table holds an entry or a fixed field is not empty.
  bool HasInfo() const;

  // ---- Fixed fields, date and folder -------------------------------------
  const kiCString& GetTitle() const { return m_title; }
  const kiCString& GetCreator() const { return m_creator; }
  const kiCString& GetGenre() const { return m_genre; }
  // The fixed field stored under key ("ti", "cr", "ge", "an"); empty for any
  // other key and for null.
  kiCString GetFixedField(const char* key) const;
  const kiDateTime& GetDate() const { return m_date; }
  void SetDate(const kiDateTime& date) { m_date = date; }
  // The folder Finalize builds the item's path in; empty after construction.
  const kiCString& GetFolder() const { return m_folder; }
  void SetFolder(const kiCString& folder) { m_folder = folder; }

  // ---- Text form ---------------------------------------------------------
  // The table as text, entries in the table's iteration order (kiHashTable's
  // buckets); empty for an empty table. Fixed fields, date and folder are not
  // written. A null value is written as an empty one.
  virtual kiCString GetSerializedInfo() const;
  // Adds the entries of text to the table, replacing values of equal keys.
  // One pass: a line's first '=' ends its key; CR or LF ends a line that has
  // a key, and a second CR or LF right after it is skipped; "==" in a value
  // that holds a '=' reads as '='. A CR or LF before the line's first '=' ends
  // nothing: it joins the next key (intended). The last line needs
  // no line break; a last line without '=' is dropped. Every byte sequence is
  // read without fault; null: nothing.
  virtual void DeserializeInfo(const char* text);

  // A description for logs: the non-empty fixed fields as "ti=...", ...,
  // "date=" in ISO form when the date is valid, "folder=..." when set, then
  // the table's entries as key=value (not escaped), joined by separator.
  virtual kiCString GetMediaInfoAsString(const kiCString& separator) const;
  // Builds the item's file path in the folder from the fixed fields:
  // folder + '/' + "<creator> - <title>" (just "<title>" when the creator is
  // empty), with '/', '\\', ':', '*', '?', '"', '<', '>', '|' and control
  // bytes in the name made '_', and a leading '.' made '_'. The path is Set
  // under the key "path" with the given overwrite flag. True when the path
  // was stored; false when the folder or the title is empty or an earlier
  // path was kept. Subclasses build their own paths.
  virtual bool Finalize(bool overwrite);
  // True when the object holds something to carry (HasInfo); subclasses add
  // their own checks.
  virtual bool Validate() const;

  // The value of key read straight from a text in the form above: the first
  // line that starts with key followed by '=' (lines start at the text's start
  // and after each "\n"; other occurrences are skipped). The value runs to
  // the next "\n" or the end (a CR before the "\n" is kept) with "==" read as
  // '='. A new block the caller frees with kiMem_Free; null when no line
  // matches, text or key is null, or the value is 4 GB or longer.
  static char* Peek(const char* text, const char* key);

 private:
  // The fixed field stored under key, or null.
  kiCString* FixedField(const char* key);
  void StoreInTable(const char* key, const char* value);

  kiCString m_title;    // "ti"
  kiCString m_creator;  // "cr"
  kiCString m_genre;    // "ge"
  kiCString m_an;       // "an"
  kiDateTime m_date;
  kiCString m_folder;         // used by Finalize
  kiMediaInfoTable* m_table;  // never null; shared by copies, counted
};

// Converts property lists to and from JSON text; no state.
class KI_API kiMediaInfoSerializer {
 public:
  // The JSON text of list (kiPropertyListSerializer into a kiJSONFormatter).
  // When the serializer answers non-zero, logs "Cannot serialize media info
  // (error %d)\n" (level 1, category 0) and answers the text written so far.
  // A null list answers what the serializer makes of it.
  static kiCString Serialize(kiPropertyList* list);
  // The list read from JSON text (kiJSONFormatter::Parse into a
  // kiPropertyListFormatter); the caller owns the answer
  // (kiPropertyList_Release). Null for an empty text. A text that does not
  // parse logs "Cannot deserialize media info '%s'\n" (level 1, category 0)
  // and answers what was built before the error (possibly null).
  static kiPropertyList* Deserialize(const kiCString& text);
};

#endif  // KI_SERIALIZE_MEDIAINFO_H
