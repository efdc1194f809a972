// The KEL recorders (camera types 31 to 36): key, login, push, status, logout.
#include "CamKelCrypt.h"
#include "Fixture.h"
#include "LoginTransform.h"

namespace camsim_test {
namespace {

std::string Transform(const std::string& key, const std::string& data) {
  char out[cgi::kKelCryptTextSize] = {};
  cgi::KelEncrypt(key.c_str(), data.c_str(), out);
  return out;
}

class RecorderTest : public DeviceTest {
 protected:
  void SetUp() override { Use(34); }

  std::string Key() {
    Response reply = Fetch("/cgi-bin/start.cgi?UID=-1");
    EXPECT_EQ(reply.status, 200);
    const std::string mark = "strKey = \"";
    size_t at = reply.body.find(mark);
    EXPECT_NE(at, std::string::npos) << reply.body;
    if (at == std::string::npos) return "";
    size_t start = at + mark.size();
    return reply.body.substr(start, reply.body.find('"', start) - start);
  }

  Response Login(const std::string& key, const std::string& user, const std::string& password) {
    return Fetch("/cgi-bin/ulogin.cgi?USER=" + Transform(key, user) +
                 "&PASS=" + Transform(key, password) + "&KEY=" + key + "&TEMP=1234567");
  }

  std::string LoggedInUid() {
    Response reply = Login(Key(), "admin", "password");
    EXPECT_EQ(reply.status, 200);
    return reply.Line("UID=");
  }
};

TEST_F(RecorderTest, StartHandsOutAFreshShortKey) {
  std::string first = Key();
  std::string second = Key();
  EXPECT_FALSE(first.empty());
  EXPECT_LE(first.size(), 6u);
  EXPECT_LE(second.size(), 6u);
  EXPECT_NE(first, second);
  EXPECT_EQ(first.find('"'), std::string::npos);
}

TEST_F(RecorderTest, LoginWithTheRightCredentialsGivesAUid) {
  std::string key = Key();
  Response reply = Login(key, "admin", "password");
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.Line("UID="), "1");
  EXPECT_EQ(device_->LiveUids(), std::set<int>{1});
}

TEST_F(RecorderTest, LoginWithWrongCredentialsIsRefused) {
  Response wrongPassword = Login(Key(), "admin", "passwort");
  EXPECT_EQ(wrongPassword.status, 403);
  EXPECT_EQ(wrongPassword.body, camsim::kLoginFailedBody);
  EXPECT_EQ(Login(Key(), "root", "password").status, 403);
  EXPECT_TRUE(device_->LiveUids().empty());
}

TEST_F(RecorderTest, LoginNeedsTheKeyThatWasHandedOutOnce) {
  EXPECT_EQ(Login("abc123", "admin", "password").status, 403) << "a key never handed out";
  std::string key = Key();
  // Credentials transformed with another key do not match this one.
  Response other = Fetch("/cgi-bin/ulogin.cgi?USER=" + Transform("zzz", "admin") +
                         "&PASS=" + Transform("zzz", "password") + "&KEY=" + key + "&TEMP=1");
  EXPECT_EQ(other.status, 403);
  key = Key();
  EXPECT_EQ(Login(key, "admin", "password").status, 200);
  EXPECT_EQ(Login(key, "admin", "password").status, 403) << "each key serves one login";
}

TEST_F(RecorderTest, LoginChecksTheDevicesOwnCredentials) {
  device_->SetAuth(camsim::AuthMode::kNone, "operator", "s3cret");
  EXPECT_EQ(Login(Key(), "admin", "password").status, 403);
  EXPECT_EQ(Login(Key(), "operator", "s3cret").status, 200);
}

TEST_F(RecorderTest, PushCgiStartsAJpegPush) {
  std::string uid = LoggedInUid();
  PushReader push;
  ASSERT_TRUE(push.Open(address_, device_->Port(),
                        "/cgi-bin/push.cgi?CMD=START&CAM=2&UID=" + uid + "&COMP=JPEG"));
  EXPECT_EQ(push.head.status, 200);
  std::string picture;
  ASSERT_TRUE(push.NextPart(&picture, kDeadline));
  EXPECT_TRUE(DecodeJpeg(picture).valid);
  EXPECT_EQ(Fetch("/cgi-bin/push.cgi?CMD=STOP&CAM=2&UID=" + uid + "&COMP=JPEG").status, 200);
}

TEST_F(RecorderTest, PushCgiStreamsAudioOverHttp) {
  std::string uid = LoggedInUid();
  int fd = Connect(address_, device_->Port());
  ASSERT_GE(fd, 0);
  SendText(fd, "GET /cgi-bin/push.cgi?CMD=START&CAM=1&UID=" + uid + "&COMP=AUDIO HTTP/1.0\r\n\r\n");
  std::string data;
  ASSERT_TRUE(ReadUntil(fd, &data, "\r\n\r\n", kDeadline));
  size_t body = data.find("\r\n\r\n") + 4;
  Response head = ParseResponse(data.substr(0, body));
  EXPECT_EQ(head.status, 200);
  EXPECT_EQ(head.Header("Content-Type").rfind("audio/", 0), 0u);
  const std::string never = "\x7fnever";
  while (data.size() < body + 800) {
    size_t before = data.size();
    ReadUntil(fd, &data, never, milliseconds(300));
    ASSERT_GT(data.size(), before) << "the stream keeps coming";
  }
  close(fd);
}

TEST_F(RecorderTest, PushCgiForRtpAnswersAtOnce) {
  std::string uid = LoggedInUid();
  for (std::string comp : {"MPEG4", "H264", "AUDIO"}) {
    for (std::string cmd : {"START", "STOP"}) {
      std::string line =
          "/cgi-bin/push.cgi?CMD=" + cmd + "&CAM=0&UID=" + uid + "&PORT=6000&COMP=" + comp;
      Response reply = Fetch(line);
      EXPECT_EQ(reply.status, 200) << line;
      EXPECT_TRUE(reply.closed);
    }
  }
  EXPECT_EQ(Fetch("/cgi-bin/push.cgi?CMD=START&CAM=0&UID=99&PORT=6000&COMP=MPEG4").status, 404);
  EXPECT_EQ(Fetch("/cgi-bin/push.cgi?CMD=GO&CAM=0&UID=" + uid + "&COMP=MPEG4").status, 400);
}

TEST_F(RecorderTest, StatusCarriesFileNameAndSettablePlayMode) {
  std::string uid = LoggedInUid();
  Response reply = Fetch("/cgi-bin/status.cgi?UID=" + uid + "&HTML=as_status.html");
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.Line("FILENAME"), "=REC0001.DAT");
  EXPECT_EQ(reply.Line("PLAY_MODE="), "0");
  camsim::ReplyValues values = device_->Values();
  values.playMode = 5;
  values.fileName = "=CH01_0002.DAT";
  device_->SetValues(values);
  reply = Fetch("/cgi-bin/status.cgi?UID=" + uid + "&HTML=as_status.html");
  EXPECT_EQ(reply.Line("PLAY_MODE="), "5");
  EXPECT_EQ(reply.Line("FILENAME"), "=CH01_0002.DAT");
  EXPECT_EQ(Fetch("/cgi-bin/status.cgi?UID=4242&HTML=as_status.html").status, 404);
}

TEST_F(RecorderTest, LogoutReleasesTheUid) {
  std::string uid = LoggedInUid();
  EXPECT_EQ(Fetch("/cgi-bin/logout.cgi?UID=" + uid).status, 200);
  EXPECT_TRUE(device_->LiveUids().empty());
  EXPECT_EQ(Fetch("/cgi-bin/logout.cgi?UID=" + uid).status, 404);
  EXPECT_EQ(Fetch("/cgi-bin/status.cgi?UID=" + uid + "&HTML=as_status.html").status, 404);
}

TEST_F(RecorderTest, CameraPathsAreNotRecorderPaths) {
  EXPECT_EQ(Fetch("/cgi-bin/getuid?FILE=2&vcodec=h264").status, 404);
  EXPECT_EQ(Fetch("/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=1").status, 404);
}

TEST(RecorderModels, ThirtyOneToThirtySixAreRecorders) {
  for (int model = 31; model <= 36; ++model) {
    auto device = StartDevice(model);
    ASSERT_NE(device, nullptr);
    Response reply = Get("127.0.0.1", device->Port(), "/cgi-bin/start.cgi?UID=-1");
    EXPECT_NE(reply.body.find("strKey = \""), std::string::npos) << model;
  }
}

}  // namespace
}  // namespace camsim_test

namespace camsim_test {
namespace {

// camsim's own transform against the worked values of the protocol and
// against the requester's transform, written apart from it.
TEST(LoginTransform, WorkedValues) {
  std::string fortyOnes;
  for (int i = 0; i < 32; ++i) fortyOnes += "41";
  EXPECT_EQ(camsim::LoginTransform("", "A"), fortyOnes);
  std::string keyed = camsim::LoginTransform("\x01", "A");
  EXPECT_EQ(keyed.substr(0, 4), "3f3d");
  EXPECT_EQ(keyed.size(), 64u);
  std::string longName(40, 'n');
  longName[35] = 'x';
  EXPECT_EQ(camsim::LoginTransform("k3Y9", longName),
            camsim::LoginTransform("k3Y9", longName.substr(0, 32)));
  EXPECT_EQ(camsim::LoginTransform("abc", "").size(), 64u);
  EXPECT_NE(camsim::LoginTransform("abc", "user1"), camsim::LoginTransform("abc", "user2"));
}

TEST(LoginTransform, AgreesWithTheRequesters) {
  for (const char* key : {"", "a", "Zx9", "abc123", "ZZZZZZ", "\x7f\x80"}) {
    for (const char* data : {"", "admin", "password", "s3cret!",
                             "0123456789012345678901234567890123", "\xff\xfe\x01"}) {
      EXPECT_EQ(camsim::LoginTransform(key, data), Transform(key, data)) << key << " " << data;
    }
  }
}

}  // namespace
}  // namespace camsim_test
