// kiConfigFile_p.h - the test seam of kiConfigFile_Save. Not installed.
#ifndef KI_PROC_KICONFIGFILE_P_H
#define KI_PROC_KICONFIGFILE_P_H

#include "ki/Export.h"

// Points of kiConfigFile_Save at which the hook is called, in this order.
enum {
  kiConfigFileSave_Noted = 1,    // K's existence noted
  kiConfigFileSave_TempWritten,  // T written, synced and closed
  kiConfigFileSave_OkRemoved,    // K removed
  kiConfigFileSave_TempRenamed,  // T renamed to K, directory synced
  kiConfigFileSave_FileRemoved,  // P removed
  kiConfigFileSave_Committed     // K renamed to P, directory synced
};

// Called at each point with its number (null: none). Process-wide; for tests
// only (a crash test stops the process there).
typedef void (*kiConfigFile_SaveHook)(int point);
KI_API void kiConfigFile_SetSaveHookForTesting(kiConfigFile_SaveHook hook);

#endif  // KI_PROC_KICONFIGFILE_P_H
