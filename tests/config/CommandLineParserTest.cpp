// CommandLineParserTest.cpp - kiCommandLineParser: option forms, matching,
// positional parameters, the fixed messages (logged and printed) and the usage text.
#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/config/CommandLineParser.h"
#include "ki/proc/kiLog.h"
#include "support/LogCapture.h"

namespace {

// Switches a, b, help h; numeric o; string out; numeric n needing a separator.
const kiCommandLineDescription kOptions[] = {
    {kiCommandLineKind_Switch, "a", "first switch", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Switch, "b", "second switch", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Switch, "h", "this help", kiCommandLineParameterType_String,
     kiCommandLineFlag_Help},
    {kiCommandLineKind_Option, "o", "a number", kiCommandLineParameterType_Number, 0},
    {kiCommandLineKind_Option, "out", "output file", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Option, "n", "count", kiCommandLineParameterType_Number,
     kiCommandLineFlag_NeedSeparator},
    {kiCommandLineKind_End, nullptr, nullptr, kiCommandLineParameterType_String, 0}};

// A required option, a required parameter and a repeating one.
const kiCommandLineDescription kTool[] = {
    {kiCommandLineKind_Switch, "v", "verbose", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Option, "level", "level to use", kiCommandLineParameterType_Number,
     kiCommandLineFlag_Required},
    {kiCommandLineKind_Switch, "?", "help", kiCommandLineParameterType_String,
     kiCommandLineFlag_Help},
    {kiCommandLineKind_Param, nullptr, "source", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Param, nullptr, "targets", kiCommandLineParameterType_String,
     kiCommandLineFlag_Repeating},
    {99, nullptr, nullptr, kiCommandLineParameterType_String, 0}};

// Only parameters, the second optional and repeating.
const kiCommandLineDescription kOptional[] = {
    {kiCommandLineKind_Param, nullptr, "in", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Param, nullptr, "more", kiCommandLineParameterType_String,
     kiCommandLineFlag_Optional | kiCommandLineFlag_Repeating},
    {kiCommandLineKind_End, nullptr, nullptr, kiCommandLineParameterType_String, 0}};

const char kToolUsage[] =
    "Usage: tool [/v] /level<num> [/?] source targets...\n"
    "  /v          \tverbose\n"
    "  /level <num>\tlevel to use\n"
    "  /?          \thelp\n";

// Standard output sent to a temporary file while it lives.
class StdoutCapture {
 public:
  StdoutCapture() : m_file(std::tmpfile()) {
    std::fflush(stdout);
    m_saved = dup(1);
    dup2(fileno(m_file), 1);
  }
  ~StdoutCapture() {
    Take();
    std::fclose(m_file);
  }
  std::string Take() {
    if (m_saved >= 0) {
      std::fflush(stdout);
      dup2(m_saved, 1);
      close(m_saved);
      m_saved = -1;
    }
    std::string text;
    std::rewind(m_file);
    for (int c = std::fgetc(m_file); c != EOF; c = std::fgetc(m_file)) text += static_cast<char>(c);
    return text;
  }

 private:
  std::FILE* m_file;
  int m_saved;
};

// A parser of a program name and arguments (split by the argument-text rules) whose
// protected parts the tests reach.
class Parser : public kiCommandLineParser {
 public:
  Parser(const kiCommandLineDescription* table, const std::string& arguments,
         const std::string& program = "prog")
      : kiCommandLineParser(table, kiCString(("\"" + program + "\" " + arguments).c_str()), true),
        m_table(table) {}
  using kiCommandLineParser::GetUsageString;

  // Parse, with what it printed and logged.
  int Run(bool printUsage = false) {
    kiTest::LogCapture log(2);
    StdoutCapture out;
    const int result = Parse(printUsage);
    printed = out.Take();
    logged = log.Records();
    return result;
  }
  // The one message Run printed, which it also logged exactly so.
  std::string Message() const {
    if (logged.size() != 1) return "<" + std::to_string(logged.size()) + " records>";
    EXPECT_EQ(1u, logged[0].level);
    EXPECT_EQ(static_cast<unsigned>(kiLogCat_CommandLine), logged[0].category);
    EXPECT_EQ("config/CommandLineParser", logged[0].source);
    EXPECT_EQ(printed, logged[0].text);
    return printed;
  }
  // What was found, in declaration order ("a o=5 out=f"), then "|" and the
  // positional values.
  std::string Summary() const {
    std::string found;
    for (const kiCommandLineDescription* row = m_table; row->kind == 0 || row->kind == 1; ++row) {
      long number = 0;
      kiCString text;
      if (row->kind == 0 ? kiCommandLineParser::Found(row->name)
          : row->type == kiCommandLineParameterType_Number
              ? kiCommandLineParser::Found(row->name, &number)
              : kiCommandLineParser::Found(row->name, &text)) {
        const std::string value = row->type != 0 ? std::to_string(number) : text.c_str();
        found += std::string(row->name) + (row->kind == 0 ? "" : "=" + value) + " ";
      }
    }
    found += "|";
    for (unsigned i = 0; i < GetParameterCount(); ++i)
      found += std::string(" ") + GetParameter(i).c_str();
    return found;
  }

  std::string printed;
  std::vector<kiTest::LogRecord> logged;

 private:
  const kiCommandLineDescription* m_table;
};

// Every way of reading arguments, and the message of each error. A row
// without a message must parse (0) in silence; one with a message answers 1.
TEST(CommandLineParserTest, ArgumentsAreReadAndTheFirstErrorIsReported) {
  const struct {
    const kiCommandLineDescription* table;
    const char* args;
    const char* found;
    const char* error;
  } rows[] = {
      // Option values in every form; the next argument whatever it looks like.
      {kOptions, "-o 5", "o=5 |", ""},
      {kOptions, "-o:5", "o=5 |", ""},
      {kOptions, "-o=5", "o=5 |", ""},
      {kOptions, "-o5", "o=5 |", ""},
      {kOptions, "/o -5", "o=-5 |", ""},
      {kOptions, "-o \" +7\"", "o=7 |", ""},
      {kOptions, "-o 5 -o 6", "o=6 |", ""},
      {kOptions, "-outfile", "out=file |", ""},  // the longest declared name wins
      {kOptions, "-out=a=b -n:3", "out=a=b n=3 |", ""},
      {kOptions, "-out: -n 3", "out= n=3 |", ""},
      {kOptions, "-n3", "|", "Separator expected after the option 'n'\n"},
      {kOptions, "-o five", "|", "'five' is not a correct numeric value for option 'o'\n"},
      {kOptions, "-o=", "|", "'' is not a correct numeric value for option 'o'\n"},
      {kOptions, "-o 2147483648", "|",
       "'2147483648' is not a correct numeric value for option 'o'\n"},
      {kOptions, "-o", "|", "Option 'o' requires a value\n"},
      {kOptions, "-a -out", "a |", "Option 'out' requires a value\n"},
      // Bundled switches; the split-off rest is read after every other argument,
      // and always as an option, even after "--".
      {kOptions, "-ab", "a b |", ""},
      {kOptions, "-ab --", "a b |", ""},
      {kOptions, "-ax", "a |", "Unknown option 'x'\n"},
      {kOptions, "-ax -z", "a |", "Unknown option 'z'\n"},
      {kOptions, "-a-b", "a |", "Unknown option '-b'\n"},
      {kOptions, "-ao -o 3", "a o=3 |", "Option 'o' requires a value\n"},
      // No long options; "--" ends the options; "-" is no option.
      {kOptions, "--a", "|", "Unknown option '--a'\n"},
      {kOptions, "/-a", "|", "Unknown option '-a'\n"},
      {kOptions, "-", "|", "Unexpected parameter '-'\n"},
      {kOptions, "-- -a", "|", "Unexpected parameter '-a'\n"},
      // Parameters, repeating ones and required options.
      {kTool, "-level 1 src t1", "level=1 | src t1", ""},
      {kTool, "src -level=2 t1 t2 t3", "level=2 | src t1 t2 t3", ""},
      {kTool, "-level=1 -- -v -- -", "level=1 | -v -- -", ""},
      {kTool, "src t1", "| src t1", "The value for the option 'level' must be specified\n"},
      {kTool, "-level=1", "level=1 |", "The required parameter 'source' was not specified\n"},
      {kTool, "-level=1 src", "level=1 | src",
       "The required parameter 'targets' was not specified\n"},
      {kTool, "-x -y", "|", "Unknown option 'x'\n"},
      {kOptional, "x", "| x", ""},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.args);
    Parser p(r.table, r.args);
    for (int round = 0; round < 2; ++round) {  // parsing again gives the same
      EXPECT_EQ(*r.error == '\0' ? 0 : 1, p.Run());
      EXPECT_EQ(r.found, p.Summary());
      if (*r.error == '\0') {
        EXPECT_EQ("", p.printed);
        EXPECT_TRUE(p.logged.empty());
      } else {
        EXPECT_EQ(r.error, p.Message());
      }
    }
    p.Reset();
    EXPECT_EQ("|", p.Summary());
  }
}

// The help switch stops parsing (-x, level and the parameters go unchecked).
// The usage names the first argument's file, aligns the help lines, and comes
// before an error's message in one record when printUsage is true.
TEST(CommandLineParserTest, HelpAndUsage) {
  Parser help(kTool, "-v -? -x", "/opt/bin/tool");
  EXPECT_EQ(-1, help.Run(true));
  EXPECT_EQ(kToolUsage, help.Message());
  EXPECT_EQ("v ? |", help.Summary());
  EXPECT_EQ(-1, help.Run(false));
  EXPECT_EQ("", help.printed);
  EXPECT_TRUE(help.logged.empty());

  Parser error(kTool, "-level x", "tool");
  EXPECT_EQ(1, error.Run(true));
  EXPECT_EQ(std::string(kToolUsage) + "'x' is not a correct numeric value for option 'level'\n",
            error.Message());

  const char* const programs[] = {"tool", "/opt/x/tool.EXE", "C:\\x\\tool.exe", "tool.exe.bak", ""};
  const char* const shown[] = {"tool", "tool", "tool", "tool.exe.bak", ""};
  for (int i = 0; i < 5; ++i) {
    SCOPED_TRACE(programs[i]);
    Parser p(kTool, "", programs[i]);
    StdoutCapture out;
    p.Usage();
    EXPECT_EQ(std::string("Usage: ") + shown[i] + (kToolUsage + 11), out.Take());
  }
}

TEST(CommandLineParserTest, QueriesOfUndeclaredOrMistypedOptionsAreLogged) {
  Parser p(kOptions, "-a -o 4 -out f");
  ASSERT_EQ(0, p.Run());
  kiTest::LogCapture log(2);
  long number = 42;
  kiCString text;
  EXPECT_FALSE(p.Found("zz"));
  EXPECT_FALSE(p.Found("zz", &number));
  EXPECT_FALSE(p.Found("out", &number));  // a string option
  EXPECT_FALSE(p.Found("a", &text));      // a switch
  EXPECT_FALSE(p.Found("o", &text));      // a numeric option
  EXPECT_THAT(log.Texts(),
              ::testing::ElementsAre("Testing presence of an unknown option 'zz'\n",
                                     "Getting value of an unknown number option 'zz'\n",
                                     "Getting value of an unknown number option 'out'\n",
                                     "Getting value of an unknown string option 'a'\n",
                                     "Getting value of an unknown string option 'o'\n"));
  // A null value pointer still answers; an option not given leaves the value alone.
  EXPECT_TRUE(p.Found("o", static_cast<long*>(nullptr)));
  EXPECT_TRUE(p.Found("out", static_cast<kiCString*>(nullptr)));
  EXPECT_FALSE(p.Found("n", &number));
  EXPECT_EQ(42, number);
  EXPECT_EQ(5u, log.Count());
}

TEST(CommandLineParserTest, ArgumentSourcesAndNullInputs) {
  kiTest::LogCapture log(2);
  // Without the program name the text is all arguments; the usage names this program.
  kiCommandLineParser text(kOptions, kiCString("-o 7"), false);
  EXPECT_EQ(0, text.Parse(false));
  long number = 0;
  EXPECT_TRUE(text.Found("o", &number));
  EXPECT_EQ(7, number);
  StdoutCapture out;
  text.Usage();
  EXPECT_THAT(out.Take(), ::testing::StartsWith("Usage: kiConfigTest [/a]"));

  // argv is copied, a null argument is empty; a null table or argv holds nothing.
  char* argv[] = {const_cast<char*>("prog"), nullptr};
  kiCommandLineParser copied(kOptional, 2, argv);
  EXPECT_EQ(0, copied.Parse(false));
  EXPECT_EQ(1u, copied.GetParameterCount());
  EXPECT_STREQ("", copied.GetParameter(0));
  EXPECT_STREQ("", copied.GetParameter(1));
  kiCommandLineParser undeclared(nullptr, 2, argv);
  StdoutCapture printed;
  EXPECT_EQ(1, undeclared.Parse(false));
  EXPECT_EQ("Unexpected parameter ''\n", printed.Take());
  kiCommandLineParser none(kOptions, 5, nullptr);
  EXPECT_EQ(0, none.Parse(false));
  kiCommandLineParser blank;
  EXPECT_EQ(0, blank.Parse(false));
  EXPECT_THAT(log.Texts(), ::testing::ElementsAre("Unexpected parameter ''\n"));
}

}  // namespace
