// SetParameter and GetInfo: the opening line, the null record, the kinds a
// class does not have, and that each kind reaches its own setter.
#include "ParamTestSupport.h"

namespace paramtest {
namespace {

template <class ClassInfo>
class Dispatch : public BothRequesters<ClassInfo> {};
TYPED_TEST_SUITE(Dispatch, BothClasses);

TYPED_TEST(Dispatch, NullRecordIsRefusedForEveryKindBeforeDispatch) {
  const State before = this->Now();
  for (long lKind : {0L, 3L, 14L, 18L, 20L, 22L, 999L, 8L, 2L, 500L}) {
    this->capture.Clear();
    EXPECT_EQ(-1, this->Set(lKind, nullptr)) << lKind;
    EXPECT_EQ((Lines{this->In(lKind), "SetParameter [Error] pParam invalid\n"}), this->Printed())
        << lKind;
  }
  EXPECT_EQ(before, this->Now());
  EXPECT_TRUE(this->obj.events.empty());
}

TYPED_TEST(Dispatch, KindsTheClassDoesNotHaveAreUndefined) {
  std::vector<long> kinds = TypeParam::UndefinedKinds();
  for (long lKind : {24L, 25L, 100L, 998L, 1000L, -1L}) kinds.push_back(lKind);
  const State before = this->Now();
  int32_t iValue = 1;
  for (long lKind : kinds) {
    this->capture.Clear();
    EXPECT_EQ(-1, this->Set(lKind, &iValue)) << lKind;
    EXPECT_EQ((Lines{this->In(lKind), "SetParameter [Error] Undefined function kind=" +
                                          std::to_string(lKind) + "\n"}),
              this->Printed());
  }
  EXPECT_EQ(before, this->Now());
  EXPECT_TRUE(this->obj.events.empty());
  EXPECT_EQ(0, this->obj.uidInvalidCalls);
}

TYPED_TEST(Dispatch, KindsOfBothClassesReachTheirSetters) {
  // One value per kind, each landing in its own field.
  EXPECT_EQ(0, this->Set(CAM_PARAM_IPADDRESS, "10.1.2.3"));
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_HTTPPORT, int32_t{8080}));
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_SCREENPOS, int32_t{2}));
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_SELCH, uint16_t{3}));
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_PLAYMODE, int32_t{6}));
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_CAMNO, int32_t{44}));
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_DEBUGINFO, int32_t{0}));
  EXPECT_STREQ("10.1.2.3", this->obj.cIpAddr);
  EXPECT_EQ(8080, this->obj.iHttpPort);
  EXPECT_EQ(2, this->obj.iPos);
  EXPECT_EQ(3, this->obj.usSelectChNo);
  EXPECT_EQ(6, this->obj.m_VOGPlayMode);
  EXPECT_EQ(44, this->obj.iCamNo);
}

TYPED_TEST(Dispatch, GetInfoRefusesANullRecord) {
  for (long lKind : {0L, 1L, 2L, 3L, 4L, 7L}) {
    this->capture.Clear();
    EXPECT_EQ(-1, this->obj.GetInfo(lKind, nullptr));
    EXPECT_EQ((Lines{"GetInfo [Error] pParam invalid\n"}), this->Printed()) << lKind;
  }
}

TYPED_TEST(Dispatch, GetInfoKindsOutsideZeroToFourAreUndefined) {
  int32_t iOut = 12345;
  for (long lKind : {5L, 6L, 999L, -1L}) {
    this->capture.Clear();
    EXPECT_EQ(-1, this->obj.GetInfo(lKind, &iOut));
    EXPECT_EQ((Lines{"GetInfo [Error] Undefined function kind=" + std::to_string(lKind) + "\n"}),
              this->Printed());
  }
  EXPECT_EQ(12345, iOut);
}

TYPED_TEST(Dispatch, GetInfoKindsReachTheirQueries) {
  this->SetCamType(31);
  this->obj.m_KELSameUIDGroup = 21;
  this->obj.m_KELCtrlFlag = 1;
  this->obj.EnableKeepAlive();
  int32_t iOut = -7;
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_SAMEUIDGROUP_KEL, &iOut));
  EXPECT_EQ(21, iOut);
  iOut = -7;
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CTRLFLAG_KEL, &iOut));
  EXPECT_EQ(1, iOut);
  iOut = -7;
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_KEEPALIVEFLAG_KEL, &iOut));
  EXPECT_EQ(1, iOut);
  CAM_CAMINFO_PARAM sCam{};
  sCam.iHttpPort = -1;
  sCam.usCameraType = 31;
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CAMINFO, &sCam));
  CAM_KEL_INFO sKel{};
  sKel.iHttpPort = -1;
  sKel.usCameraType = 31;
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_KELINFO, &sKel));
}

// ---- kinds of one class only ------------------------------------------------

TEST(DispatchRtp, RtpPortAndStreamAreRtpKinds) {
  camtest::PrintCapture capture;
  Recording<CCamRequester_Cgi_Kobu_Rtp> obj;
  int32_t iPort = 5004;
  uint8_t ucStream = 2;
  EXPECT_EQ(0, obj.SetParameter(CAM_PARAM_RTPPORT, &iPort, 4));
  EXPECT_EQ(0, obj.SetParameter(CAM_PARAM_STREAM, &ucStream, 1));
  EXPECT_EQ(5004, obj.iRtpPort);
  EXPECT_EQ(2, obj.cStream);
  EXPECT_EQ((Lines{"CCamRequester_Cgi_Kobu_Rtp::SetParameter [DEBUG] IN l_param_kind:2\n",
                   "CCamRequester_Cgi_Kobu_Rtp::SetParameter [DEBUG] IN l_param_kind:21\n"}),
            capture.Lines());
}

TEST(DispatchRtp, FrameRateResolutionAndHttpErrorAreUndefinedAndLeaveTheFieldsAlone) {
  camtest::PrintCapture capture;
  Recording<CCamRequester_Cgi_Kobu_Rtp> obj;
  const State before = Capture(obj);
  uint16_t usValue = 3;
  EXPECT_EQ(-1, obj.SetParameter(CAM_PARAM_FRATE, &usValue, 2));
  EXPECT_EQ(-1, obj.SetParameter(CAM_PARAM_RESOLUTION, &usValue, 2));
  EXPECT_EQ(-1, obj.SetParameter(CAM_PARAM_HTTPERROR, &usValue, 2));
  EXPECT_EQ((Lines{"CCamRequester_Cgi_Kobu_Rtp::SetParameter [DEBUG] IN l_param_kind:8\n",
                   "SetParameter [Error] Undefined function kind=8\n",
                   "CCamRequester_Cgi_Kobu_Rtp::SetParameter [DEBUG] IN l_param_kind:9\n",
                   "SetParameter [Error] Undefined function kind=9\n",
                   "CCamRequester_Cgi_Kobu_Rtp::SetParameter [DEBUG] IN l_param_kind:23\n",
                   "SetParameter [Error] Undefined function kind=23\n"}),
            capture.Lines());
  EXPECT_EQ(before, Capture(obj));
  EXPECT_EQ(0, obj.uidInvalidCalls);
}

TEST(DispatchHttp, RtpPortAndStreamAreUndefinedAndLeaveTheFieldsAlone) {
  camtest::PrintCapture capture;
  Recording<CCamRequester_Cgi_Kobu_Http> obj;
  const State before = Capture(obj);
  int32_t iPort = 5004;
  EXPECT_EQ(-1, obj.SetParameter(CAM_PARAM_RTPPORT, &iPort, 4));
  EXPECT_EQ(-1, obj.SetParameter(CAM_PARAM_STREAM, &iPort, 1));
  EXPECT_EQ((Lines{"CCamRequester_Cgi_Kobu_Http::SetParameter [DEBUG] IN l_param_kind:2\n",
                   "SetParameter [Error] Undefined function kind=2\n",
                   "CCamRequester_Cgi_Kobu_Http::SetParameter [DEBUG] IN l_param_kind:21\n",
                   "SetParameter [Error] Undefined function kind=21\n"}),
            capture.Lines());
  EXPECT_EQ(before, Capture(obj));
}

TEST(DispatchHttp, FrameRateResolutionAndHttpErrorAreHttpKinds) {
  camtest::PrintCapture capture;
  Recording<CCamRequester_Cgi_Kobu_Http> obj;
  uint16_t usFrate = 5;
  uint16_t usResolution = 2;
  int32_t iAny = 0;
  EXPECT_EQ(0, obj.SetParameter(CAM_PARAM_FRATE, &usFrate, 2));
  EXPECT_EQ(0, obj.SetParameter(CAM_PARAM_RESOLUTION, &usResolution, 2));
  EXPECT_EQ(0, obj.SetParameter(CAM_PARAM_HTTPERROR, &iAny, 4));
  EXPECT_EQ(5, obj.usFrate);
  EXPECT_EQ(2, obj.usResolution);
  EXPECT_EQ(1, obj.uidInvalidCalls);
}

}  // namespace
}  // namespace paramtest
