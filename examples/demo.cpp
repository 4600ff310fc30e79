// demo.cpp - a tour of what ki offers so far: strings, numbers, errors, byte
// buffers, lists, the hash map, references, threads and locks, dates and
// time-outs, files and directories, configuration and the command line,
// JSON, property lists and media metadata, logging and the fatal-error
// callback.
#include <clocale>
#include <cstdio>
#include <ki/ki.h>

KI_LOG_SOURCE("examples/demo")

namespace {

void PrintEntry(const char* key, const char* value, void* context) {
  ++*static_cast<int*>(context);
  std::printf(" %s=%s", key, value);
}

// A payload that says when the last reference lets it go.
class Track : public kiUserData_CString {
 public:
  explicit Track(const char* title) : kiUserData_CString(title) {}
  ~Track() override { std::printf("track '%s' released\n", GetString().c_str()); }
};

// A worker in the library's shape: it counts until asked to stop, and tells
// the main thread through an event when it has started counting.
class Counter : public kiStoppableThread {
 public:
  Counter() : kiStoppableThread("demo-counter", 0) {}
  void Stop() {
    ThreadCancel();
    ThreadWaitTerminate();
  }
  using kiStoppableThread::ThreadCreate;
  kiCondition started;
  kiSemaphore ticks{0};

 protected:
  void OnRun() override {
    started.Signal();
    while (!TestExit()) {
      ticks.Post();
      ThreadSleep(1);
    }
  }
};

// An owner loop's queue: it says which of its time-outs fell due.
class Alarms : public kiTimeoutQueue {
 public:
  kiTimeout soon;
  kiTimeout later;

 protected:
  void OnTimeouts() override {
    kiTimeout* due = FirstExpiringTimeout();
    std::printf("time-out '%s' fell due\n", due == &soon ? "soon" : "later");
    TimeoutCancel(due);
  }
};

// The program's command line: one switch, a numeric option, and files.
const kiCommandLineDescription kOptions[] = {
    {kiCommandLineKind_Switch, "v", "talk more", kiCommandLineParameterType_String, 0},
    {kiCommandLineKind_Option, "port", "port to listen on", kiCommandLineParameterType_Number, 0},
    {kiCommandLineKind_Param, nullptr, "file", kiCommandLineParameterType_String,
     kiCommandLineFlag_Repeating},
    {kiCommandLineKind_End, nullptr, nullptr, kiCommandLineParameterType_String, 0}};

void OnFatal(const char* tag) {
  std::printf("demo: the fatal-error callback saw '%s'\n", tag);
  std::fflush(stdout);
}

}  // namespace

int main() {
  // The wide string's case mapping follows the C library's locale.
  std::setlocale(LC_CTYPE, "C.UTF-8");

  // Copies share one block until one of them changes.
  kiCString greeting("Hello, media world");
  kiCString copy(greeting);
  std::printf("shared block: %s\n", copy.c_str() == greeting.c_str() ? "yes" : "no");
  copy.Replace("world", "server", true);
  std::printf("%s / %s\n", greeting.c_str(), copy.c_str());

  // Splitting and searching.
  kiCString path("/media/music/album/track01.flac");
  std::printf("dir=%s name=%s ext=%s\n", path.BeforeLast('/').c_str(),
              path.AfterLast('/').BeforeFirst('.').c_str(), path.AfterLast('.').c_str());

  // Numbers read the same way in every locale.
  long port = 0;
  double ratio = 0;
  kiCString("  8200").ToLong(&port);
  kiCString("1.5e3").ToDouble(&ratio);
  std::printf("port=%ld ratio=%g hex=%s\n", port, ratio,
              kiCString::Format("%#x", static_cast<unsigned>(port)).c_str());

  // UTF-8 in, UTF-16 inside, UTF-8 out; invalid input is refused whole.
  kiWCharBuffer wide = kiConvUTF8.ToString("Gr\xc3\xbc\xc3\x9f dich, \xe4\xb8\x96\xe7\x95\x8c");
  kiString title(wide);
  std::printf("%u UTF-16 units, upper: %s, overlong input refused: %s\n", title.length(),
              kiConvUTF8.ToUTF8(title.Upper().c_str()).data(),
              kiConvUTF8.ToString("\xc0\x80").data() == nullptr ? "yes" : "no");

  // Tokens and lists.
  kiCStringTokenizer tokens("a,,b", ",");
  std::printf("tokens:");
  while (tokens.HasMoreTokens()) std::printf(" [%s]", tokens.GetNextToken().c_str());
  kiCSVStringList list("mp3,flac\\,lossless,ogg", '\\');
  std::printf("\nlist of %u, second item '%s'\n", list.GetCount(), list.GetAt(1));

  // Errors wrap their causes, newest first.
  kiError err(-3, "Unable to open file 'settings.ini'");
  err.ConvertTo(-1, "Cannot load the settings");
  std::printf("error%s\nshort: %s\n", err.ToString().c_str(), err.ToShortString().c_str());

  // 64-bit values, bits and bytes.
  kiuint64 big = kiuint64::FromString("18446744073709551615");
  kiGrowingBuffer bytes;
  bytes += "max=";
  bytes += big == kkiuint64_Max ? 1u : 0u;
  const unsigned char header[] = {0xA5, 0x0F};
  kiBitString bits(header, sizeof(header));
  unsigned int nibble = bits.Get(4);
  std::printf("%s (%.*s), bits: %#x then peek %#x, %u left\n", big.ToCString().c_str(),
              static_cast<int>(bytes.length()), reinterpret_cast<const char*>(bytes.buffer()),
              nibble, bits.Peek(8), bits.GetRemainingBitCount());
  kiCString hidden = kiObfuscate::To_B64RC4("device-42", "key");
  std::printf("obfuscated: %s -> %s\n", hidden.c_str(),
              kiObfuscate::From_B64RC4(hidden, "key").c_str());

  // A list whose iterator survives the removal of the item it stands on.
  kiList<int> numbers;
  for (int i = 1; i <= 5; ++i) numbers.push_back(i);
  kiList<int>::ForwardIterator it(&numbers);
  while (it.Next()) {
    if (it.Get() % 2 == 0) numbers.pop(it);  // the walk goes on with the next item
  }
  std::printf("odd numbers left: %d (%d..%d)\n", numbers.size(), numbers.front(), numbers.back());

  // Eleven buckets, string keys, pointer values.
  kiStringHashMap<const char*> mime;
  mime.Add("flac", "audio/flac");
  mime.Add("mp3", "audio/mpeg");
  mime.Add("mp3", "audio/mp3");  // replaces
  int visited = 0;
  std::printf("mime map of %u:", mime.GetCount());
  mime.ForEach(PrintEntry, &visited);
  std::printf(" (%d visited, ogg %s)\n", visited, mime["ogg"] == nullptr ? "absent" : "present");

  // References: the payload goes when its last holder does.
  {
    kiRef<kiUserData> first(new Track("Intro"));
    kiRef<kiUserData> second = first;
    std::printf("track held %d times\n", first->_GetRefCount());
  }

  // A thread: create, start (Go returns once OnRun runs), stop, join.
  {
    kiSingleInstanceChecker instance("ki-demo", nullptr);
    std::printf("another demo running: %s\n", instance.IsAnotherRunning() ? "yes" : "no");
    Counter counter;
    if (counter.ThreadCreate() == 0) {
      counter.Go(kiThreadState_Running);
      counter.started.Wait();
      int taken = 0;
      while (taken < 3 && counter.ticks.WaitTimeout(1000) == 0) ++taken;
      counter.Stop();
      std::printf("worker ticked %d times, state %d\n", taken, counter.GetThreadState());
    }
  }

  // Dates in local time, and an owner loop that sleeps until its next
  // time-out and handles one per pass.
  {
    kiDateTime leap;
    leap.ParseISODate("2024-02-30");  // an overlong day runs into March
    char* rfc = kiTime_FormatRFC1123Date();
    std::printf("2024-02-30 reads as %s; now is %s\n", leap.FormatISODate().c_str(), rfc);
    kiMem_Free(rfc);
    Alarms alarms;
    alarms.TimeoutStart(&alarms.later, 30);
    alarms.TimeoutStart(&alarms.soon, 10);
    kiCondition wake;
    while (kiTimeout* next = alarms.FirstExpiringTimeout()) {
      wake.WaitTimeout(next->Remaining());
      alarms.HandleExpiredTimeouts();
    }
  }

  // Files and directories under the user's application-data folder: a text
  // file with mixed line ends, read back line by line, then listed and gone.
  {
    const kiCString dir = kiPathName::MakeTempDirPath().GetFullPath() + "ki-demo/";
    kiDir::CreateRecursively(dir);
    kiFile out;
    const kiCString name = dir + "playlist.txt";
    if (out.Create(name, true)) {
      const char text[] = "intro.flac\r\nverse.flac\rchorus.flac\n";
      out.Write(text, sizeof text - 1);
      out.Close();
    }
    kiTextFile in(name, 16);  // a small buffer: lines cross its fills
    kiCString line;
    std::printf("playlist:");
    while (in.NextLine(line)) std::printf(" [%s]", line.c_str());
    kiDir listing(dir);
    kiPathName entry;
    for (bool more = listing.GetFirst(entry, "*.txt", kiDirFlag_Files); more;
         more = listing.GetNext(entry)) {
      std::printf("; listed %s", entry.GetFullName().c_str());
    }
    listing.Close();
    std::printf("; removed: %s\n", kiDir::RemoveRecursively(dir) ? "yes" : "no");
  }

  // Settings in INI syntax, and a command line given as one text.
  {
    const char text[] =
        "; shipped defaults\r\n[Net]\r\nPort = 8200 ; inline comment\r\n"
        "Name = \"Living room; upstairs\"\r\n";
    kiINIFile* ini = kiINIFile_New(0);
    kiINIFile_Parse(text, sizeof text - 1, ini);
    std::printf("ini: net/port=%ld net/name='%s'\n", kiINIFile_GetInt32(ini, "NET", "port", 0),
                kiINIFile_Get(ini, "net", "Name", "", nullptr));
    kiINIFile_Delete(ini);

    kiCommandLineParser parser(kOptions, "demo -v -port=9000 \"My Music/a.flac\" b.flac", true);
    long listenPort = 0;
    if (parser.Parse(false) == 0 && parser.Found("port", &listenPort)) {
      std::printf("command line: -v %s, port %ld, %u files, first '%s'\n",
                  parser.Found("v") ? "given" : "absent", listenPort, parser.GetParameterCount(),
                  parser.GetParameter(0).c_str());
    }
  }

  // Structured values: events written as JSON, the JSON read back into a
  // property list, media metadata as line text, and a DLNA profile's extension.
  {
    kiJSONFormatter json;
    json.MapBegin();
    json.MapKey("title", false);
    json.Value("Blue Hour");
    json.MapKey("tracks", false);
    json.ArrayBegin();
    json.Value(1);
    json.ArrayItemSeparator();
    json.Value(2);
    json.ArrayEnd();
    json.MapEnd();
    std::printf("json: %s\n", json.Result().c_str());  // a comma before every '}'

    kiPropertyList* artist = kiMediaInfoSerializer::Deserialize("{\"artist\":\"Ann\",\"year\":1999}");
    std::printf("property list back as json: %s\n", kiMediaInfoSerializer::Serialize(artist).c_str());
    kiPropertyList_Release(artist);

    kiMediaInfo info;
    info.Set("ti", "Blue Hour");  // a fixed field, not part of the line text
    info.Set("duration", 215000u);
    info.Set("note", "a=b");
    const kiCString lines = info.GetSerializedInfo();
    char* note = kiMediaInfo::Peek(lines, "note");
    std::printf("media info: title '%s', %u entries, note peeks as '%s'\n", info.GetTitle().c_str(),
                info.GetCount(), note);
    kiMem_Free(note);
    std::printf("MPEG_PS_PAL files end in .%s\n",
                kiDLNAInfoMatcher::GetExtensionFromProfile("MPEG_PS_PAL").c_str());
  }

  // A record in the library's shape, to standard error.
  KI_LOG(kiLogLevel_Error, kiLogCat_General, "demo: a sample error record (%s)\n", "level 1");

  // The process-wide fatal callback; the demo shows it without dying.
  kiFatalError_SetCallback(OnFatal);
  std::printf("callback registered; a fatal error would now call it and exit with 255\n");
  return 0;
}
