// Drives SetParameter and GetInfo of both requesters with arbitrary kinds and
// records of arbitrary bytes, as an upper layer that got everything wrong
// would. Each record is a heap block of exactly the size its kind expects
// (CamRequesterParam.h), filled with the fuzzer's bytes, so a read or write
// past a record is caught; the texts in it need not end in a zero. Kind 5
// always gets a real notification object: its record is the object itself,
// and the requester calls it.
//   byte 0: the class (even RTP, odd HTTP); then operations, each one byte:
//   bit 7 GetInfo instead of SetParameter, the rest an index into the table
//   of kinds below (past its end: the next four bytes are the kind itself);
//   then the record's bytes (zeros once the input runs out). A kind-0 text
//   runs to the next zero byte of the input.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTypes.h"
#include "FuzzUpper.h"

namespace {

struct Kind {
  long lKind;
  size_t uSize;  // bytes of the record; 0: a text
};

// The records of SetParameter's kinds; "any, not read" kinds get one byte.
const Kind kSetKinds[] = {
    {CAM_PARAM_IPADDRESS, 0},
    {CAM_PARAM_HTTPPORT, sizeof(int32_t)},
    {CAM_PARAM_RTPPORT, sizeof(int32_t)},
    {CAM_PARAM_CMDTYPE, sizeof(int32_t)},
    {CAM_PARAM_UID, sizeof(CAM_UID_PARAM)},
    {CAM_PARAM_CALLBACK, sizeof(void*)},
    {CAM_PARAM_AUTH, sizeof(CAM_AUTH_PARAM)},
    {CAM_PARAM_PROXY, sizeof(CAM_PROXY_PARAM)},
    {CAM_PARAM_FRATE, sizeof(uint16_t)},
    {CAM_PARAM_RESOLUTION, sizeof(uint16_t)},
    {CAM_PARAM_CAMTYPE, sizeof(CAM_TYPE_PARAM)},
    {CAM_PARAM_PRESET, sizeof(uint16_t)},
    {CAM_PARAM_SELCH, sizeof(uint16_t)},
    {CAM_PARAM_SCREENPOS, sizeof(int32_t)},
    {CAM_PARAM_KELINFO, sizeof(CAM_KEL_INFO)},
    {CAM_PARAM_SAMEUIDGROUP_KEL, sizeof(int32_t)},
    {CAM_PARAM_CTRLFLAG_KEL, sizeof(int32_t)},
    {CAM_PARAM_KEEPALIVEFLAG_KEL, sizeof(int32_t)},
    {CAM_PARAM_CHANGESTATUS_KEL, 1},
    {CAM_PARAM_PLAYMODE, sizeof(int32_t)},
    {CAM_PARAM_STATUSCHANGE, sizeof(int32_t)},
    {CAM_PARAM_STREAM, sizeof(uint8_t)},
    {CAM_PARAM_CAMNO, sizeof(int32_t)},
    {CAM_PARAM_HTTPERROR, 1},
    {CAM_PARAM_DEBUGINFO, 1},
};
constexpr size_t kSetKindCount = sizeof(kSetKinds) / sizeof(kSetKinds[0]);

// The records of GetInfo's kinds.
const Kind kInfoKinds[] = {
    {CAM_INFO_KELINFO, sizeof(CAM_KEL_INFO)},      {CAM_INFO_CAMINFO, sizeof(CAM_CAMINFO_PARAM)},
    {CAM_INFO_SAMEUIDGROUP_KEL, sizeof(int32_t)},  {CAM_INFO_CTRLFLAG_KEL, sizeof(int32_t)},
    {CAM_INFO_KEEPALIVEFLAG_KEL, sizeof(int32_t)},
};
constexpr size_t kInfoKindCount = sizeof(kInfoKinds) / sizeof(kInfoKinds[0]);

// The longest text of kind 0 that is tried (the field holds 63 characters).
constexpr size_t kTextMax = 300;

class Input {
 public:
  Input(const uint8_t* pucData, size_t uSize) : m_pucData(pucData), m_uSize(uSize) {}
  bool More() const { return m_uAt < m_uSize; }
  uint8_t Byte() { return More() ? m_pucData[m_uAt++] : 0; }
  // Fills uSize bytes, with zeros once the input runs out.
  void Fill(uint8_t* pucOut, size_t uSize) {
    for (size_t i = 0; i < uSize; ++i) pucOut[i] = Byte();
  }
  // The bytes up to the next zero (or the end, or kTextMax), as a text.
  std::unique_ptr<char[]> Text() {
    size_t uLength = 0;
    while (m_uAt + uLength < m_uSize && uLength < kTextMax && m_pucData[m_uAt + uLength] != 0) {
      ++uLength;
    }
    std::unique_ptr<char[]> pcText(new char[uLength + 1]);
    Fill(reinterpret_cast<uint8_t*>(pcText.get()), uLength);
    pcText[uLength] = '\0';
    if (More()) ++m_uAt;  // the zero
    return pcText;
  }

 private:
  const uint8_t* m_pucData;
  size_t m_uSize;
  size_t m_uAt = 0;
};

// The kind an operation byte names: a table row, or four raw bytes. A raw
// kind that the table knows gets its record; an unknown one gets one byte.
Kind KindOf(Input& rIn, uint8_t ucIndex, const Kind* psTable, size_t uCount) {
  if (ucIndex < uCount) return psTable[ucIndex];
  int32_t iRaw = 0;
  rIn.Fill(reinterpret_cast<uint8_t*>(&iRaw), sizeof(iRaw));
  for (size_t i = 0; i < uCount; ++i) {
    if (psTable[i].lKind == iRaw) return psTable[i];
  }
  return {iRaw, 1};
}

template <size_t N>
void MustBeTerminated(const char (&acField)[N]) {
  if (strnlen(acField, N) >= N) abort();
}

// What the setters promise whatever the records held: every kept text ends
// within its field, and every refused value was reset to its neutral one.
void CheckFields(const CamRequesterFields& r, int32_t iHighestCmdType) {
  MustBeTerminated(r.cIpAddr);
  MustBeTerminated(r.cUserName);
  MustBeTerminated(r.cPassword);
  MustBeTerminated(r.sProxy.host);
  for (const auto& acPattern : r.sProxy.except) MustBeTerminated(acPattern);
  MustBeTerminated(r.CamName);
  MustBeTerminated(r.cPrintPrefix);
  MustBeTerminated(r.cSelfAddr);
  MustBeTerminated(r.cMultiAddr);
  if (r.iCmdType < 0 || r.iCmdType > iHighestCmdType + 1) abort();
  if (r.usCameraType > CAM_REQUESTER_CAMTYPE_MAX) abort();
  if (r.usFrate > 11 || r.usResolution > 4) abort();
}

template <typename T>
void Drive(T& rReq, fuzzsup::FuzzUpper& rUpper, Input& rIn) {
  while (rIn.More()) {
    const uint8_t ucOp = rIn.Byte();
    const bool bInfo = (ucOp & 0x80) != 0;
    const uint8_t ucIndex = ucOp & 0x7F;
    if (bInfo) {
      const Kind sKind = KindOf(rIn, ucIndex, kInfoKinds, kInfoKindCount);
      std::unique_ptr<uint8_t[]> pucRecord(new uint8_t[sKind.uSize]);
      rIn.Fill(pucRecord.get(), sKind.uSize);
      rReq.GetInfo(sKind.lKind, pucRecord.get());
    } else {
      const Kind sKind = KindOf(rIn, ucIndex, kSetKinds, kSetKindCount);
      if (sKind.lKind == CAM_PARAM_CALLBACK) {
        rReq.SetParameter(sKind.lKind, &rUpper, 0);
      } else if (sKind.lKind == CAM_PARAM_IPADDRESS) {
        rReq.SetParameter(sKind.lKind, rIn.Text().get(), 0);
      } else {
        std::unique_ptr<uint8_t[]> pucRecord(new uint8_t[sKind.uSize]);
        rIn.Fill(pucRecord.get(), sKind.uSize);
        rReq.SetParameter(sKind.lKind, pucRecord.get(), static_cast<int>(sKind.uSize));
      }
    }
    // Every diagnostic line carries the stored address and command word.
    rReq.CamReqCOM_printf("fuzz [DEBUG] op=%d\n", ucOp);
  }
}

template <typename T>
void Run(Input& rIn, int32_t iHighestCmdType) {
  fuzzsup::FuzzUpper sUpper;
  T sReq;
  Drive(sReq, sUpper, rIn);
  CheckFields(sReq, iHighestCmdType);
  // No request thread ran, so no status comes back to idle by itself; the
  // destructor would wait for it.
  sReq.iConnectStatus = CAM_HTTP_STS_IDLE;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static bool bQuiet = (fuzzsup::QuietPrints(), true);
  (void)bQuiet;
  if (size < 1) return 0;
  Input sIn(data + 1, size - 1);
  if (data[0] % 2 == 0) {
    Run<CCamRequester_Cgi_Kobu_Rtp>(sIn, CAM_REQUESTER_CMD_H264_PLAY);
  } else {
    Run<CCamRequester_Cgi_Kobu_Http>(sIn, CAM_REQUESTER_CMD_JPEG_PLAY);
  }
  return 0;
}
