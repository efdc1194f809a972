// The RTP a device sends after a start line: headers, clock and rate of
// each codec, the H.264 payload against the clip it comes from, the
// destinations of each delivery mode, the stop and the end of a UID, and
// the stall, resume and end of a stream by fault and at run time.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <set>

#include "Control.h"
#include "Fixture.h"
#include "Options.h"
#include "RtpReceiver.h"

namespace camsim_test {
namespace {

constexpr int kH264Type = 96;
constexpr int kMpeg4Type = 96;
constexpr int kG726Type = 97;
constexpr uint32_t kVideoTicks = 90000 / 25;  // timestamp step of one frame
constexpr uint32_t kAudioTicks = 160;         // 20 ms at 8 kHz
constexpr size_t kAudioBytes = 80;            // 20 ms of G.726 at 32 kbit/s
constexpr int kSps = 7;
constexpr int kPps = 8;
constexpr int kIdr = 5;
// A silence this long after a stop or a stall means nothing more comes: the
// device sends a video frame every 40 ms.
constexpr milliseconds kQuiet{400};

std::string VideoLine(const std::string& path, const std::string& connect, int uid, int port) {
  return "/cgi-bin/" + path + "?connect=" + connect +
         "&protocol=rtp&my_port=" + std::to_string(port) + "&UID=" + std::to_string(uid);
}

std::string AudioLine(const std::string& connect, int uid, int port) {
  return "/cgi-bin/audio?connect=" + connect + "&protocol=rtp&my_port=" + std::to_string(port) +
         "&UID=" + std::to_string(uid) + "&page=1";
}

std::string KeepAlive(int uid) {
  return "/cgi-bin/keep_alive?mode=h264&protocol=rtp&UID=" + std::to_string(uid) + "&page=1";
}

// Frames of video packets: the packets up to and including each marker.
std::vector<std::vector<RtpPacket>> SplitFrames(const std::vector<RtpPacket>& packets) {
  std::vector<std::vector<RtpPacket>> frames(1);
  for (const RtpPacket& packet : packets) {
    frames.back().push_back(packet);
    if (packet.marker) frames.emplace_back();
  }
  frames.pop_back();
  return frames;
}

std::vector<int> Types(const std::vector<std::string>& units) {
  std::vector<int> types;
  for (const std::string& unit : units) types.push_back(NalType(unit));
  return types;
}

bool HasType(const std::vector<std::string>& units, int type) {
  auto types = Types(units);
  return std::find(types.begin(), types.end(), type) != types.end();
}

class RtpTest : public DeviceTest {
 protected:
  // A camera that sends to the requester's address at my_port.
  void UseUnicastCamera(int model = 9, const std::string& address = "127.0.0.1") {
    Use(model, address);
    camsim::ReplyValues values = device_->Values();
    values.delivery = "uni";
    device_->SetValues(values);
  }
  void OpenReceiver(UdpReceiver* receiver, const std::string& address = "127.0.0.1") {
    ASSERT_TRUE(receiver->Open(address));
  }
  int Start(const std::string& path, int port) {
    int uid = CameraUid();
    EXPECT_EQ(Fetch(VideoLine(path, "start", uid, port)).status, 200);
    return uid;
  }
  std::vector<RtpPacket> FramesOf(UdpReceiver* receiver, size_t frames) {
    auto packets = receiver->Frames(frames);
    EXPECT_EQ(SplitFrames(packets).size(), frames);
    return packets;
  }
  // A recorder logged in; its UID.
  int RecorderSession() {
    std::string uid = RecorderUid();
    EXPECT_FALSE(uid.empty());
    return std::atoi(uid.c_str());
  }
  std::string Push(const std::string& command, int uid, int port, const std::string& comp) {
    return "/cgi-bin/push.cgi?CMD=" + command + "&CAM=1&UID=" + std::to_string(uid) +
           "&PORT=" + std::to_string(port) + "&COMP=" + comp;
  }
  bool Stalled() {
    auto streams = device_->RtpStreams();
    return streams.size() == 1 && streams[0].stalled;
  }
};

// Version 2, the codec's payload type, one SSRC, sequence numbers one by
// one, one timestamp per frame stepping by the 90 kHz clock, at about 25
// frames a second.
TEST_F(RtpTest, H264HeadersSequenceClockAndRate) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  Start("h264", receiver.Port());
  auto packets = FramesOf(&receiver, 26);
  ASSERT_FALSE(packets.empty());
  auto frames = SplitFrames(packets);
  for (size_t i = 0; i < packets.size(); ++i) {
    const RtpPacket& packet = packets[i];
    EXPECT_EQ(packet.version, 2);
    EXPECT_FALSE(packet.padding);
    EXPECT_FALSE(packet.extension);
    EXPECT_EQ(packet.csrcCount, 0);
    EXPECT_EQ(packet.payloadType, kH264Type);
    EXPECT_EQ(packet.ssrc, packets[0].ssrc);
    EXPECT_EQ(packet.source, "127.0.0.1") << "sent from the device's own address";
    if (i > 0) {
      EXPECT_EQ(packet.sequence, static_cast<uint16_t>(packets[i - 1].sequence + 1));
    }
  }
  for (size_t f = 0; f < frames.size(); ++f) {
    for (const RtpPacket& packet : frames[f]) EXPECT_EQ(packet.timestamp, frames[f][0].timestamp);
    if (f > 0) {
      EXPECT_EQ(frames[f][0].timestamp - frames[f - 1][0].timestamp, kVideoTicks);
    }
  }
  // 25 frame steps took about a second: lenient, for a loaded machine.
  auto took = frames.back().back().arrived - frames.front().back().arrived;
  EXPECT_GE(took, milliseconds(500));
  EXPECT_LE(took, milliseconds(3000));

  auto streams = device_->RtpStreams();
  ASSERT_EQ(streams.size(), 1u);
  EXPECT_EQ(streams[0].codec, camsim::MediaCodec::kH264);
  EXPECT_EQ(streams[0].payloadType, kH264Type);
  EXPECT_EQ(streams[0].clockRate, 90000);
  EXPECT_EQ(streams[0].ssrc, packets[0].ssrc);
  EXPECT_EQ(streams[0].destination, receiver.Destination("127.0.0.1"));
  EXPECT_FALSE(streams[0].multicast);
  EXPECT_GE(device_->RtpPacketsTo(receiver.Destination("127.0.0.1")), packets.size());
}

// The packets carry the clip's NAL units in order, as single NAL unit
// packets and FU-A fragments; every IDR picture comes with SPS and PPS.
TEST_F(RtpTest, H264PayloadIsTheClipInSingleAndFragmentedUnits) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  Start("h264", receiver.Port());
  // Two IDR pictures: the clip has one a second.
  auto packets = FramesOf(&receiver, 27);
  H264Assembler assembler;
  for (const RtpPacket& packet : packets) ASSERT_TRUE(assembler.Add(packet)) << assembler.error();
  const auto& units = assembler.AccessUnits();
  ASSERT_EQ(units.size(), 27u);
  EXPECT_GT(assembler.FragmentedUnits(), 0u) << "an IDR picture is larger than one packet";
  EXPECT_GT(assembler.SingleUnits(), 0u);
  EXPECT_EQ(Types(units[0]), (std::vector<int>{kSps, kPps, kIdr}));
  size_t idrs = 0;
  std::vector<std::string> received;
  for (const auto& unit : units) {
    for (const std::string& nal : unit) {
      EXPECT_EQ(static_cast<uint8_t>(nal[0]) & 0x80, 0) << "forbidden bit";
      received.push_back(nal);
    }
    if (!HasType(unit, kIdr)) continue;
    ++idrs;
    auto types = Types(unit);
    ASSERT_GE(types.size(), 3u);
    EXPECT_EQ(types[0], kSps);
    EXPECT_EQ(types[1], kPps);
  }
  EXPECT_GE(idrs, 2u);
  std::vector<std::string> clip = AnnexBUnits(MediaFile("clip.h264"));
  ASSERT_GE(clip.size(), received.size());
  for (size_t i = 0; i < received.size(); ++i) {
    EXPECT_EQ(received[i], clip[i]) << "NAL unit " << i << " differs from the clip";
  }
}

// MPEG-4: the configuration and an I-VOP first, every frame ends with the
// marker, 90 kHz steps of one frame.
TEST_F(RtpTest, Mpeg4FramesWithConfigurationFirst) {
  UseUnicastCamera(7);
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  Start("mpeg4", receiver.Port());
  auto frames = SplitFrames(FramesOf(&receiver, 5));
  ASSERT_EQ(frames.size(), 5u);
  std::string first;
  for (const RtpPacket& packet : frames[0]) first += packet.payload;
  const std::string visualObjectSequence("\0\0\1\xB0", 4);
  const std::string vop("\0\0\1\xB6", 4);
  EXPECT_EQ(first.compare(0, 4, visualObjectSequence), 0) << "configuration first";
  size_t at = first.find(vop);
  ASSERT_NE(at, std::string::npos);
  EXPECT_EQ(static_cast<uint8_t>(first[at + 4]) >> 6, 0) << "an I-VOP";
  for (size_t f = 0; f < frames.size(); ++f) {
    std::string whole;
    for (const RtpPacket& packet : frames[f]) {
      EXPECT_EQ(packet.payloadType, kMpeg4Type);
      EXPECT_LE(packet.payload.size(), 1400u);
      whole += packet.payload;
    }
    EXPECT_NE(whole.find(vop), std::string::npos) << "frame " << f << " holds a VOP";
    if (f > 0) {
      EXPECT_EQ(frames[f][0].timestamp - frames[f - 1][0].timestamp, kVideoTicks);
    }
  }
}

// G.726: 80 bytes each 20 ms, 160 ticks of the 8 kHz clock, the marker on
// the first packet only, the tone's bytes in order.
TEST_F(RtpTest, G726AudioBlocks) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  int uid = CameraUid();
  ASSERT_EQ(Fetch(AudioLine("start", uid, receiver.Port())).status, 200);
  auto packets = receiver.Packets(50);
  ASSERT_EQ(packets.size(), 50u);
  std::string tone = MediaFile("tone.g726");
  std::string sound;
  for (size_t i = 0; i < packets.size(); ++i) {
    EXPECT_EQ(packets[i].payloadType, kG726Type);
    EXPECT_EQ(packets[i].payload.size(), kAudioBytes);
    EXPECT_EQ(packets[i].marker, i == 0);
    if (i > 0) {
      EXPECT_EQ(packets[i].sequence, static_cast<uint16_t>(packets[i - 1].sequence + 1));
      EXPECT_EQ(packets[i].timestamp - packets[i - 1].timestamp, kAudioTicks);
    }
    sound += packets[i].payload;
  }
  EXPECT_EQ(sound, tone.substr(0, sound.size()));
  auto took = packets.back().arrived - packets.front().arrived;
  EXPECT_GE(took, milliseconds(500));
  EXPECT_LE(took, milliseconds(3000));
  auto streams = device_->RtpStreams();
  ASSERT_EQ(streams.size(), 1u);
  EXPECT_EQ(streams[0].clockRate, 8000);
}

// The stop is carried out before its answer: what comes after it was sent
// before, and the device's count matches what arrived.
TEST_F(RtpTest, StopEndsTheStream) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  int uid = Start("h264", receiver.Port());
  size_t received = receiver.Frames(3).size();
  ASSERT_EQ(Fetch(VideoLine("h264", "stop", uid, receiver.Port())).status, 200);
  EXPECT_TRUE(device_->RtpStreams().empty());
  uint64_t sent = device_->RtpPacketsTo(receiver.Destination("127.0.0.1"));
  size_t drained = 0;
  ASSERT_TRUE(receiver.Quiet(kQuiet, kDeadline, &drained));
  EXPECT_EQ(received + drained, sent);
  EXPECT_EQ(device_->RtpPacketsTo(receiver.Destination("127.0.0.1")), sent);
  EXPECT_EQ(Fetch(KeepAlive(uid)).status, 200) << "the UID outlives its stream";
}

TEST_F(RtpTest, AStartAgainKeepsTheStreamAndAStopOfAnotherLeavesIt) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  int uid = Start("h264", receiver.Port());
  auto before = receiver.Frames(2);
  ASSERT_FALSE(before.empty());
  ASSERT_EQ(Fetch(VideoLine("h264", "start", uid, receiver.Port())).status, 200);
  ASSERT_EQ(Fetch(VideoLine("mpeg4", "stop", uid, receiver.Port())).status, 200);
  auto after = receiver.Frames(2);
  ASSERT_FALSE(after.empty());
  EXPECT_EQ(after[0].ssrc, before[0].ssrc);
  EXPECT_EQ(device_->RtpStreams().size(), 1u);
}

TEST_F(RtpTest, RefusedStartsSendNothing) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  EXPECT_EQ(Fetch(VideoLine("h264", "start", 77, receiver.Port())).status, 404) << "unknown UID";
  int uid = CameraUid();
  SetFaultText("/cgi-bin/h264", "status=503,times=1");
  EXPECT_EQ(Fetch(VideoLine("h264", "start", uid, receiver.Port())).status, 503);
  EXPECT_TRUE(device_->RtpStreams().empty());
  EXPECT_EQ(device_->RtpPacketsSent(), 0u);
}

TEST_F(RtpTest, ForgettingOrExpiryOfTheUidEndsItsStream) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  int uid = Start("h264", receiver.Port());
  ASSERT_FALSE(receiver.Frames(1).empty());
  device_->ForgetUid(uid);
  EXPECT_TRUE(WaitFor([&] { return device_->RtpStreams().empty(); }));
  EXPECT_TRUE(receiver.Quiet(kQuiet, kDeadline));

  Start("h264", receiver.Port());
  ASSERT_FALSE(receiver.Frames(1).empty());
  device_->SetUidExpiry(milliseconds(200));
  EXPECT_TRUE(WaitFor([&] { return device_->RtpStreams().empty(); }));
  EXPECT_TRUE(receiver.Quiet(kQuiet, kDeadline));
}

// A stall: the stream stops after the fault's frames while HTTP answers as
// before; a resume goes on with the next sequence number, a timestamp that
// kept time, and an IDR picture with SPS and PPS.
TEST_F(RtpTest, StallFaultThenResume) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  SetFaultText("/cgi-bin/h264", "rtp-stall=5,when=connect=start");
  int uid = Start("h264", receiver.Port());
  auto before = FramesOf(&receiver, 5);
  ASSERT_FALSE(before.empty());
  EXPECT_TRUE(WaitFor([&] { return Stalled(); }));
  auto stalledAt = std::chrono::steady_clock::now();
  EXPECT_TRUE(receiver.Quiet(kQuiet, kDeadline));
  EXPECT_EQ(Fetch(KeepAlive(uid)).status, 200) << "HTTP answers during the stall";

  EXPECT_EQ(device_->ResumeRtp(), 1u);
  auto after = receiver.Frames(1);
  ASSERT_FALSE(after.empty());
  EXPECT_EQ(after[0].ssrc, before[0].ssrc);
  EXPECT_EQ(after[0].sequence, static_cast<uint16_t>(before.back().sequence + 1));
  uint32_t step = after[0].timestamp - before.back().timestamp;
  auto stalledFor =
      std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - stalledAt);
  EXPECT_GE(step, static_cast<uint32_t>(90 * stalledFor.count() / 2)) << "the clock ran on";
  H264Assembler assembler;
  for (const RtpPacket& packet : after) ASSERT_TRUE(assembler.Add(packet)) << assembler.error();
  ASSERT_EQ(assembler.AccessUnits().size(), 1u);
  EXPECT_EQ(Types(assembler.AccessUnits()[0]), (std::vector<int>{kSps, kPps, kIdr}));
  EXPECT_FALSE(Stalled());
}

TEST_F(RtpTest, StallFaultResumesByItself) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  SetFaultText("/cgi-bin/h264", "rtp-stall=3,rtp-resume=500");
  Start("h264", receiver.Port());
  auto before = FramesOf(&receiver, 3);
  ASSERT_FALSE(before.empty());
  RtpPacket next;
  ASSERT_TRUE(receiver.Next(&next, kDeadline));
  EXPECT_GE(next.arrived - before.back().arrived, milliseconds(300)) << "a gap of the stall";
  EXPECT_EQ(next.sequence, static_cast<uint16_t>(before.back().sequence + 1));
  EXPECT_FALSE(receiver.Frames(3).empty()) << "and it goes on";
}

// The same from the control socket's lines, for one UID or all.
TEST_F(RtpTest, StallAndResumeAtRunTime) {
  UseUnicastCamera();
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  int uid = Start("h264", receiver.Port());
  ASSERT_FALSE(receiver.Frames(2).empty());
  std::vector<camsim::Device*> devices = {device_.get()};
  EXPECT_EQ(camsim::ApplyControlLine(devices, "0 rtp-stall 999"), "ERROR no such RTP stream");
  EXPECT_EQ(camsim::ApplyControlLine(devices, "0 rtp-stall " + std::to_string(uid)), "OK");
  EXPECT_TRUE(Stalled());
  EXPECT_TRUE(receiver.Quiet(kQuiet, kDeadline));
  EXPECT_EQ(Fetch(KeepAlive(uid)).status, 200);
  EXPECT_EQ(camsim::ApplyControlLine(devices, "0 rtp-stall"), "ERROR no such RTP stream")
      << "already stalled";
  EXPECT_EQ(camsim::ApplyControlLine(devices, "0 rtp-resume"), "OK");
  EXPECT_FALSE(receiver.Frames(2).empty());
  EXPECT_EQ(camsim::ApplyControlLine(devices, "0 rtp-resume"), "ERROR no such RTP stream");
  EXPECT_EQ(camsim::ApplyControlLine(devices, "0 rtp-stall x"), "ERROR bad UID");
  EXPECT_EQ(camsim::ApplyControlLine(devices, "0 rtp-end"), "OK");
  EXPECT_TRUE(WaitFor([&] { return device_->RtpStreams().empty(); }));
  EXPECT_TRUE(receiver.Quiet(kQuiet, kDeadline));
}

// A recorder sends to the requester's address at PORT=, until CMD=STOP or
// the logout.
TEST_F(RtpTest, RecorderPushOverRtp) {
  Use(36);
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  int uid = RecorderSession();
  ASSERT_EQ(Fetch(Push("START", uid, receiver.Port(), "H264&RES=1")).status, 200);
  auto packets = FramesOf(&receiver, 2);
  ASSERT_FALSE(packets.empty());
  EXPECT_EQ(packets[0].payloadType, kH264Type);
  ASSERT_EQ(Fetch(Push("STOP", uid, receiver.Port(), "H264&RES=1")).status, 200);
  EXPECT_TRUE(device_->RtpStreams().empty());
  EXPECT_TRUE(receiver.Quiet(kQuiet, kDeadline));

  ASSERT_EQ(Fetch(Push("START", uid, receiver.Port(), "AUDIO")).status, 200);
  packets = receiver.Packets(2);
  ASSERT_EQ(packets.size(), 2u);
  EXPECT_EQ(packets[0].payloadType, kG726Type);
  ASSERT_EQ(Fetch("/cgi-bin/logout.cgi?UID=" + std::to_string(uid)).status, 200);
  EXPECT_TRUE(WaitFor([&] { return device_->RtpStreams().empty(); }));
  EXPECT_TRUE(receiver.Quiet(kQuiet, kDeadline));
}

// A recorder's stalled stream resumes when the requester pushes it again;
// a push start answered with 204 streams too.
TEST_F(RtpTest, RecorderStallEndsWithThePushAgain) {
  Use(34);
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  device_->SetPushStartStatus(204);
  SetFaultText("/cgi-bin/push.cgi", "rtp-stall=3,times=1");
  int uid = RecorderSession();
  ASSERT_EQ(Fetch(Push("START", uid, receiver.Port(), "MPEG4")).status, 204);
  auto before = FramesOf(&receiver, 3);
  ASSERT_FALSE(before.empty());
  EXPECT_TRUE(WaitFor([&] { return Stalled(); }));
  EXPECT_TRUE(receiver.Quiet(kQuiet, kDeadline));
  ASSERT_EQ(Fetch(Push("START", uid, receiver.Port(), "MPEG4")).status, 204);
  auto after = receiver.Frames(2);
  ASSERT_FALSE(after.empty());
  EXPECT_EQ(after[0].ssrc, before[0].ssrc);
  EXPECT_EQ(after[0].sequence, static_cast<uint16_t>(before.back().sequence + 1));
}

// rtp-end: a push that ends mid-stream; the next start begins a new stream.
TEST_F(RtpTest, EndFaultEndsThePushMidStream) {
  Use(35);
  UdpReceiver receiver;
  OpenReceiver(&receiver);
  SetFaultText("/cgi-bin/push.cgi", "rtp-end=4,times=1");
  int uid = RecorderSession();
  ASSERT_EQ(Fetch(Push("START", uid, receiver.Port(), "H264")).status, 200);
  auto packets = FramesOf(&receiver, 4);
  ASSERT_FALSE(packets.empty());
  EXPECT_TRUE(WaitFor([&] { return device_->RtpStreams().empty(); }));
  EXPECT_TRUE(receiver.Quiet(kQuiet, kDeadline));
  EXPECT_EQ(Fetch("/cgi-bin/status.cgi?UID=" + std::to_string(uid) + "&HTML=as_status.html").status,
            200);
  ASSERT_EQ(Fetch(Push("START", uid, receiver.Port(), "H264")).status, 200);
  auto again = receiver.Frames(1);
  ASSERT_FALSE(again.empty());
  EXPECT_NE(again[0].ssrc, packets[0].ssrc) << "a new stream";
}

// uni_manual: the ports of the set-up reply, not the line's.
TEST_F(RtpTest, UniManualSendsToTheSetUpPorts) {
  Use(9);
  UdpReceiver video;
  UdpReceiver audio;
  UdpReceiver line;
  OpenReceiver(&video);
  OpenReceiver(&audio);
  OpenReceiver(&line);
  camsim::ReplyValues values = device_->Values();
  values.delivery = "uni_manual";
  values.uniPort = video.Port();
  values.audioInPort = audio.Port();
  device_->SetValues(values);
  int uid = Start("h264", line.Port());
  ASSERT_FALSE(video.Frames(1).empty());
  ASSERT_EQ(Fetch(AudioLine("start", CameraUid(), line.Port())).status, 200);
  ASSERT_EQ(audio.Packets(1).size(), 1u);
  EXPECT_EQ(device_->RtpPacketsTo(line.Destination("127.0.0.1")), 0u);
  ASSERT_EQ(Fetch(VideoLine("h264", "stop", uid, line.Port())).status, 200);
  EXPECT_EQ(device_->RtpStreams().size(), 1u) << "the audio stream runs on";
}

TEST_F(RtpTest, UnicastOverIpv6) {
  UseUnicastCamera(9, "::1");
  UdpReceiver receiver;
  OpenReceiver(&receiver, "::1");
  Start("h264", receiver.Port());
  auto packets = FramesOf(&receiver, 2);
  ASSERT_FALSE(packets.empty());
  EXPECT_EQ(packets[0].source, "::1");
  EXPECT_EQ(device_->RtpStreams().at(0).destination, receiver.Destination("::1"));
}

// Whether this machine delivers IPv4 multicast sent on the loopback
// interface to a member joined there.
bool LoopbackMulticastWorks(UdpReceiver* member, const std::string& group) {
  int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  in_addr loopback{};
  loopback.s_addr = htonl(INADDR_LOOPBACK);
  unsigned char ttl = 0;
  unsigned char loop = 1;
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(member->Port());
  inet_pton(AF_INET, group.c_str(), &to.sin_addr);
  const char probe[12] = {static_cast<char>(0x80), 0};
  bool sent = setsockopt(fd, IPPROTO_IP, IP_MULTICAST_IF, &loopback, sizeof loopback) == 0 &&
              setsockopt(fd, IPPROTO_IP, IP_MULTICAST_TTL, &ttl, sizeof ttl) == 0 &&
              setsockopt(fd, IPPROTO_IP, IP_MULTICAST_LOOP, &loop, sizeof loop) == 0 &&
              sendto(fd, probe, sizeof probe, 0, reinterpret_cast<sockaddr*>(&to), sizeof to) ==
                  static_cast<ssize_t>(sizeof probe);
  close(fd);
  RtpPacket packet;
  return sent && member->Next(&packet, milliseconds(1000));
}

// multi: the group and port of the set-up reply, on the loopback interface.
TEST_F(RtpTest, MulticastToTheSetUpGroupOnLoopback) {
  const std::string group = "239.255.42.7";
  UdpReceiver member;
  if (!member.JoinOnLoopback(group) || !LoopbackMulticastWorks(&member, group)) {
    GTEST_SKIP() << "this machine does not loop multicast back on the loopback interface";
  }
  Use(9);
  camsim::ReplyValues values = device_->Values();
  values.delivery = "multi";
  values.multiAddress = {239, 255, 42, 7};
  values.multiPort = member.Port();
  device_->SetValues(values);
  Response setUp = Fetch("/cgi-bin/getuid?FILE=2&vcodec=h264");
  ASSERT_EQ(setUp.Line("iMultiPort="), std::to_string(member.Port()));
  int uid = std::atoi(setUp.Line("UID=").c_str());
  ASSERT_EQ(Fetch(VideoLine("h264", "start", uid, member.Port())).status, 200);
  auto packets = FramesOf(&member, 2);
  ASSERT_FALSE(packets.empty());
  EXPECT_EQ(packets[0].payloadType, kH264Type);
  auto streams = device_->RtpStreams();
  ASSERT_EQ(streams.size(), 1u);
  EXPECT_TRUE(streams[0].multicast);
  EXPECT_EQ(streams[0].destination, member.Destination(group));
  ASSERT_EQ(Fetch(VideoLine("h264", "stop", uid, member.Port())).status, 200);
  EXPECT_TRUE(member.Quiet(kQuiet, kDeadline));
}

TEST(RtpFaultText, ItemsAndTheirLimits) {
  camsim::Fault fault;
  std::string error;
  ASSERT_TRUE(camsim::ParseFault("rtp-stall", &fault, &error));
  EXPECT_EQ(fault.rtpStallAfter, 1);
  EXPECT_EQ(fault.rtpEndAfter, -1);
  ASSERT_TRUE(camsim::ParseFault("rtp-stall=0,rtp-resume=250,times=1", &fault, &error));
  EXPECT_EQ(fault.rtpStallAfter, 0);
  EXPECT_EQ(fault.rtpResumeMs, 250);
  ASSERT_TRUE(camsim::ParseFault("rtp-end=12", &fault, &error));
  EXPECT_EQ(fault.rtpEndAfter, 12);
  EXPECT_EQ(fault.rtpStallAfter, -1);
  EXPECT_FALSE(camsim::ParseFault("rtp-resume=100", &fault, &error));
  EXPECT_EQ(error, "rtp-resume needs rtp-stall");
  EXPECT_FALSE(camsim::ParseFault("rtp-stall=x", &fault, &error));
  EXPECT_FALSE(camsim::ParseFault("rtp-stall=1,rtp-resume", &fault, &error));
  EXPECT_FALSE(camsim::ParseFault("rtp-end=-1", &fault, &error));
}

TEST(RtpHelp, TheUsageTextTellsOfRtp) {
  std::string text = camsim::UsageText();
  for (const char* word : {"rtp-stall[=N]", "rtp-resume=MS", "rtp-end[=N]", "PT 96", "PT 97",
                           "rtp-stall [UID]", "rtp-resume [UID]", "rtp-end [UID]"}) {
    EXPECT_NE(text.find(word), std::string::npos) << word;
  }
}

}  // namespace
}  // namespace camsim_test
