// CommandLineParser.cpp - kiCommandLineParser: declarations from the table,
// the argument walk with its fixed messages, and the usage text.
#include "ki/config/CommandLineParser.h"

#include <cstdio>
#include <cstring>

#include "ki/proc/kiCommandLine.h"
#include "ki/proc/kiLog.h"
#include "ki/proc/kiMem.h"
#include "ki/proc/kiPath.h"
#include "ki/proc/kiStr.h"

KI_LOG_SOURCE("config/CommandLineParser")

namespace {

// The console of the library: standard output, flushed so that the text is
// seen before the program goes on (or ends).
void PrintToConsole(const kiCString& text) {
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

// A copy of a block from kiPath_* (null: empty), which is freed.
kiCString Adopt(char* block) {
  kiCString text(block);
  kiMem_Free(block);
  return text;
}

// before + text + after, without a format: texts of any length cost one copy.
kiCString Message(const char* before, const kiCString& text, const char* after) {
  kiCString message(before);
  message += text;
  message += after;
  return message;
}

// True when name ends with ".exe" in any case.
bool EndsWithExe(const kiCString& name) {
  return name.length() >= 4 && name.Right(4).CompareNoCase(".exe") == 0;
}

}  // namespace

kiCommandLineParser::kiCommandLineParser() : m_prefixes("/-") {}

kiCommandLineParser::kiCommandLineParser(const kiCommandLineDescription* table, int argc,
                                         char** argv)
    : m_prefixes("/-") {
  SetDescription(table);
  SetCommandLine(argc, argv);
}

kiCommandLineParser::kiCommandLineParser(const kiCommandLineDescription* table,
                                         const kiCString& commandLine, bool withProgramName)
    : m_prefixes("/-") {
  SetDescription(table);
  SetCommandLine(commandLine, withProgramName);
}

kiCommandLineParser::~kiCommandLineParser() = default;

// ---- Declarations and arguments ---------------------------------------------

void kiCommandLineParser::SetDescription(const kiCommandLineDescription* table) {
  m_options.erase();
  m_params.erase();
  m_values.erase();
  if (table == nullptr) return;
  for (const kiCommandLineDescription* row = table;; ++row) {
    if (row->kind == kiCommandLineKind_Switch) {
      AddSwitch(row->name, row->text, row->flags);
    } else if (row->kind == kiCommandLineKind_Option) {
      AddOption(row->name, row->text, row->type, row->flags);
    } else if (row->kind == kiCommandLineKind_Param) {
      AddParam(row->text, row->type, row->flags);
    } else {
      break;
    }
  }
}

void kiCommandLineParser::AddSwitch(const char* name, const char* text, int flags) {
  m_options.push_back(OptionRecord{kiCommandLineKind_Switch, name, text,
                                   kiCommandLineParameterType_String, flags, false, 0,
                                   kiCString()});
}

void kiCommandLineParser::AddOption(const char* name, const char* text,
                                    kiCommandLineParameterType type, int flags) {
  m_options.push_back(
      OptionRecord{kiCommandLineKind_Option, name, text, type, flags, false, 0, kiCString()});
}

void kiCommandLineParser::AddParam(const char* name, kiCommandLineParameterType type, int flags) {
  m_params.push_back(ParamRecord{name, type, flags, false});
}

void kiCommandLineParser::SetCommandLine(int argc, char** argv) {
  m_args.erase();
  if (argv == nullptr) return;
  for (int i = 0; i < argc; ++i) m_args.push_back(kiCString(argv[i]));
}

void kiCommandLineParser::SetCommandLine(const kiCString& commandLine, bool withProgramName) {
  m_args.erase();
  if (!withProgramName) m_args.push_back(Adopt(kiPath_GetApplicationFileName()));
  char** argv = nullptr;
  const unsigned int count = kiCommandLine_Split(commandLine.c_str(), &argv);
  for (unsigned int i = 0; i < count; ++i) m_args.push_back(kiCString(argv[i]));
  kiMem_Free(argv);
}

// ---- Parsing ------------------------------------------------------------------

void kiCommandLineParser::Reset() {
  for (OptionList::Item* item = m_options.GetFirstItem(); item != nullptr;
       item = item->GetNextItem()) {
    OptionRecord& option = item->Get();
    option.found = false;
    option.number = 0;
    option.string.Empty();
  }
  for (ParamList::Item* item = m_params.GetFirstItem(); item != nullptr;
       item = item->GetNextItem()) {
    item->Get().received = false;
  }
  m_values.erase();
}

int kiCommandLineParser::Parse(bool printUsage) {
  Reset();
  // Bundled switches are appended to a working copy, so that the stored
  // arguments stay as given and a second Parse sees the same list.
  TextList args;
  for (TextList::Item* item = m_args.GetFirstItem(); item != nullptr; item = item->GetNextItem()) {
    args.push_back(item->Get());
  }

  kiCString error;
  bool help = false;
  bool optionsAllowed = true;
  ParamList::Item* param = m_params.GetFirstItem();
  // Arguments at or past `given` were split off bundled switches: they are
  // always read as options, even after "--" (never as positional values, the
  // end marker or long options).
  const int given = args.GetCount();
  int position = 1;  // the program name is skipped
  TextList::Item* arg = args.GetFirstItem();
  if (arg != nullptr) arg = arg->GetNextItem();

  for (; arg != nullptr && error.IsEmpty() && !help; arg = arg->GetNextItem(), ++position) {
    const kiCString s = arg->Get();
    const bool piece = position >= given;
    if (!piece && optionsAllowed && s == "--") {
      optionsAllowed = false;
      continue;
    }
    if (!piece && (!optionsAllowed || s.length() < 2 || m_prefixes.Find(s.First()) == kiNPos)) {
      if (param == nullptr) {
        error = Message("Unexpected parameter '", s, "'\n");
        break;
      }
      m_values.push_back(s);
      param->Get().received = true;
      if ((param->Get().flags & kiCommandLineFlag_Repeating) == 0) param = param->GetNextItem();
      continue;
    }
    if (!piece && s.First() == '-' && s.c_str()[1] == '-') {
      error = Message("Unknown option '--", s.Mid(2), "'\n");
      break;
    }

    // The longest declared name that starts the text (the first declared
    // of that name). Only declared lengths are tried, so a long
    // argument costs no more than the names it is compared with.
    const kiCString text = s.Mid(1);
    OptionRecord* option = nullptr;
    unsigned int nameLength = 0;
    for (OptionList::Item* item = m_options.GetFirstItem(); item != nullptr;
         item = item->GetNextItem()) {
      const kiCString& name = item->Get().name;
      if (name.length() > nameLength && name.length() <= text.length() &&
          std::memcmp(name.c_str(), text.c_str(), name.length()) == 0) {
        option = &item->Get();
        nameLength = name.length();
      }
    }
    if (option == nullptr) {
      error = Message("Unknown option '", text, "'\n");
      break;
    }
    const kiCString rest = text.Mid(nameLength);

    if (option->kind == kiCommandLineKind_Switch) {
      if (!rest.IsEmpty()) args.push_back(kiCString(s.First()) + rest);
      option->found = true;
      if ((option->flags & kiCommandLineFlag_Help) != 0) help = true;
      continue;
    }

    kiCString value;
    if (rest.IsEmpty()) {
      TextList::Item* next = arg->GetNextItem();
      if (next == nullptr) {
        error = Message("Option '", option->name, "' requires a value\n");
        break;
      }
      value = next->Get();
      arg = next;  // consumed
      ++position;
    } else if (rest.First() == ':' || rest.First() == '=') {
      value = rest.Mid(1);
    } else if ((option->flags & kiCommandLineFlag_NeedSeparator) != 0) {
      error = Message("Separator expected after the option '", option->name, "'\n");
      break;
    } else {
      value = rest;
    }

    if (option->type == kiCommandLineParameterType_Number) {
      // Values keep their 32-bit meaning: out-of-range numbers are refused.
      int number = 0;
      if (kiStr_ParseInt32Base(value.c_str(), 10, &number) != 0) {
        error = Message("'", value, "' is not a correct numeric value for option '") +
                Message("", option->name, "'\n");
        break;
      }
      option->number = number;
    } else {
      option->string = value;
    }
    option->found = true;
  }

  if (error.IsEmpty() && !help) {
    for (OptionList::Item* item = m_options.GetFirstItem(); item != nullptr;
         item = item->GetNextItem()) {
      const OptionRecord& option = item->Get();
      if ((option.flags & kiCommandLineFlag_Required) != 0 && !option.found) {
        error = Message("The value for the option '", option.name, "' must be specified\n");
        break;
      }
    }
  }
  if (error.IsEmpty() && !help) {
    // A repeating parameter that took a value counts as given.
    for (ParamList::Item* item = m_params.GetFirstItem(); item != nullptr;
         item = item->GetNextItem()) {
      const ParamRecord& record = item->Get();
      if (!record.received && (record.flags & kiCommandLineFlag_Optional) == 0) {
        error = Message("The required parameter '", record.name, "' was not specified\n");
        break;
      }
    }
  }

  if (!error.IsEmpty() || (help && printUsage)) {
    kiCString shown;
    if (printUsage) shown = GetUsageString();
    shown += error;
    KI_LOG(kiLogLevel_Error, kiLogCat_CommandLine, "%s", shown.c_str());
    PrintToConsole(shown);
  }
  if (!error.IsEmpty()) return 1;
  return help ? -1 : 0;
}

// ---- Queries --------------------------------------------------------------------

const kiCommandLineParser::OptionRecord* kiCommandLineParser::FindOption(
    const kiCString& name) const {
  for (const OptionList::Item* item = m_options.GetFirstItem(); item != nullptr;
       item = item->GetNextItem()) {
    if (item->Get().name == name) return &item->Get();
  }
  return nullptr;
}

bool kiCommandLineParser::Found(const kiCString& name) const {
  const OptionRecord* option = FindOption(name);
  if (option == nullptr) {
    KI_LOG(kiLogLevel_Error, kiLogCat_CommandLine, "Testing presence of an unknown option '%s'\n",
           name.c_str());
    return false;
  }
  return option->found;
}

bool kiCommandLineParser::Found(const kiCString& name, long* value) const {
  const OptionRecord* option = FindOption(name);
  if (option == nullptr || option->kind != kiCommandLineKind_Option ||
      option->type != kiCommandLineParameterType_Number) {
    KI_LOG(kiLogLevel_Error, kiLogCat_CommandLine,
           "Getting value of an unknown number option '%s'\n", name.c_str());
    return false;
  }
  if (option->found && value != nullptr) *value = option->number;
  return option->found;
}

bool kiCommandLineParser::Found(const kiCString& name, kiCString* value) const {
  const OptionRecord* option = FindOption(name);
  if (option == nullptr || option->kind != kiCommandLineKind_Option ||
      option->type == kiCommandLineParameterType_Number) {
    KI_LOG(kiLogLevel_Error, kiLogCat_CommandLine,
           "Getting value of an unknown string option '%s'\n", name.c_str());
    return false;
  }
  if (option->found && value != nullptr) *value = option->string;
  return option->found;
}

unsigned kiCommandLineParser::GetParameterCount() const {
  return static_cast<unsigned>(m_values.GetCount());
}

kiCString kiCommandLineParser::GetParameter(unsigned index) const {
  const TextList::Item* item = m_values.GetFirstItem();
  for (unsigned i = 0; item != nullptr && i < index; ++i) item = item->GetNextItem();
  return item != nullptr ? item->Get() : kiCString();
}

// ---- Usage --------------------------------------------------------------------------

const char* kiCommandLineParser::GetTypeName(kiCommandLineParameterType type) {
  return type == kiCommandLineParameterType_Number ? "num" : "str";
}

kiCString kiCommandLineParser::GetProgramName() const {
  if (m_args.IsEmpty()) return Adopt(kiPath_GetApplicationName(true));
  kiCString name = m_args.front();
  const unsigned int separator = name.FindLastOf("/\\");
  if (separator != kiNPos) name = name.Mid(separator + 1);
  if (EndsWithExe(name)) name.Truncate(name.length() - 4);
  return name;
}

kiCString kiCommandLineParser::GetUsageString() const {
  kiCString usage = Message("Usage: ", GetProgramName(), "");

  // The first column of each help line, and the widest of them.
  TextList columns;
  unsigned int width = 0;
  for (const OptionList::Item* item = m_options.GetFirstItem(); item != nullptr;
       item = item->GetNextItem()) {
    const OptionRecord& option = item->Get();
    const bool required = (option.flags & kiCommandLineFlag_Required) != 0;
    const bool takesValue = option.kind == kiCommandLineKind_Option;
    usage += ' ';
    if (!required) usage += '[';
    usage += '/';
    usage += option.name;
    if (takesValue) usage += Message("<", GetTypeName(option.type), ">");
    if (!required) usage += ']';

    kiCString column = "  /" + option.name;
    if (takesValue) column += Message(" <", GetTypeName(option.type), ">");
    if (column.length() > width) width = column.length();
    columns.push_back(column);
  }
  for (const ParamList::Item* item = m_params.GetFirstItem(); item != nullptr;
       item = item->GetNextItem()) {
    const ParamRecord& param = item->Get();
    const bool optional = (param.flags & kiCommandLineFlag_Optional) != 0;
    usage += ' ';
    if (optional) usage += '[';
    usage += param.name;
    if ((param.flags & kiCommandLineFlag_Repeating) != 0) usage += "...";
    if (optional) usage += ']';
  }
  usage += '\n';

  const TextList::Item* column = columns.GetFirstItem();
  for (const OptionList::Item* item = m_options.GetFirstItem();
       item != nullptr && column != nullptr;
       item = item->GetNextItem(), column = column->GetNextItem()) {
    usage += column->Get();
    usage.Pad(width - column->Get().length());
    usage += '\t';
    usage += item->Get().text;
    usage += '\n';
  }
  return usage;
}

void kiCommandLineParser::Usage() { PrintToConsole(GetUsageString()); }
