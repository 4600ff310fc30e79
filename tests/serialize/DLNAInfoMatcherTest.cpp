// DLNAInfoMatcherTest.cpp - kiDLNAInfoMatcher: the profile table row by row
// (odd rows included) and exact-match lookups.
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "ki/serialize/DLNAInfoMatcher.h"
#include "ki/serialize/DLNAInfoMatcher_p.h"

namespace {

// The table in its grouped form, transcribed apart from the library's rows.
// Odd rows kept as given: the VC1_TS_*_ISO group (wmv, video/mpeg), EAC3 (ac3),
// DTS (audio/vnd-dts), AMR_3GPP and BSAC_ISO (MIME order).
const struct {
  const char* profiles;  // space-separated, in table order
  const char* mimeTypes;
  const char* extensions;
} kGroups[] = {
    {"JPEG_SM JPEG_MED JPEG_LRG JPEG_TN JPEG_LRG_ICO JPEG_SM_ICO", "image/jpeg", "jpg@jpeg"},
    {"PNG_TN PNG_SM_ICO PNG_LRG_ICO PNG_LRG", "image/png", "png"},
    {"GIF_LRG", "image/gif", "gif"},
    {"AC3", "audio/vnd.dolby.dd-raw", "ac3"},
    {"AMR_3GPP", "audio/3gpp@audio/mp4", "amr"},
    {"AMR_WBplus", "audio/3gpp", "awb"},
    {"LPCM LPCM_low LPCM_MPS", "audio/L16", "pcm@lpcm"},
    {"MP3 MP3X", "audio/mpeg", "mp3"},
    {"AAC_ADTS AAC_ADTS_320 AAC_MULT5_ADTS HEAAC_L2_ADTS HEAAC_L2_ADTS_320 HEAAC_L3_ADTS "
     "HEAAC_MULT5_ADTS",
     "audio/vnd.dlna.adts", "aac"},
    {"AAC_ISO AAC_ISO_320 AAC_MULT5_ISO HEAAC_L2_ISO HEAAC_L2_ISO_320 HEAAC_L3_ISO "
     "HEAAC_MULT5_ISO",
     "audio/3gpp@audio/mp4", "3gp@mp4"},
    {"ATRAC3plus", "audio/x-sony-oma", "aa3@oma@at3"},
    {"VC1_ASF_AP_L1_WMA VC1_ASF_AP_L2_WMA", "video/x-ms-asf", "asf"},
    {"VC1_TS_AP_L1_WMA_ISO VC1_TS_AP_L2_WMA_ISO VC1_TS_AP_L1_AC3_ISO VC1_TS_AP_L2_AC3_ISO "
     "VC1_TS_HD_DTS_ISO VC1_TS_HD_DTSHD_HRA_ISO VC1_TS_HD_DTSHD_MA_ISO",
     "video/mpeg", "wmv"},
    {"VC1_TS_HD_DTS_T VC1_TS_HD_DTSHD_HRA_T VC1_TS_HD_DTSHD_MA_T", "video/vnd.dlna.mpeg-tts", ""},
    {"VC1_PS_HD_DTS VC1_PS_HD_DTSHD_HRA VC1_PS_HD_DTSHD_MA VC1_PS_HD_DTSHD", "video/mpeg", ""},
    {"WMVMED_BASE WMVMED_FULL WMVMED_PRO WMVHIGH_FULL WMVHIGH_PRO WMVHM_BASE WMVSPLL_BASE "
     "WMVSPML_BASE WMVSPML_MP3",
     "video/x-ms-wmv", "wmv"},
    {"MPEG1", "video/mpeg", "mpg@mpeg@mp1"},
    {"MP2_MPS", "audio/mpeg", ""},
    {"MLP", "audio/vnd.dolby.mlp", "mlp"},
    {"EAC3", "audio/eac3", "ac3"},
    {"DTSHD_HRA DTSHD_MA DTSHD_LBR", "audio/vnd.dts.hd", "dts"},
    {"DTS", "audio/vnd-dts", "dts"},
    {"WMABASE WMAFULL WMAPRO", "audio/x-ms-wma", "wma"},
    {"ALS_ISO ALS_MULT5_ISO", "audio/mp4", "mp4"},
    {"HEAACv2_L2_MPS_DAB", "audio/x-dab", ""},
    {"BSAC_ISO BSAC_MULT5_ISO", "audio/mp4@audio/3gpp", "3gp@mp4"},
    {"MPEG_PS_NTSC MPEG_PS_PAL MPEG_PS_SD_DTS MPEG_PS_HD_DTS MPEG_PS_HD_DTSHD_MA "
     "MPEG_PS_HD_DTSHD_HRA MPEG_PS_HD_DTSHD",
     "video/mpeg", "mpg"},
};

// Every row as given, 82 of them, names unique, and each found by its own
// name (no earlier row shadows it).
TEST(DLNAInfoMatcherTest, TableHoldsTheEightyTwoRowsAsGiven) {
  const kiDLNAProfileRow* row = kiDLNAInfoMatcher_GetTableForTesting();
  std::set<std::string> names;
  for (const auto& g : kGroups) {
    std::istringstream profiles(g.profiles);
    std::string profile;
    while (profiles >> profile) {
      SCOPED_TRACE(profile);
      ASSERT_NE(nullptr, row->profile);
      EXPECT_EQ(profile, row->profile);
      EXPECT_STREQ(g.mimeTypes, row->mimeTypes);
      EXPECT_STREQ(g.extensions, row->extensions);
      EXPECT_TRUE(names.insert(profile).second) << "duplicate name";
      EXPECT_EQ(g.extensions, kiDLNAInfoMatcher::GetExtensionListFromProfile(profile.c_str()));
      ++row;
    }
  }
  EXPECT_EQ(82u, names.size());
  EXPECT_EQ(nullptr, row->profile) << "the table goes on past its last row";
}

TEST(DLNAInfoMatcherTest, LookupsMatchWholeNamesExactly) {
  const struct {
    const char* profile;
    const char* list;
    const char* preferred;
  } rows[] = {
      {"MPEG1", "mpg@mpeg@mp1", "mpg"},
      {"ATRAC3plus", "aa3@oma@at3", "aa3"},
      {"PNG_LRG", "png", "png"},
      {"JPEG_SM_ICO", "jpg@jpeg", "jpg"},
      {"MPEG_PS_HD_DTSHD", "mpg", "mpg"},  // the last row
      {"VC1_PS_HD_DTS", "", ""},           // known, no extensions
      {nullptr, "", ""},
      {"", "", ""},
      {"mpeg_ps_pal", "", ""},   // no case folding
      {"MPEG_PS_PAL ", "", ""},  // no trimming
      {"MPEG_PS", "", ""},       // no prefix match
      {"MPEG_PS_PAL_X", "", ""},
      {"image/jpeg", "", ""},  // MIME types are not profiles
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.profile != nullptr ? r.profile : "(null)");
    EXPECT_EQ(r.list, kiDLNAInfoMatcher::GetExtensionListFromProfile(r.profile));
    EXPECT_EQ(r.preferred, kiDLNAInfoMatcher::GetExtensionFromProfile(r.profile));
  }
}

}  // namespace
