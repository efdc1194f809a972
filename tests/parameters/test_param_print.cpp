// The prefix cells of the concrete requesters' print: address cut to 15,
// position, six characters of the type word, and the 255-character message.
#include "ParamTestSupport.h"

namespace paramtest {
namespace {

template <class ClassInfo>
class Print : public BothRequesters<ClassInfo> {};
TYPED_TEST_SUITE(Print, BothClasses);

TYPED_TEST(Print, NothingSetPrintsTheMessageAlone) {
  this->obj.CamReqCOM_printf("hello %d\n", 5);
  EXPECT_EQ((Lines{"hello 5\n"}), this->Printed());
}

TYPED_TEST(Print, AddressIsRightAlignedInFifteen) {
  this->Set(CAM_PARAM_IPADDRESS, "10.0.0.1");
  this->capture.Clear();
  this->obj.CamReqCOM_printf("x\n");
  EXPECT_EQ((Lines{"IP:       10.0.0.1 x\n"}), this->Printed());
}

TYPED_TEST(Print, AddressLongerThanFifteenIsCut) {
  this->Set(CAM_PARAM_IPADDRESS, "fe80::1234:5678:9abc:def0");
  this->capture.Clear();
  this->obj.CamReqCOM_printf("x\n");
  EXPECT_EQ((Lines{"IP:fe80::1234:5678 x\n"}), this->Printed());
}

TYPED_TEST(Print, PositionIsNotCutByItsPrecision) {
  this->SetValue(CAM_PARAM_SCREENPOS, int32_t{12});
  this->capture.Clear();
  this->obj.CamReqCOM_printf("x\n");
  EXPECT_EQ((Lines{"POS:12 x\n"}), this->Printed());
  this->SetValue(CAM_PARAM_SCREENPOS, int32_t{3});
  this->capture.Clear();
  this->obj.CamReqCOM_printf("x\n");
  EXPECT_EQ((Lines{"POS:3 x\n"}), this->Printed());
}

TYPED_TEST(Print, TypeWordIsRightAlignedAndCutToSix) {
  const std::vector<std::string> words = TypeParam::Words();
  for (int iType = 0; iType <= TypeParam::kHighestCmdType; ++iType) {
    typename TestFixture::Requester fresh;
    fresh.SetParameter(CAM_PARAM_CMDTYPE, &iType, 4);
    std::string sPrefix = TypeParam::PrefixOf(words[static_cast<size_t>(iType)]);
    sPrefix =
        sPrefix.size() > 6 ? sPrefix.substr(0, 6) : std::string(6 - sPrefix.size(), ' ') + sPrefix;
    this->capture.Clear();
    fresh.CamReqCOM_printf("x\n");
    EXPECT_EQ((Lines{sPrefix + " x\n"}), this->Printed()) << iType;
  }
}

TEST(PrintRtp, H264PlayIsCutToRH264) {
  camtest::PrintCapture capture;
  CCamRequester_Cgi_Kobu_Rtp obj;
  int32_t iType = 4;
  ASSERT_EQ(0, obj.SetParameter(CAM_PARAM_CMDTYPE, &iType, 4));
  EXPECT_STREQ("R:h264play", obj.cPrintPrefix);
  capture.Clear();
  obj.CamReqCOM_printf("x\n");
  EXPECT_EQ((Lines{"R:h264 x\n"}), capture.Lines());
}

TEST(PrintHttp, JpegAndAudioWords) {
  camtest::PrintCapture capture;
  CCamRequester_Cgi_Kobu_Http obj;
  int32_t iType = 0;
  ASSERT_EQ(0, obj.SetParameter(CAM_PARAM_CMDTYPE, &iType, 4));
  EXPECT_STREQ("H:jpeg", obj.cPrintPrefix);
  iType = 1;
  ASSERT_EQ(0, obj.SetParameter(CAM_PARAM_CMDTYPE, &iType, 4));
  EXPECT_STREQ("H:audio", obj.cPrintPrefix);
  capture.Clear();
  obj.CamReqCOM_printf("x\n");
  EXPECT_EQ((Lines{"H:audi x\n"}), capture.Lines());
}

TYPED_TEST(Print, AllThreeCellsInOrder) {
  this->Set(CAM_PARAM_IPADDRESS, "192.168.100.200");
  this->SetValue(CAM_PARAM_SCREENPOS, int32_t{4});
  this->SetValue(CAM_PARAM_CMDTYPE, int32_t{2});
  const std::string sWord = TypeParam::PrefixOf(TypeParam::Words()[2]).substr(0, 6);
  const std::string sCell = std::string(6 - sWord.size(), ' ') + sWord + " ";
  this->capture.Clear();
  this->obj.CamReqCOM_printf("msg\n");
  EXPECT_EQ((Lines{"IP:192.168.100.200 POS:4 " + sCell + "msg\n"}), this->Printed());
}

TYPED_TEST(Print, MessageOfThreeHundredCharactersIsCutTo255) {
  const std::string sLong(300, 'm');
  this->obj.CamReqCOM_printf("%s", sLong.c_str());
  EXPECT_EQ((Lines{std::string(255, 'm')}), this->Printed());
  this->SetValue(CAM_PARAM_SCREENPOS, int32_t{1});
  this->capture.Clear();
  this->obj.CamReqCOM_printf("%s", sLong.c_str());
  EXPECT_EQ((Lines{"POS:1 " + std::string(255, 'm')}), this->Printed());
}

}  // namespace
}  // namespace paramtest
