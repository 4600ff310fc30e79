// kiINIFile.h - kiINIFile, an ordered in-memory table of sections and entries
// read from and written to text files in INI syntax.
//
// Names. Section and key names are folded to lower case (ASCII letters only,
// whatever the process locale) on every store and lookup. A null or empty
// section is the section "default"; entries before the first header of a file
// belong to it. An entry is stored under the name "section/key", composed in a
// 256-byte buffer and so cut at 255 bytes; a section name alone is cut at 255
// bytes too. Names read from a file are cut at 127 bytes.
//
// Order. Records keep the order in which they were first added; replacing a
// value keeps the place. Lookups go through a hash index, so loading n entries
// costs O(n); enumeration walks the table.
//
// Every function takes a null table as "nothing there": it fails (0), answers
// its default, a count of 0 or "". Messages are logged at the error level in
// category kiLogCat_INIFile. Nothing here locks: a caller that shares a table
// between threads serialises access itself.
#ifndef KI_PROC_KIINIFILE_H
#define KI_PROC_KIINIFILE_H

#include "ki/Export.h"

struct kiINIFile;  // opaque; records, names and values come from kiMem_*

// An empty table with room for capacity records (at least 128); it grows by
// 128 records at a time. Never null (exhaustion is fatal, and so is a
// capacity whose records no block can hold: past 0xFFFFFFFF bytes).
KI_API kiINIFile* kiINIFile_New(unsigned int capacity);
// Releases the table with every name and value. Null: nothing.
KI_API void kiINIFile_Delete(kiINIFile* ini);

// Reads the whole file at path (a library path: tokens, relative paths
// anchored at the application's directory) and parses it into ini, adding to
// what it holds. 1, or 0 when the file cannot be opened for reading or a read
// fails (the file layer logs why); a failed read leaves what was parsed
// before it. Null path or ini: 0.
KI_API int kiINIFile_Load(const char* path, kiINIFile* ini);

// Parses size bytes of text into ini, adding to what it holds:
//  - the "default" section is added first; it is the current section;
//  - a line is at most 1023 bytes and ends before the next CR or LF (a longer
//    line becomes several lines); a zero byte ends the line's text;
//  - a UTF-8 byte-order mark is dropped from the first line only;
//  - lines are trimmed (tab, LF, VT, FF, CR, space); empty lines and lines
//    starting with ';' or '#' are comments;
//  - "[name]" starts a section (text after the first ']' is ignored; a '['
//    without ']' is an ordinary line);
//  - "key=value"; a line without '=' is a key with the empty value; a line
//    starting with '=' is skipped;
//  - a value starting with '"' or '\'' ends at the next unescaped same quote
//    ('\\' takes the next character literally) and what follows is ignored;
//    an unterminated one runs to the end of the line. Any other value is cut
//    at the first '#' or ';' and trimmed;
//  - a key seen twice keeps the later value in the earlier place.
// 1; 0 (nothing changed) for a null ini, or a null text with a non-zero size.
KI_API int kiINIFile_Parse(const char* text, unsigned int size, kiINIFile* ini);

// Writes the table to path (created or truncated): each section in table
// order as "[name]" CR LF (none for "default"; an empty line before every
// header but at the start of the file), then its entries in table order as
// "key=value" CR LF. A value holding a space, '"', '\'', '#', ';' or '\\' is
// written between double quotes with '\\' before each '"', '\'' and '\\'.
// A line longer than 1023 bytes is cut (and loses its CR LF). Comments of a
// file that was read are not kept. 1, or 0 when the file cannot be created;
// intended: write errors are not checked. Null path or ini: 0.
KI_API int kiINIFile_Save(const char* path, const kiINIFile* ini);

// Adds or replaces section/key with value (null: ""), adding the section
// first when it is missing. A null or empty key only makes sure the section
// exists. 1; 0 for a null ini.
KI_API int kiINIFile_Set(kiINIFile* ini, const char* section, const char* key, const char* value);
// The number as "%ld", "%lu" or "%g" (the "C" locale's '.' in every locale),
// then kiINIFile_Set.
KI_API int kiINIFile_SetInt32(kiINIFile* ini, const char* section, const char* key, long value);
KI_API int kiINIFile_SetUInt32(kiINIFile* ini, const char* section, const char* key,
                               unsigned long value);
KI_API int kiINIFile_SetDouble(kiINIFile* ini, const char* section, const char* key, double value);

// The stored value (valid until the entry or the table changes), or def. found
// (may be null) is set to 1 or 0. A null or empty key is never found.
KI_API const char* kiINIFile_Get(const kiINIFile* ini, const char* section, const char* key,
                                 const char* def, int* found);
// The value as a whole base-10 number in the 32-bit range (white space
// around it allowed); def when absent, not a number, followed by other text,
// or out of range. The unsigned one refuses a sign '-'.
KI_API long kiINIFile_GetInt32(const kiINIFile* ini, const char* section, const char* key,
                               long def);
KI_API unsigned long kiINIFile_GetUInt32(const kiINIFile* ini, const char* section, const char* key,
                                         unsigned long def);
// The value converted as atof does in the "C" locale: the longest leading
// decimal number ('.' separator in every locale), "inf", "infinity" or
// "nan" (any case, with a sign), 0 when none; def only when absent.
// Hexadecimal floating point is not read (0).
KI_API double kiINIFile_GetDouble(const kiINIFile* ini, const char* section, const char* key,
                                  double def);
// def when absent; a whole base-10 integer (out-of-range ones included) is
// true unless 0; otherwise the first character decides: 'T'/'Y' true,
// 'F'/'N' false (any case); anything else logs "kiINIFile: invalid value '%s'
// for a boolean for entry '%s/%s' (returning %d) \n" (value, section and key
// as stored, in lower case, def) and answers def.
KI_API int kiINIFile_GetBool(const kiINIFile* ini, const char* section, const char* key, int def);

// Sections in table order; the "default" section is named "". A name is ""
// past the end; it stays valid until the table changes.
KI_API unsigned int kiINIFile_GetSectionCount(const kiINIFile* ini);
KI_API const char* kiINIFile_GetSectionName(const kiINIFile* ini, unsigned int index);
// Keys of one section in table order, without the "section/" prefix; "" past
// the end. Intended: an entry whose key holds '/' also shows under the
// section named by its name up to that '/' ("a/b/c" is key "b/c" of "a" and
// key "c" of "a/b").
KI_API unsigned int kiINIFile_GetKeyCount(const kiINIFile* ini, const char* section);
KI_API const char* kiINIFile_GetKeyName(const kiINIFile* ini, const char* section,
                                        unsigned int index);

// Removes one entry: 1, or 0 when it is not there.
KI_API int kiINIFile_DeleteKey(kiINIFile* ini, const char* section, const char* key);
// Removes every entry of the section, then the section: 1, or 0 when there was
// neither.
KI_API int kiINIFile_DeleteSection(kiINIFile* ini, const char* section);

#endif  // KI_PROC_KIINIFILE_H
