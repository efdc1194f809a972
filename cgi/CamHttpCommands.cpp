#include "CamHttpCommands.h"

#include "CCamRequester.h"
#include "CamCgiCommon.h"
#include "CamCgiTables.h"
#include "CamClock.h"
#include "CamConstants.h"
#include "CamRequesterFields.h"

namespace cgi {

namespace {

const char* Cell(const CamRequesterFields& sFields) {
  return HttpMediaCell(sFields.usCameraType, sFields.iCmdType);
}

void MediaPath(Slot& sSlot, const CamRequesterFields& sFields) {
  FormatSlot(sSlot, "%s%s", "/cgi-bin/", Cell(sFields));
}

int CameraSession(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst) {
  Slot sPath, sCodec, sChannel;
  FormatSlot(sPath, "%s", "/cgi-bin/getuid");
  FormatSlot(sCodec, "%s%s", "FILE=2&vcodec=", Cell(sFields));
  ChannelPart(sChannel, sFields);
  if (JoinLine(pcDst, "%s?%s%s", sPath.c, sCodec.c, sChannel.c) != 0) return -1;
  rRequester.CamReqCOM_printf("CmdSet_SessionCmmand [DEBUG] Cmd[%s]\n", pcDst);
  return 0;
}

int QuillonSession(char* pcDst) {
  Slot sPath, sPage;
  FormatSlot(sPath, "%s", "/cgi-bin/getuid");
  FormatSlot(sPage, "FILE=uid.html&PAGE=%ld", PageValue());
  return JoinLine(pcDst, "%s?%s", sPath.c, sPage.c);
}

int CameraKeepAlive(const CamRequesterFields& sFields, char* pcDst, long lPage) {
  Slot sPath, sMode, sProtocol, sChannel, sUid, sPage;
  FormatSlot(sPath, "%s", "/cgi-bin/keep_alive");
  FormatSlot(sMode, "mode=%s", Cell(sFields));
  FormatSlot(sProtocol, "%s", "protocol=http");
  ChannelPart(sChannel, sFields);
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  FormatSlot(sPage, "page=%ld", lPage);
  return JoinLine(pcDst, "%s?%s&%s%s&%s&%s", sPath.c, sMode.c, sProtocol.c, sChannel.c, sUid.c,
                  sPage.c);
}

int ShortKeepAlive(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                   long lPage) {
  if (sFields.iCmdType == 1) return RefuseQv262AudioKeepAlive(rRequester);
  Slot sPath, sMode, sProtocol, sUid, sPage;
  FormatSlot(sPath, "%s", "/cgi-bin/keep_alive");
  FormatSlot(sMode, "mode=%s", Cell(sFields));
  FormatSlot(sProtocol, "%s", "protocol=http");
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  FormatSlot(sPage, "page=%ld", lPage);
  return JoinLine(pcDst, "%s?%s&%s&%s&%s", sPath.c, sMode.c, sProtocol.c, sUid.c, sPage.c);
}

int QuillonKeepAlive(const CamRequesterFields& sFields, char* pcDst) {
  Slot sPath;
  FormatSlot(sPath, "%s", "/cgi-bin/uidutil");
  return JoinLine(pcDst, "%s?UID=%d&UTIL=KEEPALIVE", sPath.c, sFields.iUid.load());
}

int CameraJpeg(const CamRequesterFields& sFields, char* pcDst, int iStartStop) {
  Slot sPath, sConnect, sRate, sResolution, sChannel, sUid;
  MediaPath(sPath, sFields);
  FormatSlot(sConnect, "%s", ConnectWord(iStartStop));
  if (sFields.usFrate != 0) FormatSlot(sRate, "&framerate=%s", FrameRateCell(sFields.usFrate));
  if (sFields.usResolution != 0) {
    FormatSlot(sResolution, "&resolution=%s", ResolutionCell(sFields.usResolution));
  }
  ChannelPart(sChannel, sFields);
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  return JoinLine(pcDst, "%s?%s%s%s%s&%s", sPath.c, sConnect.c, sRate.c, sResolution.c, sChannel.c,
                  sUid.c);
}

// No resolution and no channel go to a Quillon camera.
int QuillonJpeg(const CamRequesterFields& sFields, char* pcDst, int iStartStop, long lPage) {
  Slot sPath, sMode, sRate, sUnused1, sUnused2, sUid, sPage;
  MediaPath(sPath, sFields);
  FormatSlot(sMode, "%s", iStartStop == 1 ? "MODE=START" : "MODE=STOP");
  if (sFields.usFrate != 0) {
    FormatSlot(sRate, "&%s%s", "FRAMERATE=", QuillonFrameRateCell(sFields.usFrate));
  }
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  FormatSlot(sPage, "PAGE=%ld", lPage);
  return JoinLine(pcDst, "%s?%s%s%s%s&%s&%s", sPath.c, sMode.c, sRate.c, sUnused1.c, sUnused2.c,
                  sUid.c, sPage.c);
}

// "CMD=..&CAM=..&UID=..&<codec>" of a recorder: no port over HTTP.
int RecorderHttpLine(const CamRequesterFields& sFields, char* pcDst, int iStartStop,
                     const char* pcCodec) {
  Slot sPath, sCommand, sCamera, sUid, sCodec;
  MediaPath(sPath, sFields);
  FormatSlot(sCommand, "%s", RecorderCommandWord(iStartStop));
  FormatSlot(sCamera, "CAM=%d", sFields.usSelectChNo);
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  FormatSlot(sCodec, "%s", pcCodec);
  return JoinLine(pcDst, "%s?%s&%s&%s&%s", sPath.c, sCommand.c, sCamera.c, sUid.c, sCodec.c);
}

int CameraAudio(const CamRequesterFields& sFields, char* pcDst, int iStartStop, long lPage) {
  Slot sPath, sConnect, sProtocol, sChannel, sMode, sUid, sPage;
  MediaPath(sPath, sFields);
  FormatSlot(sConnect, "%s", ConnectWord(iStartStop));
  FormatSlot(sProtocol, "%s", "protocol=http");
  ChannelPart(sChannel, sFields);
  if (sFields.iAudioEnable == kAudioEnableIn) FormatSlot(sMode, "%s", "&mode=in");
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  FormatSlot(sPage, "page=%ld", lPage);
  return JoinLine(pcDst, "%s?%s&%s%s%s&%s&%s", sPath.c, sConnect.c, sProtocol.c, sChannel.c,
                  sMode.c, sUid.c, sPage.c);
}

}  // namespace

int HttpSessionCommand(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst) {
  pcDst[0] = '\0';
  switch (HttpRow(sFields.usCameraType).session) {
    case SessionForm::kCamera:
      return CameraSession(rRequester, sFields, pcDst);
    case SessionForm::kQuillon:
      return QuillonSession(pcDst);
    case SessionForm::kRecorder:
      return BuildRecorderSession(pcDst);
    case SessionForm::kNone:
      break;
  }
  rRequester.CamReqCOM_printf("CmdSet_SessionCmmand [ERROR] Unknown Camera Type enum#[%d]\n",
                              sFields.usCameraType);
  return -1;
}

int HttpKeepAliveCommand(CCamRequester& rRequester, const CamRequesterFields& sFields,
                         char* pcDst) {
  pcDst[0] = '\0';
  const long lPage = PageValue();
  switch (HttpRow(sFields.usCameraType).keepAlive) {
    case KeepAliveForm::kCamera:
      return CameraKeepAlive(sFields, pcDst, lPage);
    case KeepAliveForm::kShortNoAudio:
      return ShortKeepAlive(rRequester, sFields, pcDst, lPage);
    case KeepAliveForm::kQuillon:
      return QuillonKeepAlive(sFields, pcDst);
    case KeepAliveForm::kRecorder:
      return BuildRecorderKeepAlive(sFields, pcDst);
    case KeepAliveForm::kNone:
      break;
  }
  return RefuseKeepAliveType(rRequester, sFields);
}

int HttpJpegDistribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                       int iStartStop) {
  pcDst[0] = '\0';
  if (iStartStop > 1) {
    rRequester.CamReqCOM_printf("CmdSet_JpegDistribute [ERROR] Param Error iStartStop [%d]\n",
                                iStartStop);
    return -1;
  }
  const long lPage = PageValue();
  switch (HttpRow(sFields.usCameraType).jpeg) {
    case VideoForm::kCamera:
      return CameraJpeg(sFields, pcDst, iStartStop);
    case VideoForm::kQuillon:
      return QuillonJpeg(sFields, pcDst, iStartStop, lPage);
    case VideoForm::kRecorder:
    case VideoForm::kRecorderRes:
      return RecorderHttpLine(sFields, pcDst, iStartStop, "COMP=JPEG");
    case VideoForm::kNone:
      break;
  }
  rRequester.CamReqCOM_printf("CmdSet_JpegDistribute [ERROR] Unknown Camera Type enum#[%d]\n",
                              sFields.usCameraType);
  return -1;
}

int HttpAudioDistribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                        int iStartStop) {
  return AudioDistribute(rRequester, sFields, pcDst, iStartStop,
                         HttpRow(sFields.usCameraType).audio, CameraAudio,
                         [](const CamRequesterFields& sF, char* pcD, int iSS, long) {
                           return RecorderHttpLine(sF, pcD, iSS, "COMP=AUDIO");
                         });
}

int HttpQuillonUidRelease(CCamRequester& rRequester, const CamRequesterFields& sFields,
                          char* pcDst) {
  pcDst[0] = '\0';
  if (!HttpRow(sFields.usCameraType).bQuillonRelease) {
    rRequester.CamReqCOM_printf("CmdSet_QuillonUidUtilRelease [ERROR] usCameraType = %d\n",
                                sFields.usCameraType);
    return -1;
  }
  Slot sPath, sUid;
  FormatSlot(sPath, "%s", "/cgi-bin/uidutil");
  FormatSlot(sUid, "UID=%d", sFields.uid_logout);
  return JoinLine(pcDst, "%s?%s&UTIL=RELEASE", sPath.c, sUid.c);
}

}  // namespace cgi
