// kiFile_p.h - the portable rules behind kiFile_Open, shared by every platform
// folder. Not installed.
#ifndef KI_PROC_KIFILE_P_H
#define KI_PROC_KIFILE_P_H

// Why mode (kiFileMode_*, Append already turned into Write) can never open a
// file: the text kiFile_Open logs, or null when the combination is allowed.
const char* kiFile_OpenModeRefusal(int mode);

#endif  // KI_PROC_KIFILE_P_H
