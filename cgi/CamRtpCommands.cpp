#include "CamRtpCommands.h"

#include "CCamRequester.h"
#include "CamCgiCommon.h"
#include "CamCgiTables.h"
#include "CamClock.h"
#include "CamConstants.h"
#include "CamHeldFormat.h"
#include "CamRequesterFields.h"

namespace cgi {

namespace {

constexpr int kStreamSecond = 2;

// The names and the recorder codec key that tell the video builders apart.
struct VideoBuilder {
  const char* pcStartStopError;
  const char* pcTypeError;
  const char* pcRecorderCodec;     // last component for recorders
  const char* pcRecorderResCodec;  // last component for camera type 36
};

constexpr VideoBuilder kMpeg4Builder = {
    "CmdSet_Mpeg4Distribute [ERROR] Param Error iStartStop [%d]\n",
    "CmdSet_Mpeg4Distribute [ERROR] Unknown Camera Type enum#[%d]\n", "COMP=MPEG4", "COMP=MPEG4"};
constexpr VideoBuilder kH264Builder = {
    "CmdSet_H264Distribute [ERROR] Param Error iStartStop [%d]\n",
    "CmdSet_H264Distribute [ERROR] Unknown Camera Type enum#[%d]\n", "COMP=H264",
    "COMP=H264&RES=1"};

void MediaPath(Slot& sSlot, const CamRequesterFields& sFields) {
  FormatSlot(sSlot, "%s%s", "/cgi-bin/", MediaCell(sFields.usCameraType, sFields.iCmdType));
}

int CameraSession(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst) {
  Slot sPath, sCodec, sChannel;
  FormatSlot(sPath, "%s", "/cgi-bin/getuid");
  const char* pcCodec = VideoCodecName(sFields.iCmdType);
  if (sFields.cStream == kStreamSecond) {
    FormatSlot(sCodec, "%s%s_2", "FILE=2&vcodec=", pcCodec);
  } else {
    FormatSlot(sCodec, "%s%s", "FILE=2&vcodec=", pcCodec);
  }
  ChannelPart(sChannel, sFields);
  if (JoinLine(pcDst, "%s?%s%s", sPath.c, sCodec.c, sChannel.c) != 0) return -1;
  rRequester.CamReqCOM_printf("CmdSet_SessionCmmand [DEBUG] Cmd[%s]\n", pcDst);
  return 0;
}

int CameraKeepAlive(const CamRequesterFields& sFields, char* pcDst, long lPage) {
  Slot sPath, sMode, sProtocol, sChannel, sUid, sPage, sStream;
  FormatSlot(sPath, "%s", "/cgi-bin/keep_alive");
  const char* pcMode = MediaCell(sFields.usCameraType, sFields.iCmdType);
  const bool bVideo = sFields.iCmdType == 0 || sFields.iCmdType == 2;
  if (bVideo && sFields.cStream == kStreamSecond) {
    FormatSlot(sMode, "mode=%s_2", pcMode);
  } else {
    FormatSlot(sMode, "mode=%s", pcMode);
  }
  FormatSlot(sProtocol, "%s", "protocol=rtp");
  ChannelPart(sChannel, sFields);
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  FormatSlot(sPage, "page=%ld", lPage);
  if (sFields.iCmdType < 3) StreamPart(sStream, sFields);
  return JoinLine(pcDst, "%s?%s&%s%s&%s&%s%s", sPath.c, sMode.c, sProtocol.c, sChannel.c, sUid.c,
                  sPage.c, sStream.c);
}

// Camera type 21: never "_2", channel or stream.
int ShortKeepAlive(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                   long lPage) {
  if (sFields.iCmdType == 1) return RefuseQv262AudioKeepAlive(rRequester);
  Slot sPath, sMode, sProtocol, sUid, sPage;
  FormatSlot(sPath, "%s", "/cgi-bin/keep_alive");
  FormatSlot(sMode, "mode=%s", MediaCell(sFields.usCameraType, sFields.iCmdType));
  FormatSlot(sProtocol, "%s", "protocol=rtp");
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  FormatSlot(sPage, "page=%ld", lPage);
  return JoinLine(pcDst, "%s?%s&%s&%s&%s", sPath.c, sMode.c, sProtocol.c, sUid.c, sPage.c);
}

int CameraVideo(const CamRequesterFields& sFields, char* pcDst, int iStartStop) {
  Slot sPath, sConnect, sPort, sChannel, sUid, sStream;
  MediaPath(sPath, sFields);
  FormatSlot(sConnect, "%s&%s", ConnectWord(iStartStop), "protocol=rtp");
  FormatSlot(sPort, "my_port=%d", sFields.iRtpPort);
  ChannelPart(sChannel, sFields);
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  StreamPart(sStream, sFields);
  return JoinLine(pcDst, "%s?%s&%s%s&%s%s", sPath.c, sConnect.c, sPort.c, sChannel.c, sUid.c,
                  sStream.c);
}

// "CMD=..&CAM=..&UID=..&PORT=..&<codec>" of a recorder.
int RecorderRtpLine(const CamRequesterFields& sFields, char* pcDst, int iStartStop,
                    const char* pcCodec) {
  Slot sPath, sCommand, sCamera, sUid, sPort, sCodec;
  MediaPath(sPath, sFields);
  FormatSlot(sCommand, "%s", RecorderCommandWord(iStartStop));
  FormatSlot(sCamera, "CAM=%d", sFields.usSelectChNo);
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  FormatSlot(sPort, "PORT=%d", sFields.iRtpPort);
  FormatSlot(sCodec, "%s", pcCodec);
  return JoinLine(pcDst, "%s?%s&%s&%s&%s&%s", sPath.c, sCommand.c, sCamera.c, sUid.c, sPort.c,
                  sCodec.c);
}

int VideoDistribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                    int iStartStop, const VideoBuilder& sBuilder) {
  pcDst[0] = '\0';
  if (iStartStop > 1) {
    camfmt::PrintHeld(rRequester, sBuilder.pcStartStopError, iStartStop);
    return -1;
  }
  switch (RtpRow(sFields.usCameraType).video) {
    case VideoForm::kCamera:
      return CameraVideo(sFields, pcDst, iStartStop);
    case VideoForm::kRecorder:
      return RecorderRtpLine(sFields, pcDst, iStartStop, sBuilder.pcRecorderCodec);
    case VideoForm::kRecorderRes:
      return RecorderRtpLine(sFields, pcDst, iStartStop, sBuilder.pcRecorderResCodec);
    case VideoForm::kQuillon:
    case VideoForm::kNone:
      break;
  }
  camfmt::PrintHeld(rRequester, sBuilder.pcTypeError, sFields.usCameraType);
  return -1;
}

int CameraAudio(const CamRequesterFields& sFields, char* pcDst, int iStartStop, long lPage) {
  Slot sPath, sConnect, sPort, sChannel, sMode, sUid, sPage, sStream;
  MediaPath(sPath, sFields);
  FormatSlot(sConnect, "%s&%s", ConnectWord(iStartStop), "protocol=rtp");
  FormatSlot(sPort, "my_port=%d", sFields.iRtpPort);
  ChannelPart(sChannel, sFields);
  if (sFields.iAudioEnable == kAudioEnableIn) FormatSlot(sMode, "%s", "&mode=in");
  FormatSlot(sUid, "UID=%d", sFields.iUid.load());
  FormatSlot(sPage, "page=%ld", lPage);
  StreamPart(sStream, sFields);
  return JoinLine(pcDst, "%s?%s&%s%s%s&%s&%s%s", sPath.c, sConnect.c, sPort.c, sChannel.c, sMode.c,
                  sUid.c, sPage.c, sStream.c);
}

}  // namespace

int RtpSessionCommand(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst) {
  pcDst[0] = '\0';
  switch (RtpRow(sFields.usCameraType).session) {
    case SessionForm::kCamera:
      return CameraSession(rRequester, sFields, pcDst);
    case SessionForm::kRecorder:
      return BuildRecorderSession(pcDst);
    case SessionForm::kQuillon:
    case SessionForm::kNone:
      break;
  }
  rRequester.CamReqCOM_printf("CmdSet_SessionCmmand [ERROR] Unknown Camera Type enum#[%d]\n",
                              sFields.usCameraType);
  return -1;
}

int RtpMpeg4IframeCommand(CCamRequester& rRequester, const CamRequesterFields& sFields,
                          char* pcDst) {
  pcDst[0] = '\0';
  if (!RtpRow(sFields.usCameraType).bMpeg4Iframe) {
    rRequester.CamReqCOM_printf("CmdSet_IframInst [ERROR] Unknown Camera Type enum#[%d]\n",
                                sFields.usCameraType);
    return -1;
  }
  Slot sPath, sChannel, sStream;
  FormatSlot(sPath, "%s", "/cgi-bin/mpeg4_I_interval");
  if (sFields.usSelectChNo != 0) FormatSlot(sChannel, "?ch=%d", sFields.usSelectChNo);
  if (sFields.cStream == kStreamSecond) {
    FormatSlot(sStream, "%cstream=%d", sFields.usSelectChNo != 0 ? '&' : '?', kStreamSecond);
  }
  return JoinLine(pcDst, "%s%s%s", sPath.c, sChannel.c, sStream.c);
}

int RtpH264IframeCommand(CCamRequester& rRequester, const CamRequesterFields& sFields,
                         char* pcDst) {
  pcDst[0] = '\0';
  if (!RtpRow(sFields.usCameraType).bH264Iframe) {
    rRequester.CamReqCOM_printf("CmdSet_H264_IframInst [ERROR] Unknown Camera Type enum#[%d]\n",
                                sFields.usCameraType);
    return -1;
  }
  Slot sPath, sMiddle, sStream;
  FormatSlot(sPath, "%s", "/cgi-bin/h264_I_interval");
  FormatSlot(sStream, "?stream=%d", sFields.cStream);
  return JoinLine(pcDst, "%s%s%s", sPath.c, sMiddle.c, sStream.c);
}

int RtpKeepAliveCommand(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst) {
  pcDst[0] = '\0';
  const long lPage = PageValue();
  switch (RtpRow(sFields.usCameraType).keepAlive) {
    case KeepAliveForm::kCamera:
      return CameraKeepAlive(sFields, pcDst, lPage);
    case KeepAliveForm::kShortNoAudio:
      return ShortKeepAlive(rRequester, sFields, pcDst, lPage);
    case KeepAliveForm::kRecorder:
      return BuildRecorderKeepAlive(sFields, pcDst);
    case KeepAliveForm::kQuillon:
    case KeepAliveForm::kNone:
      break;
  }
  return RefuseKeepAliveType(rRequester, sFields);
}

int RtpMpeg4Distribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                       int iStartStop) {
  return VideoDistribute(rRequester, sFields, pcDst, iStartStop, kMpeg4Builder);
}

int RtpH264Distribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                      int iStartStop) {
  return VideoDistribute(rRequester, sFields, pcDst, iStartStop, kH264Builder);
}

int RtpAudioDistribute(CCamRequester& rRequester, const CamRequesterFields& sFields, char* pcDst,
                       int iStartStop) {
  return AudioDistribute(rRequester, sFields, pcDst, iStartStop, RtpRow(sFields.usCameraType).audio,
                         CameraAudio, [](const CamRequesterFields& sF, char* pcD, int iSS, long) {
                           return RecorderRtpLine(sF, pcD, iSS, "COMP=AUDIO");
                         });
}

}  // namespace cgi
