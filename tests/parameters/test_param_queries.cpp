// GetInfoCamInfo and GetInfoKelInfo: is the described camera this object's,
// with the checks in their order and the prefix rule of the text compare.
#include "ParamTestSupport.h"

namespace paramtest {
namespace {

// The print prefix of an object set up for 10.0.0.1 without position and
// command type: "IP:%15.15s ".
const std::string kIpCell = "IP:" + std::string(7, ' ') + "10.0.0.1 ";

template <class ClassInfo>
class Queries : public BothRequesters<ClassInfo> {
 protected:
  // A camera at 10.0.0.1:80, type 14 "DOME-A", admin/pw, channel 2; the HTTP
  // requester also frame rate 5 and resolution 2.
  void SetUpCamera(uint16_t usType = 14, const char* pcName = "DOME-A") {
    this->Set(CAM_PARAM_IPADDRESS, "10.0.0.1");
    this->SetValue(CAM_PARAM_HTTPPORT, int32_t{80});
    this->SetCamType(usType, 1, pcName);
    CAM_AUTH_PARAM sAuth{};
    strcpy(sAuth.cUserName, "admin");
    strcpy(sAuth.cPassword, "pw");
    this->Set(CAM_PARAM_AUTH, &sAuth);
    this->SetValue(CAM_PARAM_SELCH, uint16_t{2});
    if (ClassInfo::kComparesFrameAndResolution) {
      this->SetValue(CAM_PARAM_FRATE, uint16_t{5});
      this->SetValue(CAM_PARAM_RESOLUTION, uint16_t{2});
    }
    this->capture.Clear();
  }
  static CAM_CAMINFO_PARAM Matching() {
    CAM_CAMINFO_PARAM sInfo{};
    strcpy(sInfo.cIpAddr, "10.0.0.1");
    sInfo.iHttpPort = 80;
    strcpy(sInfo.cUserName, "admin");
    strcpy(sInfo.cPassword, "pw");
    sInfo.usCameraType = 14;
    strcpy(sInfo.CamName, "DOME-A");
    sInfo.usSelectChNo = 2;
    sInfo.usFrate = 5;
    sInfo.usResolution = 2;
    return sInfo;
  }
  // Asks kind 1 and expects a mismatch with the one line given.
  void ExpectMismatch(const CAM_CAMINFO_PARAM& sInfo, const std::string& sLine) {
    this->capture.Clear();
    CAM_CAMINFO_PARAM sCopy = sInfo;
    EXPECT_EQ(-1, this->obj.GetInfo(CAM_INFO_CAMINFO, &sCopy));
    EXPECT_EQ((Lines{kIpCell + sLine}), this->Printed());
  }
};
TYPED_TEST_SUITE(Queries, BothClasses);

TYPED_TEST(Queries, CamInfoMatchesTheCameraItWasSetUpFor) {
  this->SetUpCamera();
  const State before = this->Now();
  CAM_CAMINFO_PARAM sInfo = this->Matching();
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CAMINFO, &sInfo));
  EXPECT_TRUE(this->Printed().empty());
  EXPECT_EQ(before, this->Now());
}

TYPED_TEST(Queries, CamInfoAddressMismatch) {
  this->SetUpCamera();
  CAM_CAMINFO_PARAM sInfo = this->Matching();
  strcpy(sInfo.cIpAddr, "10.0.0.2");
  this->ExpectMismatch(sInfo,
                       "GetInfoCamInfo [DEBUG] IP unmach [Param:10.0.0.2]!=[Setup:10.0.0.1]\n");
  strcpy(sInfo.cIpAddr, "10.0.0.");
  this->ExpectMismatch(sInfo,
                       "GetInfoCamInfo [DEBUG] IP unmach [Param:10.0.0.]!=[Setup:10.0.0.1]\n");
}

TYPED_TEST(Queries, CamInfoAddressThatBeginsWithTheStoredOnePasses) {
  this->SetUpCamera();
  CAM_CAMINFO_PARAM sInfo = this->Matching();
  strcpy(sInfo.cIpAddr, "10.0.0.15");
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CAMINFO, &sInfo));
  EXPECT_TRUE(this->Printed().empty());
}

TYPED_TEST(Queries, CamInfoPortMismatch) {
  this->SetUpCamera();
  CAM_CAMINFO_PARAM sInfo = this->Matching();
  sInfo.iHttpPort = 81;
  this->ExpectMismatch(sInfo, "GetInfoCamInfo [DEBUG] PORT# unmach [Param:81]!=[Setup:80]\n");
}

TYPED_TEST(Queries, CamInfoModelMismatchComparesTheTypeOnly) {
  this->SetUpCamera();
  CAM_CAMINFO_PARAM sInfo = this->Matching();
  strcpy(sInfo.CamName, "OTHER");
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CAMINFO, &sInfo));
  sInfo.usCameraType = 15;
  this->ExpectMismatch(
      sInfo, "GetInfoCamInfo [DEBUG] MODEL unmach [Param:OTHER(15)]!=[Setup:DOME-A(14)]\n");
}

TYPED_TEST(Queries, CamInfoUserNameAndPasswordMismatch) {
  this->SetUpCamera();
  CAM_CAMINFO_PARAM sInfo = this->Matching();
  strcpy(sInfo.cUserName, "root");
  this->ExpectMismatch(sInfo,
                       "GetInfoCamInfo [DEBUG] UserName unmach [Param:root]!=[Setup:admin]\n");
  sInfo = this->Matching();
  strcpy(sInfo.cPassword, "xx");
  this->ExpectMismatch(sInfo, "GetInfoCamInfo [DEBUG] Password unmach [Param:xx]!=[Setup:pw]\n");
  // The prefix rule holds for every text.
  sInfo = this->Matching();
  strcpy(sInfo.cUserName, "administrator");
  strcpy(sInfo.cPassword, "pw2");
  this->capture.Clear();
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CAMINFO, &sInfo));
}

TYPED_TEST(Queries, CamInfoFrameRateAndResolutionAreComparedByTheHttpRequesterOnly) {
  this->SetUpCamera();
  CAM_CAMINFO_PARAM sInfo = this->Matching();
  sInfo.usFrate = 6;
  if (TypeParam::kComparesFrameAndResolution) {
    this->ExpectMismatch(sInfo, "GetInfoCamInfo [DEBUG] Flame unmach [Param:6]!=[Setup:5]\n");
  } else {
    EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CAMINFO, &sInfo));
  }
  sInfo = this->Matching();
  sInfo.usResolution = 3;
  if (TypeParam::kComparesFrameAndResolution) {
    this->ExpectMismatch(sInfo,
                         "GetInfoCamInfo [DEBUG] Resolution rate unmach [Param:3]!=[Setup:2]\n");
  } else {
    EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CAMINFO, &sInfo));
  }
}

TYPED_TEST(Queries, CamInfoSelectChannelMismatch) {
  this->SetUpCamera();
  CAM_CAMINFO_PARAM sInfo = this->Matching();
  sInfo.usSelectChNo = 3;
  this->ExpectMismatch(sInfo,
                       "GetInfoCamInfo [DEBUG] SelectChNo rate unmach [Param:3]!=[Setup:2]\n");
}

TYPED_TEST(Queries, CamInfoStopsAtTheFirstMismatch) {
  this->SetUpCamera();
  CAM_CAMINFO_PARAM sInfo = this->Matching();
  sInfo.iHttpPort = 81;
  strcpy(sInfo.cUserName, "root");
  sInfo.usSelectChNo = 9;
  this->ExpectMismatch(sInfo, "GetInfoCamInfo [DEBUG] PORT# unmach [Param:81]!=[Setup:80]\n");
}

TYPED_TEST(Queries, CamInfoEmptyStoredTextsMatchAnything) {
  CAM_CAMINFO_PARAM sInfo{};
  strcpy(sInfo.cIpAddr, "1.2.3.4");
  strcpy(sInfo.cUserName, "someone");
  strcpy(sInfo.cPassword, "something");
  sInfo.iHttpPort = -1;
  sInfo.usCameraType = 37;
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CAMINFO, &sInfo));
  EXPECT_TRUE(this->Printed().empty());
}

TYPED_TEST(Queries, CamInfoRefusesNull) {
  EXPECT_EQ(-1, this->obj.GetInfoCamInfo(nullptr));
  EXPECT_EQ((Lines{"GetInfoCamInfo [Error] pParam invalid\n"}), this->Printed());
}

// ---- information kind 0: recorder session ---------------------------------------

template <class ClassInfo>
class KelQuery : public Queries<ClassInfo> {
 protected:
  void SetUpRecorder() {
    this->SetUpCamera(31, "KEL-R");
    const CAM_KEL_INFO sInfo = SampleKelInfo();
    ASSERT_EQ(0, this->Set(CAM_PARAM_KELINFO, &sInfo));
    this->capture.Clear();
  }
  static CAM_KEL_INFO Question() {
    CAM_KEL_INFO sInfo{};
    strcpy(sInfo.cIpAddr, "10.0.0.1");
    sInfo.iHttpPort = 80;
    sInfo.usCameraType = 31;
    strcpy(sInfo.CamName, "ASKED");
    return sInfo;
  }
  // The class's word for each mismatch.
  static std::string IpLine(const char* pcParam) {
    return std::string(ClassInfo::kSetterChecksNull ? "GetInfoKelInfo [DEBUG]"
                                                    : "GetKelInfo [ERROR]") +
           " IP unmach [Param:" + pcParam + "]!=[Setup:10.0.0.1]\n";
  }
  static std::string PortLine(int iParam) {
    return ClassInfo::kSetterChecksNull
               ? "GetInfoKelInfo [DEBUG] PORT# unmach [Param:" + std::to_string(iParam) +
                     "]!=[Setup:80]\n"
               : "GetKelInfo [ERROR] PORT# unmach [Param" + std::to_string(iParam) +
                     "]!=[Setup:80]\n";
  }
  static std::string ModelLine(const char* pcName, int iType) {
    return std::string(ClassInfo::kSetterChecksNull ? "GetInfoKelInfo [DEBUG]"
                                                    : "GetKelInfo [ERROR]") +
           " MODEL unmach [Param:" + pcName + "(" + std::to_string(iType) +
           ")]!=[Setup:KEL-R(31)]\n";
  }
  void ExpectKelMismatch(CAM_KEL_INFO sInfo, const std::string& sLine) {
    this->capture.Clear();
    const CAM_KEL_INFO sBefore = sInfo;
    EXPECT_EQ(-1, this->obj.GetInfo(CAM_INFO_KELINFO, &sInfo));
    EXPECT_EQ((Lines{kIpCell + sLine}), this->Printed());
    // Nothing was handed out.
    EXPECT_EQ(0, memcmp(&sBefore, &sInfo, sizeof(sInfo)));
  }
};
TYPED_TEST_SUITE(KelQuery, BothClasses);

TYPED_TEST(KelQuery, MatchingRecorderHandsOutTheSessionData) {
  this->SetUpRecorder();
  const State before = this->Now();
  CAM_KEL_INFO sInfo = this->Question();
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_KELINFO, &sInfo));
  EXPECT_EQ(4711, sInfo.iUid);
  EXPECT_EQ(32, sInfo.iAudioBitrate);
  EXPECT_EQ(100, sInfo.iAudioEnable);
  EXPECT_EQ(2, sInfo.iSelfFamily);
  EXPECT_EQ(0xBEEF, sInfo.usReserved);
  EXPECT_EQ(1, sInfo.ucMulticast);
  EXPECT_STREQ("239.1.2.3", sInfo.cMultiAddr);
  EXPECT_EQ(0x5A, sInfo.ucReserved);
  EXPECT_STREQ("10.0.0.99", sInfo.cSelfAddr);
  EXPECT_EQ(6000, sInfo.iRtpPort);
  EXPECT_EQ(6100, sInfo.iUniPort);
  EXPECT_EQ(7100, sInfo.iAudioInPort);
  EXPECT_EQ(10, sInfo.iPeerFamily);
  // The caller's leading fields stay as they were.
  EXPECT_STREQ("10.0.0.1", sInfo.cIpAddr);
  EXPECT_STREQ("ASKED", sInfo.CamName);
  EXPECT_EQ((Lines{kIpCell + "GetInfoKelInfo [DEBUG] Mach Model:KEL-R IP:10.0.0.1 "
                             "SelfAdr:10.0.0.99 Port:80 UID:4711 aBitrate:32 aEnable:100\n",
                   kIpCell + "GetInfoKelInfo [DEBUG] MultAdr:239.1.2.3 RtpPort:6000 \n",
                   kIpCell + "GetInfoKelInfo [DEBUG] UniPort:6100 aInPort:7100 peer_family:10 "
                             "self_family:2\n"}),
            this->Printed());
  EXPECT_EQ(before, this->Now());
}

TYPED_TEST(KelQuery, AddressPortAndModelMismatches) {
  this->SetUpRecorder();
  CAM_KEL_INFO sInfo = this->Question();
  strcpy(sInfo.cIpAddr, "10.0.0.2");
  this->ExpectKelMismatch(sInfo, this->IpLine("10.0.0.2"));
  sInfo = this->Question();
  sInfo.iHttpPort = 8080;
  this->ExpectKelMismatch(sInfo, this->PortLine(8080));
  sInfo = this->Question();
  sInfo.usCameraType = 32;
  this->ExpectKelMismatch(sInfo, this->ModelLine("ASKED", 32));
}

TYPED_TEST(KelQuery, RefusesNullWithTheClassWords) {
  EXPECT_EQ(-1, this->obj.GetInfoKelInfo(nullptr));
  EXPECT_EQ((Lines{TypeParam::kSetterChecksNull ? "GetInfoKelInfo [Error] pParam invalid\n"
                                                : "GetKelInfo [Error] pParam invalid\n"}),
            this->Printed());
}

}  // namespace
}  // namespace paramtest
