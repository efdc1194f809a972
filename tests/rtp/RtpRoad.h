// End-to-end fixture of the RTP requester: a simulated camera or recorder on
// loopback, requesters driven only through their public operations, the
// upper layer's notification object, the UID message, the alarms and the
// print, and after every test a check that nothing was left behind.
#ifndef RTP_ROAD_H
#define RTP_ROAD_H

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "CCamRequester_Cgi_Kobu_Rtp.h"
#include "CamTestSupport.h"
#include "Device.h"
#include "UpperLayer.h"
#include "kxcom.h"
#include "kxhttp.h"

namespace rtptest {

using Requester = CCamRequester_Cgi_Kobu_Rtp;
using std::chrono::milliseconds;

// 100 ms / 100: an idle round takes about a millisecond, so a keep-alive
// (300 rounds) comes about every third of a second and a restart (30
// rounds) after some 30 ms.
constexpr int kWaitDivisor = 100;
// 5 s / 5: a camera that does not answer costs a second, a margin wide
// enough for a loaded machine and the sanitizers.
constexpr int kHttpDivisor = 5;
// Bound of every wait for something the requester must do.
constexpr milliseconds kLimit{10000};

// What the upper layer sets before it starts a stream.
struct StreamSetup {
  int iCmdType = CAM_REQUESTER_CMD_H264_RTP;
  uint16_t usCameraType = 7;
  std::string sCamName = "CAM07";
  uint16_t usCameraNumber = 12;  // of the alarm report
  int iRtpPort = 5500;
  int iPos = 1;
  int iCamNo = 3;  // of the UID message
  uint16_t usSelectChNo = 0;
  uint8_t ucStream = 1;
  uint16_t usPreset = 0;
  std::string sUser;  // empty: no authentication record
  std::string sPassword;
  bool bKeepAlive = true;
  int iUid = -1;  // given with kind 4 when not -1
  int iAudioEnable = 0;
  int iPlayMode = 0;
};

// A requester with its notification object and the prefix of its lines.
struct Stream {
  StreamSetup sSetup;
  std::unique_ptr<camtest::NotifyRecorder> pNotify;
  std::unique_ptr<Requester> pRequester;
  long lIndex = 0;
  std::string sPrefix;

  Requester& r() { return *pRequester; }
  int Status() const { return pRequester->iConnectStatus.load(); }
  // A line of this requester as its print makes it.
  std::string Line(const std::string& sText) const { return sPrefix + sText; }
  // The thread index in the form the request thread prints it.
  std::string Tindex() const;
};

// The camera configuration that the road tests start from: unusual values
// everywhere, so that no default can pass for a parsed value.
camsim::DeviceConfig CameraConfig(const std::string& sAddress, int iModel);

// page= and TEMP= carry the clock; they are written as N for comparison.
std::string Normalized(const std::string& sLine);

// Checks that every expected line occurs in the lines, in this order.
void ExpectInOrder(const std::vector<std::string>& asLines,
                   const std::vector<std::string>& asExpected, const std::string& sWhere = "");

class RoadTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Starts the simulated device; fails the test when it cannot.
  camsim::Device& StartCamera(const camsim::DeviceConfig& sConfig);
  camsim::Device& Camera() const { return *m_pDevice; }
  // Creates a requester for the device, sets every parameter the way the
  // upper layer does and starts its thread.
  Stream& AddStream(const StreamSetup& sSetup);

  // The request lines the device received, normalized.
  std::vector<std::string> RequestLines() const;
  // The same with each run of equal lines (keep-alives) written once, and
  // without the lines that contain sSkip (another stream's), when given.
  std::vector<std::string> CollapsedRequestLines(const std::string& sSkip = "") const;
  // Waits until the device has received a request line starting with sHead
  // iCount times.
  bool WaitForRequest(const std::string& sHead, int iCount = 1, milliseconds tLimit = kLimit) const;
  int CountRequests(const std::string& sHead) const;
  // The print, normalized.
  std::vector<std::string> Lines() const;
  // The last lines printed, for a failure message.
  std::string Tail(size_t uCount = 80) const;
  // Waits until the last expected line was printed, then checks that all
  // were printed in this order.
  void ExpectLines(const std::vector<std::string>& asExpected, const std::string& sWhere = "");
  bool WaitStatus(const Stream& rStream, int iStatus, milliseconds tLimit = kLimit) const;
  // Starts the stream and waits for RUN and the keep-alive that follows.
  void StartToRun(Stream& rStream);
  // Stops the stream and waits for IDLE.
  void StopToIdle(Stream& rStream);

  camtest::PrintCapture m_capture;
  camtest::AlarmCapture m_alarms;
  std::unique_ptr<camtest::UidReceiver> m_pUidReceiver;
  std::vector<std::unique_ptr<Stream>> m_apStreams;

 private:
  void EndStream(Stream& rStream);

  std::unique_ptr<camsim::Device> m_pDevice;
  int m_iFdsBefore = 0;
  int m_iBuffersBefore = 0;
};

}  // namespace rtptest

#endif
