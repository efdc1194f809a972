// What tells one concrete requester's session code from the other's, as
// data. The guards, the status engine, the tick counters, the stream check
// and the exchanges are written once over CCamRequester and
// CamRequesterFields; each class hands them one constant SessionPolicy: its
// status tables, one rule row per command type, the words of its messages
// and a few flags.
#ifndef CAM_SESSION_POLICY_H
#define CAM_SESSION_POLICY_H

#include <stdint.h>

class CCamRequester;
struct CamRequesterFields;

namespace camses {

constexpr int kStatusCount = 6;  // CAM_HTTP_STS_IDLE .. CAM_HTTP_STS_STOP
constexpr int kEventCount = 9;   // CAM_HTTP_EVT_START .. CAM_HTTP_EVT_STOP_DONE

// Next status by [current status][event].
using StatusTable = int8_t[kStatusCount][kEventCount];

// Which status table a command type steps through.
enum class TableKind : uint8_t { kNone, kVideo, kAudio };

// What SetupSessionCommand does for a command type.
enum class SetupKind : uint8_t {
  kUndefined,  // "SetupSessionCommand [Error] Undefined iCmdType=%d\n", -1
  kNone,       // audio: never set up, 0
  kLive,       // live video: set-up in SETUP, connection errors counted
  kPlayBack,   // play-back: the same without the connection-error accounting
};

// What SendCamPresetCommand does for a command type.
enum class PresetKind : uint8_t {
  kUndefined,  // "SendCamPresetCommand [Error] Undefined iCmdType=%d\n", -1
  kSkip,       // nothing to move, 0
  kRun,        // the preset exchange, unless in ERROR
};

// What CheckStreamStart does for a command type.
enum class StreamCheckKind : uint8_t {
  kUndefined,  // "CheckStreamStart [Error] iCmdType=%d\n"
  kQuery,      // ask the upper layer; a recorder's stream is pushed again
  kAudio,      // a recorder's audio is not checked (only printed)
};

// What SetKelInfoFlagCheck answers for a command type.
enum class EarlyRestartKind : uint8_t {
  kUndefined,  // "SetKelInfoFlagCheck [Error] Undefined iCmdType=%d\n", -1
  kNever,      // -1: wait for the 30th idle round
  kCheck,      // SetKelInfoFlagCheckExec decides
};

// What UidInvalid does for a command type.
enum class UidGoneKind : uint8_t {
  kUndefined,  // "UidInvalid [Error] iCmdType=%d\n", the UID kept
  kKeep,       // only the type's line, the UID kept
  kNotify,     // the type's line, then the class forgets the UID and tells the upper layer
};

// One command type's row.
struct CmdTypeRule {
  bool bOpens;  // OpenSessionCommand accepts the type
  TableKind eTable;
  SetupKind eSetup;
  PresetKind ePreset;
  StreamCheckKind eStreamCheck;
  EarlyRestartKind eEarlyRestart;
  UidGoneKind eUidGone;
  const char* pcUidLine;  // UidInvalid's line for the type ("UidInvalid [DEBUG] H.264:\n")
  // A type whose delivery this class does not start or stop names itself in
  // the refusal "<Exec> [Error] iCmdType:<word>\n" ("MPEG4_PLAY"); null: none.
  const char* pcNoDeliveryWord;
};

// The row of every command type that a class does not have.
constexpr CmdTypeRule kUndefinedCmdType = [] {
  CmdTypeRule r{};
  r.bOpens = false;  // OpenSessionCommand refuses it
  r.eTable = TableKind::kNone;
  r.eSetup = SetupKind::kUndefined;
  r.ePreset = PresetKind::kUndefined;
  r.eStreamCheck = StreamCheckKind::kUndefined;
  r.eEarlyRestart = EarlyRestartKind::kUndefined;
  r.eUidGone = UidGoneKind::kUndefined;
  r.pcUidLine = nullptr;         // UidInvalid prints its undefined-type line
  r.pcNoDeliveryWord = nullptr;  // refused as undefined, not by name
  return r;
}();

constexpr int kMaxCmdTypes = 8;

// The row of a command type that the class has (OpenSessionCommand accepts
// it); the enums name themselves, pcUidLine and pcNoDeliveryWord as in
// CmdTypeRule.
constexpr CmdTypeRule OpenedCmdType(TableKind eTable, SetupKind eSetup, PresetKind ePreset,
                                    StreamCheckKind eStreamCheck, EarlyRestartKind eEarlyRestart,
                                    UidGoneKind eUidGone, const char* pcUidLine,
                                    const char* pcNoDeliveryWord) {
  CmdTypeRule r{};
  r.bOpens = true;
  r.eTable = eTable;
  r.eSetup = eSetup;
  r.ePreset = ePreset;
  r.eStreamCheck = eStreamCheck;
  r.eEarlyRestart = eEarlyRestart;
  r.eUidGone = eUidGone;
  r.pcUidLine = pcUidLine;
  r.pcNoDeliveryWord = pcNoDeliveryWord;
  return r;
}

// The class's part of UidInvalid for a type whose rule says kNotify: forget
// the UID and tell the upper layer that the stream is gone.
using UidGoneFn = void (*)(CCamRequester& rReq, CamRequesterFields& rF);

struct SessionPolicy {
  const char* pcClassName;        // "CCamRequester_Cgi_Kobu_Rtp"
  const char* pcWireWord;         // "Rtp": "... [Error] Rtp::SetupSessionCommand failed\n"
  const char* pcLineWord;         // "RTP": "<Exec> [DEBUG] RTP: IP:%s PORT:%d ..."
  const char* pcStallWord;        // "RTP": "CheckStreamStart RTP RUN ->STOP  POS=%d \n"
  const char* pcStopRefusalName;  // Exec named in the stop's refusal of a type without delivery
  const StatusTable* pVideoTable;
  const StatusTable* pAudioTable;
  int iCmdTypeCount;  // rows in asRules; every other type is undefined
  CmdTypeRule asRules[kMaxCmdTypes];

  // Texts without conversions; null prints nothing.
  const char* pcSetupResetLine;         // before ConnectErrorReset of a live set-up
  const char* pcStreamStopNop;          // StreamStopCommand outside STOP
  const char* pcStreamCheckStart;       // first line of CheckStreamStart
  const char* pcRecorderAudioCheck;     // CheckStreamStart of a recorder's audio
  const char* pcRecorderRequestFailed;  // after a failed request of the recorder login or logout

  bool bClosesPushOnStop;        // both stream stops also close the push session
  bool bStopReleasesQuillonUid;  // the stream stop also releases a Quillon UID
  int iUidLineRefusedResult;     // the set-up's result when the session line is refused
  UidGoneFn pfnUidGone;
};

// The rule row of a command type; kUndefinedCmdType outside the class's rows.
inline const CmdTypeRule& RuleFor(const SessionPolicy& rP, int iCmdType) {
  if (iCmdType < 0 || iCmdType >= rP.iCmdTypeCount || iCmdType >= kMaxCmdTypes) {
    return kUndefinedCmdType;
  }
  return rP.asRules[iCmdType];
}

}  // namespace camses

#endif
