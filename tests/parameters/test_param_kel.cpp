// The recorder (KEL) flag family, through SetParameter/GetInfo and directly:
// it works only for camera types 31..36 and leaves a camera untouched.
#include "ParamTestSupport.h"

namespace paramtest {
namespace {

template <class ClassInfo>
class KelFlags : public BothRequesters<ClassInfo> {};
TYPED_TEST_SUITE(KelFlags, BothClasses);

TYPED_TEST(KelFlags, CtrlFlagStoresOneForAnyNonZeroValue) {
  this->SetCamType(31);
  State expected = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_CTRLFLAG_KEL, int32_t{7}));
  expected["m_KELCtrlFlag"] = "1";
  EXPECT_EQ(expected, this->Now());
  int32_t iOut = -5;
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_CTRLFLAG_KEL, &iOut));
  EXPECT_EQ(1, iOut);
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_CTRLFLAG_KEL, int32_t{0}));
  EXPECT_EQ(0, this->obj.m_KELCtrlFlag.load());
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_CTRLFLAG_KEL, int32_t{-3}));
  EXPECT_EQ(1, this->obj.m_KELCtrlFlag.load());
  EXPECT_EQ((Lines{this->In(16), this->In(16), this->In(16)}), this->Printed());
}

TYPED_TEST(KelFlags, SameUidGroupIsStoredAsGiven) {
  this->SetCamType(34);
  State expected = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_SAMEUIDGROUP_KEL, int32_t{7}));
  expected["m_KELSameUIDGroup"] = "7";
  EXPECT_EQ(expected, this->Now());
  int32_t iOut = 0;
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_SAMEUIDGROUP_KEL, &iOut));
  EXPECT_EQ(7, iOut);
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_SAMEUIDGROUP_KEL, int32_t{-9}));
  EXPECT_EQ(-9, this->obj.m_KELSameUIDGroup);
  EXPECT_EQ((Lines{this->In(15), this->In(15)}), this->Printed());
}

TYPED_TEST(KelFlags, KeepAliveFlagSwitchesTheLiveKeepAlive) {
  this->SetCamType(36);
  State expected = this->Now();
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_KEEPALIVEFLAG_KEL, int32_t{5}));
  expected["bKeepAlive"] = "1";
  EXPECT_EQ(expected, this->Now());
  int32_t iOut = -1;
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_KEEPALIVEFLAG_KEL, &iOut));
  EXPECT_EQ(1, iOut);
  EXPECT_EQ(0, this->SetValue(CAM_PARAM_KEEPALIVEFLAG_KEL, int32_t{0}));
  EXPECT_EQ(0, this->obj.GetKeepAlive());
  EXPECT_EQ(0, this->obj.GetInfo(CAM_INFO_KEEPALIVEFLAG_KEL, &iOut));
  EXPECT_EQ(0, iOut);
}

TYPED_TEST(KelFlags, EveryRecorderTypeIsAccepted) {
  for (uint16_t usType = 31; usType <= 36; ++usType) {
    this->SetCamType(usType);
    int32_t iValue = usType;
    EXPECT_EQ(0, this->obj.SetParameterSameUIDGroup_KEL(&iValue)) << usType;
    EXPECT_EQ(usType, this->obj.m_KELSameUIDGroup);
  }
}

TYPED_TEST(KelFlags, ACameraRefusesTheWholeFamilySilentlyAndKeepsItsValues) {
  for (uint16_t usType : {0, 14, 30, 37}) {
    this->SetCamType(usType);
    this->obj.m_KELCtrlFlag = 0;
    const State before = this->Now();
    int32_t iValue = 7;
    int32_t iOut = 12345;
    EXPECT_EQ(-1, this->obj.SetCtrlFlag_KEL(&iValue));
    EXPECT_EQ(-1, this->obj.SetParameterSameUIDGroup_KEL(&iValue));
    EXPECT_EQ(-1, this->obj.SetKeepAliveFlag_KEL(&iValue));
    EXPECT_EQ(-1, this->obj.GetCtrlFlag_KEL(&iOut));
    EXPECT_EQ(-1, this->obj.GetParameterSameUIDGroup_KEL(&iOut));
    EXPECT_EQ(-1, this->obj.GetKeepAliveFlag_KEL(&iOut));
    EXPECT_EQ(12345, iOut);
    EXPECT_EQ(before, this->Now()) << usType;
    EXPECT_TRUE(this->Printed().empty()) << usType;
    // Through the parameter interface as well.
    EXPECT_EQ(-1, this->SetValue(CAM_PARAM_CTRLFLAG_KEL, iValue));
    EXPECT_EQ(-1, this->obj.GetInfo(CAM_INFO_SAMEUIDGROUP_KEL, &iOut));
    EXPECT_EQ(before, this->Now()) << usType;
    EXPECT_EQ((Lines{this->In(16)}), this->Printed());
  }
}

TYPED_TEST(KelFlags, NullPointersAreRefusedWithTheirOwnWords) {
  this->SetCamType(31);
  const State before = this->Now();
  EXPECT_EQ(-1, this->obj.SetCtrlFlag_KEL(nullptr));
  EXPECT_EQ(-1, this->obj.GetCtrlFlag_KEL(nullptr));
  EXPECT_EQ(-1, this->obj.SetParameterSameUIDGroup_KEL(nullptr));
  EXPECT_EQ(-1, this->obj.GetParameterSameUIDGroup_KEL(nullptr));
  EXPECT_EQ(-1, this->obj.SetKeepAliveFlag_KEL(nullptr));
  EXPECT_EQ(-1, this->obj.GetKeepAliveFlag_KEL(nullptr));
  EXPECT_EQ((Lines{"SetCtrlFlag_KEL [ERROR] param error [NULL]\n",
                   "GetCtrlFlag_KEL [ERROR] param error [NULL]\n",
                   "SetParameterSameUIDGroup_KEL [ERROR] param error [NULL]\n",
                   "GetParameterSameUIDGroup_KEL [ERROR] param error [NULL]\n",
                   "SetKeepAliveFlag_KEL [ERROR] param error [NULL]\n",
                   "SetKeepAliveFlag_KEL [ERROR] param error [NULL]\n"}),
            this->Printed());
  EXPECT_EQ(before, this->Now());
}

TYPED_TEST(KelFlags, ChangeStatusKelRaisesTheErrorEventForAnyCamera) {
  for (uint16_t usType : {14, 31}) {
    this->SetCamType(usType);
    this->obj.events.clear();
    const State before = this->Now();
    int32_t iAny = 0;
    EXPECT_EQ(0, this->Set(CAM_PARAM_CHANGESTATUS_KEL, &iAny));
    EXPECT_EQ((std::vector<int>{CAM_HTTP_EVT_ERROR}), this->obj.events);
    EXPECT_EQ(0, this->obj.ChangeStatus_KEL(&iAny));
    EXPECT_EQ((std::vector<int>{CAM_HTTP_EVT_ERROR, CAM_HTTP_EVT_ERROR}), this->obj.events);
    EXPECT_EQ((Lines{this->In(18)}), this->Printed());
    EXPECT_EQ(before, this->Now());
  }
}

TYPED_TEST(KelFlags, CamNoNeedsNoRecorder) {
  this->SetCamType(14);
  int32_t iValue = 99;
  EXPECT_EQ(0, this->obj.SetParameterCamNo(&iValue));
  EXPECT_EQ(99, this->obj.iCamNo);
}

}  // namespace
}  // namespace paramtest
