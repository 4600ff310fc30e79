// PathNameTest.cpp - kiPathName: splitting in both dialects, the kind rules of
// the setters, the anchored constructor, the path parts and existence.
#include <string>

#include <gtest/gtest.h>

#include "ki/files/PathName.h"
#include "ki/proc/kiPath.h"
#include "ki/proc/kiPath_p.h"

#include "PathTestSupport.h"

namespace {

using kiTest::Taken;

// The four fields in one text, so that a table row states them all.
std::string Fields(const kiPathName& p) {
  return std::to_string(p.GetKind()) + "|" + p.GetPath().c_str() + "|" + p.GetFileName().c_str() +
         "|" + p.GetExtension().c_str();
}

class PathNameTest : public kiTest::PathFixture {};

TEST_F(PathNameTest, WindowsPathsSplitIntoTheirParts) {
  kiPath_SetDialectForTesting(kiPathDialect_Windows, "C:/app/");
  const kiPathName file(kiPathKind_File, "C:/a/b.c.txt");
  EXPECT_EQ("1|C:/a/|b.c|txt", Fields(file));
  EXPECT_EQ("b.c.txt", file.GetFullName());
  EXPECT_STREQ("C:/a/b.c.txt", file.c_str());
  EXPECT_EQ(2u, file.GetPathCount());
  EXPECT_EQ("C:", file.GetPathPart(0));
  EXPECT_EQ("a", file.GetDirName());
  EXPECT_EQ("C:/", file.GetVolume());

  struct Row {
    int kind;
    const char* text;
    const char* fields;
  };
  const Row rows[] = {
      {kiPathKind_File, "C:/a/", "0|||"},  {kiPathKind_Dir, "C:\\a\\b\\", "2|C:/a/b/||"},
      {kiPathKind_Dir, "C:\\", "2|C:/||"}, {kiPathKind_File, "data\\x.ini", "1|C:/app/data/|x|ini"},
      {kiPathKind_Dir, "", "0|||"},        {kiPathKind_Invalid, "C:/a/", "0|||"},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(r.fields, Fields(kiPathName(r.kind, r.text)));
  }

  const kiPathName anchor = kiPathName::MakeDirPath("C:/a/b/");
  EXPECT_STREQ("C:/a/x", kiPathName::MakeCombinedFilePath(anchor, "../x").c_str());
  EXPECT_FALSE(kiPathName::MakeCombinedFilePath(anchor, "../../../x").IsValid());
  EXPECT_FALSE(kiPathName::MakeDirPath("C:/").GetParentPath().IsValid());
}

// Setters keep the kind in step with the fields; odd names survive.
TEST_F(PathNameTest, KindFollowsTheFields) {
  kiPathName p = kiPathName::MakeDirPath("/a");
  p.SetFullName(".profile");
  EXPECT_EQ("1|/a/||profile", Fields(p));
  EXPECT_STREQ("/a/.profile", p.c_str());
  p.SetFullName("ends.");
  EXPECT_STREQ("/a/ends.", p.c_str());
  p.ToDirPath();
  EXPECT_EQ("2|/a/||", Fields(p));
  p.SetExtension("x");
  EXPECT_EQ("1|/a/||x", Fields(p));
  p.SetPath(nullptr);
  EXPECT_EQ("0|||", Fields(p));

  EXPECT_EQ("1|/a/b/|n|e", Fields(kiPathName("/a/b", "n", "e")));
  EXPECT_EQ("0|||", Fields(kiPathName("/a/b", "", nullptr)));
  EXPECT_EQ("2|/a/b/||", Fields(kiPathName("/a/b/", "")));
  EXPECT_EQ("1|/a/b/|x.tar|gz", Fields(kiPathName::MakeFilePath("/a/b", "x.tar.gz")));
  EXPECT_EQ("1|/a/|..|", Fields(kiPathName::MakeFilePath("/a/..")));  // not simplified

  kiPathName appended;
  appended.AppendPathPart("/x");  // intended: no '/' added to a first part
  EXPECT_EQ("2|/x||", Fields(appended));
  appended.AppendPathPart("y");
  appended.AppendPathPart("z/");
  appended.AppendPathPart("");
  EXPECT_EQ("2|/xy/z/||", Fields(appended));
}

TEST_F(PathNameTest, AnchoredPathsAreSimplified) {
  const kiPathName dir = kiPathName::MakeDirPath("/a/b/");
  const kiPathName file = kiPathName::MakeFilePath("/a/b/c.txt");
  struct Row {
    const kiPathName& anchor;
    const char* relative;
    int kind;
    const char* expected;
  };
  const Row rows[] = {
      {dir, "../x", kiPathKind_File, "/a/x"},
      {dir, "../../../x", kiPathKind_File, "/x"},  // one step above the root is the root
      {dir, "../../../../x", kiPathKind_File, ""},
      {dir, ".//y/./z//", kiPathKind_Dir, "/a/b/y/z/"},
      {dir, "..", kiPathKind_Dir, "/a/"},
      {dir, "..", kiPathKind_File, ""},
      {dir, "/abs/../p.txt", kiPathKind_File, "/p.txt"},
      {file, "d.txt", kiPathKind_File, "/a/b/d.txt"},
      {dir, "x/", kiPathKind_File, ""},
      {dir, "x", kiPathKind_Invalid, ""},
      {dir, "<Nope>", kiPathKind_Dir, ""},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.relative);
    EXPECT_STREQ(r.expected, kiPathName(r.anchor, r.relative, r.kind).c_str());
  }
  const std::string appDir = Taken(kiPath_GetApplicationDir());
  EXPECT_EQ(appDir + "x", kiPathName(kiPathName(), "x", kiPathKind_File).c_str());
}

TEST_F(PathNameTest, PartsAndParents) {
  const kiPathName dir = kiPathName::MakeDirPath("/a/bc/");
  EXPECT_EQ(3u, dir.GetPathCount());
  EXPECT_EQ("", dir.GetPathPart(0));
  EXPECT_EQ("bc", dir.GetPathPart(2));
  EXPECT_EQ("", dir.GetPathPart(3));
  EXPECT_EQ("bc", dir.GetDirName());
  EXPECT_EQ("/", dir.GetVolume());
  EXPECT_EQ("", kiPathName().GetVolume());

  EXPECT_STREQ("/a/", dir.GetParentPath().c_str());
  EXPECT_STREQ("/a/bc/", kiPathName::MakeFilePath("/a/bc/f.x").GetParentPath().c_str());
  EXPECT_STREQ("/", kiPathName::MakeDirPath("/a").GetParentPath().c_str());
  EXPECT_FALSE(kiPathName::MakeDirPath("/").GetParentPath().IsValid());
  EXPECT_FALSE(kiPathName().GetParentPath().IsValid());
}

TEST_F(PathNameTest, ExistenceAndStaticMakers) {
  kiTest::WriteFile(dir_.Path("d/f.txt"), "x");
  const kiPathName file = kiPathName::MakeExistingPath(dir_.Path("d/f.txt").c_str());
  const kiPathName dir = kiPathName::MakeExistingPath(dir_.Path("d").c_str());
  EXPECT_TRUE(file.IsFilePath() && file.FileExists() && !file.DirExists());
  EXPECT_TRUE(dir.IsDirPath() && dir.DirExists() && !dir.FileExists());
  EXPECT_FALSE(kiPathName::MakeExistingPath(dir_.Path("none").c_str()).IsValid());
  EXPECT_FALSE(kiPathName().FileExists() || kiPathName().DirExists());

  kiPath_SetFolderRootForTesting(dir_.Path("root").c_str());
  const kiPathName temp = kiPathName::MakeTempDirPath();
  EXPECT_EQ(dir_.Path("root/MyAppData/"), temp.c_str());
  EXPECT_TRUE(temp.DirExists());

  kiTest::WriteFile(dir_.Path("mountinfo"), "1 0 0:1 / / rw - tmpfs tmpfs rw\n");
  kiPath_SetMountTableForTesting(dir_.Path("mountinfo").c_str());
  EXPECT_TRUE(kiPathName::IsPathOnRemovableDrive("/x"));
  EXPECT_FALSE(kiPathName::IsPathOnRemovableDrive("x"));
}

}  // namespace
