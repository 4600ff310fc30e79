// kiCommandLine.h - the quoting rules of argument texts: one text split into
// arguments, and arguments joined into a text that splits back into them.
// The program launcher and the command-line parser share these rules.
#ifndef KI_PROC_KICOMMANDLINE_H
#define KI_PROC_KICOMMANDLINE_H

#include "ki/Export.h"

// The rules (docs/PROCESSES.md has a table of examples):
//  - Arguments are separated by runs of white space (bytes 9 to 13 and space);
//    white space before the first and after the last argument is ignored.
//  - '"' opens or closes a quoted section, in which white space belongs to the
//    argument. Quoted and unquoted pieces that touch make one argument
//    (a"b c"d is `ab cd`); "" is an empty argument. A section left open runs
//    to the end of the text.
//  - 2n backslashes before a '"' give n backslashes, and the quote opens or
//    closes a section; 2n+1 backslashes before a '"' give n backslashes and a
//    literal '"'. Backslashes before anything else are literal
//    (C:\tools\app.exe and \\server\share stay as they are).
//  - Every other byte is taken as it is (UTF-8 passes through).

// Splits text into arguments and answers their count; null or empty text (or
// white space only) gives 0. When argv is not null, *argv receives one block
// (kiMem_Free, once): the argument pointers, a null pointer after the last,
// then the argument texts. The block is made even for 0 arguments. A text
// whose arguments would need a block of 4 GiB or more counts as empty.
KI_API unsigned int kiCommandLine_Split(const char* text, char*** argv);

// The text kiCommandLine_Split turns back into exactly args[0..count-1], in a
// new block owned by the caller (kiMem_Free). Arguments are separated by one
// space; only an empty one, or one holding white space or '"', is quoted, and
// backslashes are doubled only where they stand before a '"' or the closing
// quote. A null argument counts as empty; null args gives "" whatever count
// is. Null when the text would reach 4 GiB.
KI_API char* kiCommandLine_Join(const char* const* args, unsigned int count);

#endif  // KI_PROC_KICOMMANDLINE_H
