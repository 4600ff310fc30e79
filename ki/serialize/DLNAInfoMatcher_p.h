// DLNAInfoMatcher_p.h - the profile table behind kiDLNAInfoMatcher, for tests
// and tools that need its rows; not installed.
#ifndef KI_SERIALIZE_DLNAINFOMATCHER_P_H
#define KI_SERIALIZE_DLNAINFOMATCHER_P_H

#include "ki/Export.h"

// One profile: MIME types and extensions are '@'-separated lists; extensions
// may be empty (never null).
struct kiDLNAProfileRow {
  const char* profile;
  const char* mimeTypes;
  const char* extensions;
};

// The rows in table order, ended by a row whose profile is null.
KI_API const kiDLNAProfileRow* kiDLNAInfoMatcher_GetTableForTesting();

#endif  // KI_SERIALIZE_DLNAINFOMATCHER_P_H
