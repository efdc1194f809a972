// What each camera type answers. The expectations are the camera-type
// table of the requester's protocol, typed in row by row (TypeRows.h): a
// line the type's row does not have is refused with 404 and the NOT_FOUND
// body.
#include "Fixture.h"
#include "TypeRows.h"

namespace camsim_test {
namespace {

class TypeTest : public DeviceTest {
 protected:
  // 200 when served, else 404 with the NOT_FOUND body.
  void ExpectServed(const std::string& target, bool served) {
    Response reply = Fetch(target);
    if (served) {
      EXPECT_EQ(reply.status, 200) << "type " << device_->Model() << ": " << target;
    } else {
      EXPECT_EQ(reply.status, 404) << "type " << device_->Model() << ": " << target;
      EXPECT_EQ(reply.body, camsim::kNotFoundBody) << "type " << device_->Model() << ": " << target;
    }
  }
};

TEST_F(TypeTest, CamerasAnswerTheLinesOfTheirRow) {
  for (const CameraRow& row : kCameraRows) {
    Use(row.model);
    Response session = Fetch("/cgi-bin/getuid?FILE=2&vcodec=h264");
    EXPECT_EQ(session.status, row.session ? 200 : 404) << row.model;
    // Types without a session get a UID that is never checked: the line is
    // refused before its UID.
    std::string uid = row.session ? session.Line("UID=") : "1";
    ExpectServed("/cgi-bin/mpeg4_I_interval", row.mpeg4Interval);
    ExpectServed("/cgi-bin/h264_I_interval?stream=1", row.h264Interval);
    std::string keepAlive = "/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=" + uid + "&page=1";
    ExpectServed(keepAlive, row.keepAlive != kNoKeepAlive);
    ExpectServed(keepAlive + "&stream=1", row.keepAlive == kFullKeepAlive);
    ExpectServed("/cgi-bin/keep_alive?mode=jpeg&protocol=http&UID=" + uid + "&page=1",
                 row.keepAlive != kNoKeepAlive);
    ExpectServed("/cgi-bin/keep_alive?mode=audio&protocol=rtp&UID=" + uid + "&page=1",
                 row.keepAlive == kFullKeepAlive && row.audio);
    for (const char* media : {"h264", "mpeg4"}) {
      ExpectServed(
          std::string("/cgi-bin/") + media + "?connect=start&protocol=rtp&my_port=5000&UID=" + uid,
          row.video);
    }
    ExpectServed("/cgi-bin/audio?connect=stop&protocol=rtp&my_port=5000&UID=" + uid + "&page=1",
                 row.audio);
    ExpectServed("/cgi-bin/audio?connect=stop&protocol=http&UID=" + uid + "&page=1", row.audio);
    ExpectServed("/cgi-bin/jpeg?connect=stop&UID=" + uid, row.jpeg);
    ExpectServed("/cgi-bin/camctrl?preset=3", row.preset == kLowerPreset);
  }
}

TEST_F(TypeTest, QvTwoSixTwoTakesOnlyTheShortKeepAlive) {
  Use(21);
  std::string uid = std::to_string(CameraUid());
  std::string line = "/cgi-bin/keep_alive?mode=mpeg4&protocol=rtp&UID=" + uid + "&page=7";
  ExpectServed(line, true);
  ExpectServed("/cgi-bin/keep_alive?mode=mpeg4_2&protocol=rtp&UID=" + uid + "&page=7", false);
  ExpectServed("/cgi-bin/keep_alive?mode=mpeg4&protocol=rtp&ch=1&UID=" + uid + "&page=7", false);
  ExpectServed(line + "&stream=2", false);
}

TEST_F(TypeTest, QuillonCamerasAnswerTheirDialectAndOnlyThirteenAPreset) {
  for (int model : {6, 13, 20}) {
    Use(model);
    Response session = Fetch("/cgi-bin/getuid?FILE=uid.html&PAGE=1");
    ASSERT_EQ(session.status, 200) << model;
    std::string uid = session.Line("UID=");
    ExpectServed("/cgi-bin/syssetup?LIVEMODE=PUSH&UID=" + uid, true);
    ExpectServed("/cgi-bin/push?MODE=STOP&FRAMERATE=1&UID=" + uid + "&PAGE=2", true);
    ExpectServed("/cgi-bin/uidutil?UID=" + uid + "&UTIL=KEEPALIVE", true);
    ExpectServed("/cgi-bin/camctrl?PRESET=3", model == 13);
    for (const char* cameraLine : {"/cgi-bin/keep_alive?mode=jpeg&protocol=http&UID=1&page=1",
                                   "/cgi-bin/mpeg4_I_interval", "/cgi-bin/jpeg?connect=stop&UID=1",
                                   "/cgi-bin/h264?connect=stop&protocol=rtp&my_port=1&UID=1"}) {
      ExpectServed(cameraLine, false);
    }
  }
}

class RecorderTypeTest : public TypeTest {
 protected:
  std::string Login() {
    last_ = RecorderLogin(address_, device_->Port());
    return last_.Line("UID=");
  }
  Response last_;
};

TEST_F(RecorderTypeTest, AudioOnlyOnThirtyFourToThirtySix) {
  for (int model = 31; model <= 36; ++model) {
    Use(model);
    std::string uid = Login();
    ASSERT_FALSE(uid.empty()) << model;
    bool audio = model >= 34;
    ExpectServed("/cgi-bin/push.cgi?CMD=STOP&CAM=0&UID=" + uid + "&PORT=6000&COMP=AUDIO", audio);
    ExpectServed("/cgi-bin/push.cgi?CMD=STOP&CAM=0&UID=" + uid + "&COMP=AUDIO", audio);
    ExpectServed("/cgi-bin/push.cgi?CMD=STOP&CAM=0&UID=" + uid + "&PORT=6000&COMP=MPEG4", true);
    ExpectServed("/cgi-bin/push.cgi?CMD=STOP&CAM=3&UID=" + uid + "&COMP=JPEG", true);
    ExpectServed("/cgi-bin/status.cgi?UID=" + uid + "&HTML=as_status.html", true);
    ExpectServed("/cgi-bin/camctrl?preset=1", false);
    ExpectServed("/cgi-bin/getuid?FILE=2&vcodec=h264", false);
  }
}

TEST_F(RecorderTypeTest, OnlyThirtySixWantsResOneWithH264) {
  for (int model = 31; model <= 36; ++model) {
    Use(model);
    std::string uid = Login();
    std::string line = "/cgi-bin/push.cgi?CMD=START&CAM=0&UID=" + uid + "&PORT=6000&COMP=H264";
    ExpectServed(line, model != 36);
    ExpectServed(line + "&RES=1", model == 36);
  }
}

TEST_F(RecorderTypeTest, PushFormsNoRecorderTakes) {
  Use(34);
  std::string uid = Login();
  std::string head = "/cgi-bin/push.cgi?CMD=START&UID=" + uid;
  EXPECT_EQ(Fetch(head + "&CAM=0&PORT=6000&COMP=JPEG").status, 400) << "JPEG over RTP";
  EXPECT_EQ(Fetch(head + "&CAM=0&COMP=MPEG4").status, 400) << "video without a port";
  EXPECT_EQ(Fetch(head + "&PORT=6000&COMP=MPEG4").status, 400) << "no CAM";
  EXPECT_EQ(Fetch(head + "&CAM=0&PORT=x&COMP=MPEG4").status, 400);
  EXPECT_EQ(Fetch(head + "&CAM=0&PORT=6000&COMP=MJPEG").status, 400);
}

TEST_F(RecorderTypeTest, LoginReplyCarriesAudioKeysOnlyWhereTheyAreRead) {
  for (int model = 31; model <= 36; ++model) {
    Use(model);
    camsim::ReplyValues values = device_->Values();
    values.audioBitrate = 24;
    values.audioEnable = "in";
    device_->SetValues(values);
    ASSERT_FALSE(Login().empty()) << model;
    ExpectLoginAudioKeys(last_, model, "24", "in");
  }
}

TEST_F(TypeTest, CameraLinesOutOfForm) {
  Use(7);
  std::string uid = std::to_string(CameraUid());
  for (const std::string& line :
       {"/cgi-bin/h264?connect=start&protocol=http&my_port=5000&UID=" + uid,
        "/cgi-bin/h264?connect=start&protocol=rtp&UID=" + uid,
        "/cgi-bin/mpeg4?connect=start&protocol=rtp&my_port=5000&ch=x&UID=" + uid,
        "/cgi-bin/audio?connect=start&protocol=udp&UID=" + uid,
        "/cgi-bin/keep_alive?mode=error&protocol=rtp&UID=" + uid,
        "/cgi-bin/keep_alive?mode=jpeg&protocol=rtp&UID=" + uid,
        "/cgi-bin/keep_alive?mode=audio_2&protocol=rtp&UID=" + uid,
        "/cgi-bin/jpeg?connect=start&resolution=999&UID=" + uid,
        "/cgi-bin/jpeg?connect=start&framerate=fast&UID=" + uid}) {
    Response reply = Fetch(line);
    EXPECT_EQ(reply.status, 400) << line;
    EXPECT_EQ(reply.body, camsim::kBadParamBody) << line;
  }
}

}  // namespace
}  // namespace camsim_test
