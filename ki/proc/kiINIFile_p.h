// kiINIFile_p.h - what kiConfigFile needs of kiINIFile beyond its public
// functions. Not installed.
#ifndef KI_PROC_KIINIFILE_P_H
#define KI_PROC_KIINIFILE_P_H

#include "ki/proc/kiINIFile.h"

// kiINIFile_Save, but the file counts as written only once every byte went out
// and its data reached the disk (kiFile_Sync): 0 otherwise. Null path or ini:
// 0.
int kiINIFile_SaveDurably(const char* path, const kiINIFile* ini);

#endif  // KI_PROC_KIINIFILE_P_H
