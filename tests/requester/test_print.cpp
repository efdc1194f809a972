// The diagnostic print: the base prints the message alone, the concrete
// classes put address, position and stream type in front of it.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "RequesterTestBase.h"

namespace camtest {
namespace {

using Lines = std::vector<std::string>;

class PrintTest : public RequesterTest {};

template <typename T>
void SetPrintFields(T& rRequester, const char* pcAddress, int iPos, const char* pcPrefix) {
  std::strncpy(rRequester.cIpAddr, pcAddress, sizeof(rRequester.cIpAddr) - 1);
  rRequester.iPos = iPos;
  std::strncpy(rRequester.cPrintPrefix, pcPrefix, sizeof(rRequester.cPrintPrefix) - 1);
}

TEST_F(PrintTest, BasePrintsTheMessageAlone) {
  PrintCapture capture;
  RecordingRequester requester;
  requester.CamReqCOM_printf("Op [DEBUG] value=%d %s\n", 42, "x");
  EXPECT_EQ(capture.Lines(), Lines({"Op [DEBUG] value=42 x\n"}));
}

TEST_F(PrintTest, LongMessagesAreCutTo255Characters) {
  PrintCapture capture;
  RecordingRequester requester;
  const std::string sLong(300, 'a');
  requester.CamReqCOM_printf("%s", sLong.c_str());
  CCamRequester_Cgi_Kobu_Rtp rtp;
  SetPrintFields(rtp, "127.0.0.1", 1, "R:h264");
  rtp.CamReqCOM_printf("%s", sLong.c_str());
  EXPECT_EQ(capture.Lines(), Lines({std::string(255, 'a'),
                                    "IP:      127.0.0.1 POS:1 R:h264 " + std::string(255, 'a')}));
}

TEST_F(PrintTest, DefaultBodiesNameTheOperation) {
  PrintCapture capture;
  RecordingRequester requester;
  EXPECT_EQ(requester.SendCamIframInstCommand(), 0);
  EXPECT_EQ(requester.UidInvalid(), 0);
  EXPECT_EQ(requester.SetParameterCamNo(nullptr), 0);
  EXPECT_EQ(requester.CmdSet_SessionCmmand(nullptr), 0);
  EXPECT_EQ(
      capture.Lines(),
      Lines({"call CCamRequester::SendCamIframInstCommand", "call CCamRequester::UidInvalid",
             "call CCamRequester::SetParameterCamNo", "call CCamRequester::CmdSet_SessionCmmand"}));
}

template <typename T>
class ConcretePrintTest : public RequesterTest {};
using ConcreteTypes = ::testing::Types<CCamRequester_Cgi_Kobu_Rtp, CCamRequester_Cgi_Kobu_Http>;
TYPED_TEST_SUITE(ConcretePrintTest, ConcreteTypes);

TYPED_TEST(ConcretePrintTest, WithoutAddressPositionAndTypeTheMessageStandsAlone) {
  PrintCapture capture;
  TypeParam requester;  // never initialised
  requester.CamReqCOM_printf("Op [Error] %s\n", "plain");
  EXPECT_EQ(capture.Lines(), Lines({"Op [Error] plain\n"}));
}

TYPED_TEST(ConcretePrintTest, PrefixCellsAreWidthLimited) {
  PrintCapture capture;
  TypeParam requester;
  const struct {
    const char* pcAddress;
    int iPos;
    const char* pcPrefix;
    const char* pcExpected;
  } asCases[] = {
      {"127.0.0.1", 3, "R:h264", "IP:      127.0.0.1 POS:3 R:h264 msg 7\n"},
      {"127.0.0.1", 0, "", "IP:      127.0.0.1 msg 7\n"},
      {"", 5, "", "POS:5 msg 7\n"},
      {"", 0, "H:jpeg", "H:jpeg msg 7\n"},
      {"", 0, "H:g726", "H:g726 msg 7\n"},
      // A longer address keeps its first 15 characters.
      {"0000:0000:0000:0000:0000:0000:0000:0001", 1, "", "IP:0000:0000:0000: POS:1 msg 7\n"},
      // A longer type word keeps its first six characters.
      {"", 0, "R:h264play", "R:h264 msg 7\n"},
      // A shorter one is right-aligned in six.
      {"", 0, "R:g7", "  R:g7 msg 7\n"},
      // The precision does not cut an integer.
      {"", 12, "", "POS:12 msg 7\n"},
  };
  for (const auto& sCase : asCases) {
    SetPrintFields(requester, sCase.pcAddress, sCase.iPos, sCase.pcPrefix);
    capture.Clear();
    requester.CamReqCOM_printf("msg %d\n", 7);
    EXPECT_EQ(capture.Lines(), Lines({sCase.pcExpected}));
  }
}

TYPED_TEST(ConcretePrintTest, BaseOperationsPrintThroughTheConcretePrefix) {
  PrintCapture capture;
  TypeParam requester;
  SetPrintFields(requester, "127.0.0.1", 2, "R:mp4");
  requester.SetCameraNumber(9);
  EXPECT_EQ(capture.Lines(),
            Lines({"IP:      127.0.0.1 POS:2  R:mp4 SetCameraNumber [DEBUG] CAM[9]"}));
}

}  // namespace
}  // namespace camtest
