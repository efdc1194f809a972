// Every setter of both requesters: good input, the refused record, values out
// of range (their message, -1, the neutral value, nothing else changed).
#include <cstdio>

#include "ParamTestSupport.h"

namespace paramtest {
namespace {

template <class ClassInfo>
class Setters : public BothRequesters<ClassInfo> {};
TYPED_TEST_SUITE(Setters, BothClasses);

// ---- kind 0: camera address ---------------------------------------------------

TYPED_TEST(Setters, IpAddressIsStored) {
  State expected = this->Now();
  EXPECT_EQ(0, this->Set(CAM_PARAM_IPADDRESS, "192.168.0.10"));
  expected["cIpAddr"] = "192.168.0.10";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(0)}), this->Printed());
}

TYPED_TEST(Setters, IpAddressLongerThanItsFieldIsCutToSixtyThreeCharacters) {
  const std::string sLong(100, 'a');
  EXPECT_EQ(0, this->Set(CAM_PARAM_IPADDRESS, sLong.c_str()));
  EXPECT_EQ(std::string(63, 'a'), std::string(this->obj.cIpAddr));
}

// ---- the setters that the HTTP class guards itself ------------------------------

TYPED_TEST(Setters, SettersWithTheirOwnNullCheckRefuseANullRecord) {
  struct Guarded {
    const char* pcName;
    int (CCamRequester::*pfnSetter)(const void*);
  };
  const Guarded setters[] = {
      {"SetParameterIpAddress", &CCamRequester::SetParameterIpAddress},
      {"SetParameterHttpPort", &CCamRequester::SetParameterHttpPort},
      {"SetParameterCmdType", &CCamRequester::SetParameterCmdType},
      {"SetParameterUid", &CCamRequester::SetParameterUid},
      {"SetParameterAuth", &CCamRequester::SetParameterAuth},
      {"SetParameterProxy", &CCamRequester::SetParameterProxy},
  };
  const State before = this->Now();
  CCamRequester& base = this->obj;
  for (const Guarded& setter : setters) {
    this->capture.Clear();
    EXPECT_EQ(-1, (base.*setter.pfnSetter)(nullptr)) << setter.pcName;
    // The HTTP class names the refusal; the RTP class relies on SetParameter
    // and refuses without a word.
    const Lines expected = TypeParam::kSetterChecksNull
                               ? Lines{std::string(setter.pcName) + " [Error] invalid param\n"}
                               : Lines{};
    EXPECT_EQ(expected, this->Printed()) << setter.pcName;
  }
  EXPECT_EQ(before, this->Now());
}

// ---- kind 1: HTTP port -----------------------------------------------------------

TYPED_TEST(Setters, HttpPortIsStored) {
  State expected = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_HTTPPORT, int32_t{8080}));
  expected["iHttpPort"] = "8080";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(1)}), this->Printed());
}

// ---- kind 3: command type --------------------------------------------------------

TYPED_TEST(Setters, EveryValidCommandTypeSetsItsPrintPrefix) {
  const std::vector<std::string> words = TypeParam::Words();
  for (int iType = 0; iType <= TypeParam::kHighestCmdType; ++iType) {
    typename TestFixture::Requester fresh;
    State expected = Capture(fresh);
    this->capture.Clear();
    EXPECT_EQ(0, fresh.SetParameter(CAM_PARAM_CMDTYPE, &iType, 4)) << iType;
    expected["iCmdType"] = std::to_string(iType);
    expected["cPrintPrefix"] = TypeParam::PrefixOf(words[static_cast<size_t>(iType)]);
    // Only the audio type marks the requester as audio.
    if (iType == 1) expected["bAudio"] = "1";
    EXPECT_EQ(expected, Capture(fresh)) << iType;
    EXPECT_EQ((Lines{this->In(3)}), this->Printed());
  }
}

TYPED_TEST(Setters, CommandTypeAboveTheHighestStoresTheInvalidTypeAndKeepsThePrefix) {
  ASSERT_EQ(0, this->SetValue(CAM_PARAM_CMDTYPE, int32_t{0}));
  const std::string sPrefix = TypeParam::PrefixOf(TypeParam::Words()[0]);
  for (int32_t iType : {TypeParam::kInvalidCmdType, TypeParam::kHighestCmdType + 1, 100, -1}) {
    this->capture.Clear();
    State expected = this->Now();
    EXPECT_EQ(-1, this->SetValue(CAM_PARAM_CMDTYPE, iType));
    expected["iCmdType"] = std::to_string(TypeParam::kInvalidCmdType);
    EXPECT_EQ(expected, this->Now()) << iType;
    EXPECT_EQ(sPrefix, expected["cPrintPrefix"]);
    // The prefix of the earlier type 0 stands in front of both lines.
    const std::string sCell = sPrefix + " ";
    EXPECT_EQ((Lines{sCell + this->In(3), sCell + "SetParameterCmdType [Error] pParam invalid=" +
                                              std::to_string(iType) + "\n"}),
              this->Printed());
  }
}

TYPED_TEST(Setters, RefusedCommandTypeOnAFreshObjectPrintsWithoutPrefix) {
  EXPECT_EQ(-1, this->SetValue(CAM_PARAM_CMDTYPE, int32_t{TypeParam::kInvalidCmdType}));
  EXPECT_EQ(TypeParam::kInvalidCmdType, this->obj.iCmdType);
  EXPECT_STREQ("", this->obj.cPrintPrefix);
  EXPECT_EQ(0, this->obj.bAudio.load());
  EXPECT_EQ((Lines{this->In(3), "SetParameterCmdType [Error] pParam invalid=" +
                                    std::to_string(TypeParam::kInvalidCmdType) + "\n"}),
            this->Printed());
}

TYPED_TEST(Setters, AudioStaysMarkedWhenTheTypeChangesLater) {
  ASSERT_EQ(0, this->SetValue(CAM_PARAM_CMDTYPE, int32_t{1}));
  ASSERT_EQ(0, this->SetValue(CAM_PARAM_CMDTYPE, int32_t{0}));
  EXPECT_EQ(1, this->obj.bAudio.load());
}

// ---- kind 4: UID record ----------------------------------------------------------

TYPED_TEST(Setters, UidRecordGivesTheUidAndTheAudioEnableOnly) {
  static_assert(sizeof(CAM_UID_PARAM) == 200, "the UID record is 200 bytes");
  CAM_UID_PARAM sUid{};
  sUid.iReserved = 9;
  sUid.iUid = 1234;
  sUid.iAudioBitrate = 32;
  sUid.iAudioEnable = 100;
  State expected = this->Now();
  EXPECT_EQ(0, this->Set(CAM_PARAM_UID, &sUid));
  expected["iUid"] = "1234";
  expected["iAudioEnable"] = "100";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(4)}), this->Printed());
}

// ---- kind 5: notification object --------------------------------------------------

TYPED_TEST(Setters, CallbackStoresTheObjectAndPrintsItsAddress) {
  QuietNotify notify;
  CCamRequesterNotify* pNotify = &notify;
  State expected = this->Now();
  EXPECT_EQ(0, this->Set(CAM_PARAM_CALLBACK, pNotify));
  EXPECT_EQ(pNotify, this->obj.p_notify_to_upper);
  expected["p_notify_to_upper"] = std::to_string(reinterpret_cast<uintptr_t>(pNotify));
  EXPECT_EQ(expected, this->Now());
  char acLine[128];
  snprintf(acLine, sizeof(acLine), "SetParameterCallback [DEBUG] p_notify_to_upper:%p \n",
           static_cast<void*>(pNotify));
  EXPECT_EQ((Lines{this->In(5), acLine}), this->Printed());
}

TYPED_TEST(Setters, CallbackRefusesNull) {
  const State before = this->Now();
  EXPECT_EQ(-1, this->obj.SetParameterCallback(nullptr));
  EXPECT_EQ((Lines{"SetParameterCallback [Error] pParam invalid\n"}), this->Printed());
  EXPECT_EQ(before, this->Now());
}

// ---- kind 6: authentication ------------------------------------------------------

TYPED_TEST(Setters, AuthCopiesUserNameAndPassword) {
  CAM_AUTH_PARAM sAuth{};
  strcpy(sAuth.cUserName, "admin");
  strcpy(sAuth.cPassword, "secret");
  State expected = this->Now();
  EXPECT_EQ(0, this->Set(CAM_PARAM_AUTH, &sAuth));
  expected["cUserName"] = "admin";
  expected["cPassword"] = "secret";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(6)}), this->Printed());
}

TYPED_TEST(Setters, AuthTextsWithoutTheirZeroAreCutToSixtyThree) {
  CAM_AUTH_PARAM sAuth;
  memset(sAuth.cUserName, 'u', sizeof(sAuth.cUserName));
  memset(sAuth.cPassword, 'p', sizeof(sAuth.cPassword));
  EXPECT_EQ(0, this->Set(CAM_PARAM_AUTH, &sAuth));
  EXPECT_EQ(std::string(63, 'u'), std::string(this->obj.cUserName));
  EXPECT_EQ(std::string(63, 'p'), std::string(this->obj.cPassword));
}

// ---- kind 7: proxy -----------------------------------------------------------------

TYPED_TEST(Setters, ProxyRecordIsCopiedWholeAndReported) {
  CAM_PROXY_PARAM sProxy{};
  sProxy.enable = 1;
  strcpy(sProxy.host, "proxy.example");
  sProxy.port = 3128;
  strcpy(sProxy.except[0], "192.168.*.*");
  strcpy(sProxy.except[39], "10.0.0.1");
  State expected = this->Now();
  EXPECT_EQ(0, this->Set(CAM_PARAM_PROXY, &sProxy));
  expected["sProxy.enable"] = "1";
  expected["sProxy.host"] = "proxy.example";
  expected["sProxy.port"] = "3128";
  expected["sProxy.except"] = "192.168.*.*|" + std::string(38, '|') + "10.0.0.1|";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(7),
                   "SetParameterProxy [DEBUG] OUT enable=1 host=proxy.example port=3128 \n"}),
            this->Printed());
}

// ---- kind 10: camera type ------------------------------------------------------------

TYPED_TEST(Setters, CameraTypeStoresTypeNameAndCameraNumber) {
  CAM_TYPE_PARAM sType{};
  sType.usCameraNumber = 5;
  sType.usCameraType = 14;
  sType.iReserved = 77;
  strcpy(sType.CamName, "DOME-A");
  State expected = this->Now();
  EXPECT_EQ(0, this->Set(CAM_PARAM_CAMTYPE, &sType));
  expected["usCameraType"] = "14";
  expected["CamName"] = "DOME-A";
  expected["iCameraNumber"] = "5";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(10), "SetCameraNumber [DEBUG] CAM[5]",
                   "SetParameterCamType [DEBUG] CamName=DOME-A CamType=14 \n"}),
            this->Printed());
}

TYPED_TEST(Setters, CameraTypeFortyKeepsNameAndNumberStoresThirtySevenAndFails) {
  this->SetCamType(14, 3, "OLD");
  CAM_TYPE_PARAM sType{};
  sType.usCameraNumber = 7;
  sType.usCameraType = 40;
  strcpy(sType.CamName, "NEW");
  State expected = this->Now();
  EXPECT_EQ(-1, this->Set(CAM_PARAM_CAMTYPE, &sType));
  expected["usCameraType"] = "37";
  expected["CamName"] = "NEW";
  expected["iCameraNumber"] = "7";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(10), "SetCameraNumber [DEBUG] CAM[7]",
                   "SetParameterCamType [ERROR] pParam invalid=40\n"}),
            this->Printed());
}

TYPED_TEST(Setters, CameraTypeThirtySixIsTheLastValidAndThirtySevenIsRefused) {
  this->SetCamType(36);
  EXPECT_EQ(36, this->obj.usCameraType);
  CAM_TYPE_PARAM sType{};
  sType.usCameraNumber = 1;
  sType.usCameraType = 37;
  EXPECT_EQ(-1, this->Set(CAM_PARAM_CAMTYPE, &sType));
  EXPECT_EQ(37, this->obj.usCameraType);
  EXPECT_EQ(1, this->capture.Count("SetParameterCamType [ERROR] pParam invalid=37\n"));
}

TYPED_TEST(Setters, CameraNumberOutsideOneTo262IsStoredAsZero) {
  for (int iNumber : {262, 263, 1, 0}) {
    this->capture.Clear();
    EXPECT_EQ(0, this->obj.SetCameraNumber(iNumber));
    EXPECT_EQ(iNumber == 263 ? 0 : iNumber, this->obj.iCameraNumber) << iNumber;
    EXPECT_EQ((Lines{"SetCameraNumber [DEBUG] CAM[" + std::to_string(iNumber) + "]"}),
              this->Printed());
  }
  this->SetCamType(14, 263);
  EXPECT_EQ(0, this->obj.iCameraNumber);
  this->SetCamType(14, 262);
  EXPECT_EQ(262, this->obj.iCameraNumber);
}

TYPED_TEST(Setters, CameraTypeRefusesNull) {
  const State before = this->Now();
  EXPECT_EQ(-1, this->obj.SetParameterCamType(nullptr));
  EXPECT_EQ((Lines{"SetParameterCamType [ERROR] param error [NULL]\n"}), this->Printed());
  EXPECT_EQ(before, this->Now());
}

// ---- kind 11: preset -----------------------------------------------------------------

// The highest preset of each camera type; -1 for the types without presets.
int HighestPreset(int iType) {
  switch (iType) {
    case 14:
    case 15:
    case 16:
    case 17:
    case 18:
    case 22:
    case 25:
    case 28:
    case 30:
      return 256;
    case 11:
    case 12:
      return 64;
    case 13:
      return 16;
    default:
      return -1;
  }
}

TYPED_TEST(Setters, PresetRangeFollowsTheCameraType) {
  for (int iType = 0; iType <= 37; ++iType) {
    typename TestFixture::Requester fresh;
    fresh.usCameraType = static_cast<uint16_t>(iType);
    const int iHighest = HighestPreset(iType);
    const uint16_t usTry = static_cast<uint16_t>(iHighest < 0 ? 10 : iHighest);
    this->capture.Clear();
    EXPECT_EQ(0, fresh.SetParameterPreset(&usTry)) << iType;
    const int iStored = iHighest < 0 ? 0 : iHighest;
    EXPECT_EQ(iStored, fresh.usPresetNo) << iType;
    EXPECT_EQ((Lines{"SetParameterPreset [DEBUG] usPresetNo=" + std::to_string(iStored) + " \n"}),
              this->Printed())
        << iType;
    if (iHighest < 0) continue;
    const uint16_t usAbove = static_cast<uint16_t>(iHighest + 1);
    this->capture.Clear();
    EXPECT_EQ(-1, fresh.SetParameterPreset(&usAbove)) << iType;
    EXPECT_EQ(0, fresh.usPresetNo) << iType;
    EXPECT_EQ(
        (Lines{"SetParameterPreset [ERROR] pParam invalid=" + std::to_string(iHighest + 1) + "\n"}),
        this->Printed())
        << iType;
  }
}

TYPED_TEST(Setters, Preset257OnType14IsRefusedAndResetToZero) {
  this->SetCamType(14);
  ASSERT_EQ(0, this->SetValue(CAM_PARAM_PRESET, uint16_t{200}));
  this->capture.Clear();
  State expected = this->Now();
  EXPECT_EQ(-1, this->SetValue(CAM_PARAM_PRESET, uint16_t{257}));
  expected["usPresetNo"] = "0";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(11), "SetParameterPreset [ERROR] pParam invalid=257\n"}),
            this->Printed());
}

TYPED_TEST(Setters, Preset10OnType5IsStoredAsZeroAndSucceeds) {
  this->SetCamType(5);
  State expected = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_PRESET, uint16_t{10}));
  expected["usPresetNo"] = "0";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(11), "SetParameterPreset [DEBUG] usPresetNo=0 \n"}), this->Printed());
}

TYPED_TEST(Setters, PresetOnARecorderIsStoredAsZero) {
  this->SetCamType(33);
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_PRESET, uint16_t{3}));
  EXPECT_EQ(0, this->obj.usPresetNo);
}

TYPED_TEST(Setters, PresetRefusesNull) {
  EXPECT_EQ(-1, this->obj.SetParameterPreset(nullptr));
  EXPECT_EQ((Lines{"SetParameterPreset [ERROR] param error [NULL]\n"}), this->Printed());
}

// ---- kinds 12, 13: channel and screen position -----------------------------------------

TYPED_TEST(Setters, SelectChannelIsStoredAndReported) {
  State expected = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_SELCH, uint16_t{3}));
  expected["usSelectChNo"] = "3";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(12), "SetParameterSelCh [DEBUG] usSelectChNo=3 \n"}), this->Printed());
}

TYPED_TEST(Setters, ScreenPositionIsStored) {
  State expected = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_SCREENPOS, int32_t{4}));
  expected["iPos"] = "4";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(13)}), this->Printed());
}

TYPED_TEST(Setters, ChannelAndPositionRefuseNull) {
  const State before = this->Now();
  EXPECT_EQ(-1, this->obj.SetParameterSelCh(nullptr));
  EXPECT_EQ(-1, this->obj.SetParameterScreenPos(nullptr));
  EXPECT_EQ((Lines{"SetParameterSelCh [ERROR] param error [NULL]\n",
                   "SetParameterScreenPos [ERROR] param error [NULL]\n"}),
            this->Printed());
  EXPECT_EQ(before, this->Now());
}

// ---- kind 14: recorder information ---------------------------------------------------------

TYPED_TEST(Setters, KelInfoOfARecorderCopiesTheSessionData) {
  this->SetCamType(31);
  const CAM_KEL_INFO sInfo = SampleKelInfo();
  State expected = this->Now();
  EXPECT_EQ(0, this->Set(CAM_PARAM_KELINFO, &sInfo));
  expected["iUid"] = "4711";
  expected["iAudioBitrate"] = "32";
  expected["iAudioEnable"] = "100";
  expected["iSelfFamily"] = "2";
  expected["usKelReserved"] = std::to_string(0xBEEF);
  expected["ucMulticast"] = "1";
  expected["cMultiAddr"] = "239.1.2.3";
  expected["ucKelReserved"] = std::to_string(0x5A);
  expected["cSelfAddr"] = "10.0.0.99";
  expected["iRtpPort"] = "6000";
  expected["iUniPort"] = "6100";
  expected["iAudioInPort"] = "7100";
  expected["iPeerFamily"] = "10";
  EXPECT_EQ(expected, this->Now());
  // Only the HTTP requester reports what it took.
  Lines lines{this->In(14)};
  if (TypeParam::kSetterChecksNull) {
    lines.push_back("SetParameterKelInfo [DEBUG] OUT iUid:4711 Bitrate:32 aEnable:100\n");
  }
  EXPECT_EQ(lines, this->Printed());
}

TYPED_TEST(Setters, KelInfoOnACameraIsRefusedWithoutAWord) {
  for (uint16_t usType : {0, 30, 37}) {
    typename TestFixture::Requester fresh;
    fresh.usCameraType = usType;
    const State before = Capture(fresh);
    const CAM_KEL_INFO sInfo = SampleKelInfo();
    this->capture.Clear();
    EXPECT_EQ(-1, fresh.SetParameterKelInfo(&sInfo)) << usType;
    EXPECT_TRUE(this->Printed().empty()) << usType;
    EXPECT_EQ(before, Capture(fresh)) << usType;
  }
}

TYPED_TEST(Setters, KelInfoAcceptsEveryRecorderType) {
  for (uint16_t usType = 31; usType <= 36; ++usType) {
    typename TestFixture::Requester fresh;
    fresh.usCameraType = usType;
    const CAM_KEL_INFO sInfo = SampleKelInfo();
    EXPECT_EQ(0, fresh.SetParameterKelInfo(&sInfo)) << usType;
    EXPECT_EQ(4711, fresh.iUid.load());
  }
}

TYPED_TEST(Setters, KelInfoRefusesNull) {
  this->SetCamType(31);
  const State before = this->Now();
  EXPECT_EQ(-1, this->obj.SetParameterKelInfo(nullptr));
  EXPECT_EQ((Lines{"SetParameterKelInfo [ERROR] param error [NULL]\n"}), this->Printed());
  EXPECT_EQ(before, this->Now());
}

// ---- kinds 19, 20: play mode and status change ---------------------------------------------

TYPED_TEST(Setters, PlayModeIsStored) {
  State expected = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_PLAYMODE, int32_t{3}));
  expected["m_VOGPlayMode"] = "3";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(19)}), this->Printed());
}

TYPED_TEST(Setters, PlayModeRefusesNullWithTheStatusChangeText) {
  const State before = this->Now();
  EXPECT_EQ(-1, this->obj.SetParameterPlayMode(nullptr));
  EXPECT_EQ((Lines{"SetParameterStatusChange [ERROR] param error [NULL]\n"}), this->Printed());
  EXPECT_EQ(before, this->Now());
}

TYPED_TEST(Setters, StatusChangeOneRaisesRunSuccess) {
  const State before = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_STATUSCHANGE, int32_t{1}));
  EXPECT_EQ((std::vector<int>{CAM_HTTP_EVT_RUN_SUCCESS}), this->obj.events);
  EXPECT_EQ((Lines{this->In(20),
                   "SetParameterStatusChange [DEBUG] Change Status:CAM_HTTP_EVT_RUN_SUCCESS\n"}),
            this->Printed());
  EXPECT_EQ(before, this->Now());
}

TYPED_TEST(Setters, StatusChangeOtherValuesDoNothing) {
  for (int32_t iValue : {0, 2, -1, 4}) {
    this->capture.Clear();
    EXPECT_EQ(0, this->SetValue(CAM_PARAM_STATUSCHANGE, iValue));
    EXPECT_EQ((Lines{this->In(20), "SetParameterStatusChange [DEBUG] NOP\n"}), this->Printed());
  }
  EXPECT_TRUE(this->obj.events.empty());
}

TYPED_TEST(Setters, StatusChangeRefusesNull) {
  EXPECT_EQ(-1, this->obj.SetParameterStatusChange(nullptr));
  EXPECT_EQ((Lines{"SetParameterStatusChange [ERROR] param error [NULL]\n"}), this->Printed());
  EXPECT_TRUE(this->obj.events.empty());
}

// ---- kinds 22, 999 -------------------------------------------------------------------------

TYPED_TEST(Setters, CameraNumberGoesToTheBase) {
  State expected = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_CAMNO, int32_t{17}));
  expected["iCamNo"] = "17";
  EXPECT_EQ(expected, this->Now());
  EXPECT_EQ((Lines{this->In(22)}), this->Printed());
}

TYPED_TEST(Setters, DebugInfoAcceptsAnyAddressAndChangesNothing) {
  const State before = this->Now();
  char acAnything[3] = {1, 2, 3};
  EXPECT_EQ(0, this->Set(CAM_PARAM_DEBUGINFO, acAnything));
  EXPECT_EQ(before, this->Now());
  EXPECT_EQ((Lines{this->In(999)}), this->Printed());
}

TYPED_TEST(Setters, DebugInfoRefusesNull) {
  EXPECT_EQ(-1, this->obj.SetParameterDebugInfo(nullptr));
  EXPECT_EQ((Lines{"SetParameterDebugInfo [ERROR] param error [NULL]\n"}), this->Printed());
}

TYPED_TEST(Setters, DirectCallsWithoutARecordChangeNothing) {
  // Reached only through SetParameter, which refuses null first; a direct
  // call must still not touch anything.
  const State before = this->Now();
  EXPECT_EQ(-1, this->obj.SetParameterCamNo(nullptr));
  EXPECT_EQ(before, this->Now());
}

// ---- one class only ---------------------------------------------------------------------------

TEST(SettersRtp, RtpPortAndStream) {
  camtest::PrintCapture capture;
  Recording<CCamRequester_Cgi_Kobu_Rtp> obj;
  State expected = Capture(obj);
  int32_t iPort = 5004;
  uint8_t ucStream = 2;
  EXPECT_EQ(0, obj.SetParameterRtpPort(&iPort));
  EXPECT_EQ(0, obj.SetParameterStream(&ucStream));
  expected["iRtpPort"] = "5004";
  expected["cStream"] = "2";
  EXPECT_EQ(expected, Capture(obj));
  EXPECT_TRUE(capture.Lines().empty());
}

TEST(SettersRtp, StreamRefusesNullAndRtpPortRefusesSilently) {
  camtest::PrintCapture capture;
  Recording<CCamRequester_Cgi_Kobu_Rtp> obj;
  const State before = Capture(obj);
  EXPECT_EQ(-1, obj.SetParameterStream(nullptr));
  EXPECT_EQ(-1, obj.SetParameterRtpPort(nullptr));
  EXPECT_EQ((Lines{"SetParameterStream [ERROR] param error [NULL]\n"}), capture.Lines());
  EXPECT_EQ(before, Capture(obj));
}

class SettersHttp : public BothRequesters<HttpClass> {};

TEST_F(SettersHttp, FrameRateUpToElevenIsStored) {
  for (uint16_t usFrate : {0, 5, 11}) {
    capture.Clear();
    EXPECT_EQ(0, SetValue(CAM_PARAM_FRATE, usFrate));
    EXPECT_EQ(usFrate, obj.usFrate);
    EXPECT_EQ(
        (Lines{In(8), "SetParameterFrate [DEBUG] usFrate=" + std::to_string(usFrate) + " \n"}),
        Printed());
  }
}

TEST_F(SettersHttp, FrameRateAboveElevenIsRefusedAndStoredAsZero) {
  ASSERT_EQ(0, SetValue(CAM_PARAM_FRATE, uint16_t{7}));
  for (uint16_t usFrate : {12, 65535}) {
    capture.Clear();
    State expected = Now();
    EXPECT_EQ(-1, SetValue(CAM_PARAM_FRATE, usFrate));
    expected["usFrate"] = "0";
    EXPECT_EQ(expected, Now());
    EXPECT_EQ((Lines{In(8),
                     "SetParameterFrate [Error] pParam invalid=" + std::to_string(usFrate) + "\n"}),
              Printed());
  }
}

TEST_F(SettersHttp, ResolutionUpToFourIsStored) {
  for (uint16_t usResolution : {0, 4}) {
    capture.Clear();
    EXPECT_EQ(0, SetValue(CAM_PARAM_RESOLUTION, usResolution));
    EXPECT_EQ(usResolution, obj.usResolution);
    EXPECT_EQ((Lines{In(9), "SetParameterResolution [DEBUG] usResolution=" +
                                std::to_string(usResolution) + " \n"}),
              Printed());
  }
}

TEST_F(SettersHttp, ResolutionAboveFourIsRefusedAndStoredAsZero) {
  ASSERT_EQ(0, SetValue(CAM_PARAM_RESOLUTION, uint16_t{3}));
  capture.Clear();
  State expected = Now();
  EXPECT_EQ(-1, SetValue(CAM_PARAM_RESOLUTION, uint16_t{5}));
  expected["usResolution"] = "0";
  EXPECT_EQ(expected, Now());
  EXPECT_EQ((Lines{In(9), "SetParameterResolution [Error] pParam invalid=5\n"}), Printed());
}

TEST_F(SettersHttp, FrameRateAndResolutionRefuseNull) {
  const State before = Now();
  EXPECT_EQ(-1, obj.SetParameterFrate(nullptr));
  EXPECT_EQ(-1, obj.SetParameterResolution(nullptr));
  EXPECT_EQ((Lines{"SetParameterFrate [Error] invalid param\n",
                   "SetParameterResolution [Error] invalid param\n"}),
            Printed());
  EXPECT_EQ(before, Now());
}

TEST_F(SettersHttp, HttpErrorOnACameraMakesTheUidInvalid) {
  SetCamType(14);
  const State before = Now();
  int32_t iAny = 0;
  EXPECT_EQ(0, Set(CAM_PARAM_HTTPERROR, &iAny));
  EXPECT_EQ(1, obj.uidInvalidCalls);
  EXPECT_EQ((Lines{In(23), "SetParameterHttpError [DEBUG] In\n"}), Printed());
  EXPECT_EQ(before, Now());
}

TEST_F(SettersHttp, HttpErrorOnARecorderKeepsTheUid) {
  for (uint16_t usType = 31; usType <= 36; ++usType) {
    SetCamType(usType);
    int32_t iAny = 0;
    EXPECT_EQ(0, Set(CAM_PARAM_HTTPERROR, &iAny));
    EXPECT_EQ((Lines{In(23), "SetParameterHttpError [DEBUG] In\n"}), Printed());
  }
  EXPECT_EQ(0, obj.uidInvalidCalls);
}

TEST_F(SettersHttp, HttpErrorRefusesNullAfterItsOpeningLine) {
  EXPECT_EQ(-1, obj.SetParameterHttpError(nullptr));
  EXPECT_EQ((Lines{"SetParameterHttpError [DEBUG] In\n",
                   "SetParameterStatusChange [ERROR] param error [NULL]\n"}),
            Printed());
  EXPECT_EQ(0, obj.uidInvalidCalls);
}

}  // namespace
}  // namespace paramtest
