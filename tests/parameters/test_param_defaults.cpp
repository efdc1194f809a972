// The values a requester holds right after construction, before the upper
// layer has set anything.
#include "ParamTestSupport.h"

namespace paramtest {
namespace {

template <class ClassInfo>
class Defaults : public ::testing::Test {};
TYPED_TEST_SUITE(Defaults, BothClasses);

TYPED_TEST(Defaults, ConstructorSetsTheInitialValuesOfEveryParameter) {
  camtest::PrintCapture capture;
  {
    typename TypeParam::Class obj;
    const CamRequesterFields& f = obj;
    const CCamRequester& base = obj;
    EXPECT_EQ(nullptr, f.p_notify_to_upper);
    EXPECT_STREQ("", f.cIpAddr);
    EXPECT_EQ(-1, f.iHttpPort);
    EXPECT_EQ(TypeParam::kInvalidCmdType, f.iCmdType);
    EXPECT_EQ(-1, f.iRtpPort);
    EXPECT_EQ(-1, f.iUid.load());
    EXPECT_EQ(0, f.iAudioBitrate);
    EXPECT_EQ(0, f.iAudioEnable);
    EXPECT_STREQ("", f.cUserName);
    EXPECT_STREQ("", f.cPassword);
    EXPECT_EQ(0, f.sProxy.enable);
    EXPECT_STREQ("", f.sProxy.host);
    EXPECT_EQ(0, f.sProxy.port);
    for (const auto& acPattern : f.sProxy.except) EXPECT_STREQ("", acPattern);
    EXPECT_EQ(37, f.usCameraType);
    EXPECT_STREQ("", f.CamName);
    EXPECT_EQ(0, f.usPresetNo);
    EXPECT_EQ(0, f.usSelectChNo);
    EXPECT_EQ(0, f.iPos);
    EXPECT_EQ(0, f.usFrate);
    EXPECT_EQ(0, f.usResolution);
    EXPECT_EQ(0, f.m_VOGPlayMode);
    EXPECT_EQ(1, f.cStream);
    EXPECT_STREQ("", f.cPrintPrefix);
    EXPECT_EQ(-1, f.m_KELSameUIDGroup);
    EXPECT_EQ(0, f.m_KELCtrlFlag.load());
    EXPECT_EQ(0, f.m_iDestruct.load());
    // The base's own starting values.
    EXPECT_EQ(0, base.iCamNo);
    EXPECT_EQ(0, base.iConnectStatus.load());
    EXPECT_EQ(10, base.iLastUidResult);
    EXPECT_EQ(0, base.m_iErrorCount);
    EXPECT_EQ(0, base.m_fErrorStat);
    EXPECT_EQ(0, base.iCameraNumber);
    EXPECT_EQ(0, base.bAudio.load());
    EXPECT_EQ(0, base.bKeepAlive.load());
    EXPECT_EQ(0, base.bPBKeepAlive.load());
    EXPECT_EQ(0, base.bThreadCreated);
  }
  // Neither construction nor the destruction of a never-started object
  // logs anything.
  EXPECT_TRUE(capture.Lines().empty());
}

}  // namespace
}  // namespace paramtest
