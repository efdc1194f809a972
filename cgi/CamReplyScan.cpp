#include "CamReplyScan.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "CCamRequester.h"
#include "CamConstants.h"
#include "CamRequesterFields.h"
#include "CamTypes.h"

namespace cgi {

namespace {

constexpr int kFileNameSize = 64;
// Play modes the recorder must report exactly as this device expects.
constexpr int kPlayModeStrictA = 0;
constexpr int kPlayModeStrictB = 5;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Printable characters end at CR, LF, NUL and every control character.
bool IsPrintable(char c) {
  const unsigned char u = static_cast<unsigned char>(c);
  return u >= 0x20 && u < 0x7F;
}

bool IsStopChar(const char* pcStopChars, char c) {
  if (pcStopChars == nullptr) return false;
  for (const char* p = pcStopChars; *p != '\0'; ++p) {
    if (*p == c) return true;
  }
  return false;
}

}  // namespace

int ScanNumber(CCamRequester& rRequester, const CamRequesterFields& sFields, const char* pcText,
               const char* pcKey, int* piValue) {
  if (pcText == nullptr || pcKey == nullptr || piValue == nullptr) {
    rRequester.CamReqCOM_printf("SearchNumber [Error] invalid param\n");
    return -1;
  }
  const char* pcFound = strstr(pcText, pcKey);
  if (pcFound == nullptr) {
    rRequester.CamReqCOM_printf("SearchNumber [DEBUG] Non Param [%s] CAM[IP:%s][MODEL:%s]\n", pcKey,
                                sFields.cIpAddr, sFields.CamName);
    return -1;
  }
  const char* p = pcFound + strlen(pcKey);
  if (!IsDigit(*p)) return -1;
  // No sign, and overflow wraps: the cameras send small numbers.
  uint32_t uValue = 0;
  for (; IsDigit(*p); ++p) uValue = uValue * 10u + static_cast<uint32_t>(*p - '0');
  *piValue = static_cast<int>(uValue);
  return 0;
}

int ScanString(CCamRequester& rRequester, const char* pcText, const char* pcKey,
               const char* pcStopChars, char* pcOut, int iOutSize) {
  if (pcText == nullptr || pcKey == nullptr || pcOut == nullptr) {
    rRequester.CamReqCOM_printf("SerachString [Error] invalid param\n");
    return -1;
  }
  const char* pcFound = strstr(pcText, pcKey);
  if (pcFound == nullptr) return -1;
  int iCount = 0;
  for (const char* p = pcFound + strlen(pcKey); IsPrintable(*p); ++p) {
    if (IsStopChar(pcStopChars, *p)) break;
    // The value and its terminating zero must fit: reaching iOutSize fails.
    if (iCount + 1 >= iOutSize) return -1;
    pcOut[iCount++] = *p;
  }
  if (iCount == 0) return -1;
  pcOut[iCount] = '\0';
  return 0;
}

int CheckAudioBitrateValue(CCamRequester& rRequester, char* pcText, char* pcKey, int* piValue) {
  return rRequester.SearchNumber(pcText, pcKey, piValue);
}

int CheckAudioEnableValue(CCamRequester& rRequester, const CamRequesterFields& sFields,
                          char* pcText, char* pcKey, int* piValue) {
  int iResult = 0;
  if (rRequester.SearchNumber(pcText, pcKey, &iResult) != 0) {
    const char* pcFound = (pcText != nullptr && pcKey != nullptr) ? strstr(pcText, pcKey) : nullptr;
    if (pcFound == nullptr) {
      rRequester.CamReqCOM_printf("CheckAudioEnable [ERROR] Non Param [%s] CAM[IP:%s][MODEL:%s]\n",
                                  pcKey != nullptr ? pcKey : "", sFields.cIpAddr, sFields.CamName);
      return -1;
    }
    if (strncmp(pcFound + strlen(pcKey), "in", 2) == 0) {
      iResult = kAudioEnableIn;
      rRequester.CamReqCOM_printf("CheckAudioEnable [DEBUG] Enable\n");
    } else {
      iResult = 0;
      rRequester.CamReqCOM_printf("CheckAudioEnable [DEBUG] Disable\n");
    }
  }
  if (piValue != nullptr) *piValue = iResult;
  return 0;
}

int CheckRecorderKey(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText,
                     char* pcKey) {
  if (!IsKelRecorder(sFields.usCameraType)) return -1;
  memset(sFields.strKey, 0, sizeof(sFields.strKey));
  char acQuote[] = "\"";
  if (rRequester.SerachString(pcText, pcKey, acQuote, sFields.strKey, kStrKeySize) != 0) {
    rRequester.CamReqCOM_printf("CheckKelStrKey [ERROR] Non Param [%s] \n",
                                pcKey != nullptr ? pcKey : "");
    return -1;
  }
  return 0;
}

int CheckDeliveryMode(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcText,
                      char* pcKey, char* pcOut, int iOutSize) {
  if (IsKelRecorder(sFields.usCameraType)) {
    // A recorder always relays by unicast, whatever its reply says.
    if (pcOut != nullptr && iOutSize > 0)
      snprintf(pcOut, static_cast<size_t>(iOutSize), "%s", "uni");
    return 0;
  }
  if (pcOut != nullptr && iOutSize > 0) memset(pcOut, 0, static_cast<size_t>(iOutSize));
  return rRequester.SerachString(pcText, pcKey, nullptr, pcOut, iOutSize);
}

int CheckKeepAliveReply(CCamRequester& rRequester, const CamRequesterFields& sFields,
                        char* pcText) {
  if (!IsKelRecorder(sFields.usCameraType)) return 0;
  static const char kName[] = "CheckKeepAlive_RcvData";
  rRequester.CamReqCOM_printf(" %s [DEBUG] KE REC SERIES !!\n", kName);
  char acFileName[kFileNameSize] = {};
  char acKey[] = "FILENAME";
  if (rRequester.SerachString(pcText, acKey, nullptr, acFileName, kFileNameSize) != 0) {
    rRequester.CamReqCOM_printf(" %s [Error] FILENAME NOT EXIST.\n", kName);
    return -1;
  }
  rRequester.CamReqCOM_printf(" %s [DEBUG] FILENAME EXIST. [ %s ]\n", kName, acFileName);
  return 0;
}

int CheckPlayModeReply(CCamRequester& rRequester, CamRequesterFields& sFields, char* pcText) {
  if (!IsKelRecorder(sFields.usCameraType)) return 0;
  rRequester.CamReqCOM_printf(" %s [DEBUG] KE REC SERIES !!\n", "CheckPlayMode_RcvData");
  char acKey[] = "PLAY_MODE=";
  if (rRequester.SearchNumber(pcText, acKey, &sFields.m_KELPlayMode) != 0) {
    rRequester.CamReqCOM_printf("CheckPlayMode_RcvData [Error] SearchNumber PLAY_MODE=%d\n",
                                sFields.m_KELPlayMode);
    return -1;
  }
  // Only the modes 0 and 5 must agree with this device; any other mode
  // the recorder reports is accepted as it is.
  const bool bStrict =
      sFields.m_KELPlayMode == kPlayModeStrictA || sFields.m_KELPlayMode == kPlayModeStrictB;
  if (bStrict && sFields.m_KELPlayMode != sFields.m_VOGPlayMode) {
    rRequester.CamReqCOM_printf(
        "CheckPlayMode_RcvData [Error] PLAY_MODE Unmatch [m_KELPlayMode:%d][m_VOGPlayMode:%d]\n",
        sFields.m_KELPlayMode, sFields.m_VOGPlayMode);
    return -1;
  }
  rRequester.CamReqCOM_printf(
      "CheckPlayMode_RcvData [DEBUG] PLAY_MODE Match [m_KELPlayMode:%d][m_VOGPlayMode:%d]\n",
      sFields.m_KELPlayMode, sFields.m_VOGPlayMode);
  return 0;
}

}  // namespace cgi
