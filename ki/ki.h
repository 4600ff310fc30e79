// ki.h - the whole library in one include: every public header, class and
// procedural alike. Link ki and its companions and this is all you need.
#ifndef KI_KI_H
#define KI_KI_H

#include "ki/Export.h"

// Procedural layer
#include "ki/proc/kiArray.h"
#include "ki/proc/kiCommandLine.h"
#include "ki/proc/kiConfigFile.h"
#include "ki/proc/kiDateText.h"
#include "ki/proc/kiDebug.h"
#include "ki/proc/kiDir.h"
#include "ki/proc/kiFatalError.h"
#include "ki/proc/kiFile.h"
#include "ki/proc/kiHashTable.h"
#include "ki/proc/kiINIFile.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiOSThread.h"
#include "ki/proc/kiPath.h"
#include "ki/proc/kiPlatform.h"
#include "ki/proc/kiStr.h"
#include "ki/proc/kiTime.h"

// Core
#include "ki/core/BitString.h"
#include "ki/core/CString.h"
#include "ki/core/Convert.h"
#include "ki/core/DataBuffer.h"
#include "ki/core/Error.h"
#include "ki/core/Obfuscate.h"
#include "ki/core/String.h"
#include "ki/core/StringData.h"
#include "ki/core/StringList.h"
#include "ki/core/StringTokenizer.h"
#include "ki/core/UInt64.h"
#include "ki/proc/kiLog.h"

// Containers and references
#include "ki/containers/List.h"
#include "ki/containers/Ref.h"
#include "ki/containers/StringHashMap.h"
#include "ki/containers/UserData.h"

// Threads and locks
#include "ki/os/Condition.h"
#include "ki/os/CriticalSection.h"
#include "ki/os/Mutex.h"
#include "ki/os/Semaphore.h"
#include "ki/os/SingleInstanceChecker.h"
#include "ki/os/StoppableThread.h"

// Time
#include "ki/os/DateTime.h"
#include "ki/os/Timeout.h"

// Files, paths and directories
#include "ki/files/Dir.h"
#include "ki/files/File.h"
#include "ki/files/FileHelper.h"
#include "ki/files/PathName.h"
#include "ki/files/TextFile.h"

// Configuration and the command line
#include "ki/config/CommandLineParser.h"
#include "ki/config/Config.h"

// Serialization: events, JSON text, property lists, media info, DLNA profiles
#include "ki/serialize/DLNAInfoMatcher.h"
#include "ki/serialize/JSONFormatter.h"
#include "ki/serialize/MediaInfo.h"
#include "ki/serialize/PackedData.h"
#include "ki/serialize/PropertyList.h"
#include "ki/serialize/Serialize.h"

// Search criteria
#include "ki/search/ExpressionParser.h"
#include "ki/search/SearchExpression.h"

#endif  // KI_KI_H
