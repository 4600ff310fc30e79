// kiDateText.h - the date-text reader: an ISO 8601 style date and time cut
// into its nine numbers.
#ifndef KI_PROC_KIDATETEXT_H
#define KI_PROC_KIDATETEXT_H

#include "ki/Export.h"

// The fields kiDateText_Parse fills, in order.
enum {
  kiDateText_Year = 0,         // 0..9999, followed by '-'
  kiDateText_Month = 1,        // 1..12, followed by '-'
  kiDateText_Day = 2,          // 1..31, followed by 'T'
  kiDateText_Hour = 3,         // 0..23, followed by ':'
  kiDateText_Minute = 4,       // 0..59, followed by ':'
  kiDateText_Second = 5,       // 0..59; 'Z' ends, '+'/'-' go to the zone, else milliseconds
  kiDateText_Millisecond = 6,  // 0..999; 'Z' ends, else the zone
  kiDateText_ZoneHours = 7,    // 0..23 (negated after '-'), followed by ':'
  kiDateText_ZoneMinutes = 8,  // 0..59
  kiDateText_FieldCount = 9
};

// Reads text such as "2024-03-05", "2024-03-05T07:08:09",
// "2024-03-05T07:08:09.250Z" or "2024-03-05T07:08:09+01:00" into fields (all
// nine first set to 0). The text is cut at every '-', ':', '.', 'T', 'Z' and
// '+'; each piece must be a decimal number in its field's range followed by
// the separator the table above gives; the end of the text ends the walk
// successfully. Answers 0, or -3 when the text does not read (null, fewer than
// two pieces, nine or more separators, a piece out of range or not a number).
// The zone is read and checked, never applied. fields may not be null.
KI_API int kiDateText_Parse(const char* text, int fields[kiDateText_FieldCount]);

#endif  // KI_PROC_KIDATETEXT_H
