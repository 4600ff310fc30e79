// kiConfigFile.h - kiConfigFile: a read-only INI file (the shipped defaults)
// paired with a read-write one (the user's changes), saved with a commit
// through "<file>.tmp" and "<file>.ok" that a crash cannot leave half done.
//
// Paths are library paths made absolute by kiPath_MakeAbsolute (default
// anchor: the application's directory). Messages are logged at the error
// level in category kiLogCat_ConfigFile; the file layer logs its own failures
// besides. Nothing here locks: a caller that shares a record between threads
// serialises access itself.
//
// Save, with P the read-write file, T = P + ".tmp" and K = P + ".ok":
//  0. when K exists without P (an earlier save failed at step 5), rename K to
//     P first, else log "Cannot save file: cannot commit file '%s'\n" (K) and
//     fail with nothing touched: step 3 must never remove the only table;
//  1. note whether K exists;
//  2. write the table to T, every byte out and synced to the disk, else log
//     "Cannot save file '%s'\n" (T) and fail;
//  3. remove K;
//  4. rename T to K, else log "Cannot save file: cannot rename temporary file
//     '%s'\n" (T), and when K existed and step 3 failed "Cannot save file: Was
//     not able to remove previous valid file '%s'\n" (K), and fail;
//  5. remove P, rename K to P, else log "Cannot save file: cannot commit file
//     '%s'\n" (K), and in the case above "Cannot save file: Was not able to
//     remove previous valid file '%s'\n" (P: intended, not K), and fail.
// The directory is synced after each rename. From step 4 on, P or K always
// holds a complete file; the next kiConfigFile_Open finishes the commit.
//
// Open: the read-only file is loaded ("Cannot resolve read-only config file
// path for '%s'\n" when the path builder refuses it, "Cannot load read-only
// config file '%s'\n" when it cannot be read; neither stops the opening).
// Then the read-write file is recovered: T is removed ("Cannot remove
// temporary file '%s'\n"); when K exists, P is removed ("Cannot remove
// previous valid file '%s', aborting commit\n" and the recovery stops) and K
// renamed to P ("Cannot commit file '%s'\n" with K). Then P is loaded; a
// missing P is normal and silent. A read-write path the builder refuses logs
// "Cannot resolve read-write config file path for '%s'\n"; the read-write
// table exists all the same, and every Save of it fails with "Cannot save
// file '%s'\n" (the path as given).
#ifndef KI_PROC_KICONFIGFILE_H
#define KI_PROC_KICONFIGFILE_H

#include "ki/Export.h"

struct kiConfigFile;  // opaque record

// Never null (the record's memory comes from kiMem_*, fatal when exhausted).
// Either path may be null: no such file.
KI_API kiConfigFile* kiConfigFile_Open(const char* readOnlyPath, const char* readWritePath);
KI_API void kiConfigFile_Close(kiConfigFile* cf);  // null: nothing
// Commits the read-write table to its file (see above): 1 success, 0 failure
// (and 0, silently, for a null record or one without a read-write file).
KI_API int kiConfigFile_Save(kiConfigFile* cf);
// 1 when a read-write file was given. Null: 0.
KI_API int kiConfigFile_HasReadWrite(const kiConfigFile* cf);
// The read-write table becomes empty (nothing without one).
KI_API void kiConfigFile_ClearReadWrite(kiConfigFile* cf);

// Getters: read-write table first; when the entry is there, its value is used
// (a value that is not a number gives the caller's default), else the
// read-only table is asked (with the caller's default). Strings point into
// the table (valid until the next change of the record) or are def. The
// conversions are kiINIFile's (locale-independent). A null record answers
// def (found 0).
KI_API const char* kiConfigFile_Get(kiConfigFile* cf, const char* section, const char* key,
                                    const char* def, int* found);
KI_API long kiConfigFile_GetInt32(kiConfigFile* cf, const char* section, const char* key, long def);
KI_API unsigned long kiConfigFile_GetUInt32(kiConfigFile* cf, const char* section, const char* key,
                                            unsigned long def);
KI_API double kiConfigFile_GetDouble(kiConfigFile* cf, const char* section, const char* key,
                                     double def);
KI_API int kiConfigFile_GetBool(kiConfigFile* cf, const char* section, const char* key, int def);

// Setters and deletions: read-write table only; 1 success, 0 without a
// read-write table or record (nothing changes). Deletions answer 1 even when
// there was nothing to remove.
KI_API int kiConfigFile_Set(kiConfigFile* cf, const char* section, const char* key,
                            const char* value);
KI_API int kiConfigFile_SetInt32(kiConfigFile* cf, const char* section, const char* key,
                                 long value);  // "%ld"
KI_API int kiConfigFile_SetUInt32(kiConfigFile* cf, const char* section, const char* key,
                                  unsigned long value);  // "%lu"
KI_API int kiConfigFile_SetDouble(kiConfigFile* cf, const char* section, const char* key,
                                  double value);  // "%g", "C" locale
KI_API int kiConfigFile_DeleteKey(kiConfigFile* cf, const char* section, const char* key);
KI_API int kiConfigFile_DeleteSection(kiConfigFile* cf, const char* section);

// Enumeration of one table: readOnly 1 = the read-only table, 0 = the
// read-write one (without a read-write table: count 0, names ""). Names are ""
// past the end; the default section is reported as "".
KI_API unsigned int kiConfigFile_GetSectionCount(kiConfigFile* cf, int readOnly);
KI_API const char* kiConfigFile_GetSectionName(kiConfigFile* cf, unsigned int index, int readOnly);
KI_API unsigned int kiConfigFile_GetKeyCount(kiConfigFile* cf, const char* section, int readOnly);
KI_API const char* kiConfigFile_GetKeyName(kiConfigFile* cf, const char* section,
                                           unsigned int index, int readOnly);

#endif  // KI_PROC_KICONFIGFILE_H
