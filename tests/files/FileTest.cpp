// FileTest.cpp - the kiFile_* layer and kiFile: refused opens and the data
// they keep, codes and messages, locks, full disks, positions, ownership,
// bad names, and the path functions.
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ki/files/File.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kData[] = "precious bytes";

void* Handle(long long n) { return reinterpret_cast<void*>(static_cast<std::intptr_t>(n)); }
int Number(void* fd) { return static_cast<int>(reinterpret_cast<std::intptr_t>(fd)); }

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
  char text[1024];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  return text;
}

std::string Refused(const std::string& path, int mode, int err) {
  return Format("kiFile: Cannot open file: '%s' (OpenMode = 0x%02x) (error = %d)\n", path.c_str(),
                mode, err);
}

std::string Slurp(const std::string& path) {
  std::ostringstream all;
  all << std::ifstream(path, std::ios::binary).rdbuf();
  return all.str();
}

class FileTest : public ::testing::Test {
 protected:
  std::string Existing(const char* name = "data") {
    std::ofstream(dir_.Path(name), std::ios::binary) << kData;
    return dir_.Path(name);
  }

  kiTest::TempDir dir_;
  kiTest::LogCapture log_;
};

// Mode rules, system refusals and a lock held elsewhere: the code, the one
// message, no descriptor, and the existing file's bytes untouched.
TEST_F(FileTest, RefusedOpensLogWhyAndKeepTheData) {
  const std::string file = Existing();
  const std::string rule = "kiFile: Cannot open file: '" + file + "' because ";
  const int holder = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(0, flock(holder, LOCK_EX));
  struct Row {
    std::string path;
    int mode;
    int code;
    std::string message;
  };
  const Row rows[] = {
      {file, 0, -1, rule + "no mode is specified\n"},
      {file, 0xC4, -1, rule + "no mode is specified\n"},  // other bits are ignored
      {file, 0x34, -1, rule + "no mode is specified\n"},
      {file, 0x21, -1, rule + "truncate mode can only be used on a file open for writing\n"},
      {file, 0x18, -1, rule + "append and create modes cannot be used together\n"},
      {file, 0x36, -1, rule + "truncate and exclusive modes cannot be used together\n"},
      {file, 0x06, -1, rule + "exclusive modes can only be used with the create mode\n"},
      {file, 0x17, -4, Refused(file, 0x17, EEXIST)},       // exclusive create
      {file, 0x22, -1, Refused(file, 0x22, EWOULDBLOCK)},  // locked: never truncated first
      {file, 0x33, -1, Refused(file, 0x33, EWOULDBLOCK)},
      {file, 0x08, -1, Refused(file, 0x0a, EWOULDBLOCK)},  // append implies write
      {file, 0x01, -1, Refused(file, 0x01, EWOULDBLOCK)},
      {file + "/below", 0x01, -3, Refused(file + "/below", 0x01, ENOTDIR)},
      {dir_.Path("no/parent"), 0x12, -3, Refused(dir_.Path("no/parent"), 0x12, ENOENT)},
      {dir_.Path(), 0x01, -1, Refused(dir_.Path(), 0x01, EISDIR)},  // even to read
      {dir_.Path(), 0x13, -1, Refused(dir_.Path(), 0x13, EISDIR)},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.message);
    log_.Clear();
    void* fd = Handle(1234);
    EXPECT_EQ(r.code, kiFile_Open(r.path.c_str(), r.mode, 0, &fd));
    EXPECT_EQ(Handle(1234), fd);  // written only on success
    EXPECT_THAT(log_.Texts(), ElementsAre(r.message));
    EXPECT_EQ(kData, Slurp(file));
  }
  const kiTest::LogRecord record = log_.Records()[0];
  EXPECT_EQ(1u, record.level);
  EXPECT_EQ(42u, record.category);
  EXPECT_EQ("posix/kiFile", record.source);
  close(holder);
}

TEST_F(FileTest, CreateSharingAndPermissions) {
  const std::string path = Existing();
  kiFile file;
  EXPECT_FALSE(file.Create(path.c_str(), false));
  EXPECT_EQ(-4, file.GetErrorCode());
  EXPECT_THAT(log_.Texts(), ElementsAre(Refused(path, 0x17, EEXIST),
                                        "Create: Cannot create file '" + path + "'\n"));
  EXPECT_EQ("files/File", log_.Records()[1].source);
  ASSERT_TRUE(file.Create(path.c_str(), true));
  EXPECT_EQ("", Slurp(path));

  // An exclusive create holds its new file against every open; shared opens
  // do not exclude each other.
  ASSERT_TRUE(file.Create(dir_.Path("new").c_str(), false, 0600));
  EXPECT_FALSE(kiFile(dir_.Path("new").c_str(), kiFileMode_Read).IsOpened());
  file.Close();
  kiFile reader(dir_.Path("new").c_str(), kiFileMode_Read);
  kiFile writer(dir_.Path("new").c_str(), kiFileMode_Write);
  EXPECT_TRUE(reader.IsOpened() && writer.IsOpened());

  // Permissions 0 mean 0666 before the umask; others are the mode bits.
  const mode_t mask = umask(022);
  ASSERT_TRUE(kiFile().Create(dir_.Path("default").c_str(), false, 0));
  umask(mask);
  struct stat info;
  ASSERT_EQ(0, stat(dir_.Path("default").c_str(), &info));
  EXPECT_EQ(0644u, info.st_mode & 07777);
  ASSERT_EQ(0, stat(dir_.Path("new").c_str(), &info));
  EXPECT_EQ(0600u, info.st_mode & 07777);
}

TEST_F(FileTest, AppendWritesAtTheEndAndFifosNeverBlock) {
  const std::string path = Existing();
  kiFile file(path.c_str(), kiFileMode_Append);
  EXPECT_EQ(1u, file.Write("+", 1));
  char buffer[4];
  EXPECT_EQ(-1, file.Read(buffer, 4));  // write-only
  EXPECT_EQ(-1, file.GetErrorCode());
  EXPECT_EQ(std::string(kData) + "+", Slurp(path));

  const std::string fifo = dir_.Path("fifo");
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  void* fd = kiFile_NoFD();
  EXPECT_EQ(-1, kiFile_Open(fifo.c_str(), kiFileMode_Write, 0, &fd));  // no reader
  EXPECT_EQ(-1, kiFile_Open(fifo.c_str(), kiFileMode_Read | kiFileMode_Append, 0, &fd));
  EXPECT_THAT(
      log_.Texts(),
      ElementsAre(
          Format("kiFile: cannot read 4 bytes (fd = %p) (error = %d)\n", file.GetFD(), EBADF),
          Format("Read: Cannot read from file descriptor %d\n", Number(file.GetFD())),
          Refused(fifo, 0x02, ENXIO),
          Format("kiFile: Cannot seek at end of file: '%s' (OpenMode = 0x0b) (error = %d)\n",
                 fifo.c_str(), ESPIPE)));
}

TEST_F(FileTest, FullDisksAndSizeLimitsFailWrites) {
  kiFile full("/dev/full", kiFileMode_Write);
  if (!full.IsOpened()) GTEST_SKIP() << "no /dev/full here";
  EXPECT_EQ(0u, full.Write("x", 1));  // intended: 0, not -1
  EXPECT_EQ(-5, full.GetErrorCode());
  EXPECT_THAT(
      log_.Texts(),
      ElementsAre(Format("kiFile: Write (fd = %p) (error = %d)\n", full.GetFD(), ENOSPC),
                  Format("Write: Cannot write to file descriptor %d\n", Number(full.GetFD()))));

  // Past RLIMIT_FSIZE: the bytes that fit, then EFBIG, which is no disk-full code.
  const kiTest::ChildResult child = kiTest::RunInChild([&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {10, 10};
    setrlimit(RLIMIT_FSIZE, &limit);
    void* fd = kiFile_NoFD();
    kiFile_Open(dir_.Path("limited").c_str(), 0x12, 0, &fd);
    const int first = kiFile_Write(fd, "0123456789abcdef", 16);
    const int second = kiFile_Write(fd, "x", 1);
    std::printf("%d %d %s", first, second, log_.Texts().back().c_str());
  });
  EXPECT_THAT(child.out,
              ::testing::MatchesRegex(
                  Format("10 -1 kiFile: Write \\(fd = 0x[0-9a-f]+\\) \\(error = %d\\)\n", EFBIG)));
}

TEST_F(FileTest, PositionsSizesAndEndOfFile) {
  kiFile file;
  ASSERT_TRUE(file.Create(dir_.Path("f").c_str(), true));
  EXPECT_EQ(11u, file.Write("hello world", 11));
  EXPECT_TRUE(file.EndOfFile());
  EXPECT_TRUE(file.Error());  // intended: the end is recorded as code 1
  EXPECT_EQ(1, file.GetErrorCode());
  EXPECT_EQ(3, file.Seek(3, 7));  // an unknown origin counts from the start
  EXPECT_FALSE(file.EndOfFile());
  EXPECT_EQ(11, file.Length());
  EXPECT_EQ(3, file.Tell());
  EXPECT_TRUE(file.ChangeSize(5));
  EXPECT_EQ(5, file.Tell());  // left at the new size
  EXPECT_TRUE(file.ChangeSize(8));
  EXPECT_EQ(std::string("hello\0\0\0", 8), Slurp(dir_.Path("f")));

  // Low words only: 4 GiB past the end of a small file counts as the end,
  // and the position then stays at the end...
  EXPECT_EQ(8 + (1LL << 32), file.Seek(8 + (1LL << 32), 0));
  EXPECT_TRUE(file.EndOfFile());
  EXPECT_EQ(8, file.Tell());
  EXPECT_THAT(log_.Texts(), IsEmpty());
  // ...and a file of 4 GiB or more never reports its end.
  if (file.ChangeSize((1LL << 32) + 8)) {
    EXPECT_FALSE(file.EndOfFile());
    EXPECT_EQ((1LL << 32) + 8, file.Tell());
  }

  kiFile reader(Existing().c_str(), kiFileMode_Read);
  ASSERT_EQ(3, reader.Seek(3, 0));
  log_.Clear();
  EXPECT_EQ(-1, reader.Seek(-1, 0));
  EXPECT_FALSE(reader.ChangeSize(1));  // read-only
  EXPECT_EQ(3, reader.Tell());         // restored
  void* fd = reader.GetFD();
  EXPECT_THAT(log_.Texts(),
              ElementsAre(Format("kiFile: Cannot seek (fd = %p) (error = %d)\n", fd, EINVAL),
                          Format("Seek: Cannot seek on file descriptor %d\n", Number(fd)),
                          Format("kiFile: ChangeSize: Cannot truncate/extend (fd = %p) (error = "
                                 "%d)\n",
                                 fd, EINVAL),
                          "ChangeSize: Cannot truncate/extend file\n"));
}

TEST_F(FileTest, DescriptorsAreOwnedUntilDetached) {
  int raw = -1;
  {
    kiFile file(Existing().c_str(), kiFileMode_Read);
    raw = Number(file.GetFD());
    EXPECT_EQ(FD_CLOEXEC, fcntl(raw, F_GETFD) & FD_CLOEXEC);
    kiFile other;
    other.Attach(file.Detach());
    EXPECT_FALSE(file.IsOpened());
  }  // the second owner closed it
  EXPECT_EQ(-1, fcntl(raw, F_GETFD));

  // Pointers that hold no descriptor never reach one by truncation.
  kiFile real(Existing().c_str(), kiFileMode_Read);
  char byte;
  EXPECT_EQ(-1, kiFile_Read(Handle(Number(real.GetFD()) + (1LL << 32)), &byte, 1));
  EXPECT_EQ(1, kiFile_Read(real.GetFD(), &byte, 1));

  // Failed closes forget the descriptor; a file without one fails queries.
  log_.Clear();
  kiFile bogus(Handle(999999));
  EXPECT_FALSE(bogus.Close());
  EXPECT_FALSE(bogus.IsOpened());
  EXPECT_EQ(-1, bogus.Length());
  EXPECT_EQ(-1, bogus.GetErrorCode());
  EXPECT_THAT(
      log_.Texts(),
      ElementsAre(
          Format("kiFile: Cannot close file (fd = %p) (error = %d)\n", Handle(999999), EBADF),
          "Close: Cannot close file descriptor 999999\n",
          Format("kiFile: Cannot tell (fd = %p) (error = %d)\n", kiFile_NoFD(), EBADF),
          "Length: Cannot get initial position\n"));
}

// Every function that takes a path refuses bad names with its own message.
TEST_F(FileTest, InvalidNamesAreRefusedEverywhere) {
  struct Row {
    std::function<int(const char*)> call;
    int result;
    std::string message;  // before and after the name
    std::string rest;
  };
  void* fd = nullptr;
  const Row rows[] = {
      {[&](const char* p) { return kiFile_Open(p, 1, 0, &fd); }, -1, "kiFile: Cannot open file: '",
       "' (invalid name)\n"},
      {kiFile_Remove, -1, "kiFile: Cannot remove file: '", "' (invalid name)\n"},
      {kiFile_Exists, 0, "kiFile: Cannot check if file '", "' exists, (invalid name)\n"},
      {[](const char* p) { return kiFile_GetTimes(p, nullptr, nullptr, nullptr); }, -1,
       "kiFile_GetTimes: Cannot get modification time for file '", "', (invalid name)\n"},
      {[](const char* p) { return kiFile_Rename(p, "/x"); }, -1, "kiFile: Cannot rename file '",
       "' to '/x' (invalid file name)\n"},
      {[](const char* p) { return kiFile_SetSize(p, 1); }, -1, "kiFile: Cannot set size of file '",
       "', (invalid name)\n"},
      {[](const char* p) { return kiFile_Access(p, 1); }, 0,
       "kiFile: Cannot check access for file: '", "' (invalid name)\n"},
  };
  for (const char* name : {static_cast<const char*>(nullptr), "<NoSuchFolder>/f", "bad\xff"}) {
    const std::string shown = name != nullptr ? name : "(null)";
    for (const Row& r : rows) {
      SCOPED_TRACE(r.message + shown);
      log_.Clear();
      EXPECT_EQ(r.result, r.call(name));
      EXPECT_THAT(log_.Texts(), ElementsAre(r.message + shown + r.rest));
    }
  }
  log_.Clear();
  EXPECT_EQ(-1, kiFile_Open(Existing().c_str(), 1, 0, nullptr));
  // Intended: the null descriptor pointer is what the message names.
  EXPECT_THAT(
      log_.Texts(),
      ElementsAre("kiFile: Cannot open file: '(null)' (invalid file descriptor pointer)\n"));
}

TEST_F(FileTest, RemoveRenameAndExists) {
  const std::string a = Existing("a");
  const std::string b = Existing("b");
  EXPECT_TRUE(kiFile::Remove(dir_.Path("missing").c_str()));  // silently
  EXPECT_TRUE(kiFile::Remove((a + "/below").c_str()));
  EXPECT_EQ(-1, kiFile_Remove(dir_.Path().c_str()));
  EXPECT_EQ(-4, kiFile_Rename(a.c_str(), b.c_str()));  // never replaces
  EXPECT_EQ(-3, kiFile_Rename(dir_.Path("missing").c_str(), b.c_str()));
  EXPECT_THAT(log_.Texts(),
              ElementsAre(Format("kiFile: Cannot remove file '%s' (error = %d)\n",
                                 dir_.Path().c_str(), EISDIR),
                          Format("kiFile: Cannot rename file: '%s' to '%s' (error = %d)\n",
                                 a.c_str(), b.c_str(), EEXIST),
                          Format("kiFile: Cannot rename file: '%s' to '%s' (error = %d)\n",
                                 dir_.Path("missing").c_str(), b.c_str(), ENOENT)));
  EXPECT_EQ(kData, Slurp(b));
  EXPECT_TRUE(kiFile::Rename(a.c_str(), dir_.Path("c").c_str()));
  EXPECT_FALSE(kiFile::Exists(a.c_str()));
  EXPECT_TRUE(kiFile::Exists(dir_.Path("c").c_str()));
  EXPECT_FALSE(kiFile::Exists(dir_.Path().c_str()));  // directories are not files

  // Relative names start at the program's directory, not the working one.
  char exe[4096] = {};
  ASSERT_GT(readlink("/proc/self/exe", exe, sizeof exe - 1), 0);
  EXPECT_TRUE(kiFile::Exists(std::strrchr(exe, '/') + 1));
  char cwd[4096];
  ASSERT_NE(nullptr, getcwd(cwd, sizeof cwd));
  ASSERT_EQ(0, chdir(dir_.Path().c_str()));
  EXPECT_FALSE(kiFile::Exists("b"));
  ASSERT_EQ(0, chdir(cwd));
}

TEST_F(FileTest, SetSizeAndAccessByPath) {
  EXPECT_TRUE(kiFile::ChangeSize(dir_.Path("new").c_str(), 3));  // created
  EXPECT_EQ(std::string(3, '\0'), Slurp(dir_.Path("new")));
  const std::string path = Existing();
  EXPECT_TRUE(kiFile::ChangeSize(path.c_str(), 4));
  EXPECT_EQ("prec", Slurp(path));
  // Intended: a refused open is reported by the next step, with EBADF.
  EXPECT_EQ(EBADF, kiFile_SetSize(dir_.Path().c_str(), 1));
  EXPECT_THAT(log_.Texts(), ElementsAre(Format("kiFile: Cannot set size of file '%s', cannot move "
                                               "pointer (error = %d)\n",
                                               dir_.Path().c_str(), EBADF)));

  // Intended: a successful check is logged, a failed one is not.
  log_.Clear();
  EXPECT_TRUE(kiFile::Access(path.c_str(), 0x03));
  EXPECT_TRUE(kiFile::Access(path.c_str(), 0));
  EXPECT_FALSE(kiFile::Access(dir_.Path("missing").c_str(), 0x01));
  EXPECT_FALSE(kiFile::Access(dir_.Path().c_str(), 0x01));
  if (geteuid() != 0) {
    ASSERT_EQ(0, chmod(path.c_str(), 0444));
    EXPECT_FALSE(kiFile::Access(path.c_str(), 0x02));
  }
  const std::string logged = "kiFile: Cannot check access for file: '" + path + "' (error = 0)\n";
  EXPECT_THAT(log_.Texts(), ElementsAre(logged, logged));
}

TEST_F(FileTest, TimesAreReadToTheMillisecond) {
  const std::string path = Existing();
  const timespec set[2] = {{1700000000, 123456789}, {1600000000, 987654321}};
  ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), set, 0));  // access, modification
  kitimeval access{}, modification{}, creation{};
  ASSERT_EQ(0, kiFile_GetTimes(path.c_str(), &access, &modification, &creation));
  EXPECT_EQ(1700000000, access.tv_sec);
  EXPECT_EQ(123000, access.tv_usec);
  EXPECT_EQ(1600000000, modification.tv_sec);
  EXPECT_EQ(987000, modification.tv_usec);
  EXPECT_GT(creation.tv_sec, 1600000000);  // birth or status change: now
  kiDateTime when;
  ASSERT_TRUE(kiFile::GetTimes(path.c_str(), nullptr, &when, nullptr));
  EXPECT_EQ(kiDateTime(modification), when);

  // Seconds past the 32-bit range fail, but only when that time is asked for.
  const timespec late[2] = {{1700000000, 0}, {1LL << 33, 0}};
  ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), late, 0));
  EXPECT_EQ(0, kiFile_GetTimes(path.c_str(), &access, nullptr, nullptr));
  EXPECT_FALSE(kiFile::GetTimes(path.c_str(), nullptr, &when, nullptr));
  EXPECT_EQ(kiDateTime(modification), when);  // unchanged
  EXPECT_EQ(-3, kiFile_GetTimes(dir_.Path("missing").c_str(), &access, nullptr, nullptr));
  EXPECT_THAT(log_.Texts(), ElementsAre("kiFile_GetTimes: Could not get all creation/modification/"
                                        "access times for file: " +
                                            path + "\n",
                                        "kiFile_GetTimes: Could not get attributes for file: " +
                                            dir_.Path("missing") + "\n"));
}

}  // namespace
