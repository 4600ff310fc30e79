// DLNAInfoMatcher.h - kiDLNAInfoMatcher: the file-name extensions that belong to
// a DLNA media format profile, read from one built-in table.
#ifndef KI_SERIALIZE_DLNAINFOMATCHER_H
#define KI_SERIALIZE_DLNAINFOMATCHER_H

#include "ki/Export.h"
#include "ki/core/CString.h"

// Static lookups over a constant table of 82 profiles (profile name, MIME
// types, extensions). A profile name is compared byte for byte, case-sensitive,
// whole string: no trimming, no prefix match, no case folding. Extension lists
// hold the extensions without the dot, separated by '@', the preferred one
// first; some profiles have none. Both functions may be called from any thread.
class KI_API kiDLNAInfoMatcher {
 public:
  kiDLNAInfoMatcher() {}
  kiDLNAInfoMatcher(const kiDLNAInfoMatcher&) {}
  // Nothing to copy: the class has no data.
  kiDLNAInfoMatcher& operator=(const kiDLNAInfoMatcher&) { return *this; }

  // The whole extension list of profile ("MPEG1": "mpg@mpeg@mp1"); empty for a
  // null or unknown profile and for a profile without extensions.
  static kiCString GetExtensionListFromProfile(const char* profile);
  // The preferred extension: the list up to its first '@', or the whole list
  // ("MPEG1": "mpg", "PNG_LRG": "png"); empty whenever the list is.
  static kiCString GetExtensionFromProfile(const char* profile);
};

#endif  // KI_SERIALIZE_DLNAINFOMATCHER_H
