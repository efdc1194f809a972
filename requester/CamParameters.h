// The parameter interface that both concrete requesters share: the
// SetParameter and GetInfo dispatch, every setter and query, and the recorder
// (KEL) flag family. The two classes differ only in a handful of constants
// (class name, command-type numbering and words, which setters check for a
// null record themselves, which extra values the camera query compares, the
// words of the recorder query); each class hands those in as one constant
// CamParamTraits and its virtual members call the functions below.
#ifndef CAM_PARAMETERS_H
#define CAM_PARAMETERS_H

#include <stddef.h>
#include <stdint.h>

#include "CCamRequester.h"
#include "CamRequesterFields.h"

namespace campar {

// The mismatch and null-record words of GetInfoKelInfo, which the two
// classes print differently.
struct KelInfoMessages {
  const char* pcIpUnmatch;     // [Param:%s]!=[Setup:%s]
  const char* pcPortUnmatch;   // [Param%d]!=[Setup:%d] or [Param:%d]!=[Setup:%d]
  const char* pcModelUnmatch;  // [Param:%s(%d)]!=[Setup:%s(%d)]
  const char* pcNullRecord;
};

// What tells one concrete requester's parameter handling from the other's.
struct CamParamTraits {
  const char* pcClassName;           // leads the "IN l_param_kind" line
  bool bSetterChecksNull;            // the setter itself refuses a null record ("invalid param")
  int32_t iHighestCmdType;           // highest valid command type
  int32_t iInvalidCmdType;           // stored for a refused command type
  const char* pcTypeWords;           // command-type words, fixed-width cells indexed by type
  size_t uTypeWordCell;              // width of one cell of pcTypeWords
  const char* pcPrefixFormat;        // print prefix formed from the type word
  bool bComparesFrameAndResolution;  // GetInfoCamInfo also compares usFrate, usResolution
  bool bPrintsKelInfoOut;            // SetParameterKelInfo reports the stored values
  KelInfoMessages sKelInfo;
};

// ---- dispatch ----------------------------------------------------------------

// One row of a class's kind table: the kind and the class's setter for it.
template <class Requester>
struct SetterEntry {
  long lKind;
  int (Requester::*pfnSetter)(const void*);
};

// Prints the "IN l_param_kind" line and refuses a null record; true when the
// record may be dispatched.
bool BeginSetParameter(CCamRequester& requester, const CamParamTraits& traits, long lKind,
                       const void* pParam);
// The line of a kind that the class's table does not hold; returns -1.
int UndefinedSetParameterKind(CCamRequester& requester, long lKind);

// SetParameter of both classes: the kind is looked up in the class's
// constant table; a kind the class does not have is refused.
template <class Requester, size_t N>
int DispatchSetParameter(Requester& requester, const CamParamTraits& traits,
                         const SetterEntry<Requester> (&table)[N], long lKind, const void* pParam) {
  if (!BeginSetParameter(requester, traits, lKind, pParam)) return -1;
  for (const SetterEntry<Requester>& entry : table) {
    if (entry.lKind == lKind) return (requester.*entry.pfnSetter)(pParam);
  }
  return UndefinedSetParameterKind(requester, lKind);
}

// GetInfo of both classes: the same table of queries for either.
int DispatchGetInfo(CCamRequester& requester, long lKind, void* pParam);

// ---- setters -----------------------------------------------------------------

int SetIpAddress(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
                 const void* pParam);
int SetHttpPort(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
                const void* pParam);
int SetRtpPort(CamRequesterFields& fields, const void* pParam);
int SetCmdType(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
               const void* pParam);
int SetUid(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
           const void* pParam);
int SetCallback(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetAuth(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
            const void* pParam);
int SetProxy(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
             const void* pParam);
int SetFrate(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetResolution(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetCamType(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetPreset(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetSelCh(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetScreenPos(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetKelInfo(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
               const void* pParam);
int SetPlayMode(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetStatusChange(CCamRequester& requester, const void* pParam);
int SetStream(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetCamNo(CCamRequester& requester, const void* pParam);
int SetHttpError(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int SetDebugInfo(CCamRequester& requester, const void* pParam);

// ---- queries -----------------------------------------------------------------

int GetCamInfo(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
               void* pParam);
int GetKelInfo(CCamRequester& requester, CamRequesterFields& fields, const CamParamTraits& traits,
               void* pParam);

// ---- recorder (KEL) flag family --------------------------------------------------

int SetCtrlFlagKel(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int GetCtrlFlagKel(CCamRequester& requester, CamRequesterFields& fields, void* pParam);
int SetSameUidGroupKel(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int GetSameUidGroupKel(CCamRequester& requester, CamRequesterFields& fields, void* pParam);
int SetKeepAliveFlagKel(CCamRequester& requester, CamRequesterFields& fields, const void* pParam);
int GetKeepAliveFlagKel(CCamRequester& requester, CamRequesterFields& fields, void* pParam);
int ChangeStatusKel(CCamRequester& requester);

}  // namespace campar

#endif
