// DLNAInfoMatcher.cpp - the DLNA profile table and the two extension lookups.
#include "ki/serialize/DLNAInfoMatcher.h"

#include <cstring>

#include "ki/serialize/DLNAInfoMatcher_p.h"

namespace {

// Rows that share MIME types and extensions stand together. Values are kept
// exactly as peers expect them, odd ones included (intended):
//   - the VC-1 transport-stream profiles ending in _ISO map to "wmv" with
//     video/mpeg;
//   - EAC3 maps to "ac3";
//   - DTS has audio/vnd-dts (a hyphen), the DTS-HD profiles audio/vnd.dts.hd;
//   - AMR_3GPP lists audio/3gpp first, BSAC_ISO audio/mp4 first.
constexpr kiDLNAProfileRow kRows[] = {{"JPEG_SM", "image/jpeg", "jpg@jpeg"},
                                      {"JPEG_MED", "image/jpeg", "jpg@jpeg"},
                                      {"JPEG_LRG", "image/jpeg", "jpg@jpeg"},
                                      {"JPEG_TN", "image/jpeg", "jpg@jpeg"},
                                      {"JPEG_LRG_ICO", "image/jpeg", "jpg@jpeg"},
                                      {"JPEG_SM_ICO", "image/jpeg", "jpg@jpeg"},
                                      {"PNG_TN", "image/png", "png"},
                                      {"PNG_SM_ICO", "image/png", "png"},
                                      {"PNG_LRG_ICO", "image/png", "png"},
                                      {"PNG_LRG", "image/png", "png"},
                                      {"GIF_LRG", "image/gif", "gif"},
                                      {"AC3", "audio/vnd.dolby.dd-raw", "ac3"},
                                      {"AMR_3GPP", "audio/3gpp@audio/mp4", "amr"},
                                      {"AMR_WBplus", "audio/3gpp", "awb"},
                                      {"LPCM", "audio/L16", "pcm@lpcm"},
                                      {"LPCM_low", "audio/L16", "pcm@lpcm"},
                                      {"LPCM_MPS", "audio/L16", "pcm@lpcm"},
                                      {"MP3", "audio/mpeg", "mp3"},
                                      {"MP3X", "audio/mpeg", "mp3"},
                                      {"AAC_ADTS", "audio/vnd.dlna.adts", "aac"},
                                      {"AAC_ADTS_320", "audio/vnd.dlna.adts", "aac"},
                                      {"AAC_MULT5_ADTS", "audio/vnd.dlna.adts", "aac"},
                                      {"HEAAC_L2_ADTS", "audio/vnd.dlna.adts", "aac"},
                                      {"HEAAC_L2_ADTS_320", "audio/vnd.dlna.adts", "aac"},
                                      {"HEAAC_L3_ADTS", "audio/vnd.dlna.adts", "aac"},
                                      {"HEAAC_MULT5_ADTS", "audio/vnd.dlna.adts", "aac"},
                                      {"AAC_ISO", "audio/3gpp@audio/mp4", "3gp@mp4"},
                                      {"AAC_ISO_320", "audio/3gpp@audio/mp4", "3gp@mp4"},
                                      {"AAC_MULT5_ISO", "audio/3gpp@audio/mp4", "3gp@mp4"},
                                      {"HEAAC_L2_ISO", "audio/3gpp@audio/mp4", "3gp@mp4"},
                                      {"HEAAC_L2_ISO_320", "audio/3gpp@audio/mp4", "3gp@mp4"},
                                      {"HEAAC_L3_ISO", "audio/3gpp@audio/mp4", "3gp@mp4"},
                                      {"HEAAC_MULT5_ISO", "audio/3gpp@audio/mp4", "3gp@mp4"},
                                      {"ATRAC3plus", "audio/x-sony-oma", "aa3@oma@at3"},
                                      {"VC1_ASF_AP_L1_WMA", "video/x-ms-asf", "asf"},
                                      {"VC1_ASF_AP_L2_WMA", "video/x-ms-asf", "asf"},
                                      {"VC1_TS_AP_L1_WMA_ISO", "video/mpeg", "wmv"},
                                      {"VC1_TS_AP_L2_WMA_ISO", "video/mpeg", "wmv"},
                                      {"VC1_TS_AP_L1_AC3_ISO", "video/mpeg", "wmv"},
                                      {"VC1_TS_AP_L2_AC3_ISO", "video/mpeg", "wmv"},
                                      {"VC1_TS_HD_DTS_ISO", "video/mpeg", "wmv"},
                                      {"VC1_TS_HD_DTSHD_HRA_ISO", "video/mpeg", "wmv"},
                                      {"VC1_TS_HD_DTSHD_MA_ISO", "video/mpeg", "wmv"},
                                      {"VC1_TS_HD_DTS_T", "video/vnd.dlna.mpeg-tts", ""},
                                      {"VC1_TS_HD_DTSHD_HRA_T", "video/vnd.dlna.mpeg-tts", ""},
                                      {"VC1_TS_HD_DTSHD_MA_T", "video/vnd.dlna.mpeg-tts", ""},
                                      {"VC1_PS_HD_DTS", "video/mpeg", ""},
                                      {"VC1_PS_HD_DTSHD_HRA", "video/mpeg", ""},
                                      {"VC1_PS_HD_DTSHD_MA", "video/mpeg", ""},
                                      {"VC1_PS_HD_DTSHD", "video/mpeg", ""},
                                      {"WMVMED_BASE", "video/x-ms-wmv", "wmv"},
                                      {"WMVMED_FULL", "video/x-ms-wmv", "wmv"},
                                      {"WMVMED_PRO", "video/x-ms-wmv", "wmv"},
                                      {"WMVHIGH_FULL", "video/x-ms-wmv", "wmv"},
                                      {"WMVHIGH_PRO", "video/x-ms-wmv", "wmv"},
                                      {"WMVHM_BASE", "video/x-ms-wmv", "wmv"},
                                      {"WMVSPLL_BASE", "video/x-ms-wmv", "wmv"},
                                      {"WMVSPML_BASE", "video/x-ms-wmv", "wmv"},
                                      {"WMVSPML_MP3", "video/x-ms-wmv", "wmv"},
                                      {"MPEG1", "video/mpeg", "mpg@mpeg@mp1"},
                                      {"MP2_MPS", "audio/mpeg", ""},
                                      {"MLP", "audio/vnd.dolby.mlp", "mlp"},
                                      {"EAC3", "audio/eac3", "ac3"},
                                      {"DTSHD_HRA", "audio/vnd.dts.hd", "dts"},
                                      {"DTSHD_MA", "audio/vnd.dts.hd", "dts"},
                                      {"DTSHD_LBR", "audio/vnd.dts.hd", "dts"},
                                      {"DTS", "audio/vnd-dts", "dts"},
                                      {"WMABASE", "audio/x-ms-wma", "wma"},
                                      {"WMAFULL", "audio/x-ms-wma", "wma"},
                                      {"WMAPRO", "audio/x-ms-wma", "wma"},
                                      {"ALS_ISO", "audio/mp4", "mp4"},
                                      {"ALS_MULT5_ISO", "audio/mp4", "mp4"},
                                      {"HEAACv2_L2_MPS_DAB", "audio/x-dab", ""},
                                      {"BSAC_ISO", "audio/mp4@audio/3gpp", "3gp@mp4"},
                                      {"BSAC_MULT5_ISO", "audio/mp4@audio/3gpp", "3gp@mp4"},
                                      {"MPEG_PS_NTSC", "video/mpeg", "mpg"},
                                      {"MPEG_PS_PAL", "video/mpeg", "mpg"},
                                      {"MPEG_PS_SD_DTS", "video/mpeg", "mpg"},
                                      {"MPEG_PS_HD_DTS", "video/mpeg", "mpg"},
                                      {"MPEG_PS_HD_DTSHD_MA", "video/mpeg", "mpg"},
                                      {"MPEG_PS_HD_DTSHD_HRA", "video/mpeg", "mpg"},
                                      {"MPEG_PS_HD_DTSHD", "video/mpeg", "mpg"},
                                      {nullptr, nullptr, nullptr}};

// The extensions of the first row named profile, or null.
const char* FindExtensions(const char* profile) {
  if (profile == nullptr) return nullptr;
  for (const kiDLNAProfileRow* row = kRows; row->profile != nullptr; ++row) {
    if (std::strcmp(row->profile, profile) == 0) return row->extensions;
  }
  return nullptr;
}

}  // namespace

const kiDLNAProfileRow* kiDLNAInfoMatcher_GetTableForTesting() { return kRows; }

kiCString kiDLNAInfoMatcher::GetExtensionListFromProfile(const char* profile) {
  return kiCString(FindExtensions(profile));
}

kiCString kiDLNAInfoMatcher::GetExtensionFromProfile(const char* profile) {
  const char* extensions = FindExtensions(profile);
  if (extensions == nullptr) return kiCString();
  const char* at = std::strchr(extensions, '@');
  return at == nullptr ? kiCString(extensions)
                       : kiCString(extensions, static_cast<unsigned int>(at - extensions));
}
