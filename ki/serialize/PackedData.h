// PackedData.h - the text form of packed data (property values of tag 101):
// printable ASCII as it is, every other byte as '%' and two hexadecimal digits.
#ifndef KI_SERIALIZE_PACKEDDATA_H
#define KI_SERIALIZE_PACKEDDATA_H

#include "ki/Export.h"
#include "ki/core/CString.h"
#include "ki/core/DataBuffer.h"

// The text of size bytes: bytes 0x20 to 0x7E stand for themselves except
// '%', '"' and '\\'; those three and every byte outside the range are
// written as '%' followed by two upper-case hexadecimal digits ("%25" for
// '%', "%00" for a zero byte). The text is plain ASCII, so it passes through
// JSON, INI and log lines unchanged, and readable bytes stay readable. Null
// bytes or size 0 give "". A text that would pass 4 GB is fatal
// ("memory:malloc").
KI_API kiCString kiPackedData_ToText(const void* bytes, unsigned int size);

// Reads such a text back into out (its previous block is freed; no bytes
// leave it empty). '%' followed by two hexadecimal digits of either case is
// one byte; every other byte stands for itself, including those the writer
// would have escaped. A '%' without two digits after it is a bad escape: it
// is kept as the byte '%', reading goes on, and the answer is false; the
// first bad escape of the text is logged (level 1, category 99):
//   "kiPackedData: bad escape at <offset> in '<text>'\n"
// Answers true when the text had no bad escape. Null text counts as "".
KI_API bool kiPackedData_FromText(const char* text, kiDataBuffer& out);

#endif  // KI_SERIALIZE_PACKEDDATA_H
