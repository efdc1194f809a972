// The class interface of CCamRequester is part of the device's ABI: the
// virtual operations sit in their fixed slots and the fields in their order.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "RecordingRequester.h"

namespace camtest {
namespace {

// Under the Itanium C++ ABI a pointer to a virtual member function holds
// 1 + the byte offset of its slot in the virtual table.
template <typename Pmf>
uintptr_t PointerWord(Pmf pfn) {
  static_assert(sizeof(Pmf) == 2 * sizeof(void*), "Itanium member-function pointer");
  uintptr_t auWords[2];
  std::memcpy(auWords, &pfn, sizeof(auWords));
  return auWords[0];
}

struct SlotEntry {
  int iSlot;
  uintptr_t uWord;
  const char* pcName;
};

#define SLOT(n, name) \
  { n, PointerWord(&CCamRequester::name), #name }

TEST(RequesterAbi, VirtualOperationsSitInTheirSlots) {
  const SlotEntry asSlots[] = {
      SLOT(2, Initialize),
      SLOT(3, EnableKeepAlive),
      SLOT(4, DiableKeepAlive),
      SLOT(5, EnablePBKeepAlive),
      SLOT(6, DiablePBKeepAlive),
      SLOT(7, GetKeepAlive),
      SLOT(8, GetPBKeepAlive),
      SLOT(9, RequestStart),
      SLOT(10, RequestStop),
      SLOT(11, RequestStartRetry),
      SLOT(12, RequestPresetPosition),
      SLOT(13, RequestPBStart),
      SLOT(14, RequestPBStop),
      SLOT(15, InitSessionCommand),
      SLOT(16, CleanUpSessionCommand),
      SLOT(17, OpenSessionCommand),
      SLOT(18, SetupSessionCommand),
      SLOT(19, CloseSessionCommand),
      SLOT(20, SendCamPresetCommand),
      SLOT(21, StreamStartCommand),
      SLOT(22, StreamStopCommand),
      SLOT(23, KelStreamStopCommand),
      SLOT(24, SendKeepAliveCommand),
      SLOT(25, SendPBKeepAliveCommand),
      SLOT(26, SendKeepAliveCommandForAudio),
      SLOT(27, SetParameter),
      SLOT(28, ChangeStatus),
      SLOT(29, GetInfo),
      SLOT(30, KeepStreamStartCmd),
      SLOT(31, SetKelInfoFlagCheck),
      SLOT(32, SetKeeAliveCount),
      SLOT(33, SendCamIframInstCommand),
      SLOT(34, StopChildThread),
      SLOT(35, ThisIsAudio),
      SLOT(36, SetCameraNumber),
      SLOT(37, ConnectError),
      SLOT(38, ConnectErrorReset),
      SLOT(39, ConnectErrorInitialize),
      SLOT(40, PlayModeStop),
      SLOT(41, SndMsg_GetUID),
      SLOT(42, GetChildThreadIndex),
      SLOT(43, OpenSessionCommandExec),
      SLOT(44, SetupSessionCommandExec),
      SLOT(50, CloseSessionPush),
      SLOT(57, SearchNumber),
      SLOT(58, SerachString),
      SLOT(77, UidInvalid),
      SLOT(84, CmdSet_SessionCmmand),
      SLOT(91, ChangeData_KelEncrypt),
      SLOT(96, CmdSet_H264Distribute),
      SLOT(97, SetParameterIpAddress),
      SLOT(114, SetParameterDebugInfo),
      SLOT(115, SetParameterHttpError),
      SLOT(116, SetParameterCamNo),
      SLOT(117, CamReqCOM_printf),
  };
  for (const SlotEntry& sEntry : asSlots) {
    EXPECT_EQ(sEntry.uWord, 1 + static_cast<uintptr_t>(sEntry.iSlot) * sizeof(void*))
        << sEntry.pcName << " is not in slot " << sEntry.iSlot;
  }
}

#undef SLOT

TEST(RequesterAbi, FieldsFollowTheTablePointerInTheirOrder) {
  RecordingRequester requester;
  CCamRequester* pBase = &requester;
  const char* pcBase = reinterpret_cast<const char*>(pBase);
  struct Field {
    const char* pcName;
    ptrdiff_t iOffset;
    size_t uSize;
  };
#define FIELD(name) \
  { #name, reinterpret_cast < const char*>(&pBase->name) - pcBase, sizeof(pBase->name) }
  const Field asFields[] = {
      FIELD(iChildThreadIndex), FIELD(iCamNo),         FIELD(iConnectStatus),
      FIELD(iStartRetry),       FIELD(iLastUidResult), FIELD(m_iErrorCount),
      FIELD(m_fErrorStat),      FIELD(iCameraNumber),  FIELD(bAudio),
      FIELD(tChildThread),      FIELD(bThreadCreated), FIELD(bKeepAlive),
      FIELD(bPBKeepAlive),      FIELD(bStartReq),      FIELD(bPBStartReq),
      FIELD(iMsgQueId),         FIELD(iRestartCount),  FIELD(ThreadWaitmutex),
      FIELD(cThreadReadyCond),  FIELD(Retrymutex),     FIELD(bThreadLoop),
      FIELD(bThreadReady),
  };
#undef FIELD
  // The table pointer comes first.
  EXPECT_EQ(asFields[0].iOffset, static_cast<ptrdiff_t>(sizeof(void*)));
  for (size_t u = 1; u < sizeof(asFields) / sizeof(asFields[0]); ++u) {
    EXPECT_GE(asFields[u].iOffset,
              asFields[u - 1].iOffset + static_cast<ptrdiff_t>(asFields[u - 1].uSize))
        << asFields[u].pcName << " does not follow " << asFields[u - 1].pcName;
  }
  const size_t uLast = sizeof(asFields) / sizeof(asFields[0]) - 1;
  EXPECT_LE(asFields[uLast].iOffset + static_cast<ptrdiff_t>(asFields[uLast].uSize),
            static_cast<ptrdiff_t>(sizeof(CCamRequester)));

  // Widths: 32-bit words and 8-bit flags.
  const char* apcWords[] = {"iChildThreadIndex", "iCamNo",         "iConnectStatus",
                            "iStartRetry",       "iLastUidResult", "m_iErrorCount",
                            "iCameraNumber",     "iMsgQueId",      "iRestartCount"};
  const char* apcBytes[] = {"m_fErrorStat", "bAudio",       "bThreadCreated",
                            "bKeepAlive",   "bPBKeepAlive", "bStartReq",
                            "bPBStartReq",  "bThreadLoop",  "bThreadReady"};
  for (const Field& sField : asFields) {
    for (const char* pc : apcWords) {
      if (std::string(pc) == sField.pcName) {
        EXPECT_EQ(sField.uSize, 4u) << pc;
      }
    }
    for (const char* pc : apcBytes) {
      if (std::string(pc) == sField.pcName) {
        EXPECT_EQ(sField.uSize, 1u) << pc;
      }
    }
  }
}

}  // namespace
}  // namespace camtest
