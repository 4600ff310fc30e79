// Times_p.h - what kiFile::GetTimes and kiDir::GetTimes share: a lower-layer
// times query turned into kiDateTime values. Not installed.
#ifndef KI_FILES_TIMES_P_H
#define KI_FILES_TIMES_P_H

#include "ki/os/DateTime.h"
#include "ki/proc/kiTime.h"

// kiFile_GetTimes or kiDir_GetTimes.
typedef int (*kiFiles_TimesQuery)(const char* path, kitimeval* access, kitimeval* modification,
                                  kitimeval* creation);

// Runs query for the outputs that are not null and sets them from its
// results; false, with the outputs untouched, when the query fails.
bool kiFiles_GetTimes(kiFiles_TimesQuery query, const char* path, kiDateTime* access,
                      kiDateTime* modification, kiDateTime* creation);

#endif  // KI_FILES_TIMES_P_H
