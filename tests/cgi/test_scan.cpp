// The reply scanners and checkers of both requesters: SearchNumber,
// SerachString, the audio, key, delivery, keep-alive and play-mode checkers,
// and the UID step of the set-up parser.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "CCamRequester_Cgi_Kobu_Http.h"
#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"

namespace {

template <typename T>
class Scan : public ::testing::Test {
 protected:
  camtest::PrintCapture print_;
  T r_;

  void SetUp() override {
    strcpy(r_.CamName, "MODELX");
    r_.usCameraType = 0;
  }

  int Number(const char* text, const char* key, int* value) {
    std::string t = text, k = key;
    return r_.SearchNumber(t.data(), k.data(), value);
  }
  int String(const char* text, const char* key, const char* stop, char* out, int size) {
    std::string t = text, k = key;
    std::string s = stop != nullptr ? stop : "";
    return r_.SerachString(t.data(), k.data(), stop != nullptr ? s.data() : nullptr, out, size);
  }
  int Enable(const char* text, int* value) {
    std::string t = text, k = "aEnable=";
    return r_.CheckAudioEnable(t.data(), k.data(), value);
  }
  int StrKey(const char* text) {
    std::string t = text, k = "strKey = \"";
    return r_.CheckKelStrKey(t.data(), k.data());
  }
  int KeepAlive(const char* text) {
    std::string t = text;
    return r_.CheckKeepAlive_RcvData(t.data());
  }
  int PlayMode(const char* text) {
    std::string t = text;
    return r_.CheckPlayMode_RcvData(t.data());
  }
};

using Requesters = ::testing::Types<CCamRequester_Cgi_Kobu_Rtp, CCamRequester_Cgi_Kobu_Http>;
TYPED_TEST_SUITE(Scan, Requesters);

// ---- SearchNumber -----------------------------------------------------------

TYPED_TEST(Scan, SearchNumberReadsTheDigitsAfterTheKey) {
  int value = -5;
  EXPECT_EQ(this->Number("a=1\nUID=12345&x=9", "UID=", &value), 0);
  EXPECT_EQ(value, 12345);
  EXPECT_EQ(this->Number("UID=7abc", "UID=", &value), 0);
  EXPECT_EQ(value, 7);
}

TYPED_TEST(Scan, SearchNumberNeedsNoWordBoundaryAndTakesTheFirstOccurrence) {
  int value = 0;
  EXPECT_EQ(this->Number("xUID=5 UID=6", "UID=", &value), 0);
  EXPECT_EQ(value, 5);
}

TYPED_TEST(Scan, SearchNumberWithoutDigitStoresNothingAndSaysNothing) {
  int value = 77;
  this->print_.Clear();
  EXPECT_EQ(this->Number("UID=-1", "UID=", &value), -1);
  EXPECT_EQ(this->Number("aEnable=in", "aEnable=", &value), -1);
  EXPECT_EQ(this->Number("UID=", "UID=", &value), -1);
  EXPECT_EQ(value, 77);
  EXPECT_TRUE(this->print_.Lines().empty());
}

TYPED_TEST(Scan, SearchNumberOverflowWrapsUnsigned) {
  int value = 0;
  EXPECT_EQ(this->Number("UID=4294967297", "UID=", &value), 0);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(this->Number("UID=4294967295", "UID=", &value), 0);
  EXPECT_EQ(value, -1);
}

TYPED_TEST(Scan, SearchNumberMissingKeyNamesCameraAndModel) {
  strcpy(this->r_.cIpAddr, "");
  int value = 3;
  EXPECT_EQ(this->Number("nothing here", "UID=", &value), -1);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(this->print_.Count("SearchNumber [DEBUG] Non Param [UID=] CAM[IP:][MODEL:MODELX]\n"),
            1);
}

TYPED_TEST(Scan, SearchNumberNullParameters) {
  int value = 0;
  char text[] = "UID=1";
  char key[] = "UID=";
  EXPECT_EQ(this->r_.SearchNumber(nullptr, key, &value), -1);
  EXPECT_EQ(this->r_.SearchNumber(text, nullptr, &value), -1);
  EXPECT_EQ(this->r_.SearchNumber(text, key, nullptr), -1);
  EXPECT_EQ(this->print_.Count("SearchNumber [Error] invalid param\n"), 3);
}

// ---- SerachString -----------------------------------------------------------

TYPED_TEST(Scan, SerachStringCopiesPrintableCharactersUpToCrLf) {
  char out[64];
  EXPECT_EQ(this->String("sDelivery=uni manual\r\nnext", "sDelivery=", nullptr, out, 64), 0);
  EXPECT_STREQ(out, "uni manual");
  EXPECT_EQ(this->String("k=abc\ndef", "k=", nullptr, out, 64), 0);
  EXPECT_STREQ(out, "abc");
  EXPECT_EQ(this->String("k=ab\tcd", "k=", nullptr, out, 64), 0);
  EXPECT_STREQ(out, "ab");
}

TYPED_TEST(Scan, SerachStringStopCharactersEndTheValue) {
  char out[64];
  EXPECT_EQ(this->String("strKey = \"Ab3$x\";", "strKey = \"", "\"", out, 64), 0);
  EXPECT_STREQ(out, "Ab3$x");
  EXPECT_EQ(this->String("k=a,b;c", "k=", ";,", out, 64), 0);
  EXPECT_STREQ(out, "a");
}

TYPED_TEST(Scan, SerachStringSizeLimit) {
  char out[24];
  const std::string v23(23, 'v');
  const std::string v24(24, 'v');
  EXPECT_EQ(this->String(("k=" + v23).c_str(), "k=", nullptr, out, 24), 0);
  EXPECT_EQ(std::string(out), v23);
  EXPECT_EQ(this->String(("k=" + v24).c_str(), "k=", nullptr, out, 24), -1);
}

TYPED_TEST(Scan, SerachStringEmptyOrMissingValue) {
  char out[8] = "keep";
  this->print_.Clear();
  EXPECT_EQ(this->String("k=\r\n", "k=", nullptr, out, 8), -1);
  EXPECT_EQ(this->String("k=\"x", "k=", "\"", out, 8), -1);
  EXPECT_EQ(this->String("other", "k=", nullptr, out, 8), -1);
  EXPECT_TRUE(this->print_.Lines().empty());
}

TYPED_TEST(Scan, SerachStringNullParameters) {
  char text[] = "k=1";
  char key[] = "k=";
  char out[8];
  EXPECT_EQ(this->r_.SerachString(nullptr, key, nullptr, out, 8), -1);
  EXPECT_EQ(this->r_.SerachString(text, nullptr, nullptr, out, 8), -1);
  EXPECT_EQ(this->r_.SerachString(text, key, nullptr, nullptr, 8), -1);
  EXPECT_EQ(this->print_.Count("SerachString [Error] invalid param\n"), 3);
}

// ---- audio ---------------------------------------------------------------------

TYPED_TEST(Scan, AudioBitrateIsSearchNumber) {
  int value = 0;
  char text[] = "aBitrate=32\n";
  char key[] = "aBitrate=";
  EXPECT_EQ(this->r_.CheckAudioBitrate(text, key, &value), 0);
  EXPECT_EQ(value, 32);
}

TYPED_TEST(Scan, AudioEnableValues) {
  int value = -1;
  EXPECT_EQ(this->Enable("aEnable=in\n", &value), 0);
  EXPECT_EQ(value, 100);
  EXPECT_EQ(this->print_.Count("CheckAudioEnable [DEBUG] Enable\n"), 1);
  EXPECT_EQ(this->Enable("aEnable=off\n", &value), 0);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(this->print_.Count("CheckAudioEnable [DEBUG] Disable\n"), 1);
  EXPECT_EQ(this->Enable("aEnable=1\n", &value), 0);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(this->Enable("aEnable=input\n", &value), 0);
  EXPECT_EQ(value, 100);
  EXPECT_EQ(this->Enable("aEnable=i", &value), 0);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(this->Enable("aEnable=in", nullptr), 0);
}

TYPED_TEST(Scan, AudioEnableMissingKey) {
  int value = 55;
  EXPECT_EQ(this->Enable("UID=3\n", &value), -1);
  EXPECT_EQ(value, 55);
  EXPECT_EQ(
      this->print_.Count("CheckAudioEnable [ERROR] Non Param [aEnable=] CAM[IP:][MODEL:MODELX]\n"),
      1);
}

// ---- recorder key ---------------------------------------------------------------

TYPED_TEST(Scan, StrKeyOnlyForRecorders) {
  for (int type : {0, 21, 30, 37}) {
    this->r_.usCameraType = static_cast<uint16_t>(type);
    memcpy(this->r_.strKey, "old", 4);
    EXPECT_EQ(this->StrKey("strKey = \"abc\""), -1) << type;
    EXPECT_STREQ(this->r_.strKey, "old") << type;
  }
  for (int type = 31; type <= 36; ++type) {
    this->r_.usCameraType = static_cast<uint16_t>(type);
    EXPECT_EQ(this->StrKey("var strKey = \"Xy9_2k\";\n"), 0) << type;
    EXPECT_STREQ(this->r_.strKey, "Xy9_2k") << type;
  }
}

TYPED_TEST(Scan, StrKeyFailures) {
  this->r_.usCameraType = 32;
  EXPECT_EQ(this->StrKey("strKey = \"1234567\""), -1);  // seven characters do not fit
  EXPECT_EQ(this->StrKey("no key"), -1);
  EXPECT_EQ(this->StrKey("strKey = \"\""), -1);
  EXPECT_EQ(this->print_.Count("CheckKelStrKey [ERROR] Non Param [strKey = \"] \n"), 3);
  EXPECT_EQ(this->r_.strKey[6], '\0');
}

// ---- delivery ------------------------------------------------------------------

TYPED_TEST(Scan, DeliveryOfARecorderIsAlwaysUni) {
  char text[] = "sDelivery=multi\n";
  char key[] = "sDelivery=";
  char out[24];
  for (int type = 31; type <= 36; ++type) {
    this->r_.usCameraType = static_cast<uint16_t>(type);
    memset(out, 'x', sizeof(out));
    EXPECT_EQ(this->r_.CheckDelivery(text, key, out, 24), 0);
    EXPECT_STREQ(out, "uni");
  }
  this->r_.usCameraType = 30;
  EXPECT_EQ(this->r_.CheckDelivery(text, key, out, 24), 0);
  EXPECT_STREQ(out, "multi");
  char none[] = "UID=1";
  EXPECT_EQ(this->r_.CheckDelivery(none, key, out, 24), -1);
  EXPECT_STREQ(out, "");
}

// ---- keep-alive and play-mode replies ------------------------------------------

TYPED_TEST(Scan, KeepAliveReplyOfACameraIsNotRead) {
  this->r_.usCameraType = 5;
  EXPECT_EQ(this->KeepAlive("garbage"), 0);
  EXPECT_EQ(this->r_.CheckKeepAlive_RcvData(nullptr), 0);
  EXPECT_TRUE(this->print_.Lines().empty());
}

TYPED_TEST(Scan, KeepAliveReplyOfARecorder) {
  this->r_.usCameraType = 33;
  EXPECT_EQ(this->KeepAlive("<p>FILENAME: rec_0001.dat</p>\r\n"), 0);
  EXPECT_EQ(this->print_.Count(" CheckKeepAlive_RcvData [DEBUG] KE REC SERIES !!\n"), 1);
  EXPECT_EQ(this->print_.Count(
                " CheckKeepAlive_RcvData [DEBUG] FILENAME EXIST. [ : rec_0001.dat</p> ]\n"),
            1);
  EXPECT_EQ(this->KeepAlive("status=ok\n"), -1);
  EXPECT_EQ(this->print_.Count(" CheckKeepAlive_RcvData [Error] FILENAME NOT EXIST.\n"), 1);
}

TYPED_TEST(Scan, PlayModeReplyOfACameraIsNotRead) {
  this->r_.usCameraType = 0;
  EXPECT_EQ(this->PlayMode("PLAY_MODE=5"), 0);
  EXPECT_EQ(this->r_.m_KELPlayMode, 0);
}

TYPED_TEST(Scan, PlayModeOtherThanZeroAndFiveMatchesAnything) {
  this->r_.usCameraType = 34;
  this->r_.m_VOGPlayMode = 0;
  EXPECT_EQ(this->PlayMode("PLAY_MODE=3\n"), 0);
  EXPECT_EQ(this->r_.m_KELPlayMode, 3);
  EXPECT_EQ(this->print_.Count(" CheckPlayMode_RcvData [DEBUG] KE REC SERIES !!\n"), 1);
  EXPECT_EQ(
      this->print_.Count(
          "CheckPlayMode_RcvData [DEBUG] PLAY_MODE Match [m_KELPlayMode:3][m_VOGPlayMode:0]\n"),
      1);
}

TYPED_TEST(Scan, PlayModeFiveAndZeroMustEqualTheExpectedMode) {
  this->r_.usCameraType = 35;
  this->r_.m_VOGPlayMode = 2;
  EXPECT_EQ(this->PlayMode("PLAY_MODE=5"), -1);
  EXPECT_EQ(this->print_.Count("CheckPlayMode_RcvData [Error] PLAY_MODE Unmatch "
                               "[m_KELPlayMode:5][m_VOGPlayMode:2]\n"),
            1);
  this->r_.m_VOGPlayMode = 5;
  EXPECT_EQ(this->PlayMode("PLAY_MODE=5"), 0);
  EXPECT_EQ(this->PlayMode("PLAY_MODE=0"), -1);
  this->r_.m_VOGPlayMode = 0;
  EXPECT_EQ(this->PlayMode("PLAY_MODE=0"), 0);
}

TYPED_TEST(Scan, PlayModeMissing) {
  this->r_.usCameraType = 36;
  this->r_.m_KELPlayMode = 4;
  EXPECT_EQ(this->PlayMode("PLAY_MODE=x"), -1);
  EXPECT_EQ(this->print_.Count("CheckPlayMode_RcvData [Error] SearchNumber PLAY_MODE=4\n"), 1);
}

// ---- the UID step of the set-up parser --------------------------------------------

TYPED_TEST(Scan, CamInfoWithoutUidDigitReturnsMinusTwo) {
  this->r_.iUid = 8;
  char text[] = "UID=-1\naBitrate=32\n";
  EXPECT_EQ(this->r_.CheckCamInfo_RcvData(text), -2);
  EXPECT_EQ(this->r_.iUid.load(), 8);
  EXPECT_EQ(this->print_.Count("CheckCamInfo_RcvData [Error] SearchNumber UID=8\n"), 1);
  char none[] = "nothing";
  EXPECT_EQ(this->r_.CheckCamInfo_RcvData(none), -2);
}

TYPED_TEST(Scan, CamInfoWithoutSessionFailsAtTheOwnAddress) {
  this->r_.psSession = nullptr;
  char text[] = "UID=3\naBitrate=64\naEnable=0\nsDelivery=uni\n";
  EXPECT_EQ(this->r_.CheckCamInfo_RcvData(text), -1);
  EXPECT_EQ(this->r_.iUid.load(), 3);
  EXPECT_EQ(this->r_.iAudioBitrate, 64);
  EXPECT_EQ(this->r_.iAudioEnable, 0);
  EXPECT_STREQ(this->r_.sDelivery, "uni");
  EXPECT_EQ(this->print_.Count("CheckCamInfo_RcvData [DEBUG] uid=3 aBitrate=64 aEnable=0 IP: "
                               "ScreenPos:0\n"),
            1);
  EXPECT_EQ(this->print_.Count("CheckCamInfo_RcvData [DEBUG] SerachString sDelivery=uni\n"), 1);
  EXPECT_EQ(this->print_.Count("CheckCamInfo_RcvData [Error] getsockname = -1 \n"), 1);
}

TYPED_TEST(Scan, CamInfoFixedAudioOfRecorders31_34_36) {
  char text[] = "UID=3\naBitrate=64\naEnable=in\n";
  for (int type = 31; type <= 36; ++type) {
    this->r_.usCameraType = static_cast<uint16_t>(type);
    this->r_.iAudioBitrate = 0;
    this->r_.iAudioEnable = 0;
    this->r_.CheckCamInfo_RcvData(text);
    const bool fixed = type == 31 || type == 34 || type == 36;
    EXPECT_EQ(this->r_.iAudioBitrate, fixed ? 32 : 64) << type;
    EXPECT_EQ(this->r_.iAudioEnable, fixed ? 1 : 100) << type;
  }
}

TYPED_TEST(Scan, CamInfoKeepsAudioValuesTheReplyLacks) {
  this->r_.iAudioBitrate = 16;
  this->r_.iAudioEnable = 100;
  char text[] = "UID=3\n";
  this->r_.CheckCamInfo_RcvData(text);
  EXPECT_EQ(this->r_.iAudioBitrate, 16);
  EXPECT_EQ(this->r_.iAudioEnable, 100);
}

// A requester whose scanners count their calls: the set-up parser must go
// through the virtual members.
template <typename Base>
class Counting : public Base {
 public:
  int iNumber = 0, iBitrate = 0, iEnable = 0, iDelivery = 0;
  int SearchNumber(char* t, char* k, int* v) override {
    ++iNumber;
    return Base::SearchNumber(t, k, v);
  }
  int CheckAudioBitrate(char* t, char* k, int* v) override {
    ++iBitrate;
    return Base::CheckAudioBitrate(t, k, v);
  }
  int CheckAudioEnable(char* t, char* k, int* v) override {
    ++iEnable;
    return Base::CheckAudioEnable(t, k, v);
  }
  int CheckDelivery(char* t, char* k, char* o, int s) override {
    ++iDelivery;
    return Base::CheckDelivery(t, k, o, s);
  }
};

TYPED_TEST(Scan, CamInfoCallsTheVirtualMembers) {
  Counting<TypeParam> c;
  c.usCameraType = 0;
  char text[] = "UID=3\naBitrate=64\naEnable=1\nsDelivery=uni\n";
  c.CheckCamInfo_RcvData(text);
  EXPECT_EQ(c.iBitrate, 1);
  EXPECT_EQ(c.iEnable, 1);
  EXPECT_EQ(c.iDelivery, 1);
  EXPECT_EQ(c.iNumber, 3);  // UID, and the two audio values through their checkers
}

}  // namespace
