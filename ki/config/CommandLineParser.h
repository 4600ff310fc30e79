// CommandLineParser.h - kiCommandLineParser, which checks a program's
// arguments against a table the program declares (kiCommandLineDescription)
// and builds the usage text from the same table.
#ifndef KI_CONFIG_COMMANDLINEPARSER_H
#define KI_CONFIG_COMMANDLINEPARSER_H

#include "ki/Export.h"
#include "ki/containers/List.h"
#include "ki/core/CString.h"

// The type of an option's value or of a parameter. Any value other than
// kiCommandLineParameterType_Number is taken as a string.
enum kiCommandLineParameterType {
  kiCommandLineParameterType_String = 0,  // "str" in the usage text
  kiCommandLineParameterType_Number = 1   // "num": a base-10 number in 32 bits
};

// The kinds of a table row. A row of any other kind (kiCommandLineKind_End)
// ends the table.
enum {
  kiCommandLineKind_Switch = 0,  // an option without a value
  kiCommandLineKind_Option = 1,  // an option with a value
  kiCommandLineKind_Param = 2,   // a positional parameter
  kiCommandLineKind_End = -1
};

// The flags of a table row.
enum {
  kiCommandLineFlag_Required = 0x01,      // switch or option: must be given
  kiCommandLineFlag_Optional = 0x02,      // parameter: may be left out
  kiCommandLineFlag_Repeating = 0x04,     // parameter: takes every further value
  kiCommandLineFlag_Help = 0x08,          // switch: stops parsing, Parse answers -1
  kiCommandLineFlag_NeedSeparator = 0x10  // option: "-o5" refused, "-o 5", "-o:5", "-o=5" taken
};

// One row of a program's table; the table is an array of rows ended by a row
// whose kind is not 0, 1 or 2. Null texts count as empty.
struct kiCommandLineDescription {
  int kind;          // kiCommandLineKind_*
  const char* name;  // switch or option name without its prefix; unused for parameters
  const char* text;  // help text of a switch or option; the name of a parameter
  kiCommandLineParameterType type;  // options and parameters
  int flags;                        // kiCommandLineFlag_*
};

// Checks arguments against declared switches ("-v"), options with a string or
// numeric value ("-o value", "-o:value", "-o=value", "-ovalue") and positional
// parameters, and reports the first error in fixed words. An argument that
// starts with '/' or '-' and is at least two characters long is an option;
// "--" ends the options, and long options ("--name") do not exist. Names are
// matched case-sensitively, the longest declared name first ("-outfile" with
// "o" and "out" declared is "out" with the value "file"); switches may be
// bundled ("-ab" is "-a" then "-b", the "-b" taken after all other arguments).
//
// Errors and usage go to standard output and are logged at error level 1,
// category kiLogCat_CommandLine, source "config/CommandLineParser"; the
// messages are listed in docs/COMMANDLINE.md. Nothing throws; not copyable;
// one thread at a time.
class KI_API kiCommandLineParser {
 public:
  // Empty: no declarations, no arguments; prefixes "/-".
  kiCommandLineParser();
  // The table's declarations (null: none) and copies of argv[0..argc-1], the
  // program name first. argc <= 0 or a null argv gives no arguments; a null
  // argv[i] is an empty argument.
  kiCommandLineParser(const kiCommandLineDescription* table, int argc, char** argv);
  // The table's declarations and the arguments of commandLine, split by
  // kiCommandLine_Split (quotes and backslashes as in docs/PROCESSES.md).
  // withProgramName true: the first argument is the program name, as in argv;
  // false: the text holds only the arguments, and the program name is the
  // running program's file (kiPath_GetApplicationFileName, empty when it
  // cannot be had). Null text counts as empty.
  kiCommandLineParser(const kiCommandLineDescription* table, const kiCString& commandLine,
                      bool withProgramName);
  virtual ~kiCommandLineParser();
  kiCommandLineParser(const kiCommandLineParser&) = delete;
  kiCommandLineParser& operator=(const kiCommandLineParser&) = delete;

  // Resets, then parses the arguments: 0 success, 1 error (only the first is
  // reported), -1 a help switch was given (parsing stops there and neither
  // required options nor parameters are checked). On an error the text shown
  // is the usage text when printUsage is true, then the error message; after a
  // help switch it is the usage text when printUsage is true, else nothing.
  // The text is printed to standard output and logged as one record. The
  // stored arguments never change, so parsing again gives the same result.
  int Parse(bool printUsage);

  // Whether the switch or option was given. An undeclared name logs "Testing
  // presence of an unknown option '%s'\n" and answers false.
  bool Found(const kiCString& name) const;
  // Whether the numeric option was given; when it was and value is not null,
  // *value receives its value (otherwise *value is left alone). A name that is
  // not a numeric option logs "Getting value of an unknown number option
  // '%s'\n" and answers false.
  bool Found(const kiCString& name, long* value) const;
  // The same for a string option; otherwise "Getting value of an unknown
  // string option '%s'\n".
  bool Found(const kiCString& name, kiCString* value) const;

  // The positional values of the last Parse, in order; an index at or past
  // the count gives an empty string.
  unsigned GetParameterCount() const;
  kiCString GetParameter(unsigned index) const;

  // Prints the usage text (GetUsageString) to standard output; nothing is
  // logged.
  void Usage();
  // Clears found flags, values and positional values; declarations and
  // arguments stay.
  void Reset();

 protected:
  // Replaces the declarations with those of table (null: none), through the
  // three adders below, up to the first row of another kind.
  void SetDescription(const kiCommandLineDescription* table);
  // Declarations are kept in order; a name declared twice is found as its
  // first declaration. An empty name never matches an argument.
  void AddSwitch(const char* name, const char* text, int flags);
  void AddOption(const char* name, const char* text, kiCommandLineParameterType type, int flags);
  void AddParam(const char* name, kiCommandLineParameterType type, int flags);
  // Replace the arguments, as the constructors describe.
  void SetCommandLine(int argc, char** argv);
  void SetCommandLine(const kiCString& commandLine, bool withProgramName);

  // "Usage: <program>" with each switch, option and parameter, a new-line,
  // then one line a switch or option: its name column padded to the widest,
  // a tab, the help text, a new-line. The program is the file name of the
  // first argument without its directory (after the last '/' or '\') and
  // without a final ".exe" in any case; with no arguments, the running
  // program's name (kiPath_GetApplicationName(true)).
  kiCString GetUsageString() const;
  // "num" for kiCommandLineParameterType_Number, "str" for anything else.
  static const char* GetTypeName(kiCommandLineParameterType type);

 private:
  // A switch or an option, and what the last Parse found for it.
  struct OptionRecord {
    int kind;
    kiCString name;
    kiCString text;
    kiCommandLineParameterType type;
    int flags;
    bool found;
    long number;
    kiCString string;
  };
  // A positional parameter; received is set when it took a value.
  struct ParamRecord {
    kiCString name;
    kiCommandLineParameterType type;
    int flags;
    bool received;
  };
  using OptionList = kiList<OptionRecord>;
  using ParamList = kiList<ParamRecord>;
  using TextList = kiList<kiCString>;

  const OptionRecord* FindOption(const kiCString& name) const;
  // The program's name for the usage line.
  kiCString GetProgramName() const;

  kiCString m_prefixes;  // "/-"
  TextList m_args;       // the program name first
  OptionList m_options;
  ParamList m_params;
  TextList m_values;  // positional values
};

#endif  // KI_CONFIG_COMMANDLINEPARSER_H
